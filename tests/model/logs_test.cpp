#include "model/logs.h"

#include "model/quobrix_document.h"
#include "report/render.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace quobrix {
namespace {

TEST(Logs, AreDescribedByColumnsOfTheirTables) {
    for (const LogSpec& log : logs()) {
        const auto object = log.table.create();
        const auto& table = static_cast<const Table&>(*object);
        EXPECT_EQ(table.spec().title, log.title);
        std::vector<const PersistentType*> columns{log.vehicle, log.comments};
        if (log.driver)
            columns.push_back(log.driver);
        for (const auto& list : {log.keys, log.summary, log.list(), log.facts})
            columns.insert(columns.end(), list.begin(), list.end());
        for (const PersistentType* column : columns)
            EXPECT_TRUE(std::ranges::find(table.spec().columns, column) != table.spec().columns.end() ||
                        std::ranges::find(table.spec().computed, column) != table.spec().computed.end())
                << column->name;
        EXPECT_EQ(log.summary.front(), log.recordColumn());
        std::vector<std::ptrdiff_t> places; // of those that are the document's; computed ones stand where they explain
        for (const PersistentType* column : log.summary)
            if (const auto found = std::ranges::find(table.spec().columns, column); found != table.spec().columns.end())
                places.push_back(found - table.spec().columns.begin());
        EXPECT_TRUE(std::ranges::is_sorted(places)) << log.key << " in another order than its table";
        EXPECT_EQ(log.views().front().kind, LogViewKind::Summary);
        EXPECT_EQ(logOfClass(log.table.name), log.title);
    }
}

/// Of each log a report of what its record holds; a trip's has a test of its own.
TEST(Logs, ReportsTellFactsWhatWasMeasuredAndComments) {
    TQuobrixDocument document;
    document.store().singleton<TAccidentLogTable>();
    for (const LogSpec& log : logs())
        document.log(log)->insertRows(0, 1);
    document.troubles().column<TTroubleLogTroubleCodeColumn>().set(0, "P0300");
    document.troubles().column<TTroubleLogVehicleSpeedColumn>().set(0, 25);
    document.troubles().column<TTroubleLogCommentsColumn>().set(0, "Changed the coil.");
    document.activity().column<TSecurityLogEventTypeColumn>().set(0, 2);
    document.accidents()->column<TAccidentLogTableMaximumSpeedColumn>().set(0, 30);
    const TUnitSystem units;
    const TimeZone zone;
    const std::map<LogId, std::vector<std::string>> expected{
        {LogId::Trips, {"Trip 1\n", "\nGeneral\n", "\nBrakes\n"}},
        {LogId::Troubles,
         {"Problem 1\n", "P0300", "Random/Multiple Cylinder Misfire Detected", "\nFreeze Frame\n", "25.0 m/s",
          "\nComments\n", "Changed the coil."}},
        {LogId::Activity, {"Event 1\n", "Disconnected during trip."}},
        {LogId::Accidents, {"Stop 1\n", "30.0 m/s"}}};
    for (const LogSpec& log : logs()) {
        const std::string text = renderText(recordReport(log, *document.log(log), 0, {units, zone}));
        EXPECT_NE(text.find("\n  Vehicle  "), std::string::npos) << text;
        for (const std::string& part : expected.at(log.id))
            EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
        EXPECT_EQ(text.find("Fuel System"), std::string::npos) << "what the vehicle did not tell is left out";
    }
}

} // namespace
} // namespace quobrix
