#include "settings/file_settings.h"

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <system_error>

namespace quobrix {
namespace {

std::wstring toWide(std::string_view utf8) {
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), wide.data(), size);
    return wide;
}

std::string toUtf8(std::wstring_view wide) {
    const int length = static_cast<int>(wide.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(), size, nullptr, nullptr);
    return utf8;
}

std::wstring keyPath(std::string_view section) { return L"Software\\Halvern\\Quobrix\\" + toWide(section); }

/// One key per section below HKEY_CURRENT_USER\Software\Halvern\Quobrix, texts as REG_SZ and integers as REG_DWORD.
/// Integers that an earlier version stored as REG_SZ are read as well.
class RegistrySettings final : public SettingsBackend {
public:
    std::string read(std::string_view section, std::string_view name) const override {
        const std::wstring key = keyPath(section);
        const std::wstring value = toWide(name);
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
        return toUtf8(text);
    }

    void write(std::string_view section, std::string_view name, std::string_view value) override {
        const std::wstring key = keyPath(section);
        if (value.empty()) {
            RegDeleteKeyValueW(HKEY_CURRENT_USER, key.c_str(), toWide(name).c_str());
            return;
        }
        const std::wstring text = toWide(value);
        RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), toWide(name).c_str(), REG_SZ, text.c_str(),
                        static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    }

    void writeInteger(std::string_view section, std::string_view name, std::string_view value) override {
        std::int32_t number = 0;
        const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
        if (error != std::errc{} || end != value.data() + value.size())
            return write(section, name, value); // what an undo puts back need not be a number
        const auto bits = static_cast<DWORD>(number);
        RegSetKeyValueW(HKEY_CURRENT_USER, keyPath(section).c_str(), toWide(name).c_str(), REG_DWORD, &bits,
                        sizeof bits);
    }
};

} // namespace

std::unique_ptr<SettingsBackend> userSettings() { return std::make_unique<RegistrySettings>(); }

} // namespace quobrix
