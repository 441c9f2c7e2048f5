#include "app/text_file_window.h"

#include "base/path_text.h"
#include "base/ui/qt_text.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QVBoxLayout>

namespace quobrix {

TextFileWindow::TextFileWindow(QWidget* parent) : QDialog(parent), text_(new QPlainTextEdit) {
    setObjectName(QStringLiteral("TextFileWindow"));
    text_->setObjectName(QStringLiteral("FileText"));
    text_->setReadOnly(true);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    text_->setLineWrapMode(QPlainTextEdit::WidgetWidth);
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(text_);
    layout->addWidget(buttons);
    resize(fontMetrics().averageCharWidth() * 130, fontMetrics().height() * 24);
}

bool TextFileWindow::show(const std::filesystem::path& path) {
    QFile file(toQtPath(path));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    setWindowTitle(toQtPath(path.filename()));
    text_->setAccessibleName(windowTitle());
    text_->setPlainText(QString::fromUtf8(file.readAll()));
    text_->moveCursor(QTextCursor::End);
    text_->moveCursor(QTextCursor::StartOfLine);
    text_->verticalScrollBar()->setValue(text_->verticalScrollBar()->maximum());
    return true;
}

} // namespace quobrix
