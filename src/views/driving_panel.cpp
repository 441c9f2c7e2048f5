#include "views/driving_panel.h"

#include "base/ui/qt_text.h"
#include "drawing/ui/drawing_view.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"
#include "summary/ui/trip_counter.h"
#include "texts/text.h"
#include "ui/card.h"
#include "ui/fields.h"
#include "units/date_time.h"
#include "units/time_zone.h"
#include "units/unit_system.h"
#include "views/figure_tile.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace quobrix {
namespace {

constexpr std::string_view kSection = "Home Page";
constexpr int kColumns = 4;

QComboBox* box(const char* name) {
    auto* result = new QComboBox;
    result->setObjectName(QLatin1String(name));
    result->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    result->setMinimumContentsLength(12);
    return result;
}

/// By the names that the open document has for them.
void rename(std::vector<DrivingGroup>& groups, const NamesTable& names) {
    for (DrivingGroup& group : groups)
        if (std::string known = names.nameOf(group.key); !known.empty())
            group.name = std::move(known);
}

} // namespace

DrivingPanel::DrivingPanel(const ViewContext& context, std::function<void(const DrivingChoice&)> showTrips,
                           QWidget* parent)
    : QWidget(parent), context_(context), showTrips_(std::move(showTrips)), period_(box("homePeriod")),
      vehicle_(box("homeVehicle")), driver_(box("homeDriver")), state_(new QLabel), inFile_(new QLabel),
      figures_(new QWidget), trips_(new QPushButton(tr("Show These Trips"))),
      again_(new QPushButton(tr("Count This Document Again"))) {
    auto* card = new Card;
    card->content().addWidget(new HeadingLabel(tr("Driving"), headingFont(font(), 1.15)));
    auto* choices = new QHBoxLayout;
    for (const auto& [label, field] :
         {std::pair(tr("Period:"), period_), std::pair(tr("Vehicle:"), vehicle_), std::pair(tr("Driver:"), driver_)}) {
        choices->addWidget(fieldLabel(label, *field));
        choices->addWidget(field, 1);
    }
    card->content().addLayout(choices);
    state_->setObjectName(QStringLiteral("homeState"));
    inFile_->setObjectName(QStringLiteral("homeInFile"));
    for (QLabel* label : {state_, inFile_}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
    }
    card->content().addWidget(state_);
    auto* grid = new QGridLayout(figures_);
    grid->setContentsMargins(0, 0, 0, 0);
    for (const DrivingFigure& figure : drivingFigures()) {
        auto* tile = new FigureTile(QStringLiteral("homeFigure_") + toQt(figure.key));
        const auto place = static_cast<int>(tiles_.size());
        grid->addWidget(tile, place / kColumns, place % kColumns);
        tiles_.push_back(tile);
        connect(tile, &QAbstractButton::clicked, trips_, &QAbstractButton::click); // not while it is disabled
    }
    card->content().addWidget(figures_);
    for (const DrivingChart chart : kDrivingCharts) {
        charts_.push_back(new DrawingView(
            [this, chart](Size room, const TextMeasure& measure) { return draw(chart, room, measure); }));
        charts_.back()->setObjectName(QStringLiteral("homeChart%1").arg(charts_.size()));
        card->content().addSpacing(8);
        card->content().addWidget(charts_.back());
    }
    auto* foot = new QHBoxLayout;
    trips_->setObjectName(QStringLiteral("homeShowTrips"));
    again_->setObjectName(QStringLiteral("homeCountAgain"));
    again_->setToolTip(
        tr("Counts all trips of this file, also those whose records were deleted from the summary log."));
    foot->addWidget(inFile_, 1);
    foot->addWidget(trips_);
    foot->addWidget(again_);
    card->content().addLayout(foot);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(card);

    for (const Period& period : periods())
        period_->addItem(toQt(text(period.text)), toQt(period.name));
    period_->addItem(toQt(text(TextId::StatisticsAllTrips)), QString());
    const int period = period_->findData(toQt(context_.settings.getText(kSection, "Period", "last-3-months")));
    period_->setCurrentIndex(std::max(period, 0));
    for (const auto& [field, setting] :
         {std::pair(period_, "Period"), std::pair(vehicle_, "Vehicle"), std::pair(driver_, "Driver")})
        connect(field, &QComboBox::activated, this, [this, of = field, name = setting] {
            const QVariant chosen = of->currentData(); // none: all of them
            context_.settings.setText(kSection, name, chosen.toString().toStdString());
            refresh();
        });
    connect(trips_, &QPushButton::clicked, this, [this] { showTrips_(choice()); });
    connect(again_, &QPushButton::clicked, this, [this] { context_.counter->countAgain(); });
    connect(&context_.counter->keeper(), &SummaryKeeper::changed, this, &DrivingPanel::refresh);
    connect(context_.counter, &TripCounter::progressed, this, [this] { showState(); });
}

/// Another program may have counted meanwhile.
void DrivingPanel::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    context_.counter->keeper().read();
}

void DrivingPanel::offer(QComboBox& box, const char* setting, const QString& any,
                         const std::vector<DrivingGroup>& groups) {
    const QString chosen = toQt(context_.settings.getText(kSection, setting));
    box.clear();
    box.addItem(any);
    for (const DrivingGroup& group : groups)
        if (!group.key.empty())
            box.addItem(toQt(nameOf(group)), toQt(group.key));
    if (!chosen.isEmpty() && box.findData(chosen) < 0)
        box.addItem(chosen, chosen);
    box.setCurrentIndex(chosen.isEmpty() ? 0 : box.findData(chosen));
}

