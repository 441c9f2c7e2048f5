#include "app/about_box.h"

#include "base/ui/qt_text.h"
#include "texts/text.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QIcon>
#include <QLabel>
#include <QMouseEvent>

namespace quobrix {

AboutLines programLines() {
    return {{SourceText("Software Version"), QUOBRIX_VERSION}, {SourceText("Build"), __DATE__}};
}

AboutBox::AboutBox(const AboutLines& lines, std::function<void()> showDiagnostics, QWidget* parent)
    : QDialog(parent), showDiagnostics_(std::move(showDiagnostics)) {
    setObjectName(QStringLiteral("AboutBox"));
    setWindowTitle(tr("About Quobrix"));

    auto* icon = new QLabel;
    icon->setPixmap(QIcon(QStringLiteral(":/icons/quobrix.svg")).pixmap(QSize(64, 64), devicePixelRatioF()));
    auto* name = new QLabel(QStringLiteral("Quobrix"));
    QFont large = name->font();
    large.setPointSizeF(large.pointSizeF() * 1.8);
    large.setBold(true);
    name->setFont(large);
    auto* purpose = new QLabel(tr("The desktop companion of your vehicle's logger."));

    auto* form = new QFormLayout;
    form->setHorizontalSpacing(24);
    for (const auto& [label, value] : lines) {
        auto* field = new QLabel(toQt(value));
        field->setObjectName(toQt(label.english()).remove(QLatin1Char(' ')));
        field->setAccessibleName(toQt(text(label) + " " + value));
        form->addRow(toQt(text(label)), field);
    }

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto* layout = new QGridLayout(this);
    layout->setHorizontalSpacing(20);
    layout->setContentsMargins(20, 20, 20, 16);
    layout->addWidget(icon, 0, 0, 3, 1, Qt::AlignTop);
    layout->addWidget(name, 0, 1);
    layout->addWidget(purpose, 1, 1);
    layout->addLayout(form, 2, 1);
    layout->addWidget(buttons, 3, 0, 1, 2);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void AboutBox::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton && event->modifiers().testFlag(Qt::ControlModifier))
        showDiagnostics_();
    else
        QDialog::mousePressEvent(event);
}

} // namespace quobrix
