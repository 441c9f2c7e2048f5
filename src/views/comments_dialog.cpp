#include "views/comments_dialog.h"

#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "texts/text.h"
#include "ui/fields.h"
#include "ui/status_line.h"
#include "ui/windows.h"

#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace quobrix {
namespace {

constexpr std::string_view kCommentsSection = "TCommentsDialog";

} // namespace

TCommentsDialog::TCommentsDialog(const ViewContext& context, const LogSpec& spec, RowIndex row, QWidget* parent)
    : QDialog(parent), context_(context), spec_(spec), record_(spec.keyOf(*context.document.log(spec), row)),
      text_(new QPlainTextEdit), status_(new StatusLine) {
    const Table& log = *context.document.log(spec);
    setObjectName(toQt(kCommentsSection));
    setWindowTitle(tr("Comments on %1").arg(toQt(recordTitle(spec, log, row, context.text()))));
    text_->setObjectName(QStringLiteral("CommentsText"));
    text_->setAccessibleName(windowTitle());
    text_->setTabChangesFocus(true);
    text_->setPlainText(toQt(log.columnOf(*spec.comments).editText(row, context.text())));
    text_->moveCursor(QTextCursor::End);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    addHelp(*buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &TCommentsDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(text_, 1);
    layout->addWidget(status_);
    layout->addWidget(buttons);
    resize(fontMetrics().averageCharWidth() * 70, fontMetrics().lineSpacing() * 16);
    quobrix::restoreGeometry(*this, context_.settings, kCommentsSection);
}

TCommentsDialog::~TCommentsDialog() { rememberGeometry(*this, context_.settings, kCommentsSection); }

void TCommentsDialog::accept() {
    const Table* log = context_.document.log(spec_);
    const auto row = log ? spec_.rowOf(*log, record_) : std::nullopt;
    const EditOutcome outcome =
        row ? context_.document.edits().type(log->id(), log->indexOf(log->columnOf(*spec_.comments).spec().key), *row,
                                             text_->toPlainText().toStdString(), context_.text())
            : refused(text(TextId::RecordIsGone));
    if (outcome.ok())
        return QDialog::accept();
    status_->say(toQt(outcome.refusal));
}

} // namespace quobrix
