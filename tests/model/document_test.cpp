#include "repair/document_check.h"

#include "support/document_streams.h"
#include "support/sample_trip.h"
#include "support/temporary_folder.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace quobrix {
namespace {

using namespace test;

class DocumentFile : public testing::Test {
protected:
    /// Saves a document with COUNT trips.
    void saveTrips(int count) {
        TQuobrixDocument document;
        for (int i = 0; i < count; ++i)
            addTrip(document, kStart + 3600 * i);
        distanceId_ = document.trips().column<TTripLogDistanceColumn>().id();
        tripsId_ = document.trips().id();
        ASSERT_TRUE(document.saveAs(path_, IfThere::Replace));
    }

    static void expectOpens(TQuobrixDocument& document, const std::filesystem::path& path) {
        const Result<void> opened = document.open(path, TDocument::Access::Edit);
        ASSERT_TRUE(opened) << opened.error().detail;
    }

    TemporaryFolder folder_;
    const std::filesystem::path path_ = folder_ / "Test.car";
    ObjectId distanceId_ = kNoObject, tripsId_ = kNoObject;
};

TEST_F(DocumentFile, ANewOneHoldsIndexAndRoots) {
    TQuobrixDocument document;
    ASSERT_TRUE(document.saveAs(path_));
    Streams streams = streamsOf(path_);
    const std::size_t objects = document.store().objectCount();
    EXPECT_EQ(objects, 6 + 41 + 19 + 7 + 3 + 3 + 3u); // the root tables and their columns
    EXPECT_EQ(streams.size(), 6 + objects);
    EXPECT_EQ(streams["Contents"], u32s({2}));
    EXPECT_EQ(streams["Version"], u32s({3}));
    EXPECT_EQ(streams["Next Available Id"], u32s({static_cast<std::uint32_t>(objects)}));
    EXPECT_EQ(streams["Available Ids"], u32s({0}));
    EXPECT_EQ(streams["Object Ids"].size(), 4 + 4 * objects);
    EXPECT_EQ(streams["Singleton Ids"].size(), 4 + 8 * 6u);
    for (std::size_t id = 0; id < objects; ++id)
        EXPECT_TRUE(streams.contains(std::to_string(id))) << id;
    const std::string trips = std::to_string(document.trips().id());
    EXPECT_EQ(ByteReader(streams[trips]).u32(), nameHash("TTripLogTable"));
    EXPECT_FALSE(document.modified());
}

TEST_F(DocumentFile, SavingAgainChangesNoStream) {
    saveTrips(3);
    const Streams before = streamsOf(path_);
    TQuobrixDocument document;
    expectOpens(document, path_);
    EXPECT_FALSE(document.modified());
    for (const ObjectId id : document.store().objectIds()) {
        ASSERT_NE(document.store().find(id), nullptr) << id;
        document.store().find(id)->setModified();
    }
    EXPECT_TRUE(document.store().damage().empty());
    ASSERT_TRUE(document.save());
    EXPECT_EQ(streamsOf(path_), before);
}

TEST_F(DocumentFile, ATripOwns18ObjectsAndAStopFour) {
    TQuobrixDocument document;
    const std::size_t none = document.store().objectCount();
    addTrip(document, kStart);
    addTrip(document, kStart + 3600);
    EXPECT_EQ(document.store().objectCount(), none + 2 * 18 - 2 * 3); // the sample has no parameter table
    for (RowIndex row : {0, 1})
        document.trips().column<TTripLogParametersTableColumn>().makeObject(row);
    EXPECT_EQ(document.store().objectCount(), none + 2 * TTripLogTable::kObjectsPerTrip);
    document.trips().removeRows(0, 2);
    EXPECT_EQ(document.store().objectCount(), none);

    TAccidentLogTable& stops = document.store().singleton<TAccidentLogTable>();
    const std::size_t withLog = document.store().objectCount();
    stops.insertRows(0, 1);
    stops.column<TAccidentLogSpeedBandsTableColumn>().makeObject(0);
    stops.column<TAccidentLogSpeedSamplesColumn>().makeObject(0);
    EXPECT_EQ(document.store().objectCount(), withLog + TAccidentLogTable::kObjectsPerStop);
}

TEST_F(DocumentFile, FreeIdsAreReusedInOrder) {
    TQuobrixDocument document;
    std::vector<ObjectId> ids;
    for (int i = 0; i < 4; ++i)
        ids.push_back(document.store().create<TTripLogTimesColumn>().id());
    ASSERT_TRUE(document.saveAs(path_));
    document.store().destroy(ids[2]);
    document.store().destroy(ids[0]);
    ASSERT_TRUE(document.save());

    Streams streams = streamsOf(path_);
    EXPECT_EQ(streams["Available Ids"], u32s({2, ids[2], ids[0]}));
    EXPECT_FALSE(streams.contains(std::to_string(ids[0])) || streams.contains(std::to_string(ids[2])));

    TQuobrixDocument again;
    expectOpens(again, path_);
    EXPECT_EQ(again.store().create<TTripLogTimesColumn>().id(), ids[2]);
    EXPECT_EQ(again.store().create<TTripLogTimesColumn>().id(), ids[0]);
    EXPECT_EQ(again.store().create<TTripLogTimesColumn>().id(), ids[3] + 1);
}

// Ways in which the stream of an object may be damaged.

struct StreamDamage {
    const char* name;
    void (*apply)(Bytes& stream); ///< none: it is not there
};
constexpr StreamDamage kDamages[] = {
    {"Missing", nullptr},
    {"Empty", [](Bytes& s) { s.clear(); }},
    {"HeadCut", [](Bytes& s) { s.resize(4); }},
    {"Truncated", [](Bytes& s) { s.pop_back(); }},
    {"TooLong", [](Bytes& s) { s.push_back(0); }},
    {"UnknownClass", [](Bytes& s) { s[0] ^= 0xFF; }},
    {"HostileCount", [](Bytes& s) { s[5] = s[6] = s[7] = s[8] = 0xFF; }},
    {"OtherLength", [](Bytes& s) { s.resize(9 + 8), s[5] = 1; }},
};

class DamagedColumn : public DocumentFile, public testing::WithParamInterface<StreamDamage> {};

TEST_P(DamagedColumn, ReadsAsNothingAndItsBytesSurviveASave) {
    saveTrips(3);
    const std::string name = std::to_string(distanceId_);
    tamper(path_, [&](CompoundFile& file) {
        Bytes content = *file.read(name);
        if (GetParam().apply) {
            GetParam().apply(content);
            file.write(name, content);
        } else {
            file.remove(name);
        }
    });
    const auto stream = [&] {
        const Streams streams = streamsOf(path_);
        return streams.contains(name) ? std::optional(streams.at(name)) : std::nullopt;
    };
    const std::optional<Bytes> damaged = stream();

    TQuobrixDocument document;
    expectOpens(document, path_);
    EXPECT_FALSE(document.readOnly());
    EXPECT_EQ(document.trips().rowCount(), 3u);
    EXPECT_EQ(document.trips().column<TTripLogDistanceColumn>().value(1), Value());
    EXPECT_EQ(document.trips().column<TTripLogHardBrakesColumn>().value(1), Value(std::int64_t{2}));
    EXPECT_EQ(document.affectedLogs(), std::vector<std::string>{"Trip Log"});

    document.trips().column<TTripLogCommentsColumn>().set(1, "kept");
    ASSERT_TRUE(document.save());
    EXPECT_EQ(stream(), damaged);
    // Its rows could not follow, so none move.
    EXPECT_THROW(addTrip(document, kStart + 86400), std::logic_error);
    EXPECT_THROW(document.trips().removeRows(0, 1), std::logic_error);
    EXPECT_THROW(document.trips().column<TTripLogDistanceColumn>().setAll({1, 2, 3}), std::logic_error);
    EXPECT_EQ(document.trips().column<TTripLogHardBrakesColumn>().values().size(), 3u);
    ASSERT_TRUE(document.save());
    EXPECT_EQ(stream(), damaged);

    TQuobrixDocument again;
    expectOpens(again, path_);
    EXPECT_EQ(again.trips().column<TTripLogCommentsColumn>().at(1), "kept");
    EXPECT_EQ(again.affectedLogs(), std::vector<std::string>());
    EXPECT_EQ(again.trips().column<TTripLogDistanceColumn>().value(1), Value());
    EXPECT_EQ(again.affectedLogs(), std::vector<std::string>{"Trip Log"}) << "as before";
}

INSTANTIATE_TEST_SUITE_P(Kinds, DamagedColumn, testing::ValuesIn(kDamages),
                         [](const auto& kind) { return kind.param.name; });

TEST_F(DocumentFile, WithADamagedRootTableItIsReadOnly) {
    // Once the table's own stream, and once a row count that none of its columns has.
    const std::function<void(Bytes&)> damages[] = {[](Bytes& s) { s.resize(7); },
                                                   [](Bytes& s) { s[5] = s[6] = s[7] = s[8] = 0xFF; }};
    for (const auto& damage : damages) {
        saveTrips(2);
        const std::string name = std::to_string(tripsId_);
        Bytes damaged = streamsOf(path_)[name];
        damage(damaged);
        tamper(path_, [&](CompoundFile& file) { file.write(name, damaged); });
        TQuobrixDocument document;
        expectOpens(document, path_);
        EXPECT_TRUE(document.readOnly());
        EXPECT_EQ(document.trips().rowCount(), 0u);
        EXPECT_EQ(document.vehicles().rowCount(), 1u);
        EXPECT_EQ(document.affectedLogs(), std::vector<std::string>{"Trip Log"});
        document.vehicles().addMissing(std::vector<std::string>{"1M8GDM9AXKP042788"});
        EXPECT_FALSE(document.save());
        // Under another name everything is kept that could not be read.
        ASSERT_TRUE(document.saveAs(folder_ / "Copy.car", IfThere::Replace));
        EXPECT_EQ(streamsOf(folder_ / "Copy.car")[name], damaged);
        TQuobrixDocument copy;
        expectOpens(copy, folder_ / "Copy.car");
        EXPECT_EQ(copy.vehicles().rowCount(), 2u);
    }
}

/// Gives the table TABLE of FILE a column of a class that only a later version knows.
ObjectId addForeignColumn(CompoundFile& file, ObjectId table) {
    const ObjectId id = ByteReader(*file.read("Next Available Id")).u32();
    Bytes ids = *file.read("Object Ids");
    const Bytes added = u32s({id});
    ids.insert(ids.end(), added.begin(), added.end());
    ++ids[0];
    file.write("Object Ids", ids);
    file.write("Next Available Id", u32s({id + 1}));
    file.write(std::to_string(id), {'n', 'e', 'w', '!', 7, 1, 2, 3});
    Bytes content = *file.read(std::to_string(table));
    ++content[9];
    const Bytes column = u32s({0x2177656E, id});
    content.insert(content.begin() + 13, column.begin(), column.end()); // before the others
    file.write(std::to_string(table), content);
    return id;
}

TEST_F(DocumentFile, ColumnOfALaterVersionIsKept) {
    saveTrips(2);
    ObjectId drivers = kNoObject, samples = kNoObject, ofDrivers = kNoObject, ofSamples = kNoObject;
    {
        TQuobrixDocument document;
        expectOpens(document, path_);
        document.drivers().addMissing(std::vector<std::string>{"1", "2"});
        drivers = document.drivers().id();
        samples = document.trips().column<TTripLogSampleTableColumn>().at(0);
        ASSERT_TRUE(document.save());
    }
    tamper(path_, [&](CompoundFile& file) {
        ofDrivers = addForeignColumn(file, drivers);
        ofSamples = addForeignColumn(file, samples);
    });
    const Streams before = streamsOf(path_);
    TQuobrixDocument document;
    expectOpens(document, path_);
    EXPECT_FALSE(document.readOnly());
    EXPECT_TRUE(document.store().damage().empty());

    // How its cells lie nobody here knows, so no rows move beside it; those that are there can be edited.
    TableEdits& edits = document.edits();
    const std::string refusal = edits.insertRows(drivers, 0).refusal;
    EXPECT_NE(refusal.find("a later version"), std::string::npos) << refusal;
    EXPECT_EQ(edits.removeRows(drivers, {0}).refusal, refusal);
    EXPECT_THROW(document.drivers().addMissing(std::vector<std::string>{"3"}), std::logic_error);
    TUnitSystem units;
    TimeZone zone;
    EXPECT_TRUE(edits.type(drivers, 1, 0, "Ann", {units, zone}).ok());
    ASSERT_TRUE(document.save());
    for (const ObjectId id : {drivers, ofDrivers, ofSamples})
        EXPECT_EQ(streamsOf(path_)[std::to_string(id)], before.at(std::to_string(id))) << id;

    document.trips().removeRows(0, 1);
    ASSERT_TRUE(document.save());
    EXPECT_FALSE(streamsOf(path_).contains(std::to_string(ofSamples)));
    EXPECT_TRUE(streamsOf(path_).contains(std::to_string(ofDrivers)));
    const std::vector<ObjectId> ids = document.store().objectIds();
    EXPECT_FALSE(std::ranges::binary_search(ids, ofSamples));
    EXPECT_TRUE(checkDocument(document).sound());
}

TEST_F(DocumentFile, ALaterLayoutMetAfterAnEdit) {
    saveTrips(2);
    tamper(path_, [&](CompoundFile& file) {
        Bytes content = *file.read(std::to_string(distanceId_));
        content[4] = 99;
        file.write(std::to_string(distanceId_), content);
    });
    TQuobrixDocument document;
    expectOpens(document, path_);
    ASSERT_TRUE(document.edits().insertRows(document.drivers().id(), 0).ok());
    document.trips().column<TTripLogDistanceColumn>();
    EXPECT_FALSE(document.edits().insertRows(document.drivers().id(), 0).ok());
    EXPECT_FALSE(document.readOnly());
    ASSERT_TRUE(document.save());
    EXPECT_EQ(document.readOnlyReason()->kind, ErrorKind::Unsupported);
    TQuobrixDocument again;
    ASSERT_TRUE(again.open(path_, TDocument::Access::Read));
    EXPECT_EQ(again.drivers().rowCount(), 1u);
}

TEST_F(DocumentFile, WhatALaterVersionHasWrittenIsOnlyRead) {
    saveTrips(2);
    tamper(path_, [](CompoundFile& file) { file.write("Version", u32s({ObjectStore::kVersion + 1})); });
    const Bytes before = *readFile(path_, 1u << 24);
    TQuobrixDocument document;
    expectOpens(document, path_);
    EXPECT_EQ(document.trips().rowCount(), 2u);
    EXPECT_EQ(document.readOnlyReason()->kind, ErrorKind::Unsupported);
    EXPECT_TRUE(openFile(path_, FileMode::ReadWrite)) << "the later version may write to it";
    EXPECT_FALSE(document.edits().insertRows(document.drivers().id(), 0).ok());
    addTrip(document, kStart + 9000);
    for (const Result<void>& refused :
         {document.save(), document.overwrite(), document.compact(), document.saveAs(folder_ / "New.car")})
        EXPECT_FALSE(refused);
    EXPECT_EQ(document.saveAs(folder_ / "New.car").error().kind, ErrorKind::Unsupported);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "New.car"));
    EXPECT_EQ(*readFile(path_, 1u << 24), before);
}

