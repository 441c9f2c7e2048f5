#pragma once

#include "base/shown_text.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quobrix {

/// What copies of a document's content are written as.
enum class FileFormat { Pdf, Html, Svg, Png, Text, Xlsx, Csv, Json };

/// What the names of its files end in: "pdf".
std::string_view endingOf(FileFormat format);
/// What it is called on a command line: "text".
std::string_view nameOf(FileFormat format);
/// What its files are called where one is chosen: "PDF Files".
ShownText filesOf(FileFormat format);

/// The format among TAKEN whose files end as FILE does, in letters of either case; nothing for another ending.
std::optional<FileFormat> formatOf(const std::filesystem::path& file, std::span<const FileFormat> taken);

/// TITLE as the name of a file, without an ending: what no system's file names have in them is "-".
std::string fileNameFor(std::string_view title);

/// Whether FILE is a document, or one of OPENED: nothing that is made of documents takes its place.
bool isDocument(const std::filesystem::path& file, std::span<const std::filesystem::path> opened);

} // namespace quobrix
