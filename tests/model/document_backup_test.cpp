/// The backup of the document's file: what it holds, where it lies, and when it is made.
#include "support/document_folder.h"
#include "support/make_link.h"
#include "support/set_time.h"

namespace quobrix {
namespace {

using namespace test;

using DocumentBackup = DocumentFolder;

TEST_F(DocumentBackup, MadeAtTheFirstChangeOfARun) {
    fs::permissions(path_, fs::perms::owner_read | fs::perms::owner_write);
    const std::string before = bytes(path_);
    TQuobrixDocument document;
    openAndAdd(document);
    EXPECT_FALSE(fs::exists(backup_));
    ASSERT_TRUE(document.save());
    EXPECT_EQ(bytes(backup_), before);
    EXPECT_EQ(fs::status(backup_).permissions(), fs::status(path_).permissions());
    addTrip(document, kStart + 7200);
    ASSERT_TRUE(document.save());
    ASSERT_TRUE(document.open(path_, TDocument::Access::Edit)); // in the same run
    addTrip(document, kStart + 9000);
    ASSERT_TRUE(document.save());
    EXPECT_EQ(bytes(backup_), before);

    document.newDocument(); // lets go of the file
    TQuobrixDocument nextRun;
    openAndAdd(nextRun);
    ASSERT_TRUE(nextRun.save());
    EXPECT_EQ(tripsIn(backup_), 4u);
    EXPECT_EQ(tripsIn(path_), 5u);
    EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "Doc.car.bak"}));
}

TEST_F(DocumentBackup, SavingNothingTouchesNothing) {
    const std::string before = bytes(path_);
    put(backup_, "old backup");
    const auto time = fs::last_write_time(path_) - std::chrono::hours(1);
    setTime(path_, time);
    TQuobrixDocument document;
    open(document);
    ASSERT_TRUE(document.save());
    ASSERT_TRUE(document.saveAs(path_));
    EXPECT_EQ(bytes(path_), before);
    EXPECT_EQ(fs::last_write_time(path_), time);
    EXPECT_EQ(bytes(backup_), "old backup");
}

TEST_F(DocumentBackup, ABackupThatIsALink) {
    const std::string before = bytes(path_);
    const fs::path elsewhere = folder_ / "elsewhere";
    put(elsewhere, "somebody's");
    for (const fs::path& leadsTo : {elsewhere, folder_ / "missing", fs::path("."), path_}) {
        fs::remove(backup_);
        if (!makeLink(leadsTo, backup_))
            GTEST_SKIP() << kNoLinks;
        put(path_, before);
        TQuobrixDocument document;
        openAndAdd(document);
        ASSERT_TRUE(document.save()) << leadsTo;
        EXPECT_FALSE(fs::is_symlink(backup_)) << leadsTo;
        EXPECT_EQ(bytes(backup_), before) << leadsTo;
        EXPECT_EQ(tripsIn(path_), 2u) << leadsTo;
    }
    EXPECT_EQ(bytes(elsewhere), "somebody's");
    EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "Doc.car.bak", "elsewhere"}));
}

TEST_F(DocumentBackup, ABackupThatIsOpenCanBeSavedOverItsFile) {
    put(backup_, bytes(path_));
    {
        TQuobrixDocument document;
        openAndAdd(document);
        ASSERT_TRUE(document.save());
    }
    const std::string newer = bytes(path_);
    TQuobrixDocument document, running;
    ASSERT_TRUE(document.open(backup_, TDocument::Access::Edit));
    ASSERT_TRUE(document.saveAs(path_, IfThere::Replace));
    EXPECT_EQ(tripsIn(path_), 1u);
    EXPECT_EQ(bytes(backup_), newer) << "what was replaced is kept";
    EXPECT_EQ(document.path(), path_);
    // That of another copy is left to it.
    document.newDocument();
    ASSERT_TRUE(running.open(backup_, TDocument::Access::Edit));
    TQuobrixDocument nextRun;
    addTrip(nextRun, kStart);
    EXPECT_EQ(kindOf(nextRun.saveAs(path_, IfThere::Replace)), ErrorKind::InUse);
    EXPECT_EQ(bytes(backup_), newer);
}

