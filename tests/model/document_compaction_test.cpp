/// Files that are built beside the document: compaction, cancelled copies, folders that are not durable yet.
#include "support/document_folder.h"
#include "support/document_streams.h"
#include "support/forwarding_files.h"

#include <stdexcept>

namespace quobrix {
namespace {

using namespace test;

using Compaction = DocumentFolder;

TEST_F(Compaction, RemovesUnusedSpace) {
    TQuobrixDocument document;
    open(document);
    for (int i = 1; i < 60; ++i)
        addTrip(document, kStart + 3600 * i);
    ASSERT_TRUE(document.save());
    document.trips().removeRows(0, 50);
    ASSERT_TRUE(document.save());
    fs::permissions(path_, fs::perms(0640));
    const fs::perms permissions = fs::status(path_).permissions(); // as far as the system has them
    const Streams before = streamsOf(path_);
    const CompoundFile::Space space = document.space();
    ASSERT_GT(space.freeBytes, space.fileBytes / 2);

    document.trips().removeRows(0, 1); // is saved first
    ASSERT_TRUE(document.compact());
    EXPECT_FALSE(document.modified());
    EXPECT_EQ(tripsIn(path_), 9u);
    EXPECT_EQ(document.space().fileBytes, fs::file_size(path_));
    EXPECT_LT(document.space().fileBytes, space.fileBytes / 2);
    EXPECT_LT(document.space().freeBytes, document.space().fileBytes / 20);
    EXPECT_EQ(fs::status(path_).permissions(), permissions);
    EXPECT_EQ(openFile(path_, FileMode::ReadWrite).error().kind, ErrorKind::InUse);
    EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "Doc.car.bak"}));

    const Streams compact = streamsOf(path_);
    ASSERT_TRUE(document.compact()); // there is nothing left to take away
    EXPECT_EQ(streamsOf(path_), compact);
    EXPECT_LT(compact.size(), before.size());
    addTrip(document, kStart);
    ASSERT_TRUE(document.save());
    EXPECT_EQ(tripsIn(path_), 10u);
}

TEST_F(Compaction, ReplacedWhileCompacted) {
    TQuobrixDocument document;
    open(document);
    const auto replace = [&] {
        fs::remove(path_);
        put(path_, "theirs");
    };
    EXPECT_EQ(kindOf(document.compact(meanwhile([] {}, replace))), ErrorKind::Changed);
    EXPECT_EQ(bytes(path_), "theirs");
#ifndef _WIN32 // where what the other program has put aside is there until it is closed
    EXPECT_EQ(files(), std::vector<std::string>{"Doc.car"});
#endif
}

TEST_F(Compaction, RefusedCompactions) {
    TQuobrixDocument document, second;
    EXPECT_EQ(kindOf(document.compact()), ErrorKind::NotFound);
    open(document);
    ASSERT_TRUE(second.open(path_, TDocument::Access::Edit));
    EXPECT_EQ(kindOf(second.compact()), ErrorKind::InUse);
    ASSERT_TRUE(second.open(path_, TDocument::Access::Read));
    EXPECT_EQ(kindOf(second.compact()), ErrorKind::ReadOnly);
    document.newDocument();
    second.newDocument();

    const ObjectId distance = [&] {
        TQuobrixDocument reader;
        open(reader);
        return reader.trips().column<TTripLogDistanceColumn>().id();
    }();
    tamper(path_, [&](CompoundFile& file) { file.write(std::to_string(distance), {1}); });
    open(document);
    EXPECT_EQ(document.store().find(distance), nullptr);
    EXPECT_EQ(kindOf(document.compact()), ErrorKind::Corrupt);
    document.newDocument();
    tamper(path_, [&](CompoundFile& file) { file.write("Object Ids", {1}); });
    open(document);
    EXPECT_EQ(kindOf(document.compact()), ErrorKind::Corrupt);
}

TEST_F(Compaction, CopiesCanBeCancelled) {
    const std::string before = bytes(path_);
    SaveOptions cancelling{.runDisk = [](const DiskWork& work) {
        DiskProgress progress;
        progress.cancelled = true;
        return work(progress);
    }};
    cancelling.saveWithoutBackup = [](const Error&) -> bool { throw std::logic_error("not asked"); };
    TQuobrixDocument document;
    open(document);
    EXPECT_EQ(kindOf(document.compact(cancelling)), ErrorKind::Cancelled);
    EXPECT_EQ(kindOf(document.saveAs(folder_ / "New.car", cancelling)), ErrorKind::Cancelled);
    addTrip(document, kStart + 3600);
    EXPECT_EQ(kindOf(document.save(cancelling)), ErrorKind::Cancelled);
    EXPECT_TRUE(document.modified());
    EXPECT_EQ(bytes(path_), before);
    EXPECT_EQ(files(), std::vector<std::string>{"Doc.car"});
}

TEST_F(Compaction, NotDurableIsRetried) {
    struct Files final : ForwardingFiles {
        Result<void> flushFolder(const fs::path& folder) override {
            return fails ? Error{ErrorKind::Io, ShownText::asItIs("flush")} : ForwardingFiles::flushFolder(folder);
        }
        bool fails = true;
    };
    for (const bool newName : {true, false}) {
        SCOPED_TRACE(newName);
        Files files;
        TQuobrixDocument document(files);
        openAndAdd(document);
        const fs::path target = newName ? folder_ / "New.car" : path_;
        const auto save = [&] { return newName ? document.saveAs(target) : document.compact(); };
        EXPECT_EQ(kindOf(save()), ErrorKind::NotDurable);
        EXPECT_EQ(document.path(), target);
        EXPECT_EQ(tripsIn(target), 2u);
        EXPECT_TRUE(document.modified());
        EXPECT_EQ(kindOf(document.save()), ErrorKind::NotDurable);
        files.fails = false;
        ASSERT_TRUE(document.save());
        EXPECT_FALSE(document.modified());
    }
}

} // namespace
} // namespace quobrix
