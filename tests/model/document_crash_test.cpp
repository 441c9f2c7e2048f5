/// Power cuts and failures during saves of whole documents: what opens afterwards is the old trip log or the new one.
#include "support/fault_file.h"
#include "support/memory_file.h"
#include "support/sample_trip.h"

#include <gtest/gtest.h>

#include <optional>

namespace quobrix {
namespace {

using namespace test;

using Content = std::vector<Value>;

/// Every value of a trip log with its samples and event times; nothing when a part of it cannot be read.
std::optional<Content> contentOf(ObjectStore& store) {
    const TTripLogTable& trips = store.singleton<TTripLogTable>();
    Content content;
    const auto add = [&](const Table& table) {
        for (std::size_t i = 0; i < table.columnCount(); ++i)
            for (RowIndex row = 0; row < table.rowCount() && table.column(i).kind() != ColumnKind::Table; ++row)
                content.push_back(table.column(i).value(row));
    };
    add(trips);
    for (RowIndex row = 0; row < trips.rowCount(); ++row) {
        const auto* samples = trips.column<TTripLogSampleTableColumn>().object(row);
        const auto* bands = trips.column<TTripLogSpeedBandsTableColumn>().object(row);
        const auto* brakes = trips.column<TTripLogHardBrakeTimesColumnColumn>().object(row);
        if (samples == nullptr || bands == nullptr || brakes == nullptr)
            return {};
        add(*samples);
        add(*bands);
        content.insert(content.end(), brakes->values().begin(), brakes->values().end());
    }
    for (const ObjectId id : store.objectIds())
        if (store.find(id) == nullptr)
            return {};
    if (!store.damage().empty())
        return {};
    return content;
}

/// A document over a disk that fails, saved as TDocument does it. It knows what the disk may hold at each moment.
class FragileDocument {
public:
    explicit FragileDocument(FaultDisk& disk) {
        auto file = CompoundFile::create(disk.file());
        while (!file) // the size could not be read
            file = CompoundFile::create(disk.file());
        file_ = *std::move(file);
    }

    void save() {
        allowed_.push_back(contentOf(document.store()));
        ASSERT_TRUE(allowed_.back());
        for (int attempt = 0; attempt < 4; ++attempt)
            if (document.store().save(*file_) && file_->commit()) {
                document.store().attach(*file_);
                document.store().saved();
                allowed_ = {allowed_.back()};
                saved_ = true;
                return;
            }
        FAIL() << "not saved after four attempts";
    }

    /// IMAGE opens as one of the documents that may be there, or, before the first save is done, does not open.
    bool allows(Bytes image) const {
        const auto file = CompoundFile::open(std::make_unique<MemoryFile>(std::move(image)));
        if (!file)
            return !saved_;
        ObjectStore store(modelTypes());
        store.load(**file);
        const std::optional<Content> found = contentOf(store);
        return found && std::ranges::find(allowed_, found) != allowed_.end();
    }

    TQuobrixDocument document;

private:
    std::unique_ptr<CompoundFile> file_;
    std::vector<std::optional<Content>> allowed_;
    bool saved_ = false;
};

constexpr std::int32_t kStart = 1'700'000'000;

/// Saves COUNT trips, then changes some, takes some out, whose objects' numbers go to new ones, and saves again.
void work(FragileDocument& fragile, int count) {
    TQuobrixDocument& document = fragile.document;
    const auto add = [&](int from, int end) {
        for (int i = from; i < end; ++i)
            document.trips().column<TTripLogDistanceColumn>().set(addTrip(document, kStart + 3600 * i), 1000 * i);
    };
    add(0, count);
    fragile.save();

    TTripLogTable& trips = document.trips();
    trips.column<TTripLogCommentsColumn>().set(0, "to the sea");
    trips.column<TTripLogSampleTableColumn>().object(0)->speed().setAll(std::vector<std::uint8_t>(61, 99));
    trips.removeRows(1, static_cast<std::size_t>(count / 2));
    add(count, count + count / 3);
    fragile.save();

    trips.removeRows(0, trips.rowCount());
    fragile.save();
}

/// With 200 trips a save writes more than 3,000 objects and moves some of them to the disk before its end.
class DocumentCrash : public testing::TestWithParam<int> {};

TEST_P(DocumentCrash, APowerCutAfterAnyWriteLeavesOldOrNew) {
    FaultDisk disk(3);
    FragileDocument fragile(disk);
    std::size_t cuts = 0;
    disk.afterEachChange = [&] {
        for (int cut = 0; cut < 16; ++cut, ++cuts)
            ASSERT_TRUE(fragile.allows(disk.powerCut())) << "after change " << disk.changes;
    };
    work(fragile, GetParam());
    RecordProperty("cuts", static_cast<int>(cuts));
    EXPECT_TRUE(fragile.allows(disk.powerCut()));
}

INSTANTIATE_TEST_SUITE_P(Trips, DocumentCrash, testing::Values(6, 200));

/// Save As copies the file, changed or not, and renames the copy once it is said to be durable.
TEST(DocumentCopy, IsDurableOnceItIsCommitted) {
    for (const bool changed : {false, true}) {
        const auto original = std::make_shared<Bytes>();
        TQuobrixDocument document;
        addTrip(document, kStart);
        auto file = CompoundFile::create(std::make_unique<MemoryFile>(original));
        ASSERT_TRUE(document.store().save(**file) && (*file)->commit());
        document.store().attach(**file);
        document.store().saved();
        if (changed)
            addTrip(document, kStart + 3600);
        const Bytes before = *original;

        FaultDisk disk(changed);
        ASSERT_TRUE((*file)->copyTo(*disk.file()));
        auto copy = CompoundFile::open(disk.file());
        ASSERT_TRUE(copy);
        ASSERT_TRUE(document.store().save(**copy) && (*copy)->commit());
        for (int cut = 0; cut < 64; ++cut) {
            const auto image = CompoundFile::open(std::make_unique<MemoryFile>(disk.powerCut()));
            ASSERT_TRUE(image);
            ObjectStore store(modelTypes());
            store.load(**image);
            ASSERT_EQ(contentOf(store), contentOf(document.store()));
        }
        EXPECT_EQ(*original, before);
    }
}

TEST(DocumentFailure, OfAnyOperationIsMadeGoodByTheNextSave) {
    for (std::size_t failAt = 1;; ++failAt) {
        FaultDisk disk(static_cast<unsigned>(failAt));
        disk.failAt = failAt;
        disk.failures = 2;
        disk.failWith = ErrorKind::DiskFull;
        FragileDocument fragile(disk);
        disk.afterEachChange = [&] {
            ASSERT_TRUE(fragile.allows(disk.powerCut())) << "operation " << failAt << " failed";
        };
        work(fragile, 3);
        ASSERT_TRUE(fragile.allows(disk.powerCut())) << "operation " << failAt << " failed";
        if (testing::Test::HasFailure() || disk.operations < failAt)
            break;
    }
}

} // namespace
} // namespace quobrix
