#include "views/comparison_window.h"

#include "base/ui/qt_text.h"
#include "model/quobrix_document.h"
#include "plots/comparison.h"
#include "plots/plot_figures.h"
#include "plots/ui/plot_pane.h"
#include "settings/settings.h"
#include "ui/fields.h"
#include "ui/windows.h"
#include "views/log_plot_view.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <utility>

namespace quobrix {
namespace {

constexpr const char *kComparisonSection = "Comparison", *kAlong = "Along";
constexpr PlotAxis kAxes[] = {PlotAxis::Elapsed, PlotAxis::Distance}; // in the order of the choices
constexpr int kBarMargin = 8;
constexpr QSize kUsualSize(1100, 800);

} // namespace

ComparisonWindow::ComparisonWindow(const ViewContext& context, std::span<const RowIndex> rows, QWidget* parent)
    : QDialog(parent), context_(context), along_(new QComboBox), pane_(new PlotPane(plotPaneContext(context), true)) {
    setObjectName(QStringLiteral("Comparison"));
    setWindowFlags(Qt::Window);
    const TTripLogTable& trips = context_.document.trips();
    for (const RowIndex row : rows) {
        Compared& trip = trips_.emplace_back(Compared{logSpec(LogId::Trips).keyOf(trips, row)});
        while (logSpec(LogId::Trips).rowOf(trips, trip.key, trip.nth) != row)
            ++trip.nth;
    }
    along_->setObjectName(QStringLiteral("ComparedAlong"));
    along_->addItems({tr("Time from the start"), tr("Distance from the start")});
    along_->setCurrentIndex(context_.settings.getInteger(kComparisonSection, kAlong, 0) == 1 ? 1 : 0);
    connect(along_, &QComboBox::currentIndexChanged, this, [this](int along) {
        context_.settings.setInteger(kComparisonSection, kAlong, along);
        refresh();
    });
    auto* bar = new QHBoxLayout;
    bar->setContentsMargins(kBarMargin, kBarMargin, kBarMargin, kBarMargin / 2);
    bar->addWidget(fieldLabel(tr("&Along:"), *along_));
    bar->addWidget(along_);
    bar->addStretch();
    for (QPushButton* button : printButtons(*this, QStringLiteral("Compared"), context_.printing))
        bar->addWidget(button);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(bar);
    layout->addWidget(pane_, 1);
    context_.document.edits().addListener(*this);
    context_.units.addListener(*this);
    refresh();
    if (!quobrix::restoreGeometry(*this, context_.settings, kComparisonSection))
        resize(kUsualSize.boundedTo(screen()->availableSize() * 9 / 10));
    pane_->setFocus();
}

ComparisonWindow::~ComparisonWindow() {
    context_.units.removeListener(*this);
    context_.document.edits().removeListener(*this);
    rememberGeometry(*this, context_.settings, kComparisonSection);
}

std::optional<Report> ComparisonWindow::printable() { return pane_->printable(); }

/// The edit may have ended the page that this is a child of.
void ComparisonWindow::historyChanged() {
    QMetaObject::invokeMethod(
        this, [this] { refresh(); }, Qt::QueuedConnection);
}

void ComparisonWindow::refresh() {
    const TTripLogTable& trips = context_.document.trips();
    std::vector<PlotData> compared;
    for (const Compared& trip : trips_)
        if (const auto row = logSpec(LogId::Trips).rowOf(trips, trip.key, trip.nth))
            compared.push_back(tripPlot(trips, *row, context_.text()));
    if (compared.size() < kLeastCompared) {
        close();
        return;
    }
    PlotData plot = comparedPlot(compared, kAxes[along_->currentIndex()]);
    setWindowTitle(toQt(plotTitle(plot, context_.text())));
    pane_->followSettings();
    pane_->show(std::move(plot), std::exchange(shownAlong_, along_->currentIndex()) == along_->currentIndex());
}

} // namespace quobrix
