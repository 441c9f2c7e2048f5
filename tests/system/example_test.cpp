/// What the delivered example promises to whoever opens the program for the first time.
#include "system/programs.h"

#include <algorithm>
#include <map>
#include <set>

namespace quobrix {
namespace {

using namespace test;
namespace fs = std::filesystem;

class Example : public Programs {
protected:
    /// How often each text stands in the column HEADING of LOG.
    std::map<std::string, int> counts(const std::string& log, const std::string& heading) {
        const Outcome listed = cli({"list", log, QUOBRIX_EXAMPLE, "--format", "csv"});
        EXPECT_EQ(listed.exitCode, 0) << listed.error;
        EXPECT_EQ(listed.error, "");
        const auto records = parseCsv(listed.out);
        const auto column = std::ranges::find(records.at(0), heading) - records[0].begin();
        std::map<std::string, int> result;
        for (std::size_t i = 1; i < records.size(); ++i)
            ++result[records[i].at(static_cast<std::size_t>(column))];
        return result;
    }
};

TEST_F(Example, IsSoundAndSmall) {
    const Outcome checked = cli({"check", QUOBRIX_EXAMPLE});
    EXPECT_EQ(checked.exitCode, 0) << checked.out << checked.error;
    EXPECT_LT(fs::file_size(QUOBRIX_EXAMPLE), 3u << 20);
}

TEST_F(Example, ShowsWhatTheProgramCanDo) {
    const auto names = [](const std::map<std::string, int>& counted) {
        std::set<std::string> result;
        for (const auto& [name, count] : counted)
            result.insert(name);
        return result;
    };
    using Names = std::set<std::string>;
    EXPECT_EQ(names(counts("trips", "Vehicle")), (Names{"Family wagon", "Pickup"}));
    EXPECT_EQ(names(counts("trips", "Driver")), (Names{"Anna", "Lena", "Paul"}));
    EXPECT_EQ(names(counts("trips", "Quobrix")), (Names{"Blue Quobrix", "Grey Quobrix"}));
    EXPECT_EQ(counts("trips", "Comments").size(), 6u); // none is one of them
    EXPECT_EQ(names(counts("troubles", "Trouble Code")), (Names{"P0128", "P0171", "P0420", "P0442"}));
    EXPECT_EQ(counts("troubles", "Comments").size(), 3u);
    EXPECT_EQ(counts("accidents", "Comments"),
              (std::map<std::string, int>{{"Stopped for a deer; nobody was hurt", 1}}));
    EXPECT_GE(counts("activity", "Time").size(), 10u);

    std::map<std::string, int> months;
    for (const auto& [time, count] : counts("trips", "Start Time"))
        months[time.substr(0, 2)] += count;
    for (const char* month : {"04", "05", "06"})
        EXPECT_GE(months[month], 30) << month;
}

} // namespace
} // namespace quobrix
