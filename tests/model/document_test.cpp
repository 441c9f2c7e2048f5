#include "repair/document_check.h"

#include "support/document_streams.h"
#include "support/sample_trip.h"
#include "support/temporary_folder.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

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
        ASSERT_TRUE(document.saveAs(path_, IfThere::Replace));
    }

    static void expectOpens(TQuobrixDocument& document, const std::filesystem::path& path) {
        const Result<void> opened = document.open(path, TDocument::Access::Edit);
        ASSERT_TRUE(opened) << opened.error().detail;
    }

    TemporaryFolder folder_;
    const std::filesystem::path path_ = folder_ / "Test.car";
    ObjectId distanceId_ = kNoObject;
};

TEST_F(DocumentFile, ANewOneHoldsIndexAndRoots) {
    TQuobrixDocument document;
    ASSERT_TRUE(document.saveAs(path_));
    Streams streams = streamsOf(path_);
    const std::size_t objects = document.store().objectCount();
    EXPECT_EQ(objects, 6 + 45 + 20 + 8 + 4 + 3 + 3u); // the root tables and their columns
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

TEST_F(DocumentFile, DamagedColumnsReadAsNothing) {
    // What else may be wrong with the stream of an object; none: it is not there.
    const std::function<void(Bytes&)> damages[] = {
        nullptr,
        [](Bytes& s) { s.clear(); },
        [](Bytes& s) { s.resize(4); },
        [](Bytes& s) { s.push_back(0); },
        [](Bytes& s) { s[0] ^= 0xFF; },                     // another class
        [](Bytes& s) { s[5] = s[6] = s[7] = s[8] = 0xFF; }, // a count that nothing holds
        [](Bytes& s) { s.resize(9 + 8), s[5] = 1; },        // a column of one row
    };
    for (const auto& damage : damages) {
        saveTrips(3);
        const std::string name = std::to_string(distanceId_);
        tamper(path_, [&](CompoundFile& file) {
            Bytes content = *file.read(name);
            file.remove(name);
            if (damage) {
                damage(content);
                file.write(name, content);
            }
        });
        const Streams damaged = streamsOf(path_);
        TQuobrixDocument document;
        expectOpens(document, path_);
        EXPECT_FALSE(document.readOnly());
        EXPECT_EQ(document.trips().column<TTripLogDistanceColumn>().value(1), Value());
        EXPECT_EQ(document.trips().column<TTripLogHardBrakesColumn>().value(1), Value(std::int64_t{2}));
        EXPECT_EQ(document.affectedLogs(), std::vector<std::string>{"Trip Log"});
        EXPECT_THROW(addTrip(document, kStart + 86400), std::logic_error) << "its rows could not follow";
        EXPECT_THROW(document.trips().removeRows(0, 1), std::logic_error);
        EXPECT_THROW(document.trips().column<TTripLogDistanceColumn>().setAll({1, 2, 3}), std::logic_error);
        ASSERT_TRUE(document.save());
        EXPECT_TRUE(streamsOf(path_) == damaged);
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
        {"Next Available Id", u32s({5})}, // issued already
        {"Available Ids", u32s({1, 3})},  // in use
        {"Object Ids", ones},
        {"Object Ids", u32s({3, 0, 1, 1})},
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

// The check

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