DrivingChoice DrivingPanel::choice() const {
    DrivingChoice choice;
    const auto period = std::ranges::find(periods(), period_->currentData().toString().toStdString(), &Period::name);
    choice.period = period != periods().end() ? &*period : nullptr;
    for (const auto& [box, key] : {std::pair(vehicle_, &choice.vehicle), std::pair(driver_, &choice.driver)})
        if (const QVariant chosen = box->currentData(); chosen.isValid())
            *key = chosen.toString().toStdString();
    return choice;
}

DrivingStatistics DrivingPanel::statistics() const {
    const SummaryKeeper::Records& records = context_.counter->keeper().records();
    if (!records)
        return {};
    DrivingStatistics result = drivingStatistics(*records, choice(), currentTime(), context_.zone);
    rename(result.vehicles, context_.document.vehicles());
    rename(result.drivers, context_.document.drivers());
    return result;
}

void DrivingPanel::refresh() {
    SummaryRows all;
    if (const SummaryKeeper::Records& records = context_.counter->keeper().records())
        for (const SummaryRecord& record : *records)
            all.push_back(&record);
    std::vector<DrivingGroup> vehicles = byVehicle(all), drivers = byDriver(all);
    rename(vehicles, context_.document.vehicles());
    rename(drivers, context_.document.drivers());
    offer(*vehicle_, "Vehicle", tr("All vehicles"), vehicles);
    offer(*driver_, "Driver", tr("All drivers"), drivers);
    statistics_ = statistics();
    showFigures();
    showState();
}

void DrivingPanel::showFigures() {
    const auto figures = drivingFigures();
    const bool anyMonth =
        std::ranges::any_of(statistics_.months, [](const DrivingMonth& month) { return month.totals.trips > 0; });
    for (std::size_t i = 0; i < figures.size(); ++i) {
        const DrivingFigure& figure = figures[i];
        QString remark;
        if (figure.ofFewTrips(statistics_.totals))
            remark = tr("fewer than three trips");
        else if (const auto change =
                     statistics_.before ? figureChange(figure, *statistics_.before, statistics_.totals) : std::nullopt)
            remark = tr("%1 from before", "a change in percent").arg(toQt(changeText(change)));
        tiles_[i]->show(toQt(figureTitle(figure, context_.units)),
                        toQt(figureText(figure, statistics_.totals, context_.units)), remark);
    }
    for (DrawingView* chart : charts_) {
        chart->redraw();
        chart->setVisible(anyMonth);
    }
    figures_->setVisible(statistics_.totals.trips > 0);
}

/// What the figures cannot say: that there are none and what to do, and where their trips are.
void DrivingPanel::showState() {
    const SummaryKeeper& keeper = context_.counter->keeper();
    const std::optional<double> progress = context_.counter->progress();
    QString state;
    if (progress)
        state = tr("The trips of this file are being counted: %1").arg(toQt(shareText(*progress)));
    else if (!keeper.problem().empty())
        state = toQt(keeper.problem());
    else if (!keeper.records())
        state = QString();
    else if (keeper.records()->empty())
        state =
            tr("No trip has been counted yet. Download your Quobrix, or open a file with trips: they count from then "
               "on, whatever becomes of the file.");
    else if (statistics_.totals.trips == 0)
        state = toQt(text(TextId::StatisticsNone)) + QLatin1Char(' ') + tr("Choose another period.");
    else if (statistics_.unfinished)
        state = toQt(drivingTitle(statistics_, choice()));
    state_->setText(state);
    state_->setVisible(!state.isEmpty());

    const bool counts = !context_.document.isExample() && context_.document.trips().rowCount() > 0;
    again_->setEnabled(counts);
    std::size_t inFile = 0;
    if (statistics_.totals.trips > 0) {
        const DrivingChoice wanted = choice();
        const LogSpec& log = logSpec(LogId::Trips);
        inFile =
            findRecords(log, context_.document.trips(), {},
                        {.time = statistics_.time, .vehicle = wanted.vehicle, .driver = wanted.driver}, context_.text())
                .size();
        const auto number = [&](std::size_t count) {
            return toQt(context_.units.formatInteger(static_cast<std::int64_t>(count)));
        };
        inFile_->setText(
            tr("%1 of %2 trips are in this file.")
                .arg(number(std::min(inFile, statistics_.totals.trips)), number(statistics_.totals.trips)));
    }
    inFile_->setVisible(statistics_.totals.trips > 0);
    trips_->setVisible(statistics_.totals.trips > 0);
    trips_->setEnabled(inFile > 0);
}

std::optional<Report> DrivingPanel::report() const {
    if (statistics_.totals.trips == 0)
        return {};
    Report report = drivingReport(statistics_, drivingTitle(statistics_, choice()), context_.units);
    for (const DrivingChart chart : kDrivingCharts)
        report.blocks.emplace_back(Picture{
            [months = statistics_.months, chart, &units = context_.units](Size room, const TextMeasure& measure) {
                return drawMonths(chart, months, units, room, measure);
            }});
    return report;
}

Drawing DrivingPanel::draw(DrivingChart chart, Size room, const TextMeasure& measure) const {
    return drawMonths(chart, statistics_.months, context_.units, room, measure);
}

} // namespace quobrix
