#include "compound/compound_file.h"

#include "platform/file_system.h"
#include "support/compound_checker.h"
#include "support/document_streams.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gsf/gsf.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <set>

namespace quobrix {
namespace {

using namespace test;

/// Objects as a document has them: many small, some large, names in no order of the directory.
Streams objects(int count) {
    Streams streams;
    for (int i = 0; i < count; ++i) {
        const std::size_t size = i % 18 < 13 ? 16 + i % 185 : i % 18 < 17 ? 300 + i % 2700 : 4000 + i % 16000;
        Bytes bytes(size);
        for (std::size_t k = 0; k < size; ++k)
            bytes[k] = static_cast<std::uint8_t>(i + k * 31);
        streams[std::to_string(i)] = std::move(bytes);
    }
    return streams;
}

class CompoundFileInterop : public testing::Test {
protected:
    CompoundFileInterop() {
        gsf_init();
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
    }
    ~CompoundFileInterop() override { std::filesystem::remove_all(folder_); }

    /// Each of the other readers finds STREAMS in FILE, byte for byte; who is not installed is noted in missing_.
    void expectOthersRead(const std::filesystem::path& file, const Streams& streams) {
        EXPECT_EQ(examineCompoundFile(*readFile(file, 1u << 30)).fault, "");
        EXPECT_TRUE(readByGsf(file) == streams);
        const auto extractedBy = [&](const std::string& command) {
            const auto extracted = folder_ / "extracted";
            std::filesystem::remove_all(extracted);
            std::filesystem::create_directory(extracted);
            Streams found;
            if (std::system(
                    fmt::format("{} > /dev/null", fmt::format(fmt::runtime(command), file.string(), extracted.string()))
                        .c_str()) == 0)
                for (const auto& entry : std::filesystem::directory_iterator(extracted))
                    found[entry.path().filename().string()] = *readFile(entry.path(), 1u << 20);
            return found;
        };
        if (std::system("7z > /dev/null 2>&1") == 0) {
            EXPECT_TRUE(extractedBy("7z x -tcompound -y -o{1} {0}") == streams);
        } else {
            missing_.insert("7-Zip");
        }
        if (std::system("/usr/bin/python3 -c 'import olefile' 2> /dev/null") == 0) {
            EXPECT_TRUE(extractedBy("/usr/bin/python3 " QUOBRIX_EXTRACT " {0} {1}") == streams);
        } else {
            missing_.insert("olefile");
        }
    }

    Streams readByGsf(const std::filesystem::path& path) const {
        Streams streams;
        GsfInput* input = gsf_input_stdio_new(path.c_str(), nullptr);
        GsfInfile* file = gsf_infile_msole_new(input, nullptr);
        EXPECT_NE(file, nullptr);
        for (int i = 0; file != nullptr && i < gsf_infile_num_children(file); ++i) {
            GsfInput* stream = gsf_infile_child_by_index(file, i);
            if (stream == nullptr) {
                ADD_FAILURE() << "child " << i;
                continue;
            }
            Bytes content(static_cast<std::size_t>(gsf_input_size(stream)));
            if (!content.empty()) {
                EXPECT_NE(gsf_input_read(stream, content.size(), content.data()), nullptr);
            }
            streams[gsf_input_name(stream)] = std::move(content);
            g_object_unref(stream);
        }
        if (file != nullptr)
            g_object_unref(file);
        g_object_unref(input);
        return streams;
    }

