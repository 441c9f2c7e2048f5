#pragma once

#include <filesystem>

namespace quobrix {

/// Whether FILE is a ZIP archive each member of which is XML that ends with the end of its outermost element.
bool zipOfWholeXml(const std::filesystem::path& file);

} // namespace quobrix
