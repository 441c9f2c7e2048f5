#include "export/file_format.h"

#include "base/fold_case.h"
#include "base/path_text.h"
#include "platform/file_system.h"
#include "texts/text.h"

#include <algorithm>

namespace quobrix {
namespace {

struct Row {
    FileFormat format;
    std::string_view ending, name;
    SourceText files;
};
constexpr Row kRows[] = {
    {FileFormat::Pdf, "pdf", "pdf", SourceText("PDF Files")},
    {FileFormat::Html, "html", "html", SourceText("Web Pages")},
    {FileFormat::Svg, "svg", "svg", SourceText("Drawings")},
    {FileFormat::Png, "png", "png", SourceText("Pictures")},
    {FileFormat::Text, "txt", "text", SourceText("Text Files")},
    {FileFormat::Xlsx, "xlsx", "xlsx", SourceText("Spreadsheets")},
    {FileFormat::Csv, "csv", "csv", SourceText("Comma-Separated Values")},
    {FileFormat::Json, "json", "json", SourceText("JSON Files")},
};
const Row& rowOf(FileFormat format) { return *std::ranges::find(kRows, format, &Row::format); }

} // namespace

std::string_view endingOf(FileFormat format) { return rowOf(format).ending; }
std::string_view nameOf(FileFormat format) { return rowOf(format).name; }
ShownText filesOf(FileFormat format) { return text(rowOf(format).files); }

std::optional<FileFormat> formatOf(const std::filesystem::path& file, std::span<const FileFormat> taken) {
    const std::string ending = foldCase(utf8(file.extension()));
    const auto format =
        std::ranges::find_if(taken, [&](FileFormat each) { return ending == "." + std::string(endingOf(each)); });
    return format == taken.end() ? std::nullopt : std::optional(*format);
}

std::string fileNameFor(std::string_view title) {
    std::string name(title.empty() ? "Quobrix" : title);
    std::ranges::replace_if(
        name,
        [](unsigned char c) {
            return c < ' ' || std::string_view("\\/:*?\"<>|").find(static_cast<char>(c)) != std::string_view::npos;
        },
        '-');
    return name;
}

bool isDocument(const std::filesystem::path& file, std::span<const std::filesystem::path> opened) {
    const Result<FileStatus> there = fileStatus(file);
    return foldCase(utf8(file.extension())) == ".car" ||
           std::ranges::any_of(opened, [&](const std::filesystem::path& document) {
               const Result<FileStatus> status = fileStatus(document);
               return there && status && there->identity == status->identity;
           });
}

} // namespace quobrix