    void writeByGsf(const Streams& streams, bool withStorage) const {
        GsfOutput* output = gsf_output_stdio_new(path_.c_str(), nullptr);
        GsfOutfile* file = gsf_outfile_msole_new(output);
        const auto add = [](GsfOutfile* parent, const char* name, const Bytes& content) {
            GsfOutput* stream = gsf_outfile_new_child(parent, name, FALSE);
            gsf_output_write(stream, content.size(), content.data());
            gsf_output_close(stream);
            g_object_unref(stream);
        };
        for (const auto& [name, content] : streams)
            add(file, name.c_str(), content);
        if (withStorage) {
            GsfOutput* storage = gsf_outfile_new_child(file, "Inner", TRUE);
            add(GSF_OUTFILE(storage), "small", Bytes(100, 1));
            add(GSF_OUTFILE(storage), "large", Bytes(10000, 2));
            gsf_output_close(storage);
            g_object_unref(storage);
        }
        gsf_output_close(GSF_OUTPUT(file));
        g_object_unref(file);
        g_object_unref(output);
    }

    std::unique_ptr<CompoundFile> open() const { return compoundFile(path_, FileMode::ReadWrite); }

    CompoundImage image() const { return examineCompoundFile(*readFile(path_, 1u << 30)); }

    std::set<std::string> missing_; ///< readers
    // A name that programs take from a command line in any locale.
    const std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() /
        ("quobrix_interop_" + std::to_string(std::random_device()())); // of its own: others may run this test, too
    const std::filesystem::path path_ = folder_ / "file.car";
};

TEST_F(CompoundFileInterop, OthersReadWhatManySavesHaveLeft) {
    Streams streams = objects(3000);
    auto compound = *CompoundFile::create(*openFile(path_, FileMode::Create));
    for (const auto& [name, content] : streams)
        compound->write(name, content);
    compound->write("Contents", streams["Contents"] = {2, 0, 0, 0});
    ASSERT_TRUE(compound->commit());
    std::mt19937 random(7);
    for (int save = 0; save < 30; ++save) {
        if (save % 10 == 9) {
            compound.reset(); // it is locked
            compound = open();
        }
        for (int change = 0; change < 100; ++change) {
            const std::string name = std::to_string(random() % 3200);
            if (random() % 3 == 0) {
                compound->remove(name);
                streams.erase(name);
            } else {
                compound->write(name, streams[name] = Bytes(random() % (random() % 8 == 0 ? 20000 : 400),
                                                            static_cast<std::uint8_t>(random())));
            }
        }
        ASSERT_TRUE(compound->commit());
    }
    expectOthersRead(path_, streams);
    const auto compact = folder_ / "compact.car";
    ASSERT_TRUE(compound->compactTo(**openFile(compact, FileMode::Create)));
    expectOthersRead(compact, streams);
    compound.reset();

    // And what another program has made of it is ours again.
    std::filesystem::remove(path_);
    writeByGsf(readByGsf(compact), false);
    EXPECT_TRUE(streamsOf(*open()) == streams);
    if (!missing_.empty())
        GTEST_SKIP() << "the other checks have been made, but not installed: "
                     << fmt::format("{}", fmt::join(missing_, ", "));
}

TEST_F(CompoundFileInterop, AListShapedDirectoryIsReadAndPutInOrder) {
    Streams streams = objects(18000);
    writeByGsf(streams, true);
    {
        const auto file = open();
        EXPECT_TRUE(streamsOf(*file) == streams);
        file->write("17", streams["17"] = Bytes(5000, 9));
        ASSERT_TRUE(file->commit());
    }
    EXPECT_TRUE(streamsOf(*open()) == streams);
    {
        const auto file = open();
        file->write("new", streams["new"] = Bytes(50, 8));
        file->remove("4000");
        streams.erase("4000");
        ASSERT_TRUE(file->commit());
    }
    const CompoundImage found = image();
    EXPECT_EQ(found.fault, "");
    EXPECT_LE(found.treeDepth, 30u); // twice the logarithm of the number of entries
    Streams all = streams;
    all["Inner/small"] = Bytes(100, 1);
    all["Inner/large"] = Bytes(10000, 2);
    EXPECT_TRUE(found.streams == all);
    EXPECT_EQ(readByGsf(path_).size(), streams.size() + 1);
}

} // namespace
} // namespace quobrix
