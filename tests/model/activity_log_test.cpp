#include "model/activity_log.h"

#include "model/quobrix_document.h"
#include "support/pseudo_catalogue.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <limits>

namespace quobrix {
namespace {

constexpr std::int32_t kNone = Element<std::int32_t>::kNone;
constexpr const char *kLogger = "K-0042-B", *kOther = "K-0043-B";

class ActivityLog : public ::testing::Test {
protected:
    RowIndex add(std::int32_t event, std::int32_t time = 0, const char* logger = kLogger) {
        TSecurityLogTable& events = document_.activity();
        const RowIndex row = events.rowCount();
        events.insertRows(row, 1);
        events.column<TSecurityLogEventTypeColumn>().set(row, event);
        events.column<TSecurityLogTimeRecordedColumn>().set(row, time);
        events.column<TSecurityLogQuobrixSerialNumberColumn>().set(row, logger);
        return row;
    }
    template <class C>
    std::string text(RowIndex row) {
        return document_.activity().column<C>().text(row, {units_, zone_});
    }

    TQuobrixDocument document_;
    const TUnitSystem units_;
    const TimeZone zone_;
};

TEST_F(ActivityLog, EventsAreInWords) {
    const struct {
        std::int32_t code;
        const char* words;
        const char* vehicle = "Unknown";
        bool editable = true;
    } events[] = {
        {0, "Connected to vehicle.", "Unknown", false},
        {1, "Disconnected from vehicle"},
        {6, "Logs downloaded.", ""}, // there is none, rather than one that is not known
        {7, "Cleared multiple times."},
        {8, ""},
        {19, ""},
        {20, "Connected to PC", ""},
        {21, "Unknown Event Type"},
        {std::numeric_limits<std::int32_t>::max(), "Unknown Event Type"},
        {-1, "Speed bands altered.", "Unknown", false},
        {-5, "Sampling intervals altered.", "Unknown", false},
        {-6, "Unknown Configuration Change", "Unknown", false},
        {-7, "Unknown Configuration Change", "Unknown", false},
        {kNone + 1, "Unknown Configuration Change", "Unknown", false},
        {kNone, "", "Unknown", false},
    };
    for (const auto& event : events) {
        SCOPED_TRACE(event.code);
        const RowIndex row = add(event.code);
        EXPECT_EQ(text<TSecurityLogEventDescriptionColumn>(row), event.words);
        EXPECT_EQ(text<TSecurityLogVinColumn>(row), event.vehicle);
        EXPECT_EQ(isEditableEvent(event.code), event.editable);
    }
}

TEST_F(ActivityLog, RemarksTellWhatIsWorthALook) {
    const auto remark = [&](std::int32_t event, std::int32_t time, const char* logger = kLogger) {
        return text<TSecurityLogRemarksColumn>(add(event, time, logger));
    };
    add(3, kNone); // of which the time was lost
    EXPECT_EQ(remark(5, 100), "This file has no earlier record of it.");
    EXPECT_EQ(remark(0, 110), "") << "it was never disconnected";
    TTripLogTable& trips = document_.trips();
    trips.insertRows(0, 1);
    trips.column<TTripLogStartTimeColumn>().set(0, 1000);
    trips.column<TTripLogEndTimeColumn>().set(0, 5000);
    trips.column<TTripLogQuobrixSerialNumberColumn>().set(0, kLogger);
    EXPECT_EQ(remark(5, 5000 + 119), "Nothing had been recorded for 119 seconds.");
    EXPECT_EQ(remark(5, 5000 + 119), "Nothing had been recorded for 0 seconds.");
    EXPECT_EQ(remark(7, 5119 + 120), "Nothing had been recorded for 2 minutes.");
    EXPECT_EQ(remark(7, 5239 + 47 * 3600), "Nothing had been recorded for 47 hours.");
    EXPECT_EQ(remark(5, 500'000, kOther), "This file has no earlier record of it.");
    EXPECT_EQ(remark(1, 600'000), "");
    EXPECT_EQ(remark(0, 600'000 + 90'000), "Connected again after 25 hours.");
    EXPECT_EQ(remark(2, 700'000), "The Quobrix was disconnected while it recorded a trip.");
    EXPECT_EQ(remark(0, 700'001), "Connected again after 1 second.");
    EXPECT_EQ(remark(0, 700'001, kOther), "");
    EXPECT_EQ(remark(0, 700'000 + 5 * 86'400), "Connected again after 5 days.");
    EXPECT_EQ(remark(4, 700'000), "Times before and after it may not fit together.");
    for (const std::int32_t event : {3, 6, 20, 21, -1, kNone})
        EXPECT_EQ(remark(event, 800'000), "");
    setCatalogue(std::make_shared<testing::PseudoCatalogue>());
    EXPECT_EQ(text<TSecurityLogRemarksColumn>(1), "⟦This file has no earlier record of it.⟧");
    EXPECT_EQ(document_.activity().column<TSecurityLogRemarksColumn>().value(1),
              Value("This file has no earlier record of it."))
        << "programs read English";
    setCatalogue(nullptr);
    // What comes later changes what is told of those before.
    EXPECT_EQ(text<TSecurityLogRemarksColumn>(1), "This file has no earlier record of it.");
    add(20, 40);
    EXPECT_EQ(text<TSecurityLogRemarksColumn>(1), "Nothing had been recorded for 60 seconds.");
}

} // namespace
} // namespace quobrix
