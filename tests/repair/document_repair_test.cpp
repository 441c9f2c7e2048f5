#include "repair/document_repair.h"
#include "repair/salvaged_file.h"

#include "compound/format.h"
#include "platform/file_system.h"
#include "support/document_streams.h"
#include "support/memory_file.h"
#include "support/sample_trip.h"
#include "support/stream_map.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <random>

namespace quobrix {
namespace {

using namespace test;

class Repair : public testing::Test {
protected:
    Repair() {
        for (int i = 0; i < 3; ++i)
            addTrip(made_, kStart + 3600 * i);
        made_.activity().insertRows(0, 2);
        const Result<void> saved = made_.store().save(damaged_);
        writeDocumentStream(damaged_);
        EXPECT_TRUE(saved);
    }

    Bytes& stream(ObjectId id) { return damaged_.streams.find(std::to_string(id))->second; }
    void remove(ObjectId id) { damaged_.remove(std::to_string(id)); }
    void cut(ObjectId id) { stream(id).pop_back(); }

    /// Repairs, and opens what comes of it.
    void repair() {
        repaired_.streams.clear();
        Result<DocumentRepair> result = salvage(damaged_, repaired_);
        ASSERT_TRUE(result);
        result_ = *std::move(result);
        store_ = std::make_unique<ObjectStore>(modelTypes());
        store_->load(repaired_);
        EXPECT_FALSE(store_->indexDamaged());
        EXPECT_FALSE(store_->findLostSingletons());
        EXPECT_EQ(store_->objectCount(), result_.objects);
        for (const CheckFinding& finding : checkDocument(*store_).damages)
            ADD_FAILURE() << finding.id << " " << finding.what;
        for (const PersistentType* root : kRootTables)
            EXPECT_TRUE(store_->singletonIds().contains(root->id())) << root->name;
    }
    TTripLogTable& trips() { return store_->singleton<TTripLogTable>(); }

    static bool mentions(const std::vector<CheckFinding>& findings, std::string_view log, std::string_view words) {
        return std::ranges::any_of(findings, [&](const CheckFinding& finding) {
            return finding.log == log && finding.what.find(words) != std::string::npos;
        });
    }
    void expectOneLoss(std::string_view log, std::string_view words) {
        EXPECT_EQ(result_.lost.size(), 1u);
        EXPECT_TRUE(mentions(result_.lost, log, words))
            << (result_.lost.empty() ? ShownText() : result_.lost.front().what);
    }