TEST_F(DocumentBackup, TheExampleIsNeverKept) {
    fs::copy_file(path_, folder_ / "example.CAR");
    TQuobrixDocument document;
    ASSERT_TRUE(document.open(folder_ / "example.CAR", TDocument::Access::Edit));
    addTrip(document, kStart + 3600);
    ASSERT_TRUE(document.save());
    EXPECT_FALSE(fs::exists(folder_ / "example.CAR.bak"));
}

TEST_F(DocumentBackup, WithoutABackupItIsSavedOnlyIfThatIsWanted) {
    fs::create_directory(backup_);
    const std::string before = bytes(path_);
    TQuobrixDocument document;
    openAndAdd(document);
    EXPECT_EQ(kindOf(document.save()), ErrorKind::IsDirectory);
    int asked = 0;
    bool answer = false;
    const SaveOptions options{.saveWithoutBackup = [&](const Error& reason) {
        ++asked;
        EXPECT_EQ(reason.kind, ErrorKind::IsDirectory);
        return answer;
    }};
    EXPECT_EQ(kindOf(document.save(options)), ErrorKind::Cancelled);
    EXPECT_EQ(bytes(path_), before);
    answer = true;
    ASSERT_TRUE(document.save(options));
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(tripsIn(path_), 2u);
    EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "Doc.car.bak"}));
    // The next save tries again, and asks again only if that fails.
    addTrip(document, kStart + 7200);
    ASSERT_TRUE(document.save(options));
    EXPECT_EQ(asked, 3);
    fs::remove(backup_);
    addTrip(document, kStart + 9000);
    ASSERT_TRUE(document.save(options));
    EXPECT_EQ(asked, 3);
    EXPECT_EQ(tripsIn(backup_), 3u);
    EXPECT_EQ(tripsIn(path_), 4u);
}

TEST_F(DocumentBackup, WhatSaveAsReplacesIsKept) {
    const fs::path other = folder_ / "Other.car";
    put(other, "something else");
    TQuobrixDocument document;
    openAndAdd(document);
    EXPECT_EQ(kindOf(document.saveAs(other)), ErrorKind::Exists);
    EXPECT_EQ(bytes(other), "something else");
    ASSERT_TRUE(document.saveAs(other, IfThere::Replace));
    EXPECT_EQ(bytes(folder_ / "Other.car.bak"), "something else");
    EXPECT_EQ(tripsIn(other), 2u);
    EXPECT_EQ(tripsIn(path_), 1u);
    EXPECT_FALSE(fs::exists(backup_));
}

TEST_F(DocumentBackup, ASoundBackupOutlivesARuin) {
    const std::string sound = bytes(path_), ruin = sound.substr(0, 5000);
    const fs::path second = folder_ / "Doc.car.2.bak", third = folder_ / "Doc.car.3.bak";
    put(backup_, sound);
    TQuobrixDocument document;
    openAndAdd(document);
    ASSERT_TRUE(*document.loadRest()); // so that it can be written over what becomes of the file
    for (const fs::path& kept : {second, third}) {
        put(path_, ruin);
        EXPECT_EQ(document.backupOf(path_), kept);
        ASSERT_TRUE(document.overwrite());
        EXPECT_EQ(tripsIn(path_), 2u);
        EXPECT_TRUE(bytes(backup_) == sound);
        EXPECT_TRUE(bytes(kept) == ruin);
    }
    put(backup_, "no better");
    put(path_, ruin);
    ASSERT_TRUE(document.overwrite());
    EXPECT_TRUE(bytes(backup_) == ruin);
    EXPECT_EQ(files(), (std::vector<std::string>{"Doc.car", "Doc.car.2.bak", "Doc.car.3.bak", "Doc.car.bak"}));
}

