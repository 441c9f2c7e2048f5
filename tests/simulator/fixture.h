#pragma once

#include "device/quobrix.h"
#include "simulator/port_store.h"
#include "support/set_variable.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace quobrix::sim {

/// A folder of simulated ports of the test's own, with a logger attached to COM3 and the library's port open.
class SimulatorTest : public testing::Test {
protected:
    static constexpr const char* kPort = "COM3";

    SimulatorTest() : store_(folder_.path()) {
        EXPECT_TRUE(test::setVariable("QUOBRIX_SIMULATOR", folder_.path()));
        EXPECT_TRUE(store_.create(kPort));
        change([](Port& port) { port.attach("K-0042-B"); });
        EXPECT_EQ(QuobrixOpenPort(kPort), QUOBRIX_OK);
    }
    ~SimulatorTest() override { QuobrixClosePort(); }

    /// Changes the port as another program would: F(Port&).
    template <class F>
    void change(F f) {
        EXPECT_TRUE(store_.update(kPort, [&](Port& port) -> Result<void> {
            f(port);
            return {};
        }));
    }

    test::TemporaryFolder folder_;
    PortStore store_;
};

struct Free {
    void operator()(void* block) const { std::free(block); }
};
using Block = std::unique_ptr<void, Free>;
using RecordSet = std::unique_ptr<QuobrixRecordSet, Free>;

/// The records of a set by their heads, after checking that they fill it exactly.
inline std::vector<const QuobrixRecordHead*> recordsOf(const RecordSet& set) {
    std::vector<const QuobrixRecordHead*> records;
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(set.get());
    std::size_t position = sizeof(QuobrixRecordSet);
    for (std::uint32_t i = 0; i < set->recordCount && position < set->size; ++i) {
        records.push_back(reinterpret_cast<const QuobrixRecordHead*>(bytes + position));
        EXPECT_EQ(records.back()->size % 8, 0u);
        position += records.back()->size;
    }
    EXPECT_EQ(records.size(), set->recordCount);
    EXPECT_EQ(position, set->size);
    return records;
}

template <class T, class Record>
std::vector<T> arrayOf(const Record& record, const QuobrixArray& array) {
    EXPECT_LE(array.offset + array.count * sizeof(T), record.head.size);
    const auto* const first = reinterpret_cast<const T*>(reinterpret_cast<const std::uint8_t*>(&record) + array.offset);
    return {first, first + array.count};
}

/// Everything that a download hands over, by set; the two accident buffers one behind the other.
struct Download {
    RecordSet trips, events, stops[2], samples[2];

    Download() {
        void* images[3];
        EXPECT_EQ(QuobrixGetLogBuffer(-1, &images[0], &images[1], &images[2]), QUOBRIX_OK);
        const Block owners[] = {Block(images[0]), Block(images[1]), Block(images[2])};
        QuobrixRecordSet* first = nullptr;
        QuobrixRecordSet* second = nullptr;
        EXPECT_EQ(QuobrixGetLogRecords(images[0], &first, &second), QUOBRIX_OK);
        trips.reset(first);
        events.reset(second);
        for (int bank = 0; bank < 2; ++bank) {
            EXPECT_EQ(QuobrixGetAccidentLogRecords(images[1 + bank], &first, &second), QUOBRIX_OK);
            stops[bank].reset(first);
            samples[bank].reset(second);
        }
    }

    const QuobrixTripRecord& trip(std::size_t index) const {
        return *reinterpret_cast<const QuobrixTripRecord*>(recordsOf(trips).at(index));
    }
    std::vector<std::int32_t> activityCodes() const {
        std::vector<std::int32_t> codes;
        for (const auto* head : recordsOf(events))
            if (head->kind == QUOBRIX_RECORD_ACTIVITY)
                codes.push_back(reinterpret_cast<const QuobrixActivityRecord*>(head)->eventType);
        return codes;
    }
};

} // namespace quobrix::sim
