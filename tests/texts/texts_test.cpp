#include "support/pseudo_catalogue.h"
#include "texts/text.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace quobrix::testing {
namespace {

static_assert(placesOf("no place, {{but}} braces") == 0);
static_assert(placesOf("{} and {}") == 2);
static_assert(placesOf("{1} before {0}") == 2);

/// A language of a few texts; more than two count as many.
class FewTexts final : public Catalogue {
public:
    explicit FewTexts(std::map<std::string, std::string, std::less<>> texts) : texts_(std::move(texts)) {}
    std::optional<std::string> find(std::string_view, std::string_view english,
                                    std::optional<std::uint64_t> count) const override {
        const auto found = texts_.find(std::string(english) + (count && *count > 2 ? " (many)" : ""));
        return found == texts_.end() ? std::nullopt : std::optional(found->second);
    }

private:
    std::map<std::string, std::string, std::less<>> texts_;
};

TEST(Texts, AreEnglishWithoutATranslation) {
    EXPECT_EQ(text(SourceText("As it stands: {}")), "As it stands: {}");
    EXPECT_EQ(text(TextId::FileSaved), "saved");
    EXPECT_EQ(text(TextId::PortIsInUse, "COM{}"), "COM{} Is In Use");
    for (const auto& [count, expected] :
         std::map<std::uint64_t, std::string>{{0, "0 trips"}, {1, "1 trip"}, {2, "2 trips"}, {21, "21 trips"}})
        EXPECT_EQ(counted(SourceText("trip"), SourceText("trips"), count), expected);
}

TEST(Texts, AreTranslatedInTheLanguagesOrder) {
    setCatalogue(std::make_shared<FewTexts>(std::map<std::string, std::string, std::less<>>{
        {"saved", "gesichert"},
        {"Quobrix Detected on {} : {}", "{1} an {0}"},
        {"trip", "Fahrt"},
        {"{} part of {} could not be recovered, as listed; keep it (many)", "{} Teile von {} fehlen"},
        {"{} Is In Use", "{0} {1} ist falsch"}}));
    EXPECT_EQ(text(SourceText("saved")), "gesichert");
    EXPECT_EQ(text(TextId::LoggerDetected, "COM3", "K-0042-B"), "K-0042-B an COM3");
    EXPECT_EQ(counted(SourceText("trip"), SourceText("trips"), 1), "1 Fahrt");
    EXPECT_EQ(counted(TextId::CliPartsLost, 3, 3, "a.car"), "3 Teile von a.car fehlen");
    EXPECT_EQ(text(TextId::FileOpened), "opened") << "not translated";
    EXPECT_EQ(text(TextId::PortIsInUse, "COM3"), "COM3 Is In Use") << "a translation with a place too many";
    setCatalogue(nullptr);
}

TEST(Texts, EveryRowIsItsOwn) {
    std::set<std::string_view> seen;
    for (const text_details::Row& row : text_details::kRows) {
        EXPECT_FALSE(row.one.empty());
        EXPECT_TRUE(seen.insert(row.one.english()).second) << row.one.english();
        EXPECT_TRUE(row.other.empty() || placesOf(row.one.english()) <= row.places) << row.one.english();
    }
}

TEST(Texts, ThePseudoLanguageBracketsEveryLine) {
    const PseudoLanguage pseudo;
    EXPECT_EQ(text(SourceText("&Open...\tCtrl+O")), "⟦&Open...⟧\tCtrl+O");
    EXPECT_EQ(text(SourceText("One.\n\nTwo.")), "⟦One.⟧\n\n⟦Two.⟧");
    EXPECT_EQ(outsideBrackets(text(TextId::PortIsInUse, text(TextId::FileSaved)) + " as ⟦it⟧ is"), " as  is");
}

} // namespace
} // namespace quobrix::testing