TEST_F(DocumentBackup, SaveAsKeepsWhatThisRunHasSaved) {
    const fs::path other = folder_ / "Other.car";
    makeDocument(other, 5);
    TQuobrixDocument document;
    openAndAdd(document);
    ASSERT_TRUE(document.save());
    EXPECT_EQ(tripsIn(backup_), 1u);
    ASSERT_TRUE(document.open(other, TDocument::Access::Edit));
    ASSERT_TRUE(document.saveAs(path_, IfThere::Replace));
    EXPECT_EQ(tripsIn(path_), 5u);
    EXPECT_EQ(tripsIn(backup_), 2u);
    addTrip(document, kStart);
    ASSERT_TRUE(document.save());
    EXPECT_EQ(tripsIn(backup_), 2u) << "from now on it is one document again";
    // Nor does it matter that both were one document once.
    document.trips().removeRows(0, 3);
    ASSERT_TRUE(document.saveAs(other, IfThere::Replace));
    document.trips().removeRows(0, 2);
    ASSERT_TRUE(document.saveAs(path_, IfThere::Replace));
    EXPECT_EQ(tripsIn(path_), 1u);
    EXPECT_EQ(tripsIn(backup_), 6u);
}

TEST_F(DocumentBackup, KeepsWhatOthersHaveMadeOfTheFile) {
    makeDocument(folder_ / "Theirs.car", 5);
    TQuobrixDocument document, theirs;
    openAndAdd(document);
    ASSERT_TRUE(document.save());
    addTrip(document, kStart + 7200);
    EXPECT_TRUE(renameOver(folder_ / "Theirs.car", path_));
    ASSERT_EQ(kindOf(document.save()), ErrorKind::Changed);
    open(document); // reloads it
    document.trips().removeRows(0, 3);
    ASSERT_TRUE(document.save());
    EXPECT_EQ(tripsIn(path_), 2u);
    EXPECT_EQ(tripsIn(backup_), 5u);

    document.newDocument(); // and while it was closed here
    openAndAdd(theirs);
    ASSERT_TRUE(theirs.save());
    theirs.newDocument();
    open(document);
    document.trips().removeRows(0, 2);
    ASSERT_TRUE(document.save());
    EXPECT_EQ(tripsIn(path_), 1u);
    EXPECT_EQ(tripsIn(backup_), 3u);
}

TEST_F(DocumentBackup, OneBackupUnderAnyName) {
    const fs::path folder = folder_ / "real", link = folder_ / "link";
    fs::create_directory(folder);
    fs::copy_file(path_, folder / "Doc.car");
    const bool linked = makeLink(folder, link) && makeLink(folder / "Doc.car", folder_ / "link.car");
    std::vector<fs::path> paths{folder / "Doc.car", folder / ".." / "real" / "Doc.car"};
    if (linked)
        paths.insert(paths.end(), {link / "Doc.car", folder_ / "link.car"});
#ifdef _WIN32
    paths.push_back(folder / "DOC.CAR");
#endif
    TQuobrixDocument document;
    for (const fs::path& path : paths) {
        ASSERT_TRUE(document.open(path, TDocument::Access::Edit));
        addTrip(document, kStart + 3600);
        ASSERT_TRUE(document.save());
        ASSERT_TRUE(document.compact()); // leaves another file there, which is the same document
        EXPECT_EQ(tripsIn(folder / "Doc.car.bak"), 1u) << path;
    }
    document.newDocument();
    EXPECT_EQ(tripsIn(path_), 1u);
    EXPECT_EQ(tripsIn(folder / "Doc.car"), 1 + paths.size());
    EXPECT_EQ(fs::is_symlink(folder_ / "link.car"), linked);
}

} // namespace
} // namespace quobrix
