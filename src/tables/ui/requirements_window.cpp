#include "tables/ui/requirements_window.h"

#include "base/ui/qt_text.h"
#include "tables/requirements_text.h"
#include "texts/source_text.h"

#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace quobrix {

RequirementsWindow::RequirementsWindow(TUnitSystem& units, const TimeZone& zone, QWidget* parent)
    : QDialog(parent), units_(units), zone_(zone), text_(new QPlainTextEdit) {
    setObjectName(QStringLiteral("RequirementsWindow"));
    text_->setObjectName(QStringLiteral("requirements"));
    text_->setAccessibleName(tr("Requirements"));
    text_->setReadOnly(true);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    text_->setTabChangesFocus(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(text_, 1);
    layout->addWidget(buttons);
    resize(420, 300);
    units_.addListener(*this);
}

RequirementsWindow::~RequirementsWindow() { units_.removeListener(*this); }

void RequirementsWindow::setColumn(const Column& column) {
    column_.reset(static_cast<Column*>(column.type().create().release()));
    setWindowTitle(tr("Requirements - %1").arg(toQt(plainHeading(column.spec()))));
    refresh();
}

QString RequirementsWindow::text() const { return text_->toPlainText(); }

void RequirementsWindow::refresh() {
    if (!column_)
        return;
    std::string all = quobrix::text(column_->spec().tooltip);
    if (!all.empty())
        all += "\n\n";
    text_->setPlainText(toQt(all + requirementsText(*column_, {units_, zone_})));
}

} // namespace quobrix