    TQuobrixDocument made_;
    StreamMap damaged_, repaired_;
    DocumentRepair result_;
    std::unique_ptr<ObjectStore> store_;
};

TEST_F(Repair, OfASoundDocumentIsTheSameDocument) {
    repair();
    EXPECT_TRUE(result_.complete() && result_.notes.empty());
    EXPECT_TRUE(repaired_.streams == damaged_.streams);
    const std::vector<std::pair<std::string, std::size_t>> records = {{"Activity Log", 2}, {"Driver ID", 0},
                                                                      {"Quobrix ID", 0},   {"Trip Log", 3},
                                                                      {"Vehicle ID", 1},   {"Vehicle Trouble Log", 0}};
    EXPECT_EQ(result_.records, records);
}

TEST_F(Repair, WithoutAnyObjectLosesThatOneOnly) {
    const auto whole = damaged_.streams;
    for (const ObjectId id : made_.store().objectIds())
        for (const bool index : {true, false}) {
            SCOPED_TRACE(made_.store().find(id)->type().name);
            damaged_.streams = whole;
            remove(id);
            if (!index)
                damaged_.remove("Singleton Ids"), damaged_.remove("Object Ids");
            repair();
            EXPECT_TRUE(id != made_.trips().id() || result_.complete()) << "a table is put together from its columns";
            EXPECT_LE(result_.lost.size(), 1u);
            for (const auto& [name, content] : whole)
                if (name != std::to_string(id) && idOfStream(name) != kNoObject) {
                    const ObjectId other = idOfStream(name);
                    EXPECT_TRUE(store_->find(other) && store_->find(other)->type().id() == ByteReader(content).u32());
                }
            EXPECT_EQ(trips().rowCount(), 3u);
        }
}

TEST_F(Repair, EmptiesALostColumn) {
    const ObjectId distance = made_.trips().column<TTripLogDistanceColumn>().id();
    const auto whole = damaged_.streams;
    const std::function<void()> damages[] = {
        [&] { remove(distance); },
        [&] { cut(distance); },
        [&] { stream(distance)[0] ^= 0xFF; },                                 // another class
        [&] { stream(distance)[4] = 9; },                                     // a later layout
        [&] { stream(distance).resize(5 + 4 + 8), stream(distance)[5] = 1; }, // another length
        [&] { stream(distance).assign(512, 0); },
    };
    for (const auto& damage : damages) {
        damaged_.streams = whole;
        damage();
        repair();
        expectOneLoss("Trip Log", "\"Distance\"");
        const auto& column = trips().column<TTripLogDistanceColumn>();
        EXPECT_TRUE(column.store());
        EXPECT_EQ(column.storedRows(), 3u);
        EXPECT_EQ(column.value(0), Value());
        EXPECT_EQ(trips().column<TTripLogMaximumSpeedColumn>().value(0), Value(75 * kMph));
    }
}

TEST_F(Repair, LimitsEmptyColumns) {
    const ObjectId distance = made_.trips().column<TTripLogDistanceColumn>().id();
    constexpr std::uint32_t kRows = 400'000;
    stream(distance).resize(5 + 4 + 8 * kRows);
    cfb::store32(stream(distance).data() + 5, kRows);
    for (const Reference& column : made_.trips().references())
        if (column.id != distance)
            remove(column.id);
    repair();
    EXPECT_EQ(trips().rowCount(), kRows);
    std::size_t stored = 0;
    for (std::size_t i = 0; i < trips().columnCount(); ++i)
        stored += trips().column(i).store() != nullptr;
    EXPECT_EQ(stored, 3u);
    EXPECT_TRUE(mentions(result_.lost, "Trip Log", "\"Comments\""));
}

TEST_F(Repair, BelievesTheColumnsLength) {
    for (const std::uint8_t rows : std::initializer_list<std::uint8_t>{0, 2, 200}) {
        stream(made_.trips().id())[5] = rows;
        repair();
        EXPECT_TRUE(result_.complete());
        EXPECT_TRUE(mentions(result_.notes, "Trip Log", "its columns have 3"));
        EXPECT_EQ(trips().rowCount(), 3u);
    }
}

TEST_F(Repair, FindsWronglyNamedColumns) {
    Bytes& table = stream(made_.trips().id());
    ByteReader in(table);
    in.bytes(5 + 8);
    std::size_t at = 5 + 8 + 4;
    while (in.u32() != TTripLogDistanceColumn::kType.id()) {
        in.u32();
        at += 8;
    }
    table[at] ^= 0x40; // the id
    repair();
    EXPECT_TRUE(result_.complete());
    EXPECT_EQ(trips().column<TTripLogDistanceColumn>().value(1), Value(12000.0));
}

TEST_F(Repair, TellsWhichTripsLostTables) {
    auto& samples = made_.trips().column<TTripLogSampleTableColumn>();
    const ObjectId speeds = samples.object(2)->speed().id();
    cut(samples.at(1));
    cut(speeds);
    remove(made_.trips().column<TTripLogHardBrakeTimesColumnColumn>().at(0));
    repair();
    EXPECT_EQ(result_.lost.size(), 3u);
    EXPECT_TRUE(mentions(result_.lost, "Trip Log", "record 1: Hard Brake: "));
    EXPECT_TRUE(mentions(result_.lost, "Trip Log", "record 2: Samples: "));
    EXPECT_TRUE(mentions(result_.lost, "Trip Log", "record 3: Samples: none of its 61 rows"));
    auto& repaired = trips().column<TTripLogSampleTableColumn>();
    EXPECT_TRUE(repaired.object(0) && !repaired.has(1) && repaired.object(2));
    EXPECT_EQ(repaired.object(2)->series(0).parameter(), 2); // its engine speeds are left
    EXPECT_FALSE(trips().column<TTripLogHardBrakeTimesColumnColumn>().has(0));
    // What the lost table owned belongs nowhere now, and is kept all the same.
    EXPECT_TRUE(mentions(result_.notes, "Trip Log", "nothing refers to this TTripLogSampleSpeedColumn"));
}

TEST_F(Repair, GivesWhatTwoRecordsClaimToTheFirst) {
    auto& bands = made_.trips().column<TTripLogSpeedBandsTableColumn>();
    bands.set(2, bands.at(0));
    ASSERT_TRUE(made_.store().save(damaged_));
    repair();
    expectOneLoss("Trip Log", "record 3: Speed Bands: cannot be read (it belongs elsewhere)");
    EXPECT_EQ(trips().column<TTripLogSpeedBandsTableColumn>().object(0)->rowCount(), 5u);
}

TEST_F(Repair, TakesTheLogThatHasRecords) {
    // What an earlier version made of a lost entry in the index: a second, empty log, which the index names.
    TTripLogTable& second = static_cast<TTripLogTable&>(made_.store().create(TTripLogTable::kType));
    ASSERT_TRUE(made_.store().save(damaged_));
    repair();
    EXPECT_EQ(trips().rowCount(), 3u);
    EXPECT_NE(trips().id(), second.id());
    expectOneLoss("Trip Log", "there are two TTripLogTable; this one of 0 rows is left out");
}

TEST_F(Repair, KeepsWhatALaterVersionAdded) {
    const Bytes unknown = {'n', 'e', 'w', '!', 7, 1, 2, 3};
    const ObjectId column = made_.store().nextAvailableId(), alone = column + 1;
    damaged_.write(std::to_string(column), unknown);
    damaged_.write(std::to_string(alone), unknown);
    Bytes& table = stream(made_.trips().id());
    ++table[9]; // the number of columns
    const Bytes reference = u32s({0x2177656E, column});
    table.insert(table.end(), reference.begin(), reference.end());
    repair();
    EXPECT_TRUE(result_.complete());
    EXPECT_EQ(repaired_.streams.find(std::to_string(column))->second, unknown);
    EXPECT_EQ(repaired_.streams.find(std::to_string(alone))->second, unknown);
    EXPECT_EQ(trips().references().back().id, column);
}

TEST_F(Repair, OfNothingIsAnEmptyDocument) {
    damaged_.streams.clear();
    repair();
    EXPECT_TRUE(result_.complete());
    EXPECT_EQ(result_.objects, std::size(kRootTables));
    damaged_.write("7", {1, 2});
    repair();
    EXPECT_FALSE(result_.complete());
}

/// Files whose end, with allocation tables, directory or more, is cut off. Every trip has samples of its own.
class CutShort : public testing::Test {
protected:
    CutShort() {
        addTrips(20);
        auto& accidents = made_.store().singleton<TAccidentLogTable>();
        accidents.insertRows(0, 3);
        accidents.column<TAccidentLogTableStartTimeColumn>().setAll({kStart, kStart + 1, kStart + 2});
        EXPECT_TRUE(made_.saveAs(folder_ / "Made.car"));
    }

