#include "views/log_record_view.h"

#include "base/ui/qt_text.h"
#include "drawing/svg.h"
#include "paper/ui/paper_painter.h"
#include "report/pages.h"
#include "texts/text.h"
#include "ui/passing_menu.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QImage>
#include <QLabel>
#include <QMimeData>

namespace quobrix {
namespace {

constexpr double kPictureWidth = 760, kPictureText = 13; // pixels

} // namespace

LogRecordView::LogRecordView(const ViewContext& context, const LogSpec& spec, QAction& editComments, QWidget* parent)
    : ReportView(parent), context_(context), spec_(spec), editComments_(editComments) {
    setObjectName(toQt(spec.viewName("RecordView")));
    setAccessibleName(tr("%1 Report").arg(toQt(spec.recordHeading())));
    showRecord(nullptr, std::nullopt);
}

void LogRecordView::showRecord(const Table* log, std::optional<RowIndex> row) {
    setSectionCommand(row ? toQt(plainHeading(log->columnOf(*spec_.comments).spec())) : QString(),
                      row ? &editComments_ : nullptr);
    if (row)
        return setReport(recordReport(spec_, *log, *row, context_.text()));
    setReport(
        {text(TextId::NoRecord, text(spec_.record)), {Paragraph{text(TextId::NoRecordsYet, text(spec_.records))}}});
}

/// As it stands on paper, whatever the window is like.
Drawing LogRecordView::picture() const { return drawReport(report(), kPictureWidth, *paperMeasure(kPictureText)); }

void LogRecordView::contextMenuEvent(QContextMenuEvent* event) {
    auto* menu = new PassingMenu("ReportMenu", *this);
    const auto add = [](QMenu& to, const char* name, const QString& text, auto run) {
        QAction* action = to.addAction(text, run);
        action->setObjectName(QLatin1String(name));
        return action;
    };
    add(*menu, "ReportCopy", tr("&Copy"), [this] {
        const auto* text = qobject_cast<QLabel*>(QApplication::focusWidget());
        if (text && isAncestorOf(text) && text->hasSelectedText())
            QApplication::clipboard()->setText(text->selectedText());
        else
            copy();
    })->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_C));
    QMenu* as = menu->addMenu(tr("Copy &As"));
    add(*as, "ReportCopyMetafile", tr("&Metafile"), [this] {
        auto* drawing = new QMimeData;
        drawing->setData(QStringLiteral("image/svg+xml"),
                         QByteArray::fromStdString(writeSvg(
                             drawReport(report(), kPictureWidth, TableTextMeasure(kPictureText)), kPaperPalette)));
        QApplication::clipboard()->setMimeData(drawing);
    });
    add(*as, "ReportCopyBitmap", tr("&Bitmap"), [this] {
        const Bytes png = PaperPainter().png(picture(), devicePixelRatioF());
        QApplication::clipboard()->setImage(QImage::fromData(png.data(), static_cast<int>(png.size())));
    });
    menu->addSeparator();
    QAction* save = add(*menu, "ReportSaveAs", tr("&Save As..."), [this] { (*context_.saveReport)(report()); });
    save->setEnabled(context_.saveReport && *context_.saveReport);
    menu->popup(event->globalPos());
}

} // namespace quobrix
