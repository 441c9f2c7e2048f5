/// What comes out on paper, as a reader of PDF files that knows nothing of this program sees it.
#include "system/programs.h"

#include "base/path_text.h"
#include "model/quobrix_document.h"

#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>

namespace quobrix {
namespace {

using namespace test;

class Paper : public Programs {
protected:
    using Lines = std::vector<std::string>;

    /// The lines of each page of FILE, every run of blanks being one.
    std::vector<Lines> pagesOf(const std::string& file) {
        const Outcome read = runProgram(folder_.path(), QUOBRIX_PDFTOTEXT, {"-layout", file, "-"});
        EXPECT_EQ(read.exitCode, 0) << read.error;
        std::vector<Lines> pages(1);
        std::istringstream lines(std::regex_replace(read.out, std::regex(" +"), " "));
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with('\f')) {
                pages.emplace_back();
                line.erase(0, 1);
            }
            if (line.find_first_not_of(' ') != line.npos)
                pages.back().push_back(line.substr(line.starts_with(' ') ? 1 : 0));
        }
        pages.pop_back(); // behind the last form feed
        return pages;
    }
    std::vector<Lines> printed(Arguments arguments, const std::string& file) {
        arguments.insert(arguments.end(), {QUOBRIX_EXAMPLE, "-o", file});
        const Outcome outcome = cli(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        EXPECT_EQ(outcome.error, "");
        return pagesOf(file);
    }
};

TEST_F(Paper, EveryRecordHeadingAndPageNumberIsThereOnceAndInOrder) {
    TQuobrixDocument document;
    ASSERT_TRUE(document.open(pathFromUtf8(QUOBRIX_EXAMPLE), TDocument::Access::Read));
    for (const LogSpec& log : logs()) {
        const auto pages = printed({"print", std::string(log.name)}, "log.pdf");
        const std::string title(log.title.english()), key = log.recordHeading() + " ";
        std::vector<std::size_t> numbers;
        for (std::size_t i = 0; i < pages.size(); ++i) {
            EXPECT_EQ(pages[i].back(),
                      title + " Page " + std::to_string(i + 1) + " of " + std::to_string(pages.size()));
            EXPECT_EQ(std::ranges::count(pages[i], title), i == 0 ? 1 : 0);
            EXPECT_TRUE(pages[i][i == 0 ? 1 : 0].starts_with(key)) << pages[i][0] << '\n' << pages[i][1];
            for (const std::string& line : pages[i])
                if (std::smatch number; std::regex_search(line, number, std::regex("^(\\d+) \\d\\d/\\d\\d/\\d{4} ")))
                    numbers.push_back(std::stoul(number[1]));
        }
        ASSERT_EQ(numbers.size(), document.log(log)->rowCount()) << title;
        for (std::size_t i = 0; i < numbers.size(); ++i)
            EXPECT_EQ(numbers[i], i + 1) << title;
    }
    EXPECT_GT(pagesOf("log.pdf").size(), 0u);
    EXPECT_GT(printed({"print", "trips"}, "log.pdf").size(), 3u) << "there were no pages to count";
}

TEST_F(Paper, AReportTellsTheSameOnPaper) {
    for (const LogSpec& log : logs()) {
        const std::string record(log.recordName);
        const auto pages = printed({"report", record, "1"}, "report.pdf");
        std::string paper;
        for (const Lines& lines : pages)
            for (const std::string& line : lines)
                paper += line + '\n';
        std::istringstream text(cli({"report", record, "1", QUOBRIX_EXAMPLE}).out);
        for (std::string line; std::getline(text, line);)
            for (std::string word : {line.substr(0, line.find("  ", 2)), line.substr(line.rfind("  ") + 1)}) {
                word.erase(0, word.find_first_not_of(' '));
                EXPECT_NE(paper.find(word.substr(0, 40)), std::string::npos) << record << ": " << word;
            }
    }
}

TEST_F(Paper, HoldsTheRecordsThatAreAskedFor) {
    const auto pages = printed({"print", "trips", "--records", "3-12"}, "trips.pdf");
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_TRUE(pages[0][pages[0].size() - 2].starts_with("12 ")) << pages[0][pages[0].size() - 2];
    const Outcome fonts = runProgram(folder_.path(), "/bin/sh", {"-c", "grep -ac FontFile trips.pdf"});
    EXPECT_NE(fonts.out, "0\n") << "none is embedded";
    // Nothing of it depends on a display, and the file is whole or not there.
    const Outcome refused = cli({"print", "trips", QUOBRIX_EXAMPLE, "-o", "Missing/trips.pdf"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.error.find("Missing/trips.pdf"), std::string::npos) << refused.error;
}

TEST_F(Paper, APlotIsOnePageWhoseTextsCanBeFound) {
    const auto pages = printed({"plot", "trip", "34"}, "plot.pdf");
    ASSERT_EQ(pages.size(), 1u);
    std::string page;
    for (const std::string& line : pages[0])
        page += line + '\n';
    for (const char* words : {"Shown: 00:00:00 to 00:13:52 (00:13:52, 7.1 Miles)", "Speed (MPH)", "Engine Speed (RPM)",
                              "Hard Brake", "00:05:00", "Elapsed Time"}) {
        const std::size_t found = page.find(words);
        EXPECT_NE(found, std::string::npos) << words << " in " << page;
        EXPECT_EQ(page.find(words, found + 1), std::string::npos) << words << " stands twice";
    }
    const auto part = printed({"plot", "trip", "34", "--from", "00:05:00", "--to", "00:08:00"}, "part.pdf");
    ASSERT_EQ(part.size(), 1u);
    EXPECT_TRUE(std::ranges::any_of(part[0], [](const std::string& line) {
        return line.find("Shown: 00:05:00 to 00:08:00 (00:03:00") != line.npos;
    })) << "the figures are those of the part";
    const Outcome picture = cli({"plot", "trip", "34", QUOBRIX_EXAMPLE, "-o", "plot.png", "--size", "640x400"});
    EXPECT_EQ(picture.exitCode, 0) << picture.error;
    const Outcome size = runProgram(folder_.path(), "/bin/sh", {"-c", "od -An -tx1 -j16 -N8 plot.png"});
    EXPECT_EQ(size.out, " 00 00 02 80 00 00 01 90\n");
    // What is beside the program but no painter does not hide the one where it is installed.
    namespace fs = std::filesystem;
    const fs::path installed = folder_ / "installed", bin = pathFromUtf8(QUOBRIX_CLI).parent_path();
    fs::create_directories(installed / "bin");
    fs::create_directories(installed / "lib" / "quobrix");
    fs::copy(QUOBRIX_CLI, installed / "bin");
    fs::copy(bin / QUOBRIX_PAINTER_FILE, installed / "lib" / "quobrix");
    fs::copy(QUOBRIX_SIMULATOR_LIBRARY, installed / "bin" / QUOBRIX_PAINTER_FILE);
    const Outcome drawn = runProgram(folder_.path(), utf8(installed / "bin" / "quobrix-cli"),
                                     {"plot", "trip", "34", QUOBRIX_EXAMPLE, "-o", "other.png"});
    EXPECT_EQ(drawn.exitCode, 0) << drawn.error;
}

} // namespace
} // namespace quobrix
