#include "settings/file_settings.h"

#include "platform/wide_text.h"

#include <windows.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <system_error>

namespace quobrix {
namespace {

std::wstring keyPath(std::string_view section) { return L"Software\\Halvern\\Quobrix\\" + wide(section); }

/// One key per section below HKEY_CURRENT_USER\Software\Halvern\Quobrix, texts as REG_SZ and integers as REG_DWORD.
/// Integers that an earlier version stored as REG_SZ are read as well.
class RegistrySettings final : public SettingsBackend {
public:
    std::string read(std::string_view section, std::string_view name) const override {
        const std::wstring key = keyPath(section);
        const std::wstring value = wide(name);
        DWORD type = 0;
        DWORD bytes = 0;
        constexpr DWORD kAccepted = RRF_RT_REG_SZ | RRF_RT_REG_DWORD;
        if (RegGetValueW(HKEY_CURRENT_USER, key.c_str(), value.c_str(), kAccepted, &type, nullptr, &bytes) !=
            ERROR_SUCCESS)
            return {};
        if (type == REG_DWORD) {
            DWORD number = 0;
            bytes = sizeof number;
            if (RegGetValueW(HKEY_CURRENT_USER, key.c_str(), value.c_str(), kAccepted, nullptr, &number, &bytes) !=
                ERROR_SUCCESS)
                return {};
            return std::to_string(static_cast<std::int32_t>(number));
        }
        std::wstring text(bytes / sizeof(wchar_t) + 1, L'\0');
        bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        if (RegGetValueW(HKEY_CURRENT_USER, key.c_str(), value.c_str(), kAccepted, nullptr, text.data(), &bytes) !=
            ERROR_SUCCESS)
            return {};
        text.resize(std::min(text.find(L'\0'), text.size()));
        return narrow(text);
    }

    void write(std::string_view section, std::string_view name, std::string_view value) override {
        const std::wstring key = keyPath(section);
        if (value.empty()) {
            RegDeleteKeyValueW(HKEY_CURRENT_USER, key.c_str(), wide(name).c_str());
            return;
        }
        const std::wstring text = wide(value);
        RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), wide(name).c_str(), REG_SZ, text.c_str(),
                        static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    }

    void writeInteger(std::string_view section, std::string_view name, std::string_view value) override {
        std::int32_t number = 0;
        const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
        if (error != std::errc{} || end != value.data() + value.size())
            return write(section, name, value); // what an undo puts back need not be a number
        const auto bits = static_cast<DWORD>(number);
        RegSetKeyValueW(HKEY_CURRENT_USER, keyPath(section).c_str(), wide(name).c_str(), REG_DWORD, &bits, sizeof bits);
    }
};

} // namespace

std::unique_ptr<SettingsBackend> userSettings() { return std::make_unique<RegistrySettings>(); }

} // namespace quobrix
