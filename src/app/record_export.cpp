#include "app/record_export.h"

#include "base/path_text.h"
#include "base/ui/qt_text.h"
#include "export/xlsx.h"
#include "messages/file_messages.h"
#include "model/quobrix_document.h"
#include "texts/text.h"
#include "units/unit_system.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QProgressDialog>

#include <array>
#include <memory>
#include <span>
#include <string>

namespace quobrix {
namespace {

constexpr qint64 kSlice = 40; // ms that the window stands still

/// What a person sees of an export, which runs on the thread that paints it.
class Watch {
public:
    Watch(QWidget& window, std::size_t rows, qint64 patience) : window_(window), rows_(rows), patience_(patience) {
        since_.start();
        slice_.start();
        QApplication::setOverrideCursor(Qt::WaitCursor);
    }
    /// The rows have been read; what is left shows itself.
    void close() {
        if (!dialog_ && !closed_)
            QApplication::restoreOverrideCursor();
        dialog_.reset();
        closed_ = true;
    }
    ~Watch() { close(); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    /// After each row. False if the person does not want it any more.
    bool row() {
        ++done_;
        if (slice_.elapsed() < kSlice)
            return true;
        if (!dialog_ && since_.elapsed() >= patience_)
            open();
        if (dialog_)
            dialog_->setValue(static_cast<int>(done_)); // which takes what the person does with it
        else
            QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        slice_.start();
        return !dialog_ || !dialog_->wasCanceled();
    }

private:
    void open() {
        QApplication::restoreOverrideCursor();
        dialog_ = std::make_unique<QProgressDialog>(QObject::tr("Exporting…"), QObject::tr("Cancel"), 0,
                                                    static_cast<int>(rows_) + 1, &window_);
        dialog_->setObjectName(QStringLiteral("ExportProgress"));
        dialog_->setWindowTitle(QStringLiteral("Quobrix"));
        dialog_->setWindowModality(Qt::ApplicationModal);
        dialog_->setMinimumDuration(0);
        dialog_->setAutoClose(false);
    }

    QWidget& window_;
    std::size_t rows_, done_ = 0;
    const qint64 patience_;
    QElapsedTimer since_, slice_;
    std::unique_ptr<QProgressDialog> dialog_;
    bool closed_ = false;
};

} // namespace

RecordExport::RecordExport(TQuobrixDocument& document, const TextContext& context, Prompter& prompter,
                           FileChooser& chooser, DiskRunner runDisk, QWidget& window,
                           std::function<void(const QString&)> say)
    : document_(document), context_(context), prompter_(prompter), chooser_(chooser), runDisk_(std::move(runDisk)),
      window_(window), say_(std::move(say)) {}

bool RecordExport::run(const ExportContent& content) {
    constexpr std::array kFormats{FileFormat::Xlsx, FileFormat::Csv};
    const auto place = chooseCopyOf(document_, chooser_, prompter_, SourceText("Export"), content.title,
                                    std::span(kFormats).subspan(canWriteXlsx() ? 0 : 1));
    if (!place)
        return false;
    const std::string name = utf8(place->path.filename());
    const auto number = [&](std::size_t count) {
        return context_.units.formatInteger(static_cast<std::int64_t>(count));
    };
    if (place->format == FileFormat::Xlsx && content.rowCount() > kMostXlsxRecords)
        return prompter_.tell(
                   makeMessage(MessageId::CannotExport,
                               text(TextId::TooManyForXlsx, number(kMostXlsxRecords), number(content.rowCount())))),
               false;
    const Result<std::size_t> cut = write(content, *place);
    if (!cut && cut.error().kind == ErrorKind::Cancelled)
        return false;
    if (!cut)
        prompter_.tell(fileMessage(cut.error(), FileAction::Save, name));
    else if (*cut > 0)
        prompter_.tell(makeMessage(MessageId::TextsCut, name, number(*cut)));
    const bool written = cut || cut.error().kind == ErrorKind::NotDurable;
    if (written)
        say_(toQt(counted(TextId::RowsExported, content.rowCount(), number(content.rowCount()), name)));
    return written;
}

Result<std::size_t> RecordExport::write(const ExportContent& content, const CopyPlace& place) {
    Result<ReplacementFile> file = ReplacementFile::create(place.path);
    if (!file)
        return file.error();
    Result<std::size_t> cut = std::size_t{0};
    {
        Watch watch(window_, content.rowCount(), patience);
        const DiskRunner disk = [&](const DiskWork& work) {
            watch.close();
            return runDisk_(work);
        };
        cut = writeExport(content, place.format, context_, *file, {[&] { return watch.row(); }, disk});
    }
    if (cut)
        QUOBRIX_TRY(runDisk_([&](DiskProgress&) { return file->commit(place.ifThere); }));
    return cut;
}

} // namespace quobrix
