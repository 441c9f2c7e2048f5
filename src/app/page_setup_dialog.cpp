#include "app/page_setup_dialog.h"

#include "base/ui/qt_text.h"
#include "ui/fields.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLocale>

namespace quobrix {
namespace {

/// What people measure paper in.
struct Measure {
    double points;
    QString suffix;
    int decimals;
    double step;
};
Measure measure() {
    if (QLocale().measurementSystem() == QLocale::ImperialUSSystem)
        return {72, QObject::tr(" in"), 2, 0.05};
    return {72 / 25.4, QObject::tr(" mm"), 1, 1};
}

constexpr double Margins::*kSides[] = {&Margins::left, &Margins::top, &Margins::right, &Margins::bottom};

} // namespace

PageSetupDialog::PageSetupDialog(const PageSetup& setup, QWidget* parent)
    : QDialog(parent), paper_(new QComboBox), orientation_(new QComboBox) {
    setObjectName(QStringLiteral("PageSetup"));
    setWindowTitle(tr("Print Setup"));
    const Measure unit = measure();
    paper_->setObjectName(QStringLiteral("Paper"));
    for (const Paper& paper : papers()) {
        const auto length = [&](double points) { return QLocale().toString(points / unit.points, 'g', 4); };
        paper_->addItem(
            tr("%1 (%2 × %3%4)")
                .arg(toQt(text(paper.name)), length(paper.size.width), length(paper.size.height), unit.suffix));
    }
    paper_->setCurrentIndex(static_cast<int>(setup.paper - papers().data()));
    orientation_->setObjectName(QStringLiteral("Orientation"));
    orientation_->addItems({tr("Lists and plots landscape, reports portrait"), tr("Portrait"), tr("Landscape")});
    orientation_->setCurrentIndex(static_cast<int>(setup.orientation));

    auto* page = new QFormLayout;
    page->addRow(fieldLabel(tr("&Paper:"), *paper_), paper_);
    page->addRow(fieldLabel(tr("&Orientation:"), *orientation_), orientation_);

    auto* box = new QGroupBox(tr("Margins"));
    auto* grid = new QGridLayout(box);
    const QString names[] = {tr("&Left:"), tr("&Top:"), tr("&Right:"), tr("&Bottom:")};
    const char* const objects[] = {"LeftMargin", "TopMargin", "RightMargin", "BottomMargin"};
    for (std::size_t i = 0; i < margins_.size(); ++i) {
        auto* field = new QDoubleSpinBox;
        field->setObjectName(QLatin1String(objects[i]));
        field->setSuffix(unit.suffix);
        field->setDecimals(unit.decimals);
        field->setSingleStep(unit.step);
        field->setRange(kLeastMargin / unit.points, kMostMargin / unit.points);
        field->setValue(setup.margins.*kSides[i] / unit.points);
        margins_[i] = field;
        const int row = static_cast<int>(i % 2), column = static_cast<int>(i / 2) * 2;
        grid->addWidget(fieldLabel(names[i], *field), row, column);
        grid->addWidget(field, row, column + 1);
    }

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(page);
    layout->addWidget(box);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

PageSetup PageSetupDialog::setup() const {
    PageSetup setup;
    setup.paper = &papers()[static_cast<std::size_t>(paper_->currentIndex())];
    setup.orientation = static_cast<Orientation>(orientation_->currentIndex());
    for (std::size_t i = 0; i < margins_.size(); ++i)
        setup.margins.*kSides[i] = margins_[i]->value() * measure().points;
    return setup;
}

} // namespace quobrix
