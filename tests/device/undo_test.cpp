/// Edits of every kind and downloads, undone and redone over any sequence of these, of saving and of opening again.
#include "device/merge.h"

#include "repair/document_check.h"
#include "support/allocation_counter.h"
#include "support/document_streams.h"
#include "support/temporary_folder.h"
#include "tables/tabbed_text.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <gtest/gtest.h>

#include <fmt/format.h>

#include <map>
#include <new>
#include <random>

namespace quobrix::testing {
namespace {

constexpr std::int32_t kDay = 1'700'000'000;

TripRecord drive(std::int32_t start, std::size_t seconds) {
    TripRecord record;
    record.origin = {start % 3 == 0 ? "K-0042-B" : "K-0043-B", "1HGCM82633A004352"};
    record.driverId = start % 4;
    record.startTime = start;
    record.endTime = start + static_cast<std::int32_t>(seconds);
    record.speedSamplingInterval = 1;
    record.speedSamples.assign(seconds + 1, 50);
    record.hardBrakes = {5};
    record.series[0] = {2, 5, false, {800, kNoValue, 1200}};
    return record;
}

/// What a file with the document in it would hold.
struct Image {
    std::map<ObjectId, Bytes> objects;
    std::vector<ObjectId> freeIds;
    ObjectId next = 0;
    std::map<std::uint32_t, ObjectId> singletons;
};

/// What is not the same in both; empty: nothing.
std::string difference(const Image& a, const Image& b) {
    std::string text;
    for (const Image* one : {&a, &b})
        for (const auto& [id, content] : one->objects)
            if (const Image& other = one == &a ? b : a; !other.objects.contains(id))
                text += fmt::format("only {} has {}; ", one == &a ? "one" : "other", id);
            else if (one == &a && other.objects.at(id) != content)
                text += fmt::format("{} ({:x}) differs; ", id, ByteReader(content).u32());
    if (a.freeIds != b.freeIds || a.next != b.next)
        text += fmt::format("free {} before {}, {} before {}; ", fmt::join(a.freeIds, " "), a.next,
                            fmt::join(b.freeIds, " "), b.next);
    return a.singletons == b.singletons ? text : text + "singletons differ";
}

class UndoneAndRedone : public ::testing::Test {
protected:
    TableEdits& edits() { return document_.edits(); }

    /// What was not loaded yet is as it was IN, and is not loaded for this.
    Image image(const Image& in = {}) {
        Image now{in.objects, document_.store().freeIds(), document_.store().nextAvailableId(),
                  document_.store().singletonIds()};
        const std::vector<ObjectId> ids = document_.store().objectIds();
        std::erase_if(now.objects, [&](const auto& o) { return !std::ranges::binary_search(ids, o.first); });
        for (const PersistentObject* object : document_.store().loadedObjects()) {
            ByteWriter out;
            out.u32(object->type().id());
            out.u8(object->type().schema);
            object->write(out);
            now.objects[object->id()] = out.take();
        }
        EXPECT_EQ(now.objects.size(), ids.size());
        return now;
    }
    static Image imageOf(const test::Streams& streams) {
        Image image;
        for (const auto& [name, content] : streams)
            if (const ObjectId id = idOfStream(name); id != kNoObject)
                image.objects[id] = content;
        ByteReader free(streams.at("Available Ids"));
        for (std::uint32_t left = free.u32(); left > 0; --left)
            image.freeIds.push_back(free.u32());
        ByteReader singletons(streams.at("Singleton Ids"));
        for (std::uint32_t left = singletons.u32(); left > 0; --left) {
            const std::uint32_t type = singletons.u32();
            image.singletons[type] = singletons.u32();
        }
        image.next = ByteReader(streams.at("Next Available Id")).u32();
        return image;
    }