TEST_F(DocumentFile, ADamagedIndexIsRebuiltFromTheStreams) {
    const Bytes ones(4, 0xFF);
    const std::pair<const char*, Bytes> damages[] = {
        {"Version", {}},
        {"Next Available Id", {}},
        {"Next Available Id", ones},
        {"Next Available Id", u32s({5})}, // issued already
        {"Available Ids", {}},
        {"Available Ids", ones},
        {"Available Ids", u32s({1, 3})}, // in use
        {"Object Ids", {}},
        {"Object Ids", ones},
        {"Object Ids", u32s({3, 0, 1, 1})},
        {"Singleton Ids", {}},
        {"Singleton Ids", ones},
        {"Singleton Ids", u32s({1, nameHash("TTripLogTable"), 99999})},
    };
    for (const auto& [stream, content] : damages) {
        SCOPED_TRACE(stream);
        saveTrips(2);
        tamper(path_, [&](CompoundFile& file) { file.write(stream, content); });
        TQuobrixDocument document;
        expectOpens(document, path_);
        EXPECT_TRUE(document.readOnly());
        EXPECT_EQ(document.trips().rowCount(), 2u);
        EXPECT_FALSE(checkDocument(document).sound());
    }
}

TEST_F(DocumentFile, ARootThatTheIndexDoesNotNameIsDamage) {
    saveTrips(2);
    tamper(path_, [&](CompoundFile& file) { file.write("Singleton Ids", u32s({0})); });
    TQuobrixDocument document;
    expectOpens(document, path_);
    EXPECT_FALSE(checkDocument(document).sound());
}

