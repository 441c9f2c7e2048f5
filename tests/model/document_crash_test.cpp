/// Power cuts, failures and full disks while documents are saved, copied and compacted: what opens afterwards is the
/// old document or the new one, and its backup is the old one or the one before.
#include "support/fault_folder.h"
#include "support/sample_trip.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>

namespace quobrix {
namespace {

using namespace test;

using Content = std::vector<Value>;
namespace fs = std::filesystem;

/// Every value of a trip log with its samples and event times; nothing when a part of it cannot be read.
std::optional<Content> contentOf(TDocument& document) {
    ObjectStore& store = document.store();
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

const fs::path kDocument = "/Doc.car", kBackup = "/Doc.car.bak", kOther = "/Other.car", kNew = "/New.car";

void addTrips(TQuobrixDocument& document, int from, int end) {
    for (int i = from; i < end; ++i)
        document.trips().column<TTripLogDistanceColumn>().set(addTrip(document, kStart + 3600 * i), 1000 * i);
}

void comment(TQuobrixDocument& document, const char* text) {
    document.trips().column<TTripLogCommentsColumn>().set(0, text);
}

/// Changes some trips of a document that has COUNT, and takes some out, whose objects' numbers go to new ones.
void change(TQuobrixDocument& document, int count) {
    TTripLogTable& trips = document.trips();
    comment(document, "to the sea");
    trips.column<TTripLogSampleTableColumn>().object(0)->speed().setAll(std::vector<std::uint8_t>(61, 99));
    trips.removeRows(1, static_cast<std::size_t>(count / 2));
    addTrips(document, count, count + count / 3);
}

/// Contents that have been met, each as a number; 0 is that of a file which is not there or in which a part is not
/// right.
using ContentId = std::size_t;

ContentId idOf(std::optional<Content> content) {
    static std::vector<std::optional<Content>> known{std::nullopt};
    auto place = std::find(known.begin(), known.end(), content);
    if (place == known.end())
        place = known.insert(place, std::move(content));
    return static_cast<ContentId>(place - known.begin());
}

/// What opening PATH in a folder that looks like IMAGE yields.
ContentId contentOf(const FaultFolder::Image& image, const fs::path& path) {
    const auto file = image.find(path);
    if (file == image.end())
        return 0;
    // Most files of most images are alike.
    static std::unordered_map<std::string, ContentId> known;
    const auto [place, fresh] =
        known.try_emplace({reinterpret_cast<const char*>(file->second.data()), file->second.size()});
    if (fresh) {
        FaultFolder folder(1, {*file});
        TQuobrixDocument document(folder);
        place->second = document.open(path, TDocument::Access::Read) ? idOf(contentOf(document)) : 0;
    }
    return place->second;
}

/// A folder with a document of COUNT trips, which has unused space, its older backup, and another document.
FaultFolder::Image folderWithDocuments(int count) {
    FaultFolder folder(1);
    TQuobrixDocument document(folder);
    addTrips(document, 0, count);
    EXPECT_TRUE(document.saveAs(kBackup));
    document.trips().removeRows(0, 1);
    addTrips(document, count, count + 1);
    EXPECT_TRUE(document.saveAs(kDocument));
    TQuobrixDocument other(folder);
    addTrips(other, 100, 102);
    EXPECT_TRUE(other.saveAs(kOther));
    FaultFolder::Image image = folder.powerCut();
    EXPECT_EQ(image.size(), 3u);
    return image;
}

/// One way in which a document gets to the disk.
struct Flow {
    const char* name;
    fs::path target;
    /// Before anything fails.
    void (*prepare)(TQuobrixDocument& document, FaultFolder& folder, int count);
    Result<void> (*run)(TQuobrixDocument& document, const SaveOptions& options);
    bool backup; ///< the target as it was becomes its backup
    friend void PrintTo(const Flow& flow, std::ostream* out) { *out << flow.name; }
};

void open(TQuobrixDocument& document) { ASSERT_TRUE(document.open(kDocument, TDocument::Access::Edit)); }
void openAndChange(TQuobrixDocument& document, FaultFolder&, int count) {
    open(document);
    change(document, count);
}

const Flow kFlows[] = {
    {"first save", kNew, [](auto& document, auto&, int count) { addTrips(document, 0, count); },
     [](auto& document, auto& options) { return document.saveAs(kNew, options); }, false},
    {"first save over a file", kOther, [](auto& document, auto&, int count) { addTrips(document, 0, count); },
     [](auto& document, auto& options) { return document.saveAs(kOther, IfThere::Replace, options); }, true},
    {"save with backup", kDocument, openAndChange, [](auto& document, auto& options) { return document.save(options); },
     true},
    {"save", kDocument,
     [](auto& document, auto&, int count) {
         open(document);
         comment(document, "first");
         ASSERT_TRUE(document.save());
         change(document, count);
     },
     [](auto& document, auto& options) { return document.save(options); }, false},
    {"Save As", kNew, openAndChange, [](auto& document, auto& options) { return document.saveAs(kNew, options); },
     false},
    {"Save As, unchanged", kNew, [](auto& document, auto&, int) { open(document); },
     [](auto& document, auto& options) { return document.saveAs(kNew, options); }, false},
    {"Save As over a file", kOther, openAndChange,
     [](auto& document, auto& options) { return document.saveAs(kOther, IfThere::Replace, options); }, true},
    {"compaction", kDocument, [](auto& document, auto&, int) { open(document); },
     [](auto& document, auto& options) { return document.compact(options); }, false},
    {"compaction with changes", kDocument, openAndChange,
     [](auto& document, auto& options) { return document.compact(options); }, true},
    {"save after a compaction that may have failed", kDocument,
     [](auto& document, auto&, int) {
         open(document);
         comment(document, "old");
         ASSERT_TRUE(document.save());
         comment(document, "new");
     },
     [](auto& document, auto& options) {
         comment(document, "old");
         static_cast<void>(document.compact(options));
         comment(document, "new");
         return document.save(options);
     },
     false},
    {"overwriting what another program put there", kDocument,
     [](auto& document, auto& folder, int count) {
         openAndChange(document, folder, count);
         folder.replace(kDocument, folder.current().at(kOther));
     },
     [](auto& document, auto& options) { return document.overwrite(options); }, true},
};

/// A flow on a folder, and what that may hold at each moment.
class Trial {
public:
    Trial(const Flow& flow, const FaultFolder::Image& image, int count, unsigned seed, bool locks = true)
        : folder(seed, image), flow_(flow), document_(folder) {
        folder.locks = locks;
        flow.prepare(document_, folder, count);
        const FaultFolder::Image before = folder.powerCut();
        for (const fs::path& path : {kDocument, kBackup, kOther, kNew})
            allowed_[path] = {contentOf(before, path)};
        const fs::path backup = TDocument::backupPath(flow.target);
        old_ = allowed_[flow.target].front();
        new_ = idOf(contentOf(document_));
        allowed_[flow.target].push_back(new_);
        if (allowed_[backup].empty()) // a try that failed too late leaves a file that the next one keeps
            allowed_[backup] = {0, new_};
        if (flow.backup)
            allowed_[backup].push_back(old_);
    }

    /// Runs the flow, and again if it fails, as a person does who goes on working.
    void run(const SaveOptions& options) {
        for (int attempt = 0; attempt < 6; ++attempt) {
            if (attempt == 3) // there is room now
                folder.capacity = std::numeric_limits<std::uint64_t>::max();
            Result<void> done = flow_.run(document_, options);
            if (!done && done.error().kind == ErrorKind::Changed) { // the folder did not answer when it was looked at
                auto& backups = allowed_[TDocument::backupPath(flow_.target)];
                backups.insert(backups.end(), {old_, new_});
                overwritten_ = true;
                done = document_.overwrite(options);
            }
            if (document_.backupProblem()) { // the old file is gone; the next try finds the new one in its place
                allowed_[TDocument::backupPath(flow_.target)].push_back(new_);
                overwritten_ = true;
            }
            if (!done)
                continue;
            allowed_[flow_.target] = {new_};
            return;
        }
        FAIL() << "not done after six attempts";
    }

    Result<void> runOnce() { return flow_.run(document_, {}); }

    /// Every document of IMAGE is one that may be there.
    void expectAllowed(const FaultFolder::Image& image) const {
        for (const auto& [path, contents] : allowed_) {
            const ContentId found = contentOf(image, path);
            ASSERT_TRUE(std::find(contents.begin(), contents.end(), found) != contents.end()) << path;
            ASSERT_TRUE(found != 0 || !image.contains(path)) << path << " is damaged";
        }
        for (const auto& [path, bytes] : image)
            ASSERT_TRUE(allowed_.contains(path) || path.extension() == ".tmp" ||
                        (!folder.locks && path.string().find(".lock") != std::string::npos))
                << path;
        if (!flow_.backup || folder.failed)
            return;
        // The backup is replaced only when what it is the backup of is durable.
        const fs::path backup = TDocument::backupPath(flow_.target);
        if (contentOf(image, backup) == old_) {
            ASSERT_EQ(contentOf(image, flow_.target), new_);
        }
    }

    /// The flow is over: the new document and, if it kept one, its backup, and nothing else.
    void expectDone(bool backupKept) {
        const FaultFolder::Image image = folder.powerCut();
        expectAllowed(image);
        ASSERT_EQ(contentOf(image, flow_.target), new_);
        if (flow_.backup && backupKept && !overwritten_) {
            ASSERT_EQ(contentOf(image, TDocument::backupPath(flow_.target)), old_);
        }
        ASSERT_EQ(idOf(contentOf(document_)), new_);
        ASSERT_FALSE(document_.modified());
    }

    FaultFolder folder;
    const TQuobrixDocument& document() const { return document_; }

private:
    const Flow& flow_;
    TQuobrixDocument document_;
    std::map<fs::path, std::vector<ContentId>> allowed_;
    ContentId old_ = 0, new_ = 0;
    bool overwritten_ = false;
};

void report(const char* what, const Flow& flow, std::size_t count) {
    testing::Test::RecordProperty(what, static_cast<int>(count));
    std::printf("[  COUNTED ] %s, %s: %zu\n", flow.name, what, count);
}

class DocumentCrash : public testing::TestWithParam<Flow> {};

TEST_P(DocumentCrash, APowerCutLeavesOldOrNew) {
    std::size_t cuts = 0;
    // With 200 trips a save writes more than 3,000 objects and moves some of them to the disk before its end.
    struct Case {
        int trips;
        unsigned seeds;
        int cutsAtOnce;
        bool locks = true;
    };
    for (const Case& c : {Case{1, 3, 16}, Case{6, 3, 16}, Case{200, 1, 2}, Case{3, 1, 16, false}}) {
        const FaultFolder::Image image = folderWithDocuments(c.trips);
        for (unsigned seed = 1; seed <= c.seeds; ++seed) {
            Trial trial(GetParam(), image, c.trips, seed, c.locks);
            trial.folder.afterEachChange = [&] {
                for (int cut = 0; cut < c.cutsAtOnce; ++cut, ++cuts)
                    ASSERT_NO_FATAL_FAILURE(trial.expectAllowed(trial.folder.powerCut()));
            };
            trial.run({});
            trial.folder.afterEachChange = {};
            for (int cut = 0; cut < c.cutsAtOnce && !HasFailure(); ++cut, ++cuts)
                trial.expectDone(true);
            ASSERT_FALSE(HasFailure()) << c.trips << " trips, seed " << seed;
        }
    }
    report("power cuts", GetParam(), cuts);
}

TEST_P(DocumentCrash, TheNextTryMakesGood) {
    const FaultFolder::Image image = folderWithDocuments(3);
    std::size_t failed = 0;
    const std::pair<std::size_t, bool> ways[] = {{1, true}, {2, true}, {5, true}, {1, false}, {5, false}};
    for (const auto& [failures, locks] : ways)
        for (std::size_t failAt = 1;; ++failAt, ++failed) {
            Trial trial(GetParam(), image, 3, static_cast<unsigned>(failAt), locks);
            trial.folder.afterEachChange = [&] {
                ASSERT_NO_FATAL_FAILURE(trial.expectAllowed(trial.folder.powerCut()));
            };
            trial.folder.operations = 0;
            trial.folder.failAt = failAt;
            trial.folder.failures = failures;
            trial.run({});
            trial.folder.failAt = 0;
            trial.folder.afterEachChange = {};
            trial.expectDone(!trial.document().backupProblem());
            ASSERT_FALSE(HasFailure()) << "operation " << failAt << " and " << failures - 1 << " more failed";
            if (trial.folder.operations < failAt)
                break; // the flow ended before it
        }
    report("failing operations", GetParam(), failed);
}

TEST_P(DocumentCrash, AFullDiskLosesNothing) {
    std::size_t full = 0;
    for (const int trips : {1, 3, 20}) {
        const FaultFolder::Image image = folderWithDocuments(trips);
        // Before the first byte of each write, in its midst, and before its last.
        std::set<std::uint64_t> capacities;
        {
            Trial trial(GetParam(), image, trips, 1);
            std::uint64_t used = trial.folder.used();
            trial.folder.afterEachChange = [&] {
                const std::uint64_t now = trial.folder.used();
                if (now > used)
                    capacities.insert({used, used + (now - used) / 2, now - 1});
                used = now;
            };
            trial.run({});
        }
        for (const std::uint64_t capacity : capacities)
            for (const bool tells : {false, true})
                for (const bool without : {false, true}) {
                    Trial trial(GetParam(), image, trips, static_cast<unsigned>(capacity));
                    trial.folder.capacity = std::max(capacity, trial.folder.used());
                    ++full;
                    trial.folder.tellsFreeSpace = tells;
                    trial.folder.afterEachChange = [&] {
                        ASSERT_NO_FATAL_FAILURE(trial.expectAllowed(trial.folder.powerCut()));
                    };
                    bool asked = false;
                    trial.run({.saveWithoutBackup = [&](const Error& reason) {
                        EXPECT_EQ(reason.kind, ErrorKind::DiskFull);
                        asked = true;
                        return without;
                    }});
                    trial.folder.afterEachChange = {};
                    trial.expectDone(!asked || !without);
                    ASSERT_FALSE(HasFailure()) << trips << " trips, full at byte " << capacity;
                }
    }
    report("full disks", GetParam(), full);
}

TEST_P(DocumentCrash, OnlyTheLocksHolderReads) {
    Trial trial(GetParam(), folderWithDocuments(3), 3, 1);
    trial.folder.locksKeepReadersAway = true;
    ASSERT_TRUE(trial.runOnce());
    trial.expectDone(true);
}

TEST(DocumentCompaction, AGarbledCopyIsNotUsed) {
    FaultFolder folder(1, folderWithDocuments(3));
    TQuobrixDocument document(folder);
    open(document);
    const FaultFolder::Image before = folder.current();
    bool garbled = false;
    folder.garble = [&](Bytes& bytes) {
        const Bytes samples = {30, 31, 32, 33, 34, 35, 36, 37}; // speeds
        const auto found = std::search(bytes.begin(), bytes.end(), samples.begin(), samples.end());
        if (found == bytes.end())
            return;
        *found = 99;
        garbled = true;
    };
    const Result<void> done = document.compact();
    EXPECT_TRUE(garbled);
    ASSERT_FALSE(done);
    EXPECT_EQ(done.error().kind, ErrorKind::Io);
    EXPECT_EQ(folder.current(), before);
}

INSTANTIATE_TEST_SUITE_P(Flows, DocumentCrash, testing::ValuesIn(kFlows), [](const auto& flow) {
    std::string name(flow.param.name);
    std::erase_if(name, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); });
    return name;
});

} // namespace
} // namespace quobrix