    void download(std::mt19937& random) {
        LogRecords records;
        for (std::size_t i = random() % 4; i > 0; --i)
            records.trips.push_back(drive(kDay + static_cast<std::int32_t>(random() % 12), 3 + random() % 6));
        if (random() % 4 == 0)
            records.troubles.push_back(
                {.origin = records.trips.empty() ? RecordOrigin{"K-0044-B", {}} : records.trips.front().origin,
                 .time = kDay + static_cast<std::int32_t>(random() % 5),
                 .code = "P0300",
                 .engineSpeed = random() % 2 ? 900 : kNoValue});
        if (random() % 6 == 0)
            records.stops.push_back({.origin = {"K-0042-B", {}},
                                     .startTime = kDay + static_cast<std::int32_t>(random() % 5),
                                     .timestamp = kDay + 20,
                                     .samplingInterval = 1,
                                     .speedSamples = {20, 10, 0}});
        static_cast<void>(mergeRecords(records, document_));
    }
    static std::string typed(std::mt19937& random) {
        constexpr const char* kTexts[] = {
            "",    "7",    "12", "x", "K-0077-C", "Joe", "1GTEK19T23E999999", "50", "Zoë ", "30 kph", "Battery Voltage",
            "1e3", "a\nb", "-1"};
        return random() % 3 ? kTexts[random() % std::size(kTexts)] : std::to_string(random() % 1000);
    }
    /// A download, or an edit of any kind in any table that has something to edit. Many are refused.
    void edit(std::mt19937& random) {
        const auto below = [&](std::size_t limit) { return random() % limit; };
        if (below(4) == 0)
            return download(random);
        ObjectStore& store = document_.store();
        const Table* const tables[] = {&document_.trips(),
                                       &document_.trips(),
                                       &document_.troubles(),
                                       &document_.vehicles(),
                                       &document_.loggers(),
                                       &document_.drivers(),
                                       &store.singleton<TCurrentSpeedBandsTable>(),
                                       &store.singleton<TCurrentParametersTable>()};
        const Table& table = *tables[below(std::size(tables))];
        const ObjectId id = table.id();
        const RowIndex row = below(table.rowCount() + 2);
        std::size_t column = 0;
        do
            column = below(table.columnCount());
        while (!table.column(column).editable());
        switch (below(7)) {
        case 0:
            edits().insertRows(id, row, 1 + below(3));
            return;
        case 1:
        case 2:
            edits().removeRows(id, {row, below(table.rowCount() + 1)});
            return;
        case 3:
            edits().fill(id, {{column}}, std::vector<RowIndex>{row, row / 2}, typed(random), context_, "fill");
            return;
        case 4: {
            TabbedText block(2);
            for (std::size_t i = 2 * (1 + below(3)); i > 0; --i)
                block.add(typed(random));
            edits().paste(id, std::vector<std::size_t>{column, (column + 1) % table.columnCount()},
                          std::vector<RowIndex>{row}, block, context_);
            return;
        }
        case 5:
            edits().group("a group", [&] {
                edits().insertRows(id, row);
                edits().type(id, column, row, typed(random), context_);
                const std::string other = typed(random); // in the same cell it could take the first one back
                return row == 0 ? EditOutcome{} : edits().type(id, column, row / 2, other, context_);
            });
            return;
        default:
            edits().type(id, column, row, typed(random), context_);
        }
    }
    void step(std::mt19937& random, bool mayFail) {
        Image& now = images_[at_];
        switch (random() % 12) {
        case 0:
        case 1:
        case 2:
            if (edits().canUndo()) {
                edits().undo();
                ASSERT_GT(at_, 0u);
                ASSERT_EQ(difference(image(now), images_[--at_]), "");
            }
            return;
        case 3:
        case 4:
            if (edits().canRedo()) {
                edits().redo();
                ASSERT_EQ(difference(image(now), images_[++at_]), "");
            }
            return;
        case 5:
            if (document_.modified() && random() % 3 == 0) {
                ASSERT_FALSE(document_.save({.runDisk = [](const DiskWork&) { return Error{ErrorKind::Io, {}}; }}));
                ASSERT_EQ(difference(image(now), now), "");
            }
            ASSERT_TRUE(document_.save());
            ASSERT_EQ(difference(imageOf(test::streamsOf(path_)), now), "");
            ASSERT_FALSE(document_.doubt()) << *document_.doubt();
            return;
        case 6:
            if (random() % 4)
                return;
            ASSERT_TRUE(document_.compact());
            ASSERT_EQ(difference(imageOf(test::streamsOf(path_)), now), "");
            return;
        case 7:
            if (random() % 4 || document_.modified())
                return;
            ASSERT_TRUE(document_.open(path_, TDocument::Access::Edit)); // from now on lazily
            images_ = {imageOf(test::streamsOf(path_))};
            at_ = 0;
            return;
        default:
            break;
        }
        test::failAllocation(mayFail ? 1 + random() % 3000 : 0);
        bool failed = false;
        try {
            edit(random);
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        test::failAllocation(0);
        Image after = image(now);
        if (failed)
            ASSERT_EQ(difference(after, now), "") << "an edit that fails changes nothing";
        else if (!difference(after, now).empty()) {
            images_.resize(at_ + 1);
            images_.push_back(std::move(after));
            ++at_;
        }
    }

    TUnitSystem units_;
    TimeZone zone_;
    TextContext context_{units_, zone_};
    test::TemporaryFolder folder_;
    const std::filesystem::path path_ = folder_ / "Test.car";
    TQuobrixDocument document_;
    std::vector<Image> images_;
    std::size_t at_ = 0;
};

TEST_F(UndoneAndRedone, AnySequenceLeadsBack) {
    for (unsigned seed = 0; seed < 12; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        document_.newDocument();
        document_.store().singleton<TCurrentSpeedBandsTable>().insertRows(0, 4);
        document_.store().singleton<TCurrentParametersTable>().insertRows(0, 5);
        std::filesystem::remove(path_);
        ASSERT_TRUE(document_.saveAs(path_));
        images_ = {image()};
        at_ = 0;
        for (int i = 0; i < 150; ++i)
            ASSERT_NO_FATAL_FAILURE(step(random, seed % 2 == 0)) << i;
        const std::size_t last = at_;
        while (edits().canUndo())
            edits().undo();
        EXPECT_EQ(difference(image(images_[last]), images_[0]), "");
        document_.forgetUnchanged();
        while (edits().canRedo())
            edits().redo();
        EXPECT_EQ(difference(image(images_[0]), images_.back()), "");
        ASSERT_TRUE(document_.save());
        EXPECT_EQ(difference(imageOf(test::streamsOf(path_)), images_.back()), "");
        ASSERT_TRUE(document_.open(path_, TDocument::Access::Edit));
        EXPECT_TRUE(checkDocument(document_).sound());
    }
}

} // namespace
} // namespace quobrix::testing
