#pragma once

#include "support/sample_trip.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

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

    static std::string bytes(const fs::path& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
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
    /// The names in the folder, in order.
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_.path()))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
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