// The check

TEST_F(DocumentFile, TheCheckFindsNothingInASoundDocument) {
    saveTrips(2);
    TQuobrixDocument document;
    expectOpens(document, path_);
    const DocumentCheck check = checkDocument(document);
    EXPECT_TRUE(check.sound());
    EXPECT_TRUE(check.notes.empty());
    EXPECT_EQ(check.objects, document.store().objectCount());
    EXPECT_FALSE(document.modified());
}

TEST_F(DocumentFile, TheCheckFollowsEveryReference) {
    TQuobrixDocument made;
    addTrip(made, kStart);
    addTrip(made, kStart + 3600);
    addTrip(made, kStart + 7200);
    auto& times = made.trips().column<TTripLogHardBrakeTimesColumnColumn>();
    const ObjectId orphan = times.at(0), shared = times.at(1);
    times.setAll({shared, shared, 77777});
    made.trips().column<TTripLogPanicBrakeTimesColumnColumn>().set(0, made.vehicles().id());
    ASSERT_TRUE(made.saveAs(path_));
    const std::string drivers = std::to_string(made.drivers().id());
    made.newDocument(); // lets go of the file
    tamper(path_, [&](CompoundFile& file) {
        file.write("66666", {1});
        Bytes bytes = *file.read(drivers);
        bytes[0] ^= 1; // the class is none that is known, and not what the index says
        file.write(drivers, bytes);
    });

    TQuobrixDocument document;
    expectOpens(document, path_);
    const DocumentCheck check = checkDocument(document);
    std::vector<std::string> damages, notes;
    for (const CheckFinding& finding : check.damages)
        damages.push_back(finding.log + ": " + finding.what);
    for (const CheckFinding& finding : check.notes)
        notes.push_back(finding.what);
    const auto mentions = [](const std::vector<std::string>& lines, const std::string& text) {
        return std::ranges::any_of(lines, [&](auto& line) { return line.find(text) != std::string::npos; });
    };
    EXPECT_EQ(damages.size(), 5u);
    EXPECT_EQ(check.damagedObjects, 3u); // one of the objects does not exist, and the stream is none's
    EXPECT_TRUE(mentions(damages, "Trip Log: "));
    EXPECT_TRUE(mentions(damages, "the class is not known"));
    EXPECT_TRUE(mentions(damages, "object 77777, which does not exist"));
    EXPECT_TRUE(mentions(damages, "both refer to object " + std::to_string(shared)));
    EXPECT_TRUE(mentions(damages, "which is a TVehicleNamesTable"));
    EXPECT_TRUE(mentions(damages, "\"66666\" belongs to no object"));
    EXPECT_TRUE(std::ranges::any_of(check.notes, [&](auto& note) { return note.id == orphan; }));
    // Deleting what refers wrongly must not take along what belongs elsewhere.
    document.trips().removeRows(0, 3);
    EXPECT_EQ(document.vehicles().rowCount(), 1u);
}

