#include "platform/file_system.h"
#include "platform/translations.h"
#include "texts/plural_rule.h"
#include "texts/text.h"
#include "texts/translation.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quobrix {
namespace {

const std::filesystem::path kFolder = QUOBRIX_TRANSLATED;

Bytes polish() { return *readFile(kFolder / "translations" / "pl.mo", kMaxTranslation); }

TEST(Translation, IsShownInTheUsersLanguage) {
    useTranslation({"", kFolder / "none", kFolder}, languagesOf("de_AT.UTF-8:pl_PL.UTF-8@latin:en"));
    ASSERT_TRUE(catalogue());
    EXPECT_EQ(text(TextId::FileSaved), "zapisano");
    EXPECT_EQ(catalogue()->find("a verb", "saved", {}), "zapisz");
    EXPECT_EQ(text(TextId::LoggerDetected, "COM3", "K-0042-B"), "K-0042-B na porcie COM3");
    const std::pair<std::uint64_t, const char*> trips[] = {{0, "0 podróży"},    {1, "1 podróż"},    {2, "2 podróże"},
                                                           {5, "5 podróży"},    {12, "12 podróży"}, {22, "22 podróże"},
                                                           {112, "112 podróży"}};
    for (const auto& [count, expected] : trips)
        EXPECT_EQ(counted(SourceText("trip"), SourceText("trips"), count), expected);
    EXPECT_EQ(text(SourceText("trip")), "podróż") << "what counts stands by itself, too";
    EXPECT_EQ(counted(TextId::CliPartsLost, 3, 3, "a.car"), "nie odzyskano 3 części pliku a.car (kilka)");
    EXPECT_EQ(text(TextId::PortIsInUse, "COM3"), "COM3 Is In Use") << "the translation has lost its place";
    EXPECT_EQ(text(TextId::FileCompacted), "compacted") << "fuzzy";
    EXPECT_EQ(text(TextId::FileDeleted), "deleted") << "not translated yet";
    setCatalogue(nullptr);
    useTranslation({kFolder}, languagesOf("en_GB:pl"));
    EXPECT_FALSE(catalogue()) << "English is preferred";
    useTranslation({kFolder}, languagesOf("../pl:de"));
    EXPECT_FALSE(catalogue());
}

TEST(Translation, IsReadFromWholeFilesOnly) {
    const Bytes whole = polish();
    ASSERT_TRUE(readTranslation(whole));
    for (std::size_t size = 0; size < whole.size() - 1; ++size)
        EXPECT_FALSE(readTranslation(ByteView(whole).first(size))) << size;
    Bytes latin = whole;
    const std::string_view name = "UTF-8";
    std::copy_n("UCS-2", name.size(), std::ranges::search(latin, name).begin());
    EXPECT_EQ(readTranslation(latin).error().kind, ErrorKind::Unsupported);
    EXPECT_EQ(readTranslation(Bytes(100, 'x')).error().kind, ErrorKind::NotADocument);
}

TEST(Translation, PluralsFollowTheirRule) {
    const auto form = [](const char* header, std::uint64_t count) {
        const auto rule = PluralRule::parse(header);
        return rule ? static_cast<int>(rule->formOf(count)) : -1;
    };
    const std::tuple<const char*, std::uint64_t, int> cases[] = {
        {"nplurals=1; plural=0;", 7, 0},
        {"nplurals=2; plural=n>1", 1, 0},
        {"nplurals=2; plural=n>1", 2, 1},
        {"nplurals=4; plural=(n==1||n==11)?0:(n==2||n==12)?1:(n>2&&n<20)?2:3;", 12, 1},
        {"nplurals=4; plural=(n==1||n==11)?0:(n==2||n==12)?1:(n>2&&n<20)?2:3;", 20, 3},
        {"nplurals=9; plural=2+3*2-n%4/1;", 3, 5},
        {"nplurals=2; plural=!(n != 1);", 1, 1},
        {"nplurals=2; plural=n;", 7, 1},
        {"nplurals=3; plural=1/(n-1);", 1, 2},
        {"nplurals=2; plural=;", 1, -1},
        {"nplurals=0; plural=0;", 1, -1},
        {"nplurals=2; plural=n ? 1;", 1, -1},
        {"nplurals=2; plural=n n;", 1, -1},
        {"nplurals=2; plural=m;", 1, -1},
        {"nplurals=2; plural=99999999999999999999;", 1, -1},
    };
    for (const auto& [header, count, expected] : cases)
        EXPECT_EQ(form(header, count), expected) << header << " of " << count;
    EXPECT_EQ(form(("nplurals=2; plural=" + std::string(400, '(') + "n" + std::string(400, ')')).c_str(), 1), -1);
    EXPECT_EQ(form(("nplurals=2; plural=" + std::string(900, '!') + "n").c_str(), 1), -1);
}

} // namespace
} // namespace quobrix
