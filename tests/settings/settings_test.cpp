#include "settings/settings.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <map>

namespace quobrix {
namespace {

class SettingsTest : public testing::Test {
protected:
    SettingsTest() {
        auto memory = std::make_unique<MemorySettings>();
        stored_ = memory.get();
        settings_ = std::make_unique<Settings>(std::move(memory));
    }

    MemorySettings* stored_;
    std::unique_ptr<Settings> settings_;
};

TEST_F(SettingsTest, DeletionMarkersRemoveTheValue) {
    settings_->setText("Program Config", "Last File Opened", "a.car");
    settings_->setText("Program Config", "Last File Opened", "");
    EXPECT_EQ(settings_->getText("Program Config", "Last File Opened", "none"), "none");

    settings_->setInteger("Diagnostics", "Menu", 1);
    settings_->setInteger("Diagnostics", "Menu", kMissingInteger);
    EXPECT_EQ(settings_->getInteger("Diagnostics", "Menu", 7), 7);

    settings_->setReal("TSplitter", "aspectRatio", 0.5);
    settings_->setReal("TSplitter", "aspectRatio", std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(settings_->getReal("TSplitter", "aspectRatio", 0.25), 0.25);
}

TEST_F(SettingsTest, RealsAreTextInEveryLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "de_DE.UTF-8"); // has no effect where the locale is not installed
    settings_->setReal("TSplitter", "aspectRatio", 1.5);
    EXPECT_EQ(stored_->read("TSplitter", "aspectRatio"), "1.500000000");
    EXPECT_EQ(settings_->getReal("TSplitter", "aspectRatio", 0), 1.5);
    std::setlocale(LC_ALL, before.c_str());
}

TEST(SettingsTypes, IntegersAreWrittenAsSuch) {
    struct Typed final : SettingsBackend {
        std::map<std::string, std::string, std::less<>>& values;
        explicit Typed(std::map<std::string, std::string, std::less<>>& v) : values(v) {}
        std::string read(std::string_view, std::string_view name) const override {
            const auto found = values.find(name);
            return found == values.end() ? "" : found->second.substr(2);
        }
        void write(std::string_view, std::string_view name, std::string_view value) override {
            values[std::string(name)] = "t:" + std::string(value);
        }
        void writeInteger(std::string_view, std::string_view name, std::string_view value) override {
            values[std::string(name)] = "i:" + std::string(value);
        }
    };
    std::map<std::string, std::string, std::less<>> values;
    Settings settings(std::make_unique<Typed>(values));
    settings.setInteger("S", "integer", -7);
    settings.setBoolean("S", "boolean", true);
    settings.setReal("S", "real", 2);
    settings.setText("S", "text", "12");
    EXPECT_EQ(values,
              (decltype(values){{"integer", "i:-7"}, {"boolean", "i:1"}, {"real", "t:2.000000000"}, {"text", "t:12"}}));
    settings.enableJournal(true);
    settings.setInteger("S", "integer", 8, true);
    settings.undoTo(0);
    EXPECT_EQ(values["integer"], "i:-7");
}

TEST_F(SettingsTest, ATextOfTheWrongTypeCountsAsMissing) {
    for (const char* text : {"abc", "12x", " 12", "99999999999", "1.5"}) {
        stored_->write("S", "integer", text);
        EXPECT_EQ(settings_->getInteger("S", "integer", 3), 3) << text;
    }
    for (const char* text : {"abc", "1,5", "nan", "inf", "1e999"}) {
        stored_->write("S", "real", text);
        EXPECT_EQ(settings_->getReal("S", "real", 3), 3) << text;
    }
}

TEST_F(SettingsTest, UndoRestoresDownToTheMark) {
    settings_->setInteger("S", "integer", 1);
    settings_->enableJournal(true);
    settings_->setText("S", "text", "kept", true);
    const std::size_t mark = settings_->journalMark();
    settings_->setInteger("S", "integer", 2, true);
    settings_->setInteger("S", "integer", 3, true);
    settings_->setReal("S", "real", 2.5, true);
    settings_->setText("S", "unjournaled", "x");

    settings_->undoTo(mark);

    EXPECT_EQ(settings_->getInteger("S", "integer", 0), 1);
    EXPECT_EQ(stored_->read("S", "real"), "");
    EXPECT_EQ(settings_->getText("S", "text"), "kept");
    EXPECT_EQ(settings_->getText("S", "unjournaled"), "x");
    EXPECT_EQ(settings_->journalMark(), mark);
}

} // namespace
} // namespace quobrix
