#include "model/logs.h"
#include "model/quobrix_document.h"
#include "report/report.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <map>

namespace quobrix {
namespace {

TEST(TroubleCodes, AreDescribedByTheTableOrByTheirCategory) {
    const std::pair<const char*, const char*> codes[] = {
        {"", ""},
        {"P030", "Invalid DTC"},
        {"P03000", "Invalid DTC"},
        {"P0001", "Fuel Volume Regulator Control Circuit/Open"},
        {"P0008", "Engine Position System Performance  (Bank 1)"},
        {"P0300", "Random/Multiple Cylinder Misfire Detected"},
        {"P2000", "NOx Trap Efficiency Below Threshold (Bank 1)"},
        {"P3400", "Cylinder Deactivation System (Bank 1)"},
        {"U0100", "Lost Communication With ECM/PCM \"A\""},
        {"U0431", "Invalid Data Received From Body Control Module \"A\""},
        {"p0300", "Unknown DTC"},
        {"X1234", "Unknown DTC"},
        {"P4000", "Unknown DTC"},
        {"C4123", "Unknown DTC"},
        {"P0000", "Unknown Powertrain DTC (SAE Controlled; Fuel and Air Metering and Auxiliary Emission Controls)"},
        {"P1234", "Unknown Powertrain DTC (Manufacturer Controlled; Fuel and Air Metering)"},
        {"P1999", "Unknown Powertrain DTC (Manufacturer Controlled; Transmission)"},
        {"P23FF", "Unknown Powertrain DTC (SAE Controlled; Ignition System or Misfire)"},
        {"P2999", "Unknown Powertrain DTC (SAE Controlled; Reserved)"},
        {"P3399", "Unknown Powertrain DTC (Manufacturer Controlled; Ignition System or Misfire)"},
        {"P3500", "Unknown Powertrain DTC (SAE Controlled; Reserved)"},
        {"C0123", "Unknown Chassis DTC (SAE Controlled)"},
        {"C2ABC", "Unknown Chassis DTC (Manufacturer Controlled)"},
        {"B3ABC", "Unknown Body DTC (Reserved)"},
        {"U1000", "Unknown Network DTC (Manufacturer Controlled)"},
        // Powertrain codes without a decimal digit for their third character go by the network's categories.
        {"P0B00", "Unknown Network DTC (SAE Controlled)"},
        {"P2a00", "Unknown Network DTC (Manufacturer Controlled)"},
        {"P3C00", "Unknown Network DTC (Reserved)"},
    };
    for (const auto& [code, description] : codes)
        EXPECT_EQ(troubleCodeDescription(code).english(), description) << code;
    EXPECT_FALSE(troubleCodeDescription("P0A00").english().starts_with("Unknown")) << "it is in the table";
    EXPECT_FALSE(troubleCodeDescription("P3456").english().starts_with("Unknown")) << "it is in the table";
}

TEST(TroubleCodes, SayWhatTheirCharactersMean) {
    const struct {
        const char *code, *system, *control, *subsystem;
    } codes[] = {
        {"P0301", "Powertrain", "SAE", "Ignition System or Misfire"},
        {"P1750", "Powertrain", "The manufacturer", "Transmission"},
        {"P3500", "Powertrain", "SAE", ""},
        {"P0A00", "Powertrain", "SAE", ""}, // whatever a code of its kind that is not known is called
        {"P2A00", "Powertrain", "SAE", ""}, // in the table, in a category that is otherwise the manufacturer's
        {"P2B00", "Powertrain", "The manufacturer", ""},
        {"C1000", "Chassis", "The manufacturer", ""},
        {"B3000", "Body", "Nobody", ""},
        {"U0100", "Network", "SAE", ""},
        {"P4000", "", "", ""},
        {"P03", "", "", ""},
    };
    for (const auto& c : codes) {
        const TroubleCodeParts parts = troubleCodeParts(c.code);
        EXPECT_EQ(parts.system.english(), c.system) << c.code;
        EXPECT_TRUE(parts.control.english().starts_with(c.control)) << c.code;
        EXPECT_EQ(parts.control.empty(), std::string_view(c.control).empty()) << c.code;
        EXPECT_EQ(parts.subsystem.english(), c.subsystem) << c.code;
    }
}

class TroubleReport : public ::testing::Test {
protected:
    RowIndex add(const char* code, const char* vin, std::int32_t minute, const char* logger = "K-0042-B") {
        TTroubleLogTable& troubles = document_.troubles();
        const RowIndex row = troubles.rowCount();
        troubles.insertRows(row, 1);
        troubles.column<TTroubleLogTroubleCodeColumn>().set(row, code);
        troubles.column<TTroubleLogVinColumn>().set(row, vin);
        troubles.column<TTroubleLogTimeRecordedColumn>().set(row, minute * 60);
        troubles.column<TTroubleLogQuobrixSerialNumberColumn>().set(row, logger);
        return row;
    }
    void addTrip(std::int32_t from, std::int32_t to, const char* logger = "K-0042-B") {
        TTripLogTable& trips = document_.trips();
        const RowIndex row = trips.rowCount();
        trips.insertRows(row, 1);
        trips.column<TTripLogStartTimeColumn>().set(row, from * 60);
        trips.column<TTripLogEndTimeColumn>().set(row, to * 60);
        trips.column<TTripLogQuobrixSerialNumberColumn>().set(row, logger);
    }
    std::map<std::string, Facts::Fact> facts(RowIndex row) {
        std::map<std::string, Facts::Fact> all;
        for (const Block& block : recordReport(logSpec(LogId::Troubles), document_.troubles(), row, context_).blocks)
            if (const auto* facts = std::get_if<Facts>(&block))
                for (const Facts::Fact& fact : facts->facts)
                    all[fact.label] = fact;
        return all;
    }
    std::string seen(RowIndex row) {
        auto all = facts(row);
        return all["Times Seen"].text + ": " + all["First Seen"].text + ", " + all["Last Seen"].text;
    }

