#include "plots/comparison.h"
#include "plots/plot_figures.h"
#include "plots/plot_options.h"
#include "settings/settings.h"
#include "support/sample_trip.h"
#include "tables/option_table.h"
#include "tables/table_edits.h"
#include "texts/text.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

namespace quobrix {
namespace {

using Texts = std::vector<std::string>;

class PlotDataTest : public testing::Test {
protected:
    PlotDataTest() {
        UnitChoices choices;
        choices.choose(UnitTypeId::Speed, UnitId::KilometrePerHour);
        choices.choose(UnitTypeId::EngineSpeed, UnitId::RevolutionPerMinute);
        choices.decimals[static_cast<std::size_t>(UnitTypeId::Speed)] = 0;
        choices.decimals[static_cast<std::size_t>(UnitTypeId::EngineSpeed)] = 0;
        units_.replace(choices);
        test::addTrip(document_, test::kStart);
    }
    PlotData trip(RowIndex row = 0) { return tripPlot(document_.trips(), row, context_); }

    static Texts textsOf(const std::vector<ShownText>& shown) { return {shown.begin(), shown.end()}; }

    TQuobrixDocument document_;
    TUnitSystem units_;
    TimeZone zone_;
    TextContext context_{units_, zone_};
};

TEST_F(PlotDataTest, HoldsATripWithItsSeriesAtTheirOwnTimes) {
    const PlotData data = trip();
    Texts keys, titles;
    for (const PlotPanel& panel : data.panels) {
        keys.push_back(panel.key);
        titles.push_back(panel.title);
    }
    EXPECT_EQ(keys, (Texts{"Speed", "Parameter2", "FuelSystem1", "FuelSystem2"}));
    EXPECT_EQ(titles, (Texts{"Speed", "Engine Speed", "Fuel System Status 1", "Fuel System Status 2"}));
    const PlotSamples& engine = data.panels[1].curves[0].samples;
    EXPECT_EQ(engine.at(3), 6);
    EXPECT_FALSE(engine.has(1));
    EXPECT_EQ(data.panels[2].states, (Texts{"O", "C"}));
    EXPECT_EQ(valueText(data.panels[2], data.panels[2].curves[0].samples.value(0), context_), "C");
    EXPECT_EQ(valueText(data.panels[3], data.panels[3].curves[0].samples.value(0), context_), "O");
    EXPECT_FALSE(data.panels[3].curves[0].samples.has(2));
    EXPECT_EQ(data.events, (std::vector<PlotEvent>{{PlotEventKind::HardAcceleration, 5},
                                                   {PlotEventKind::HardBrake, 30},
                                                   {PlotEventKind::ExtremeBrake, 61},
                                                   {PlotEventKind::HardBrake, 500}}));
    EXPECT_EQ(data.whole, (PlotRange{0, 500})) << "up to the last event";
    EXPECT_EQ(data.finest, 1);
    ASSERT_EQ(data.bands.size(), 5u);
    EXPECT_EQ(data.bands[0].label, "Idle");
    EXPECT_EQ(data.bands[4].label, "Over 113 kph");
    EXPECT_EQ(data.bands[4].to, std::nullopt);
    EXPECT_EQ(plotTitle(data, context_), "Trip 1, 11/14/2023 10:13 PM");
}

TEST_F(PlotDataTest, FilesMaySayAnythingOfTimes) {
    TTripLogTable& trips = document_.trips();
    auto& samples = *trips.column<TTripLogSampleTableColumn>().object(0);
    samples.speed().setInterval(0);
    trips.column<TTripLogHardBrakeTimesColumnColumn>().object(0)->setAll({-5, 100, 2'000'000'000});
    EXPECT_EQ(trip().whole, (PlotRange{0, 100}));
    EXPECT_EQ(trip().events.size(), 3u);
    trips.insertRows(1, 1);
    const PlotData nothing = trip(1);
    EXPECT_TRUE(nothing.panels.empty());
    EXPECT_EQ(nothing.emptyText, "No samples were recorded during this trip.");
    EXPECT_EQ(readPlot(nothing, 0, context_).values.size(), 0u);
    EXPECT_EQ(figuresOf(nothing, {0, 1}, context_).distanceText, "");
}

TEST_F(PlotDataTest, AStopCountsDownToItsStandstill) {
    auto& stops = document_.store().singleton<TAccidentLogTable>();
    stops.insertRows(0, 1);
    stops.column<TAccidentLogTableStartTimeColumn>().set(0, test::kStart);
    auto& samples = stops.column<TAccidentLogSpeedSamplesColumn>().makeObject(0);
    samples.setInterval(2);
    samples.setAll({40, 30, 10, 0});
    auto& bands = stops.column<TAccidentLogSpeedBandsTableColumn>().makeObject(0);
    bands.insertRows(0, 2);
    bands.column<TAccidentLogSpeedBandFromColumn>().setAll({0, 20 / 3.6});
    bands.column<TAccidentLogSpeedBandToColumn>().setAll({20 / 3.6, kNoValue});
    const PlotData data = stopPlot(stops, 0, context_);
    EXPECT_EQ(data.whole, (PlotRange{-6, 0}));
    EXPECT_EQ(data.bands.size(), 2u);
    const PlotReading reading = readPlot(data, -3.5, context_);
    EXPECT_EQ(reading.place, "00:00:04");
    EXPECT_EQ(reading.clock, "10:13:22 PM");
    EXPECT_EQ(reading.values[0].text, "30 kph");
    EXPECT_EQ(reading.bandLabel, "Over 20 kph");
}

TEST_F(PlotDataTest, IsReadAtAPlaceAsLastSampled) {
    const PlotData data = trip();
    PlotReading reading = readPlot(data, 4.2, context_);
    EXPECT_EQ(reading.place, "00:00:04");
    EXPECT_EQ(reading.clock, "10:13:24 PM");
    Texts values;
    for (const PlotReading::Value& value : reading.values)
        values.push_back(value.text);
    EXPECT_EQ(values, (Texts{"4 kph", "2,000 RPM", "C", "O"}));
    EXPECT_EQ(reading.bandLabel, "Speed Band 1");
    EXPECT_EQ(
        spokenReading(data, reading),
        "00:00:04, Speed 4 kph, Engine Speed 2,000 RPM, Fuel System Status 1 C, Fuel System Status 2 O, Speed Band 1");
    const PanelChoice hidden[] = {{data.panels[0].key, true}, {data.panels[2].key, true}};
    const PlotReading shown = readPlot(data, 4.2, context_, hidden);
    EXPECT_EQ(spokenReading(data, shown), "00:00:04, Engine Speed 2,000 RPM, Fuel System Status 2 O, Speed Band 1");
    EXPECT_EQ(figuresOf(data, data.whole, context_, hidden).curves.size(), 1u);
    EXPECT_EQ(readPlot(data, 2.5, context_).values[1].text, "") << "that sample has no value";
    for (const PlotReading::Value& value : readPlot(data, 61, context_).values)
        EXPECT_EQ(value.text, "") << "behind the last sample of the trip";
    reading = readPlot(data, 30, context_);
    ASSERT_TRUE(reading.event);
    EXPECT_EQ(data.events[*reading.event].kind, PlotEventKind::HardBrake);
    EXPECT_EQ(nearestSample(data, 17.4), 17);
    EXPECT_EQ(nearestSample(data, 400), 60);
    EXPECT_EQ(sampleBeside(data, 17.4, 1), 18);
    EXPECT_EQ(sampleBeside(data, 0, -1), 0);
}

TEST_F(PlotDataTest, ARangeIsMeasuredOnRawSamples) {
    const RangeFigures figures = figuresOf(trip(), {20.4, 9.6}, context_);
    EXPECT_EQ(figures.range, (PlotRange{10, 20}));
    EXPECT_EQ(figures.length, "00:00:10");
    EXPECT_NEAR(figures.distance, 150 / 3.6, 1e-9); // from 10 to 20 km/h within 10 s
    ASSERT_EQ(figures.curves.size(), 2u) << "none of states";
    EXPECT_EQ(figures.curves[0].leastText, "10 kph");
    EXPECT_EQ(figures.curves[0].meanText, "15 kph");
    EXPECT_EQ(figures.curves[0].greatestText, "20 kph");
    EXPECT_EQ(figures.curves[0].count, 11u);
    EXPECT_EQ(figures.curves[1].count, 0u);
    EXPECT_EQ(figures.curves[1].meanText, "");
    units_.setUnit(UnitTypeId::Distance, UnitId::Mile);
    EXPECT_EQ(figures.distanceText, "41.67 m");
    EXPECT_EQ(figuresOf(trip(), {57, 60}, context_).distanceText, "0.030 Miles");
    EXPECT_EQ(figuresOf(trip(), {0, 60}, context_).distanceText, "0.31 Miles");
    EXPECT_EQ(figuresOf(trip(), {0, 6}, context_).curves[1].meanText, "1,933 RPM") << "of three that have a value";
}

TEST_F(PlotDataTest, IsToldInSentences) {
    const PlotData data = trip();
    Texts all;
    for (const PlotPanel& panel : data.panels)
        for (const ShownText& sentence : sentencesOf(data, panel, {0, 60}, context_))
            all.push_back(sentence);
    EXPECT_EQ(all, (Texts{"Speed: least 0 kph, mean 30 kph, greatest 60 kph; rising on the whole.",
                          "Engine Speed: least 800 RPM, mean 1,933 RPM, greatest 3,000 RPM; rising on the whole.",
                          "Fuel System Status 1: mostly O.", "Fuel System Status 2: mostly O."}));
    EXPECT_EQ(sentencesOf(data, data.panels[1], {100, 200}, context_).front(), "Engine Speed: nothing was recorded.");
    EXPECT_EQ(sentencesOf(data, data.panels[2], {0, 1}, context_).front(), "Fuel System Status 1: C.");
}

TEST_F(PlotDataTest, TripsAreComparedByTimeOrDistance) {
    test::addTrip(document_, test::kStart + 3600);
    auto& samples = *document_.trips().column<TTripLogSampleTableColumn>().object(1);
    samples.speed().setAll({36, 36, 36, 36}); // 10 m a second
    samples.series(1).setSeries({kFuelSystemStatusParameter, 5, true, {8 + 2 * 256}});
    const PlotData trips[] = {trip(0), trip(1)};
    const PlotData byTime = comparedPlot(trips, PlotAxis::Elapsed);
    EXPECT_TRUE(byTime.compares());
    EXPECT_EQ(plotTitle(byTime, context_), "Comparison of Trip 1, Trip 2");
    EXPECT_EQ(byTime.whole, (PlotRange{0, 500}));
    EXPECT_EQ(byTime.events.size(), 4u) << "of the first";
    ASSERT_EQ(byTime.panels.size(), 4u);
    EXPECT_EQ(byTime.panels[0].curves.size(), 2u);
    EXPECT_EQ(byTime.panels[2].states, (Texts{"O", "C", "O (SF)"}));
    EXPECT_EQ(valueText(byTime.panels[2], byTime.panels[2].curves[1].samples.value(0), context_), "O (SF)");
    EXPECT_EQ(readPlot(byTime, 3, context_).values[1].title, "Speed of Trip 2");
    EXPECT_EQ(readPlot(byTime, 3, context_).values[1].text, "36 kph");
    EXPECT_EQ(readPlot(byTime, 20, context_).values[1].text, "") << "it has ended";
    EXPECT_EQ(readPlot(byTime, 20, context_).values[0].text, "20 kph");
    const PlotData shorterFirst[] = {trip(1), trip(0)};
    const PlotData longerLast = comparedPlot(shorterFirst, PlotAxis::Elapsed);
    EXPECT_EQ(sampleBeside(longerLast, 3, 1), 4) << "the first has ended";
    EXPECT_EQ(figuresOf(longerLast, longerLast.whole, context_).range, (PlotRange{0, 60}));

    const PlotData byDistance = comparedPlot(trips, PlotAxis::Distance);
    const PlotSamples& second = byDistance.panels[0].curves[1].samples;
    EXPECT_EQ(second.at(2), 20);
    EXPECT_EQ(byDistance.panels[1].curves[1].samples.at(1), 20) << "sampled after 2 s";
    EXPECT_NEAR(byDistance.whole.to, 1800 / 3.6, 1e-9);    // from 0 to 60 km/h within a minute
    EXPECT_NEAR(byDistance.events[1].at, 450 / 3.6, 1e-9); // after 30 s
    EXPECT_EQ(readPlot(byDistance, 15, context_).values[1].text, "36 kph");
    EXPECT_EQ(readPlot(byDistance, 31, context_).values[1].text, "");
    EXPECT_NEAR(figuresOf(byDistance, {0, 20}, context_).distance, 20, 3);

    samples.speed().setAll({0, 0, 0, 0}); // one that never moved takes nothing of the others
    const PlotData standing[] = {trip(0), trip(1)};
    EXPECT_EQ(comparedPlot(standing, PlotAxis::Distance).finest, byDistance.whole.to / 61);
    EXPECT_EQ(comparedPlot(standing, PlotAxis::Distance).panels[0].curves.size(), 1u);
}

TEST_F(PlotDataTest, OptionsAreThoseOfATableAndKeptInTheSettings) {
    Settings settings(std::make_unique<MemorySettings>());
    EXPECT_EQ(plotOptions(settings), (PlotOptions{false, false, false, 25, true, true, true})) << "90 km/h";
    {
        OptionTable table(settings, plotOptionColumns(), SourceText("Plot Options"));
        TableEdits edits(table);
        const auto type = [&](std::size_t column, const char* text) {
            return edits.type(kNoObject, column, 0, text, context_);
        };
        EXPECT_TRUE(type(0, "yes").ok());
        EXPECT_TRUE(type(4, "no").ok());
        const struct {
            const char* kmh;
            bool allowed, recommended;
        } maxima[] = {
            {"256", false, false}, {"255", true, false}, {"101", true, false}, {"100", true, true}, {"72", true, true}};
        for (const auto& maximum : maxima) {
            const auto outcome = type(3, maximum.kmh);
            EXPECT_EQ(outcome.ok(), maximum.allowed) << maximum.kmh;
            EXPECT_EQ(outcome.warnings.empty(), maximum.recommended || !maximum.allowed) << maximum.kmh;
        }
        EXPECT_TRUE(plotOptions(settings).lines) << "while the dialog is open, too";
        table.accept();
        edits.clear();
    }
    EXPECT_EQ(plotOptions(settings), (PlotOptions{true, false, false, 20, false, true, true}));
    settings.setReal("TIOVerticalAxisMaximumColumn", "Value", 1e9);
    EXPECT_EQ(plotOptions(settings).maximum, 0) << "no speed that a logger samples";
}

} // namespace
} // namespace quobrix