    void addTrips(int count) {
        for (int i = 0; i < count; ++i) {
            const RowIndex row = made_.trips().rowCount();
            const auto number = static_cast<std::uint8_t>(row + 1);
            addTrip(made_, kStart + 3600 * number);
            made_.trips().column<TTripLogSampleTableColumn>().object(row)->speed().setAll(Bytes(61, number));
            made_.trips().column<TTripLogHardBrakeTimesColumnColumn>().object(row)->setAll({number});
            made_.trips().column<TTripLogHardAccelerationTimesColumnColumn>().object(row)->setAll({100 + number});
        }
    }

    /// Repairs what is left of the file without its last LOST bytes and, if so, without the first sector.
    void repair(std::size_t lost, bool header = true) {
        Bytes bytes = *readFile(made_.path(), 1u << 24);
        bytes.resize(bytes.size() - lost);
        if (!header)
            std::fill_n(bytes.begin(), 512, std::uint8_t{0});
        const auto found = openForRepair(std::make_unique<MemoryFile>(std::move(bytes)));
        ASSERT_TRUE(found);
        StreamMap into;
        auto result = salvage(**found, into);
        ASSERT_TRUE(result);
        result_ = *std::move(result);
        repaired_ = std::move(into);
        store_ = std::make_unique<ObjectStore>(modelTypes());
        store_->load(repaired_);
        EXPECT_FALSE(store_->doubt());
        EXPECT_TRUE(checkDocument(*store_).sound());
    }
    std::size_t size() const { return static_cast<std::size_t>(std::filesystem::file_size(made_.path())); }

