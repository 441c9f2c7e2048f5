/// Several copies of the program at one database: what each counts is there once, whoever reads or writes meanwhile.
#include "summary/summary_log.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace quobrix {
namespace {

using namespace test;

SummaryRecord tripOf(int logger, int trip) {
    SummaryRecord record;
    record.logger = SummaryText("K-" + std::to_string(logger));
    record.mark = SummaryRecord::kOurs;
    record.trips = 1;
    record.start = record.recordedStart = 1'700'000'000 + trip * 3600;
    record.end = record.start + 600;
    return record;
}

/// What OPEN gives once nobody else has the database.
template <class Open>
void onceFree(const Open& open) {
    for (;;) {
        const Result<void> opened = open();
        if (opened || opened.error().kind != ErrorKind::InUse) {
            EXPECT_TRUE(opened) << opened.error().detail;
            return;
        }
        std::this_thread::yield();
    }
}

TEST(SummaryThreads, WhatManyCountAtOnceIsThereOnce) {
    constexpr int kLoggers = 4, kRounds = 8;
    const TemporaryFolder folder;
    const std::filesystem::path path = folder / "Quobrix.cdb";
    onceFree([&] { return SummaryLog().open(path, SummaryDatabase::Access::Write); });
    std::atomic<int> writing = kLoggers;
    {
        std::vector<std::jthread> threads;
        for (int logger = 0; logger < kLoggers; ++logger)
            threads.emplace_back([&, logger] {
                std::vector<SummaryRecord> trips;
                for (int round = 0; round < kRounds; ++round) {
                    trips.push_back(tripOf(logger, round));
                    SummaryLog log;
                    onceFree([&] { return log.open(path, SummaryDatabase::Access::Write); });
                    const Result<CountedTrips> counted = log.count(trips);
                    EXPECT_TRUE(counted && counted->added == 1 && counted->rewritten == 0);
                }
                --writing;
            });
        threads.emplace_back([&] {
            while (writing > 0) {
                SummaryDatabase database;
                const Result<void> opened = database.open(path, SummaryDatabase::Access::Read);
                if (!opened) {
                    EXPECT_EQ(opened.error().kind, ErrorKind::InUse);
                    continue;
                }
                const Result<std::vector<SummaryRecord>> records = database.readAll();
                ASSERT_TRUE(records);
                for (const SummaryRecord& record : *records)
                    EXPECT_TRUE(record.ours()) << "half of a record";
            }
        });
    }
    SummaryLog log;
    onceFree([&] { return log.open(path, SummaryDatabase::Access::Read); });
    EXPECT_EQ(log.records().size(), static_cast<std::size_t>(kLoggers * kRounds));
}

} // namespace
} // namespace quobrix
