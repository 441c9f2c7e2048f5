#include "views/driving_panel.h"

#include "base/ui/qt_text.h"
#include "export/csv.h"
#include "model/parameters.h"
#include "model/quobrix_document.h"
#include "settings/settings.h"
#include "summary/driving_rows.h"
#include "summary/trip_summaries.h"
#include "summary/ui/trip_counter.h"
#include "texts/text.h"
#include "ui/card.h"
#include "ui/fields.h"
#include "units/date_time.h"
#include "units/time_zone.h"
#include "units/unit_system.h"
#include "views/figure_tile.h"
#include "views/months_chart.h"
#include "views/ranking_row.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <functional>
#include <iterator>
#include <utility>

namespace quobrix {
namespace {

constexpr std::string_view kSection = "Home Page";
constexpr std::string_view kUsualPeriod = "last-3-months", kNoPeriod = "-";
constexpr int kMostColumns = 4; // of figures
constexpr int kMostBox = 60;    // characters
constexpr std::size_t kRankingRows = 6;

/// The wheel scrolls the page, wherever the mouse is.
class ChoiceBox final : public QComboBox {
protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

QComboBox* box(const char* name) {
    auto* result = new ChoiceBox;
    result->setMaximumWidth(result->fontMetrics().averageCharWidth() * kMostBox);
    result->setObjectName(QLatin1String(name));
    result->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    result->setMinimumContentsLength(8);
    return result;
}

/// In lines that fit the screen.
void explain(QWidget& of, const QString& text) { of.setToolTip(QStringLiteral("<p>%1</p>").arg(text.toHtmlEscaped())); }

/// The item of LAYOUT that has the keyboard, or holds what has it; -1 if none does.
int placeOfFocus(const QLayout& layout) {
    const QWidget* focused = layout.parentWidget()->window()->focusWidget(); // whichever window is in front
    for (int i = 0; i < layout.count(); ++i)
        if (const QWidget* widget = layout.itemAt(i)->widget(); widget == focused || widget->isAncestorOf(focused))
            return i;
    return -1;
}
/// Gives the item in PLACE the keyboard, which the one that was there before had, or what it begins with.
void focusOn(const QLayout& layout, int place) {
    if (place < 0 || layout.count() == 0)
        return;
    QWidget* widget = layout.itemAt(std::min(place, layout.count() - 1))->widget();
    widget->show(); // what is hidden gets none
    QWidget* button = widget->findChild<QAbstractButton*>();
    (button ? button : widget)->setFocus();
}

/// What GROUPS, or the open document, call KEY.
QString nameOfKey(const std::string& key, std::vector<DrivingGroup> groups, const NamesTable& names) {
    rename(groups, names);
    const auto found = std::ranges::find(groups, key, &DrivingGroup::key);
    return toQt(nameOf(found != groups.end() ? *found : DrivingGroup{key, names.nameOf(key), {}}));
}

} // namespace

std::string DrivingDetail::subject() const {
    std::string lines;
    const auto add = [&](std::string_view what, std::string_view which) { // which may hold any bytes
        lines += std::string(what) + '\t' +
                 QByteArray::fromRawData(which.data(), qsizetype(which.size())).toPercentEncoding().toStdString() +
                 '\n';
    };
    if (only.vehicle)
        add("vehicle", *only.vehicle);
    if (only.driver)
        add("driver", *only.driver);
    if (only.month)
        add("month", std::to_string(only.month->year * 100 + only.month->month));
    if (figure)
        add("figure", figure->key);
    return lines;
}

DrivingDetail DrivingDetail::of(const std::string& subject) {
    DrivingDetail detail;
    for (const QByteArray& line : QByteArray::fromStdString(subject).split('\n')) {
        const QByteArray what = line.left(line.indexOf('\t'));
        const std::string which = QByteArray::fromPercentEncoding(line.mid(line.indexOf('\t') + 1)).toStdString();
        if (what == "vehicle")
            detail.only.vehicle = which;
        else if (what == "driver")
            detail.only.driver = which;
        else if (what == "month")
            detail.only.month = CalendarMonth{std::stoi(which) / 100, std::stoi(which) % 100};
        else if (what == "figure")
            detail.figure = drivingFigure(which);
    }
    return detail;
}

DrivingPanel::DrivingPanel(const ViewContext& context, Ways ways, QWidget* parent)
    : QWidget(parent), context_(context), ways_(std::move(ways)),
      heading_(new HeadingLabel(tr("Driving"), headingFont(font(), 1.15))), period_(box("homePeriod")),
      vehicle_(box("homeVehicle")), driver_(box("homeDriver")), state_(new QLabel), inFile_(new QLabel),
      figures_(new QWidget), figuresGrid_(new QGridLayout(figures_)),
      rankings_(new QWidget), vehicles_{new HeadingLabel(tr("Vehicles"), headingFont(font(), 1)), new QWidget,
                                        &DrivingChoice::vehicle},
      drivers_{new HeadingLabel(tr("Drivers"), headingFont(font(), 1)), new QWidget, &DrivingChoice::driver},
      parameters_(new QWidget), trips_(new QPushButton(tr("Show These Trips"))),
      again_(new QPushButton(tr("Count This Document Again"))), all_(new QPushButton(tr("Show All Trips"))) {
    auto* card = new Card;
    QVBoxLayout& content = card->content();
    content.addWidget(heading_);
    auto* choices = new QHBoxLayout;
    for (const auto& [label, field] : {std::pair(tr("&Period:"), period_), std::pair(tr("Vehic&le:"), vehicle_),
                                       std::pair(tr("D&river:"), driver_)}) {
        choices->addWidget(labels_.emplace_back(fieldLabel(label, *field)));
        choices->addWidget(field, 1);
    }
    choices->addStretch();
    content.addLayout(choices);
    state_->setObjectName(QStringLiteral("homeState"));
    inFile_->setObjectName(QStringLiteral("homeInFile"));
    for (QLabel* label : {state_, inFile_}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
    }
    content.addWidget(state_);
    all_->setObjectName(QStringLiteral("homeShowAll"));
    content.addWidget(all_, 0, Qt::AlignLeft);
    figuresGrid_->setContentsMargins(0, 0, 0, 0);
    for (const DrivingFigure& figure : drivingFigures()) {
        tiles_.push_back(
            new FigureTile(QStringLiteral("homeFigure_") + toQt(figure.key), FigureTile::Room::Card, figures_));
        connect(tiles_.back(), &QAbstractButton::clicked, this, [this, figure = &figure] {
            if (detail_.figure == figure)
                return trips_->click(); // not while it is disabled
            DrivingDetail next = further();
            next.figure = figure;
            ways_.showDetail(next);
        });
    }
    content.addWidget(figures_);
    auto* foot = new QHBoxLayout;
    trips_->setObjectName(QStringLiteral("homeShowTrips"));
    again_->setObjectName(QStringLiteral("homeCountAgain"));
    again_->setToolTip(
        tr("Counts all trips of this file, also those whose records were deleted from the summary log."));
    foot->addWidget(inFile_, 1);
    for (QPushButton* button : {trips_, again_}) {
        button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        foot->addWidget(button, 0, Qt::AlignRight);
    }
    content.addLayout(foot);
    makeCharts(content);
    auto* sides = new QGridLayout(rankings_);
    sides->setContentsMargins(0, 8, 0, 0);
    sides->setHorizontalSpacing(24);
    int column = 0;
    for (const auto& [ranking, name] :
         {std::pair(&vehicles_, "rankedVehicles"), std::pair(&drivers_, "rankedDrivers")}) {
        ranking->rows->setObjectName(QLatin1String(name));
        auto* rows = new QVBoxLayout(ranking->rows);
        rows->setContentsMargins(0, 0, 0, 0);
        rows->setSpacing(0);
        sides->addWidget(ranking->heading, 0, column);
        sides->addWidget(ranking->rows, 1, column, Qt::AlignTop);
        sides->setColumnStretch(column++, 1);
    }
    content.addWidget(rankings_);
    parameters_->setObjectName(QStringLiteral("homeParameters"));
    auto* parameters = new QVBoxLayout(parameters_);
    parameters->setContentsMargins(0, 8, 0, 0);
    content.addWidget(parameters_);
    content.addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(card);

    for (const Period& period : periods())
        period_->addItem(toQt(text(period.text)), toQt(period.name));
    period_->addItem(toQt(text(TextId::StatisticsAllTrips)), QString());
    for (const auto& [field, setting] :
         {std::pair(period_, "Period"), std::pair(vehicle_, "Vehicle"), std::pair(driver_, "Driver")})
        connect(field, &QComboBox::activated, this, [this, of = field, name = setting] {
            const QVariant chosen = of->currentData(); // none: all of them
            context_.settings.setText(kSection, name, chosen.toByteArray().toStdString());
            refresh();
        });
    connect(all_, &QPushButton::clicked, this, [this] {
        for (QComboBox* field : {period_, vehicle_, driver_}) {
            field->setCurrentIndex(field == period_ ? field->count() - 1 : 0);
            emit field->activated(field->currentIndex());
        }
        period_->setFocus(); // the button goes
    });
    connect(trips_, &QPushButton::clicked, this, [this] { ways_.showTrips(choice()); });
    connect(again_, &QPushButton::clicked, this, [this] { context_.counter->countAgain(); });
    connect(&context_.counter->keeper(), &SummaryKeeper::changed, this, &DrivingPanel::refresh);
    connect(context_.counter, &TripCounter::progressed, this, [this] { showState(); });
}

void DrivingPanel::makeCharts(QVBoxLayout& content) {
    std::vector<DrivingChart> kinds;
    std::ranges::copy(drivingCharts(), std::back_inserter(kinds));
    kinds.push_back({}); // the detail's
    for (const DrivingChart& kind : kinds) {
        const std::size_t place = charts_.size();
        auto* chart = new MonthsChart(
            QStringLiteral("homeChart%1").arg(place + 1),
            [this, place, kind](Size room, const TextMeasure& measure) {
                const bool ofDetail = place == drivingCharts().size();
                if (ofDetail && !detail_.figure)
                    return MonthsPicture();
                return drawMonths(ofDetail ? DrivingChart{DrivingChart::Kind::Figure, detail_.figure} : kind,
                                  statistics_.months, context_.units, room, measure);
            },
            [this](std::size_t month) {
                DrivingDetail next = further();
                next.only.month = CalendarMonth{statistics_.months[month].year, statistics_.months[month].month};
                ways_.showDetail(next);
            });
        charts_.push_back(chart);
        content.addSpacing(8);
        content.addWidget(chart);
    }
}

/// The detail that a further one is made of: what is chosen stays so.
DrivingDetail DrivingPanel::further() const {
    DrivingDetail next{choice(), detail_.figure};
    next.only.period = nullptr;
    return next;
}

void DrivingPanel::setDetail(DrivingDetail detail) {
    detail_ = std::move(detail);
    const bool any = detail_.any();
    heading_->setText(any ? detailTitle() : tr("Driving"));
    heading_->setAccessibleName(heading_->text());
    for (std::size_t i = 0; i < labels_.size(); ++i) {
        const bool chosen = i == 0 ? !detail_.only.month : !any;
        labels_[i]->setVisible(chosen);
        std::array{period_, vehicle_, driver_}[i]->setVisible(chosen);
    }
    refresh();
}

QString DrivingPanel::detailTitle() const {
    QStringList parts;
    if (detail_.only.vehicle)
        parts << nameOfKey(*detail_.only.vehicle, byVehicle(allRows()), context_.document.vehicles());
    if (detail_.only.driver)
        parts << nameOfKey(*detail_.only.driver, byDriver(allRows()), context_.document.drivers());
    if (detail_.only.month)
        parts << toQt(nameOf(DrivingMonth{detail_.only.month->year, detail_.only.month->month, false, {}}));
    if (detail_.figure)
        parts << toQt(figureTitle(*detail_.figure, context_.units));
    return parts.join(QStringLiteral(", "));
}

QWidget* DrivingPanel::firstField() const { return detail_.only.month ? static_cast<QWidget*>(trips_) : period_; }

SummaryRows DrivingPanel::allRows() const {
    SummaryRows all;
    if (const SummaryKeeper::Records& records = context_.counter->keeper().records())
        for (const SummaryRecord& record : *records)
            all.push_back(&record);
    return all;
}

/// Another program may have counted meanwhile.
void DrivingPanel::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    context_.counter->keeper().read();
}

void DrivingPanel::offer(QComboBox& box, const char* setting, const QString& any,
                         const std::vector<DrivingGroup>& groups) {
    const auto chosen = QByteArray::fromStdString(context_.settings.getText(kSection, setting));
    box.clear();
    box.addItem(any);
    for (const DrivingGroup& group : groups)
        if (!group.key.empty())
            box.addItem(toQt(nameOf(group)), QByteArray::fromStdString(group.key)); // of any bytes
    if (!chosen.isEmpty() && box.findData(chosen) < 0)
        box.addItem(QString::fromUtf8(chosen), chosen);
    box.setCurrentIndex(chosen.isEmpty() ? 0 : box.findData(chosen));
}

DrivingChoice DrivingPanel::choice() const {
    DrivingChoice choice = detail_.only;
    const auto period = std::ranges::find(periods(), period_->currentData().toString().toStdString(), &Period::name);
    choice.period = choice.month || period == periods().end() ? nullptr : &*period;
    if (detail_.any()) // what else had been chosen is in it
        return choice;
    for (const auto& [box, key] : {std::pair(vehicle_, &choice.vehicle), std::pair(driver_, &choice.driver)})
        if (const QVariant chosen = box->currentData(); chosen.isValid())
            *key = chosen.toByteArray().toStdString();
    return choice;
}

DrivingStatistics DrivingPanel::statistics() const {
    const SummaryKeeper::Records& records = context_.counter->keeper().records();
    if (!records)
        return {};
    const TFuelEntryTable* entries = context_.document.fuelEntries();
    DrivingStatistics result = drivingStatistics(*records, choice(), currentTime(), context_.zone,
                                                 entries ? entries->fills() : std::vector<FuelFill>());
    rename(result.vehicles, context_.document.vehicles());
    rename(result.drivers, context_.document.drivers());
    tellApart(result.vehicles);
    tellApart(result.drivers);
    return result;
}

/// What a person has chosen. Until then the usual one, or where that has no trips the shortest that has some: whoever
/// has counted trips for the first time sees them.
void DrivingPanel::choosePeriod() {
    const std::string chosen = context_.settings.getText(kSection, "Period", kNoPeriod);
    const SummaryKeeper::Records& records = context_.counter->keeper().records();
    const auto drove = [&](const Period& period) {
        const TimeRange time = rangeOf(period, currentTime(), context_.zone);
        return std::ranges::any_of(*records, [&](const SummaryRecord& trip) { return time.holds(trip.start); });
    };
    const auto usual = std::ranges::find(periods(), kUsualPeriod, &Period::name);
    auto period = usual;
    if (chosen != kNoPeriod)
        period = std::ranges::find(periods(), chosen, &Period::name);
    else if (records && !records->empty() && !drove(*usual))
        period = std::ranges::find_if(periods(), drove);
    period_->setCurrentIndex(static_cast<int>(period - periods().begin())); // all there is stands behind the last
}

void DrivingPanel::refresh() {
    choosePeriod();
    const SummaryRows all = allRows();
    std::vector<DrivingGroup> vehicles = byVehicle(all), drivers = byDriver(all);
    rename(vehicles, context_.document.vehicles());
    rename(drivers, context_.document.drivers());
    tellApart(vehicles);
    tellApart(drivers);
    offer(*vehicle_, "Vehicle", tr("All vehicles"), vehicles);
    offer(*driver_, "Driver", tr("All drivers"), drivers);
    statistics_ = statistics();
    showFigures();
    showRanking(vehicles_, statistics_.vehicles);
    showRanking(drivers_, statistics_.drivers);
    rankings_->setVisible(!vehicles_.rows->isHidden() || !drivers_.rows->isHidden());
    showParameters();
    showState();
    orderTabs();
}

/// As they are read, whenever they were made.
void DrivingPanel::orderTabs() {
    std::vector<QWidget*> order{period_, vehicle_, driver_, all_};
    order.insert(order.end(), tiles_.begin(), tiles_.end());
    order.insert(order.end(), {trips_, again_});
    std::vector<QWidget*> parts(charts_.begin(), charts_.end());
    parts.insert(parts.end(), {vehicles_.rows, drivers_.rows, parameters_});
    for (const QWidget* part : parts)
        std::ranges::copy(part->findChildren<QAbstractButton*>(), std::back_inserter(order));
    for (std::size_t i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
}

void DrivingPanel::showFigures() {
    const auto figures = drivingFigures();
    for (std::size_t i = 0; i < figures.size(); ++i) {
        const DrivingFigure& figure = figures[i];
        QString remark = toQt(figureRemark(figure, statistics_.totals, context_.units));
        if (figure.source == FigureSource::KnownFuel && !figure.value(statistics_.totals))
            remark = choice().driver ? tr("Needs air flow and petrol") : tr("Use Tools / Fuel Entry");
        else if (const auto change = remark.isEmpty() && statistics_.before
                                         ? figureChange(figure, *statistics_.before, statistics_.totals, context_.units)
                                         : std::nullopt)
            remark = wholePercent(*change) == 0
                         ? tr("as before")
                         : tr("%1 from before", "a change in percent").arg(toQt(changeText(change)));
        tiles_[i]->show(toQt(figureTitle(figure, context_.units)),
                        toQt(figureText(figure, statistics_.totals, context_.units)), remark);
        if (figure.source == FigureSource::KnownFuel)
            explain(*tiles_[i], tr("Estimated from the air flow that trips recorded, for the vehicles that burn "
                                   "petrol according to Setup / Vehicle ID. What is entered by Tools / Fuel Entry "
                                   "tells the efficiency of any vehicle, but not of one driver."));
        else if (figure.key == "fuelAgreement")
            explain(*tiles_[i], tr("The fuel that the air flow of the trips comes to, as a part of what was filled in "
                                   "for the same distance: at 100% both agree"));
        else if (figure.source == FigureSource::FuelEntries)
            explain(*tiles_[i], tr("From the entries of Tools / Fuel Entry in this file, from one full tank to the "
                                   "next, by the day of the later one"));
    }
    const bool any = counts();
    const bool told = !detail_.figure || std::ranges::any_of(statistics_.months, [&](const DrivingMonth& month) {
        return detail_.figure->value(month.totals).has_value();
    });
    for (std::size_t i = 0; i < charts_.size(); ++i) {
        charts_[i]->redraw();
        charts_[i]->setVisible(any && told && !detail_.only.month &&
                               (i == drivingCharts().size()) == (detail_.figure != nullptr));
    }
    figures_->setVisible(any);
    arrangeTiles();
}

/// As many beside each other as have room.
void DrivingPanel::arrangeTiles() {
    const int width = tiles_.front()->sizeHint().width() + figuresGrid_->horizontalSpacing();
    const int columns = std::clamp(figures_->width() / std::max(width, 1), 2, kMostColumns);
    const auto figures = drivingFigures();
    int place = 0;
    for (std::size_t i = 0; i < tiles_.size(); ++i) {
        const bool shown = detail_.figure ? detail_.figure == &figures[i] : !figures[i].leftOut(statistics_.totals);
        tiles_[i]->setVisible(shown);
        if (shown) {
            figuresGrid_->addWidget(tiles_[i], place / columns, place % columns);
            ++place;
        }
    }
    for (int column = 0; column < kMostColumns; ++column)
        figuresGrid_->setColumnStretch(column, column < columns ? 1 : 0);
}

/// The first of them, of a detail's figure all, in its order.
void DrivingPanel::showRanking(const Ranking& ranking, const std::vector<DrivingGroup>& groups) {
    auto& layout = static_cast<QVBoxLayout&>(*ranking.rows->layout());
    const int focused = placeOfFocus(layout);
    while (QLayoutItem* item = layout.takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater(); // it may be the one whose click brought us here
        item->widget()->setParent(nullptr);
        delete item;
    }
    const DrivingFigure& figure = detail_.figure ? *detail_.figure : *drivingFigure("distance");
    std::vector<std::pair<double, const DrivingGroup*>> order;
    for (const DrivingGroup& group : groups)
        if (const std::optional<double> value = figure.value(group.totals))
            order.emplace_back(*value, &group);
    std::ranges::stable_sort(order, std::greater(), &std::pair<double, const DrivingGroup*>::first);
    const bool shown = !order.empty() && !(choice().*ranking.key);
    ranking.heading->setVisible(shown);
    ranking.rows->setVisible(shown);
    if (!shown)
        return;
    const std::size_t most = detail_.figure ? order.size() : kRankingRows;
    for (std::size_t i = 0; i < std::min(most, order.size()); ++i) {
        const DrivingGroup& group = *order[i].second;
        const double longest = order.front().first;
        auto* row = new RankingRow(toQt(nameOf(group)), toQt(remarkedFigure(figure, group.totals, context_.units)),
                                   longest > 0 ? order[i].first / longest : 0);
        row->setObjectName(ranking.rows->objectName() + QString::number(i + 1));
        connect(row, &QAbstractButton::clicked, this, [this, key = ranking.key, of = group.key] {
            DrivingDetail next = further();
            next.only.*key = of;
            next.figure = nullptr;
            ways_.showDetail(next);
        });
        layout.addWidget(row);
    }
    if (most < order.size()) {
        auto* rest = new QPushButton(
            tr("Show All %1").arg(toQt(context_.units.formatInteger(static_cast<std::int64_t>(order.size())))));
        rest->setObjectName(ranking.rows->objectName() + QStringLiteral("All"));
        connect(rest, &QAbstractButton::clicked, this, [this, of = &figure] {
            DrivingDetail next = further();
            next.figure = of;
            ways_.showDetail(next);
        });
        layout.addWidget(rest, 0, Qt::AlignLeft);
    }
    focusOn(layout, focused);
}

/// A line of figures for each.
void DrivingPanel::showParameters() {
    auto& layout = static_cast<QVBoxLayout&>(*parameters_->layout());
    const int focused = placeOfFocus(layout);
    while (QLayoutItem* item = layout.takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    parameters_->setVisible(!detail_.figure && !statistics_.parameters.empty());
    layout.addWidget(new HeadingLabel(toQt(text(TextId::StatisticsParameters)), headingFont(font(), 1)));
    int line = 0;
    for (const MonitoredParameter& parameter : statistics_.parameters) {
        ++line;
        const bool alone =
            std::ranges::count(statistics_.parameters, parameter.parameter, &MonitoredParameter::parameter) == 1;
        const ShownText of = parameterChoiceName(parameter.parameter);
        const QString name = toQt(
            alone ? of
                  : text(TextId::WithAside, of, parameterText(parameterFigures().front(), parameter, context_.units)));
        layout.addWidget(new QLabel(name));
        auto* row = new QWidget;
        auto* tiles = new QHBoxLayout(row);
        tiles->setContentsMargins(0, 0, 0, 0);
        for (const ParameterFigure& figure : parameterFigures()) {
            auto* tile =
                new FigureTile(QStringLiteral("homeParameter%1_").arg(line) + toQt(figure.key), FigureTile::Room::Line);
            tile->show(toQt(text(figure.title)), toQt(parameterText(figure, parameter, context_.units)), {});
            tile->setAccessibleName(name + QStringLiteral(", ") + tile->accessibleName());
            connect(tile, &QAbstractButton::clicked, trips_, &QAbstractButton::click);
            tiles->addWidget(tile);
        }
        layout.addWidget(row);
    }
    focusOn(layout, focused);
}

/// What the figures cannot say: that there are none and what to do, and where their trips are.
void DrivingPanel::showState() {
    const SummaryKeeper& keeper = context_.counter->keeper();
    const std::optional<double> progress = context_.counter->progress();
    const bool counts = !context_.document.isExample() && context_.document.trips().rowCount() > 0;
    QString state;
    if (progress)
        state = tr("The trips of this file are being counted: %1").arg(toQt(shareText(*progress)));
    else if (!keeper.problem().empty())
        state = toQt(keeper.problem());
    else if (!keeper.records())
        state = QString();
    else if (keeper.records()->empty())
        state =
            counts
                ? tr("No trip is counted. Count This Document Again counts those of this file, also trips that were "
                     "deleted from the summary log.")
                : tr("No trip has been counted yet. Download your Quobrix, or open a file with trips: they count from "
                     "then on, whatever becomes of the file.");
    else if (statistics_.totals.trips == 0)
        state = toQt(text(TextId::StatisticsNone)) + QLatin1Char(' ') + tr("Choose another period.");
    else if (statistics_.unfinished)
        state = toQt(drivingTitle(statistics_, choice()));
    state_->setText(state);
    state_->setVisible(!state.isEmpty());
    all_->setVisible(!detail_.any() && keeper.records() && !keeper.records()->empty() && statistics_.totals.trips == 0);

    again_->setEnabled(counts);
    std::size_t inFile = 0;
    if (statistics_.totals.trips > 0) {
        const DrivingChoice wanted = choice();
        const LogSpec& log = logSpec(LogId::Trips);
        inFile =
            countedAmong(rowsOf(*keeper.records(), wanted, statistics_.time), context_.document.trips(),
                         findRecords(log, context_.document.trips(), {},
                                     {.time = statistics_.time, .vehicle = wanted.vehicle, .driver = wanted.driver},
                                     context_.text()));
        const auto number = [&](std::size_t count) {
            return toQt(context_.units.formatInteger(static_cast<std::int64_t>(count)));
        };
        inFile_->setText(tr("%1 of %2 trips are in this file.").arg(number(inFile), number(statistics_.totals.trips)));
    }
    inFile_->setVisible(statistics_.totals.trips > 0);
    trips_->setVisible(statistics_.totals.trips > 0);
    trips_->setEnabled(inFile > 0);
}

std::optional<Report> DrivingPanel::report() const {
    if (!counts())
        return {};
    DrivingChoice chosen = choice();
    if (detail_.any()) // whose title names them
        chosen.vehicle.reset(), chosen.driver.reset();
    ShownText title = drivingTitle(statistics_, chosen, context_.text());
    if (detail_.any())
        title = text(TextId::WithAside, detailTitle().toStdString(), title);
    Report report = drivingReport(statistics_, std::move(title), context_.units);
    for (std::size_t i = 0; i < charts_.size(); ++i)
        if (!charts_[i]->isHidden())
            report.blocks.emplace_back(
                Picture{[months = statistics_.months,
                         chart = i < drivingCharts().size() ? drivingCharts()[i]
                                                            : DrivingChart{DrivingChart::Kind::Figure, detail_.figure},
                         &units = context_.units](Size room, const TextMeasure& measure) {
                    return drawMonths(chart, months, units, room, measure).drawing;
                }});
    return report;
}

std::optional<ExportContent> DrivingPanel::exported() const {
    if (!counts())
        return {};
    TUnitSystem plain(csvLocale());
    plain.replace(context_.units.choices());
    return drivingContent(statistics_, drivingTitle(statistics_, choice()), plain);
}

void DrivingPanel::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    arrangeTiles();
}

} // namespace quobrix