    /// Trips that have what belongs to them; what belongs to another is a failure.
    std::size_t wholeTrips() {
        const auto& trips = store_->singleton<TTripLogTable>();
        const auto& starts = trips.column<TTripLogStartTimeColumn>();
        std::size_t whole = 0;
        for (RowIndex row = 0; row < trips.rowCount(); ++row) {
            if (!starts.has(row))
                continue;
            const auto number = static_cast<std::uint8_t>((starts.at(row) - kStart) / 3600);
            const TTripLogSampleTable* samples = trips.column<TTripLogSampleTableColumn>().object(row);
            const auto* brakes = trips.column<TTripLogHardBrakeTimesColumnColumn>().object(row);
            const auto* starting = trips.column<TTripLogHardAccelerationTimesColumnColumn>().object(row);
            const bool sampled = samples && samples->rowCount() == 61;
            if (sampled && samples->speed().at(60) != 0) { // or that column is lost
                EXPECT_EQ(samples->speed().at(60), number);
            }
            if (brakes) {
                EXPECT_EQ(brakes->values(), std::vector<std::int32_t>{number});
            }
            if (starting) {
                EXPECT_EQ(starting->values(), std::vector<std::int32_t>{100 + number});
            }
            whole += sampled && brakes && starting && samples->speed().at(60) == number;
        }
        return whole;
    }

    TemporaryFolder folder_;
    TQuobrixDocument made_;
    StreamMap repaired_;
    DocumentRepair result_;
    std::unique_ptr<ObjectStore> store_;
};

TEST_F(CutShort, SavedOnce) {
    repair(0, false);
    EXPECT_EQ(wholeTrips(), 20u);
    EXPECT_EQ(store_->objectCount(), made_.store().objectCount());
    EXPECT_EQ(result_.lost.size(), 1u); // that there may have been more
    const std::pair<double, std::size_t> least[] = {{0.1, 20}, {1, 20}, {2, 20}, {5, 19}, {10, 16}, {25, 5}};
    for (const auto& [percent, whole] : least) {
        SCOPED_TRACE(percent);
        repair(static_cast<std::size_t>(static_cast<double>(size()) * percent / 100));
        EXPECT_GE(wholeTrips(), whole);
    }
    repair(size() / 2); // none of the directory is left
    EXPECT_EQ(store_->singleton<TTripLogTable>().rowCount(), 20u);
}

TEST_F(CutShort, SavedOften) {
    addTrips(3);
    ASSERT_TRUE(made_.save());
    repair(2048);
    EXPECT_EQ(wholeTrips(), 20u);
    ASSERT_EQ(result_.lost.size(), 1u);
    EXPECT_NE(result_.lost.front().what.find("as it was before the last save"), std::string::npos);
    // Where a save that was killed has written, less of it is left, and nobody knows what is missing.
    const auto bytes = std::make_shared<Bytes>(*readFile(made_.path(), 1u << 24));
    const std::size_t size = bytes->size();
    const auto killed = *CompoundFile::open(std::make_unique<MemoryFile>(bytes));
    killed->write("killed", Bytes(100000, 1));
    ASSERT_TRUE(killed->spill());
    bytes->resize(size - 2048);
    const auto found = openForRepair(std::make_unique<MemoryFile>(bytes));
    ASSERT_FALSE(found);
    EXPECT_NE(found.error().detail.find("saved several times"), std::string::npos) << found.error().detail;
}

/// Documents whose ids have been used again: trips were deleted, added and edited over several saves. What a repair
/// shows in a record is what that record had, or nothing.
class Shuffled : public testing::TestWithParam<int> {
protected:
    struct Trip {
        double distance = 0;
        std::string comment;
        std::vector<std::int32_t> brakes;
        Bytes speeds;
        bool operator==(const Trip&) const = default;
    };

    void make() {
        std::mt19937 random(static_cast<unsigned>(GetParam()));
        for (int i = 0; i < 6 + 5 * GetParam(); ++i)
            add();
        ASSERT_TRUE(made_.saveAs(folder_ / "Made.car"));
        saved();
        for (int save = 0; save < 5; ++save) {
            for (int change = 0; change < 4; ++change) {
                const RowIndex row = random() % made_.trips().rowCount();
                if (change % 2 == 0)
                    made_.trips().removeRows(row, 1);
                else
                    made_.trips().column<TTripLogCommentsColumn>().set(row, "edited " + std::to_string(save));
            }
            if (save == 4) // one column alone is younger than the others
                break;
            for (unsigned i = 0; i < 1 + random() % 4; ++i)
                add();
            ASSERT_TRUE(made_.save());
            saved();
        }
        ASSERT_TRUE(made_.save());
        saved();
        final_ = trips(made_.trips());
        ASSERT_EQ(final_.size(), made_.trips().rowCount());
    }

