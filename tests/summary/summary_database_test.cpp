#include "summary/summary_log.h"
#include "support/fault_folder.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>

namespace quobrix {
namespace {

using namespace test;
using Access = SummaryDatabase::Access;
using Records = std::vector<Bytes>;

const std::filesystem::path kPath = "/Quobrix.cdb", kOldPath = "/Quobrix1_0.cdb", kKeysPath = "/Quobrix.cdi";

SummaryRecord record(int number) {
    SummaryRecord record;
    record.logger = SummaryText("K-0042-B");
    record.vin = SummaryText("1GTEK19T23E123456");
    record.start = record.recordedStart = 1'700'000'000 + 3600 * number;
    record.end = record.start + 600;
    record.distance = static_cast<float>(1000 * number);
    record.events[SummaryRecord::ExtremeBrakes] = {3, 599};
    record.parameters[2] = {1, 4, 368.15, 371.5, kNoValue, 20, 580};
    record.mark = SummaryRecord::kOurs;
    record.samplesSum = 7u + static_cast<unsigned>(number);
    record.samples = 600;
    return record;
}

std::vector<SummaryRecord> records(int from, int end) {
    std::vector<SummaryRecord> result;
    for (int number = from; number < end; ++number)
        result.push_back(record(number));
    return result;
}

/// The header and COUNT records as bytes.
Bytes file(int count, std::string_view version = "2.3") {
    Bytes bytes(30);
    std::ranges::copy(std::string_view("SummaryDatabase"), bytes.begin());
    std::ranges::copy(version, bytes.begin() + 25);
    for (const SummaryRecord& each : records(0, count)) {
        Bytes raw = summaryBytes(each);
        if (version == "1") {
            raw.resize(380);
            raw.insert(raw.end(), 4, 0xEE);
        }
        bytes.insert(bytes.end(), raw.begin(), raw.end());
    }
    return bytes;
}

Bytes cut(Bytes bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
}

/// What reading finds; nothing if it cannot be opened.
std::optional<Records> contentOf(FileSystem& files) {
    SummaryDatabase database(files);
    if (!database.open(kPath, Access::Read))
        return {};
    const auto records = database.readAll();
    if (!records || records->size() != database.count())
        return {};
    Records content;
    for (const SummaryRecord& each : *records)
        content.push_back(summaryBytes(each));
    return content;
}

Records bytesOf(const std::vector<SummaryRecord>& records) {
    Records bytes;
    for (const SummaryRecord& each : records)
        bytes.push_back(summaryBytes(each));
    return bytes;
}

TEST(SummaryRecord, LiesWhereItAlwaysDid) {
    SummaryRecord written = record(1);
    written.vehicleName = SummaryText("Großmutters Wägelchen");
    written.averageSpeed = 20;
    const Bytes bytes = summaryBytes(written);
    ASSERT_EQ(bytes.size(), 408u);
    const auto text = [&](std::size_t at) { return std::string(reinterpret_cast<const char*>(&bytes[at])); };
    EXPECT_EQ(text(0), "---");
    EXPECT_EQ(text(20), "1GTEK19T23E123456");
    EXPECT_EQ(text(40), "Großmutters Wägel");
    EXPECT_EQ(SummaryText("Großmutters Wagené").view(), "Großmutters Wagen"); // a character has no room
    EXPECT_EQ(text(60), "K-0042-B");
    ByteReader in(bytes);
    in.bytes(120);
    EXPECT_EQ(in.i32(), written.start);
    in.bytes(36);
    EXPECT_EQ(std::bit_cast<float>(in.u32()), 1000);
    EXPECT_EQ(std::bit_cast<float>(in.u32()), 20);
    in.bytes(12);
    EXPECT_EQ(in.u16(), 3); // extreme brakes
    EXPECT_EQ(in.u16(), 0);
    EXPECT_EQ(in.u32(), 599u);
    in.bytes(16);
    EXPECT_EQ(in.u8() + in.u8() + 10 * in.u8(), 10);
    in.bytes(7);
    EXPECT_EQ(in.u16(), 0x5142);
    in.bytes(16);
    EXPECT_EQ(in.f64(), 368.15);
    const SummaryRecord fresh;
    EXPECT_EQ(std::bit_cast<std::uint64_t>(fresh.parameters[0].threshold), 0xBE77DC65DADFCA1Du);
    EXPECT_EQ(summaryBytes(readSummaryRecord(bytes)), bytes);
}

TEST(SummaryDatabase, FilesAreReadAndPutRight) {
    const Bytes one = file(1), three = file(3);
    Bytes foreign = three;
    std::fill(foreign.begin() + 16, foreign.begin() + 25, std::uint8_t(0xCD)); // as another program leaves them
    struct Case {
        const char* what;
        std::optional<Bytes> before;
        std::optional<int> count;     ///< nothing: it is refused
        std::optional<Bytes> writing; ///< as opening for writing leaves it; nothing: as it was
    };
    const Case cases[] = {
        {"new", {}, 0, file(0)},
        {"empty", Bytes{}, 0, file(0)},
        {"torn header", cut(one, 16), 0, file(0)},
        {"header without its last byte", cut(one, 29), 0, file(0)},
        {"only a header", file(0), 0, {}},
        {"three records", three, 3, {}},
        {"undefined bytes of the header", foreign, 3, {}},
        {"torn tail", cut(three, 30 + 408 * 3 + 100), 3, three},
        {"one byte is missing", cut(three, 30 + 408 * 3 - 1), 2, file(2)},
        {"one byte", Bytes{'x'}, {}, {}},
        {"something else", Bytes(500, 'x'), {}, {}},
        {"half of another signature", Bytes{'S', 'u', 'm', 'm', 'e', 'r'}, {}, {}},
        {"later version", file(2, "2.4"), {}, {}},
        {"version 10", file(2, "10"), {}, {}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        FaultFolder folder(1);
        if (each.before)
            folder.replace(kPath, *each.before);
        const FaultFolder::Image before = folder.current();
        SummaryDatabase database(folder);
        EXPECT_EQ(bool(database.open(kPath, Access::Read)), each.before && each.count);
        EXPECT_EQ(database.count(), std::size_t(each.before ? each.count.value_or(0) : 0));
        database.close();
        EXPECT_EQ(contentOf(folder).has_value(), each.before && each.count);
        EXPECT_EQ(folder.current(), before);
        ASSERT_EQ(bool(database.open(kPath, Access::Write)), each.count.has_value());
        EXPECT_EQ(database.count(), std::size_t(each.count.value_or(0)));
        EXPECT_FALSE(database.read(database.count()));
        EXPECT_EQ(folder.current().at(kPath), each.writing ? *each.writing : *each.before);
        EXPECT_EQ(folder.current().size(), 1u);
    }
}

TEST(SummaryDatabase, AddsWritesAndRemoves) {
    FaultFolder folder(1);
    SummaryDatabase database(folder);
    ASSERT_TRUE(database.open(kPath, Access::Write));
    ASSERT_TRUE(database.append(records(0, 2)));
    ASSERT_TRUE(database.append(records(2, 3)));
    EXPECT_EQ(folder.current().at(kPath), file(3));
    EXPECT_FALSE(database.write(3, record(9)));
    ASSERT_TRUE(database.remove(std::vector<std::size_t>{0}));
    EXPECT_EQ(contentOf(folder), bytesOf(records(1, 3)));
    EXPECT_EQ(folder.current().at(kPath).size(), 30u + 816u);
    ASSERT_TRUE(database.write(0, record(5)));
    ASSERT_TRUE(database.append(records(6, 8)));
    ASSERT_TRUE(database.remove(std::vector<std::size_t>{3, 1, 3}));
    EXPECT_FALSE(database.remove(std::vector<std::size_t>{2}));
    EXPECT_EQ(contentOf(folder), bytesOf({record(5), record(6)}));
    ASSERT_TRUE(database.remove(std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(folder.current(), (FaultFolder::Image{{kPath, file(0)}}));
    database.close();
    ASSERT_TRUE(database.open(kPath, Access::Read));
    EXPECT_FALSE(database.append(records(0, 1)));
    EXPECT_FALSE(database.remove({}));
}

TEST(SummaryDatabase, AnOlderOneIsKeptAndBroughtUpToDate) {
    const Bytes old = cut(file(3, "1"), 30 + 3 * 384 + 7);
    FaultFolder folder(1, {{kPath, old}, {kOldPath, {1, 2, 3}}});
    std::vector<SummaryRecord> expected = records(0, 3);
    for (SummaryRecord& each : expected) { // what version 1 did not define
        each.mark = 0;
        each.samplesSum = each.samples = 0;
        each.recordedStart = 0;
    }
    EXPECT_EQ(contentOf(folder), bytesOf(expected)); // as it is
    EXPECT_EQ(folder.current().at(kPath), old);
    SummaryDatabase database(folder);
    ASSERT_TRUE(database.open(kPath, Access::Write));
    ASSERT_TRUE(database.append(records(3, 4)));
    expected.push_back(record(3));
    EXPECT_EQ(contentOf(folder), bytesOf(expected));
    EXPECT_EQ(folder.current().at(kPath).size(), 30u + 4 * 408u);
    EXPECT_EQ(folder.current().at(kOldPath), old);
}

TEST(SummaryDatabase, OnlyOneProgramWrites) {
    for (const bool locks : {true, false}) {
        FaultFolder folder(1, {{kPath, file(2)}});
        folder.locks = locks;
        SummaryDatabase first(folder), second(folder);
        ASSERT_TRUE(first.open(kPath, Access::Write));
        EXPECT_FALSE(second.open(kPath, Access::Write));
        EXPECT_TRUE(second.open(kPath, Access::Read));
        ASSERT_TRUE(first.remove(std::vector<std::size_t>{0})); // it is another file now
        EXPECT_FALSE(second.open(kPath, Access::Write));
        first.close();
        EXPECT_TRUE(second.open(kPath, Access::Write));
        EXPECT_EQ(second.count(), 1u);
    }
    TemporaryFolder disk;
    const std::filesystem::path path = disk / "new" / "Quobrix.cdb";
    SummaryDatabase first, second;
    EXPECT_FALSE(first.open(path, Access::Read));
    EXPECT_FALSE(std::filesystem::exists(path.parent_path()));
    ASSERT_TRUE(first.open(path, Access::Write));
    ASSERT_TRUE(first.append(records(0, 2)));
    ASSERT_TRUE(first.remove(std::vector<std::size_t>{0}));
    const Result<void> refused = second.open(path, Access::Write);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().kind, ErrorKind::InUse);
    first.close();
    ASSERT_TRUE(second.open(path, Access::Write));
    EXPECT_EQ(summaryBytes(*second.read(0)), summaryBytes(record(1)));

    // Another program puts a new file in place between the opening of the old one and its lock.
    FaultFolder folder(1, {{kPath, file(2)}});
    folder.afterEachOpening = [&] {
        folder.replace(kPath, file(1));
        folder.afterEachOpening = nullptr;
    };
    SummaryDatabase database(folder);
    ASSERT_TRUE(database.open(kPath, Access::Write));
    ASSERT_TRUE(database.append(records(1, 2)));
    EXPECT_EQ(contentOf(folder), bytesOf(records(0, 2)));
}

/// What a person or a download does to a database of three records.
struct Step {
    const char* what;
    std::function<Result<void>(SummaryLog&, FileSystem&)> run;
    Bytes before;
    std::vector<SummaryRecord> after;
};

Result<void> inDatabase(FileSystem& files, const std::function<Result<void>(SummaryDatabase&)>& work) {
    SummaryDatabase database(files);
    QUOBRIX_TRY(database.open(kPath, Access::Write));
    return work(database);
}

const Step kSteps[] = {
    {"append",
     [](SummaryLog&, FileSystem& files) {
         return inDatabase(files, [](SummaryDatabase& database) { return database.append(records(3, 8)); });
     },
     file(3), records(0, 8)},
    {"write",
     [](SummaryLog&, FileSystem& files) {
         return inDatabase(files, [](SummaryDatabase& database) -> Result<void> {
             SummaryRecord other = record(1);
             other.driverName = SummaryText("Anna");
             other.troubles = 9;
             QUOBRIX_TRY(database.write(1, other));
             return database.flush();
         });
     },
     file(3),
     [] {
         std::vector<SummaryRecord> after = records(0, 3);
         after[1].driverName = SummaryText("Anna");
         after[1].troubles = 9;
         return after;
     }()},
    {"remove",
     [](SummaryLog& log, FileSystem&) -> Result<void> {
         QUOBRIX_TRY(log.open(kPath, Access::Write));
         return log.remove(std::vector<std::size_t>{0, 2});
     },
     file(3), records(1, 2)},
    {"upgrade", [](SummaryLog& log, FileSystem&) { return log.open(kPath, Access::Write); }, file(3, "1"),
     [] {
         std::vector<SummaryRecord> after = records(0, 3);
         for (SummaryRecord& each : after)
             each.mark = 0, each.samplesSum = each.samples = 0, each.recordedStart = 0;
         return after;
     }()},
};

/// The files hold what they did before STEP or what they do after it; and who opens them for writing can go on.
void expectBeforeOrAfter(const Step& step, const FaultFolder::Image& image, bool done) {
    FaultFolder folder(1, image), untouched(1, {{kPath, step.before}});
    const std::optional<Records> found = contentOf(folder), before = contentOf(untouched);
    const Records after = bytesOf(step.after);
    ASSERT_TRUE(found);
    if (std::string_view(step.what) == "write") { // a record that is overwritten may be torn, and is known all the same
        ASSERT_EQ(found->size(), after.size());
        for (std::size_t i = 0; i < after.size(); ++i)
            for (std::size_t byte = 0; byte < after[i].size(); ++byte)
                ASSERT_TRUE((*found)[i][byte] == after[i][byte] || (!done && (*found)[i][byte] == (*before)[i][byte]));
    } else {
        ASSERT_TRUE(*found == after || (!done && *found == *before));
    }
    if (std::string_view(step.what) == "upgrade" && image.at(kPath) != step.before) {
        ASSERT_EQ(image.at(kOldPath), step.before);
    }
    if (std::string_view(step.what) == "remove" && *found == after) {
        SummaryLog log(folder);
        ASSERT_TRUE(log.open(kPath, Access::Read));
        ASSERT_TRUE(log.deleted().contains(keyOf(record(0))) && log.deleted().contains(keyOf(record(2))));
        ASSERT_FALSE(log.deleted().contains(keyOf(record(1))));
    }
    SummaryDatabase database(folder);
    ASSERT_TRUE(database.open(kPath, Access::Write));
    ASSERT_EQ(database.count(), found->size());
    ASSERT_TRUE(database.append(records(20, 21)));
    ASSERT_EQ(folder.current().at(kPath).size(), 30 + 408 * (found->size() + 1));
}

TEST(SummaryDatabase, SurvivesAPowerCutAtAnyMoment) {
    for (const Step& step : kSteps)
        for (unsigned seed = 0; seed < 40; ++seed) {
            SCOPED_TRACE(std::string(step.what) + ", seed " + std::to_string(seed));
            FaultFolder folder(seed, {{kPath, step.before}});
            folder.afterEachChange = [&] { expectBeforeOrAfter(step, folder.powerCut(), false); };
            SummaryLog log(folder);
            ASSERT_TRUE(step.run(log, folder));
            folder.afterEachChange = nullptr;
            expectBeforeOrAfter(step, folder.powerCut(), true);
            if (HasFatalFailure())
                return;
        }
}

TEST(SummaryDatabase, FailuresLeaveWhatWasThere) {
    for (const Step& step : kSteps)
        for (const std::size_t failures : {1u, 100u}) {
            bool failed = true;
            for (unsigned at = 1; failed; ++at) {
                SCOPED_TRACE(std::string(step.what) + ", operation " + std::to_string(at));
                FaultFolder folder(at, {{kPath, step.before}});
                folder.failAt = at;
                folder.failures = failures;
                folder.failWith = ErrorKind::DiskFull;
                Result<void> done;
                {
                    SummaryLog log(folder);
                    done = step.run(log, folder);
                }
                failed = folder.failed;
                folder.failAt = 0;
                ASSERT_TRUE(failed || done);
                expectBeforeOrAfter(step, folder.current(), bool(done));
                if (HasFatalFailure())
                    return;
            }
        }
    FaultFolder folder(1, {{kPath, file(3)}});
    SummaryDatabase database(folder);
    ASSERT_TRUE(database.open(kPath, Access::Write));
    folder.capacity = 30 + 408 * 3 + 100;
    EXPECT_FALSE(database.append(records(3, 5)));
    EXPECT_EQ(folder.current().at(kPath), file(3));
    folder.capacity = 1 << 20;
    EXPECT_TRUE(database.append(records(3, 5)));
    EXPECT_EQ(folder.current().at(kPath), file(5));
}

TEST(SummaryLog, ADeletedTripStaysDeletedUntilItIsForgotten) {
    SummaryKey key = keyOf(record(1)), any = key, other = key;
    any.samplesSum = 0;
    other.samplesSum += 100;
    FaultFolder folder(1, {{kPath, file(3)}});
    SummaryLog log(folder);
    ASSERT_TRUE(log.open(kPath, Access::Write));
    ASSERT_TRUE(log.remove(std::vector<std::size_t>{1}));
    EXPECT_EQ(bytesOf(log.records()), bytesOf({record(0), record(2)}));
    DeletedSummaries deleted(folder);
    ASSERT_TRUE(deleted.load(kPath));
    EXPECT_TRUE(deleted.contains(key) && deleted.contains(any));
    EXPECT_FALSE(deleted.contains(other));
    ASSERT_TRUE(deleted.forget(std::vector{other}));
    EXPECT_TRUE(deleted.contains(key));
    ASSERT_TRUE(deleted.forget(std::vector{any}));
    EXPECT_FALSE(deleted.contains(key));
    ASSERT_TRUE(deleted.load(kPath));
    EXPECT_FALSE(deleted.contains(key));

    folder.replace(kKeysPath, {1, 2, 3}); // what was deleted cannot be told: nothing may be counted
    EXPECT_FALSE(log.open(kPath, Access::Write));
}

} // namespace
} // namespace quobrix