TEST_F(DocumentFile, AColumnThatTwoTablesNameStaysWithTheFirst) {
    TQuobrixDocument made;
    addTrip(made, kStart);
    addTrip(made, kStart + 3600);
    auto& tables = made.trips().column<TTripLogSpeedBandsTableColumn>();
    const ObjectId first = tables.at(0), second = tables.at(1);
    ASSERT_TRUE(made.saveAs(path_));
    made.newDocument(); // lets go of the file
    tamper(path_, [&](CompoundFile& file) {
        Bytes stolen = *file.read(std::to_string(first));
        stolen[5] = 4; // and of another length
        file.write(std::to_string(second), stolen);
    });
    TQuobrixDocument document;
    expectOpens(document, path_);
    auto& bands = document.trips().column<TTripLogSpeedBandsTableColumn>();
    ASSERT_TRUE(bands.object(0));
    const auto& from = bands.object(0)->column<TTripLogSpeedBandFromColumn>();
    EXPECT_EQ(from.storedRows(), 5u);
    ASSERT_TRUE(bands.object(1));
    EXPECT_EQ(bands.object(1)->rowCount(), 0u);
    EXPECT_EQ(from.at(2), 45 * kMph); // still there
    EXPECT_FALSE(checkDocument(document).sound());
    document.trips().removeRows(1, 1);
    EXPECT_EQ(bands.object(0)->column<TTripLogSpeedBandFromColumn>().at(2), 45 * kMph);
}

} // namespace
} // namespace quobrix