    void saved() { states_.emplace_back(*readFile(made_.path(), 1u << 24), streamsOf(made_.path())); }

    void add() {
        const std::int32_t number = ++number_;
        const RowIndex row = addTrip(made_, kStart + 3600 * number);
        TTripLogTable& trips = made_.trips();
        trips.column<TTripLogDistanceColumn>().set(row, 1000.0 + number);
        trips.column<TTripLogHardBrakeTimesColumnColumn>().object(row)->setAll({number, number + 100});
        trips.column<TTripLogSampleTableColumn>().object(row)->speed().setAll(
            Bytes(61, static_cast<std::uint8_t>(number)));
    }

    static std::map<std::int32_t, Trip> trips(const TTripLogTable& table) {
        std::map<std::int32_t, Trip> all;
        const auto& starts = table.column<TTripLogStartTimeColumn>();
        const auto& distances = table.column<TTripLogDistanceColumn>();
        for (RowIndex row = 0; row < table.rowCount(); ++row) {
            if (!starts.has(row))
                continue;
            Trip& trip = all[starts.at(row)];
            if (distances.has(row))
                trip.distance = distances.at(row);
            trip.comment = table.column<TTripLogCommentsColumn>().at(row);
            if (const auto* brakes = table.column<TTripLogHardBrakeTimesColumnColumn>().object(row))
                trip.brakes = brakes->values();
            if (const auto* samples = table.column<TTripLogSampleTableColumn>().object(row))
                for (RowIndex i = 0; i < samples->rowCount(); ++i)
                    trip.speeds.push_back(samples->speed().at(i));
        }
        return all;
    }

    /// Trips that a repair of BYTES has wholly.
    std::size_t expectNothingOfOthers(Bytes bytes) {
        const auto found = openForRepair(std::make_unique<MemoryFile>(std::move(bytes)));
        if (!found) {
            ++refused_;
            return 0;
        }
        StreamMap into;
        const auto result = salvage(**found, into);
        EXPECT_TRUE(result);
        if (isBeforeTheLastSave(**found)) {
            ++previous_;
            EXPECT_EQ(result->lost.size(), 1u);
            EXPECT_TRUE(state_ > 0 && streamsOf(**found) == states_[state_ - 1].second);
            return 0;
        }
        ++last_;
        ObjectStore store(modelTypes());
        store.load(into);
        EXPECT_TRUE(!store.doubt() && checkDocument(store).sound());
        std::size_t whole = 0;
        for (const auto& [start, trip] : trips(store.singleton<TTripLogTable>())) {
            const auto expected = final_.find(start);
            if (expected == final_.end()) {
                ADD_FAILURE() << "a trip that is not in the document: " << start;
                continue;
            }
            const Trip& was = expected->second;
            EXPECT_TRUE(trip.distance == was.distance || trip.distance == 0);
            EXPECT_TRUE(trip.comment == was.comment || trip.comment.empty());
            EXPECT_TRUE(trip.brakes == was.brakes || trip.brakes.empty());
            EXPECT_TRUE(trip.speeds == was.speeds || trip.speeds == Bytes(trip.speeds.size(), 0));
            whole += trip == was;
        }
        EXPECT_TRUE(whole == final_.size() || !result->complete());
        return whole;
    }

    static bool isBeforeTheLastSave(const StreamReader& file) {
        const Result<void> whole = file.writable();
        return !whole && whole.error().detail.find("before the last save") != std::string::npos;
    }

