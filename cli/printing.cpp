#include "cli/printing.h"

#include "cli/record_writer.h"
#include "cli/writing.h"
#include "model/record_totals.h"
#include "paper/printout.h"
#include "report/render.h"
#include "settings/file_settings.h"
#include "texts/text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <utility>

namespace quobrix::cli {
namespace {

std::string_view textOf(const Bytes& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }
ByteView bytesOf(const std::string& text) { return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}; }

/// The rows FIRST to LAST that TYPED names by their numbers, of COUNT; complains if there are none.
ExitCode parseRecords(const std::string& typed, std::size_t count, RowIndex& first, RowIndex& last) {
    const std::size_t dash = typed.find('-', 1);
    const std::string parts[] = {typed.substr(0, dash), dash == typed.npos ? typed : typed.substr(dash + 1)};
    std::int64_t numbers[2] = {};
    for (std::size_t i = 0; i < 2; ++i) {
        const char* const end = parts[i].data() + parts[i].size();
        const auto [parsed, error] = std::from_chars(parts[i].data(), end, numbers[i]);
        if (error != std::errc{} || parsed != end) {
            complain(text(TextId::NotARecordToPrint, parts[i]));
            return kUsage;
        }
    }
    if (numbers[0] > numbers[1]) {
        complain(text(TextId::CliRecordsBackwards, numbers[0], numbers[1]));
        return kUsage;
    }
    for (const std::int64_t number : numbers)
        if (number < 1 || number > static_cast<std::int64_t>(count)) {
            complain(text(TextId::NoSuchRecordToPrint, number));
            return kFailed;
        }
    first = static_cast<RowIndex>(numbers[0] - 1);
    last = static_cast<RowIndex>(numbers[1] - 1);
    return kDone;
}

} // namespace

ExitCode putReport(Report report, FileFormat format, const std::string& out, ExitCode code, const ShownText& what) {
    std::string content;
    std::size_t pages = 0;
    if (format == FileFormat::Pdf) {
        const Result<std::unique_ptr<FilePainter>> painter = loadFilePainter();
        if (!painter) {
            complain(text(TextId::CliNoPainter, std::string(nameOf(format)), painter.error().detail));
            return kUsage;
        }
        const Settings settings(userSettings());
        const PageSource source = layOut(std::move(report), PageSetup::load(settings), **painter);
        pages = source.count;
        content = textOf((*painter)->pdf(source));
        if (content.empty()) {
            complain(text(TextId::WithDetail, out, text(TextId::PagesNotPainted)));
            return kFailed;
        }
    } else {
        content = format == FileFormat::Html ? renderHtml(report) : renderText(report);
    }
    Output output;
    if (out.empty()) {
        if (format == FileFormat::Text)
            output.put(ShownText::asItIs(content));
        else
            output.putData(content);
        return output.finish(code);
    }
    const ExitCode written = writeOut(out, bytesOf(content));
    if (written == kFailed)
        return kFailed;
    code = std::max(code, written);
    if (!what.empty())
        output.put(pages > 0 ? counted(TextId::CliPrinted, pages, out, what, pages)
                             : text(TextId::CliExported, out, what));
    return output.finish(code, text(TextId::CliHasBeenWritten, out));
}

ExitCode print(const PrintOptions& options) {
    if (!mayReplace(options.out, options.files))
        return kUsage;
    const std::optional<FileFormat> format = chosenFormat(options.format, options.out, kPrintFormats);
    if (!format)
        return kUsage;
    UserUnits units;
    if (const ExitCode code = units.load(options.units); code != kDone)
        return code;
    Selection selection;
    if (const ExitCode code = selection.choose(options, units); code != kDone)
        return code;
    if (!options.records.empty()) {
        std::size_t count = 0;
        for (const TableRows& part : selection.rows())
            count = std::max(count, part.table->rowCount());
        RowIndex first = 0, last = 0;
        if (const ExitCode code = parseRecords(options.records, count, first, last); code != kDone)
            return code;
        selection.keep(first, last);
    }
    Report report{text(selection.log().title), {}, true};
    report.blocks.emplace_back(recordGrid(selection, units));
    if (std::ranges::all_of(selection.rows(), [](const TableRows& part) { return part.rows.empty(); }))
        report.blocks.emplace_back(Paragraph{text(TextId::NoSuchRecords, text(selection.log().records))});
    const ShownText what = totalsText(selection.log(), selection.rows(), units.context());
    return putReport(std::move(report), *format, options.out, selection.completeness(), what);
}

} // namespace quobrix::cli