    TQuobrixDocument document_;
    const TUnitSystem units_;
    const TimeZone zone_;
    const TextContext context_{units_, zone_};
};

TEST_F(TroubleReport, TellsWhenTheCodeWasMet) {
    add("P0300", "ONE", 3);
    add("P0300", "ONE", 1, "K-0043-B");
    add("P0300", "TWO", 7);
    add("P0301", "ONE", 2);
    const RowIndex blank = add("P0300", "", 5);
    add("P0300", "", 9, "K-0043-B");
    EXPECT_EQ(seen(0), "2: 01/01/1970 12:01 AM, 01/01/1970 12:03 AM") << "whichever logger told";
    EXPECT_EQ(seen(2), "1: 01/01/1970 12:07 AM, 01/01/1970 12:07 AM");
    EXPECT_EQ(seen(blank), "3: 01/01/1970 12:03 AM, 01/01/1970 12:07 AM") << "what the same logger told";
}

TEST_F(TroubleReport, LeadsToTheTripDuringWhichItHappened) {
    addTrip(0, 100, "K-0043-B");
    addTrip(10, 20);
    addTrip(15, 30); // its clock had been set back
    addTrip(40, 50);
    const struct {
        std::int32_t minute;
        const char* trip;
    } cases[] = {{9, ""}, {10, "Trip 2"}, {14, "Trip 2"}, {15, "Trip 3"}, {30, "Trip 3"}, {31, ""}, {50, "Trip 4"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.minute);
        const Facts::Fact during = facts(add("P0300", "ONE", c.minute))["Happened During"];
        EXPECT_EQ(during.text, c.trip);
        EXPECT_EQ(during.link.has_value(), during.text != "");
        if (during.link) {
            EXPECT_EQ(during.link->page, logSpec(LogId::Trips).page);
            EXPECT_EQ("Trip " + std::to_string(during.link->row + 1), c.trip);
        }
    }
}

TEST_F(TroubleReport, FuelSystemsAreInWords) {
    const RowIndex row = add("P0300", "ONE", 3);
    const auto& statuses = document_.troubles().column<TTroubleLogFuelSystemTwoStatusColumn>();
    const std::pair<std::int32_t, std::string> cases[] = {
        {0, "Open loop; has not yet satisfied conditions to go to closed loop."},
        {4, "Closed loop, but fault with at least one oxygen sensor; may be using single oxygen sensor for fuel "
            "control."},
        {5, "Unknown fuel system status code. (5)"},
        {7, "Unknown fuel system status code. (7)"},
        {8, "Invalid fuel system status code. (8)"},
        {-1, "Invalid fuel system status code. (-1)"},
        {Element<std::int32_t>::kNone, ""},
    };
    for (const auto& [code, words] : cases) {
        document_.troubles().column<TTroubleLogFuelSystemTwoStatusColumn>().set(row, code);
        EXPECT_EQ(statuses.text(row, context_), words);
        EXPECT_EQ(facts(row).contains("Fuel System 2 Status"), !words.empty());
    }
}

} // namespace
} // namespace quobrix