    /// BYTES with other damage: without each part of the structure that zeros can take away.
    void expectSafeWithout(const Bytes& bytes) {
        for (std::size_t lost = 1; lost < bytes.size(); lost += bytes.size() / 30) {
            SCOPED_TRACE(lost);
            Bytes cut(bytes.begin(), bytes.end() - static_cast<std::ptrdiff_t>(lost));
            expectNothingOfOthers(cut);
            std::fill_n(cut.begin(), std::min<std::size_t>(cut.size(), 512), std::uint8_t{0});
            expectNothingOfOthers(std::move(cut));
        }
        const auto isDirectory = [&](std::size_t at) {
            return bytes[at + 66] <= 5 && bytes[at + 67] <= 1 && bytes[at + 65] == 0 && bytes[at + 64] >= 4 &&
                   bytes[at + 64] <= 64 && bytes[at + 1] == 0 && bytes[at] != 0;
        };
        const std::size_t fatPages = bytes[44];
        for (const bool header : {true, false}) {
            Bytes noDirectory = bytes, noFat = bytes;
            for (std::size_t at = 512; at + 512 <= bytes.size(); at += 512)
                if (isDirectory(at)) {
                    std::fill_n(noDirectory.begin() + static_cast<std::ptrdiff_t>(at), 512, std::uint8_t{0});
                    Bytes without = bytes; // that part of it only
                    std::fill_n(without.begin() + static_cast<std::ptrdiff_t>(at), 512, std::uint8_t{0});
                    if (at / 512 % 4 == 0)
                        expectNothingOfOthers(std::move(without));
                }
            for (std::size_t page = 0; page < fatPages; ++page) {
                ByteReader in(ByteView(bytes).subspan(76 + 4 * page));
                std::fill_n(noFat.begin() + 512 * (static_cast<std::ptrdiff_t>(in.u32()) + 1), 512, std::uint8_t{0});
            }
            for (Bytes* damaged : {&noDirectory, &noFat}) {
                if (!header)
                    std::fill_n(damaged->begin(), 512, std::uint8_t{0});
                expectNothingOfOthers(*damaged);
            }
            if (!header)
                continue;
            Bytes both = noDirectory;
            both.resize(both.size() / 2);
            expectNothingOfOthers(std::move(both));
        }
    }

    TemporaryFolder folder_;
    TQuobrixDocument made_;
    std::map<std::int32_t, Trip> final_;            ///< by start
    std::vector<std::pair<Bytes, Streams>> states_; ///< the file after each save, and what it held
    std::size_t state_ = 0;                         ///< which of them is damaged
    std::int32_t number_ = 0;
    std::size_t refused_ = 0, previous_ = 0, last_ = 0; ///< what became of damaged files
};

TEST_P(Shuffled, NoRecordIsGivenWhatIsAnothers) {
    make();
    state_ = states_.size() - 1;
    expectSafeWithout(states_.back().first);
    EXPECT_GT(previous_, 0u);
    ASSERT_TRUE(made_.compact());
    state_ = 0; // it is the only one
    Bytes once = *readFile(made_.path(), 1u << 24);
    expectSafeWithout(once);
    EXPECT_EQ(expectNothingOfOthers(Bytes(once.begin(), once.end() - 1024)), final_.size());
    std::fill_n(once.begin(), 512, std::uint8_t{0});
    EXPECT_EQ(expectNothingOfOthers(once), final_.size());
}

TEST_P(Shuffled, IsAsBeforeTheLastSaveOrRefused) {
    make();
    for (state_ = 1; state_ < states_.size(); ++state_) {
        const Bytes& bytes = states_[state_].first;
        for (std::size_t lost = 100; lost <= 20480; lost += 97 + lost / 16) {
            SCOPED_TRACE(testing::Message() << "state " << state_ << " without " << lost);
            const auto found = openForRepair(
                std::make_unique<MemoryFile>(Bytes(bytes.begin(), bytes.end() - static_cast<std::ptrdiff_t>(lost))));
            if (!found) {
                ++refused_;
            } else if (isBeforeTheLastSave(**found)) {
                ++previous_;
                EXPECT_TRUE(streamsOf(**found) == states_[state_ - 1].second);
            } else {
                ++last_;
                const Streams& was = states_[state_].second;
                for (const std::string& name : (*found)->names())
                    if (const auto content = (*found)->read(name)) {
                        EXPECT_TRUE(was.contains(name) && was.at(name) == *content) << name;
                    }
            }
        }
    }
    EXPECT_GT(previous_, 0u);
    std::printf("[  COUNTED ] without their end: %zu the last state, %zu the one before, %zu refused\n", last_,
                previous_, refused_);
}

INSTANTIATE_TEST_SUITE_P(Seeds, Shuffled, testing::Values(1, 2, 3));

} // namespace
} // namespace quobrix
