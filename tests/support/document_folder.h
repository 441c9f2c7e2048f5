#pragma once

#include "support/sample_trip.h"
#include "support/temporary_folder.h"
#include "support/text_file.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>

namespace quobrix::test {

namespace fs = std::filesystem;

/// A folder with a document of one trip, Doc.car.
class DocumentFolder : public testing::Test {
protected:
    DocumentFolder() {
        TQuobrixDocument made;
        addTrip(made, kStart);
        EXPECT_TRUE(made.saveAs(path_));
    }

    static std::string bytes(const fs::path& path) { return textOf(path); }
    /// As another program does: into the file, or, where a lock keeps that out, by another file in its place.
    static void put(const fs::path& path, const std::string& bytes) {
        if (std::ofstream out(path, std::ios::binary); out.is_open())
            out << bytes;
        else
            EXPECT_TRUE(
                writeFileAtomically(path, ByteView(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size())));
    }
    static std::size_t tripsIn(const fs::path& path) {
        TQuobrixDocument document;
        EXPECT_TRUE(document.open(path, TDocument::Access::Read)) << path;
        return document.trips().rowCount();
    }
    std::vector<std::string> files() const { return folder_.names(); }
    /// Makes a document of COUNT trips, a day apart; the first one is at FIRST.
    static void makeDocument(const fs::path& path, int count, std::int32_t first = kStart) {
        TQuobrixDocument made;
        for (int i = 0; i < count; ++i)
            addTrip(made, first + 86400 * i);
        EXPECT_TRUE(made.saveAs(path, IfThere::Replace));
    }
    /// While the disk works something else happens: BEFORE the work or AFTER it.
    static SaveOptions meanwhile(
        std::function<void()> before, std::function<void()> after = [] {}) {
        return {.runDisk = [=](const DiskWork& work) {
            before();
            DiskProgress progress;
            Result<void> done = work(progress);
            after();
            return done;
        }};
    }
    void open(TQuobrixDocument& document) { ASSERT_TRUE(document.open(path_, TDocument::Access::Edit)); }
    void openAndAdd(TQuobrixDocument& document) {
        open(document);
        addTrip(document, kStart + 3600);
    }
    template <class T>
    static ErrorKind kindOf(const Result<T>& result) {
        EXPECT_FALSE(result);
        return result ? ErrorKind{} : result.error().kind;
    }

    TemporaryFolder folder_;
    const fs::path path_ = folder_ / "Doc.car", backup_ = folder_ / "Doc.car.bak";
};

} // namespace quobrix::test
