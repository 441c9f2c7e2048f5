#pragma once

#include <QString>

#include <filesystem>
#include <string>
#include <string_view>

namespace quobrix {

// Texts of the core are UTF-8; paths are what the system makes of them.

inline QString toQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::filesystem::path pathFromUtf8(std::string_view text) { return std::u8string(text.begin(), text.end()); }
inline std::string utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}
inline QString toQtPath(const std::filesystem::path& path) { return toQt(utf8(path)); }
inline std::filesystem::path toPath(const QString& text) { return pathFromUtf8(text.toStdString()); }

} // namespace quobrix
