#pragma once

#include "base/path_text.h"

#include <QString>

#include <filesystem>
#include <string>
#include <string_view>

namespace quobrix {

// Texts of the core are UTF-8.

inline QString toQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline QString toQtPath(const std::filesystem::path& path) { return toQt(utf8(path)); }
inline std::filesystem::path toPath(const QString& text) { return pathFromUtf8(text.toStdString()); }

} // namespace quobrix
