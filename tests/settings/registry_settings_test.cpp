#include "settings/file_settings.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include <windows.h>

namespace quobrix {
namespace {

constexpr const wchar_t* kSection = L"Software\\Halvern\\Quobrix\\T\u00E9st";

class RegistrySettingsTest : public testing::Test {
protected:
    RegistrySettingsTest() { RegDeleteKeyW(HKEY_CURRENT_USER, kSection); }
    ~RegistrySettingsTest() override { RegDeleteKeyW(HKEY_CURRENT_USER, kSection); }

    struct Value {
        DWORD type;
        std::vector<std::uint8_t> bytes;
        bool operator==(const Value&) const = default;
    };
    static std::optional<Value> stored(const wchar_t* name) {
        Value value{0, std::vector<std::uint8_t>(1000)};
        auto size = static_cast<DWORD>(value.bytes.size());
        if (RegGetValueW(HKEY_CURRENT_USER, kSection, name, RRF_RT_ANY, &value.type, value.bytes.data(), &size) !=
            ERROR_SUCCESS)
            return std::nullopt;
        value.bytes.resize(size);
        return value;
    }
    static Value text(std::wstring_view text) {
        Value value{REG_SZ, {}};
        for (const wchar_t unit : std::wstring(text) + L'\0')
            value.bytes.insert(value.bytes.end(),
                               {static_cast<std::uint8_t>(unit & 0xFF), static_cast<std::uint8_t>(unit >> 8)});
        return value;
    }
    static Value number(std::uint32_t number) {
        Value value{REG_DWORD, {}};
        for (int shift = 0; shift < 32; shift += 8)
            value.bytes.push_back(static_cast<std::uint8_t>(number >> shift));
        return value;
    }
    static void put(const wchar_t* name, const Value& value) {
        RegSetKeyValueW(HKEY_CURRENT_USER, kSection, name, value.type, value.bytes.data(),
                        static_cast<DWORD>(value.bytes.size()));
    }

    Settings settings_{userSettings()};
    const char* const section_ = "T\u00E9st";
};

TEST_F(RegistrySettingsTest, ValuesLieInTheUsersBranchWithTheirTypes) {
    settings_.setText(section_, "Last File Opened", "C:\\F\u00E9vrier\\\u8ECA.car");
    settings_.setInteger(section_, "Opened", -1);
    settings_.setReal(section_, "aspectRatio", 1.5);
    EXPECT_EQ(stored(L"Last File Opened"), text(L"C:\\F\u00E9vrier\\\u8ECA.car"));
    EXPECT_EQ(stored(L"Opened"), number(0xFFFFFFFF));
    EXPECT_EQ(stored(L"aspectRatio"), text(L"1.500000000"));
    EXPECT_EQ(settings_.getText(section_, "Last File Opened"), "C:\\F\u00E9vrier\\\u8ECA.car");
    EXPECT_EQ(settings_.getInteger(section_, "Opened", 0), -1);
    EXPECT_EQ(settings_.getReal(section_, "aspectRatio", 0), 1.5);

    settings_.setText(section_, "Last File Opened", "");
    settings_.setInteger(section_, "Opened", kMissingInteger);
    EXPECT_EQ(stored(L"Last File Opened"), std::nullopt);
    EXPECT_EQ(stored(L"Opened"), std::nullopt);
}

TEST_F(RegistrySettingsTest, ReadsOtherVersionsValues) {
    put(L"text", text(L"7"));
    put(L"number", number(7));
    put(L"unended", {REG_SZ, {'a', 0, 'b', 0}});
    put(L"odd", {REG_SZ, {'a', 0, 'b'}});
    put(L"binary", {REG_BINARY, {1, 2, 3}});
    EXPECT_EQ(settings_.getInteger(section_, "text", 0), 7);
    EXPECT_EQ(settings_.getInteger(section_, "number", 0), 7);
    EXPECT_EQ(settings_.getText(section_, "unended"), "ab");
    EXPECT_EQ(settings_.getText(section_, "odd").substr(0, 1), "a");
    EXPECT_EQ(settings_.getText(section_, "binary", "default"), "default");
    EXPECT_EQ(settings_.getText("No Such Section", "name", "default"), "default");
}

} // namespace
} // namespace quobrix
