// A year of driving, 1,000 trips of half an hour with speed and four parameters a second, into an empty document and
// into the one that has them, beside the parsing of the same bytes.

#include "device/merge.h"
#include "ratios.h"
#include "support/record_set_builder.h"

#include <cmath>

namespace quobrix::bench {
namespace {

constexpr std::uint32_t kTrips = 1000, kSeconds = 1800;

RecordBlocks makeYear() {
    testing::RecordSetBytes set;
    for (std::uint32_t number = 0; number < kTrips; ++number) {
        QuobrixTripRecord trip = testing::plainTrip();
        trip.startTime += static_cast<std::int32_t>(number * 30'000);
        trip.endTime = trip.startTime + static_cast<std::int32_t>(kSeconds);
        trip.speedSamples = {sizeof trip, kSeconds + 1};
        Bytes tail(kSeconds + 1);
        for (std::uint32_t i = 0; i <= kSeconds; ++i)
            tail[i] = static_cast<std::uint8_t>(60 + 50 * std::sin((number + i) / 97.0));
        tail.resize((tail.size() + 7) / 8 * 8);
        std::int32_t parameter = 2;
        for (QuobrixParameterSeries& series : trip.series) {
            series = {parameter++, 1, 0, 0, {static_cast<std::uint32_t>(sizeof trip + tail.size()), kSeconds + 1}};
            for (std::uint32_t i = 0; i <= kSeconds; ++i) {
                const double value = 50 + 40 * std::sin((number + 3 * i) / 61.0);
                const auto* raw = reinterpret_cast<const std::uint8_t*>(&value);
                tail.insert(tail.end(), raw, raw + sizeof value);
            }
        }
        set.add(trip, std::move(tail));
    }
    const Bytes bytes = set.take();
    RecordBlocks blocks;
    blocks.trips.reset(static_cast<QuobrixRecordSet*>(std::malloc(bytes.size())));
    std::memcpy(blocks.trips.get(), bytes.data(), bytes.size());
    return blocks;
}

const RecordBlocks& year() {
    static const RecordBlocks made = makeYear();
    return made;
}

void parse(benchmark::State& state) {
    year();
    for (auto _ : state)
        benchmark::DoNotOptimize(parseRecords(year()));
}

/// The work around what is measured, freeing included, is not.
void merge(benchmark::State& state) {
    const LogRecords records = parseRecords(year());
    for (auto _ : state) {
        state.PauseTiming();
        auto document = std::make_unique<TQuobrixDocument>();
        state.ResumeTiming();
        if (mergeRecords(records, *document)->added() != kTrips)
            state.SkipWithError("not all were merged");
        state.PauseTiming();
        document.reset();
        state.ResumeTiming();
    }
}

void mergeAgain(benchmark::State& state) {
    const LogRecords records = parseRecords(year());
    TQuobrixDocument document;
    static_cast<void>(mergeRecords(records, document));
    for (auto _ : state)
        if (mergeRecords(records, document)->changed())
            state.SkipWithError("something was new");
}

} // namespace
} // namespace quobrix::bench

int main(int argc, char** argv) {
    using namespace quobrix::bench;
    benchmark::RegisterBenchmark("Parse", parse)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("Merge", merge)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("MergeAgain", mergeAgain)->Unit(benchmark::kMillisecond);
    return runAndCompare(argc, argv,
                         {{"First merge beside parsing", "Merge", "Parse", 3},
                          {"The same again beside the first", "MergeAgain", "Merge", 0.3}});
}
