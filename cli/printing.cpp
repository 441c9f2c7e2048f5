#include "cli/printing.h"

#include "base/fold_case.h"
#include "base/path_text.h"
#include "cli/record_writer.h"
#include "cli/writing.h"
#include "messages/file_messages.h"
#include "model/record_totals.h"
#include "paper/printout.h"
#include "platform/file_system.h"
#include "report/render.h"
#include "settings/file_settings.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <utility>

namespace quobrix::cli {
namespace {

constexpr std::string_view kText = "text", kHtml = "html", kPdf = "pdf";

std::string_view textOf(const Bytes& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }
ByteView bytesOf(const std::string& text) { return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}; }

/// The painter, or kUsage with a complaint that FORMAT needs it.
Result<std::unique_ptr<FilePainter>> painterFor(std::string_view format) {
    Result<std::unique_ptr<FilePainter>> painter = loadFilePainter();
    if (!painter)
        complain(text(TextId::CliNoPainter, std::string(format), painter.error().detail));
    return painter;
}

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

std::vector<std::string> reportFormats() { return {std::string(kText), std::string(kHtml), std::string(kPdf)}; }
std::vector<std::string> printFormats() { return {std::string(kPdf), std::string(kHtml)}; }

std::string printFormat(const std::string& format, const std::string& out, const std::vector<std::string>& formats) {
    if (!format.empty())
        return format;
    if (out.empty())
        return std::string(kText);
    std::string ending = utf8(pathFromUtf8(out).extension());
    ending.erase(0, 1);
    ending = foldCase(ending);
    if (ending == "txt")
        ending = kText;
    if (std::ranges::find(formats, ending) != formats.end())
        return ending;
    complain(text(TextId::CliNoFormat, out, fmt::format("{}", fmt::join(formats, ", "))));
    return {};
}

ExitCode putReport(Report report, const std::string& format, const std::string& out, ExitCode code,
                   const ShownText& what) {
    std::string content;
    std::size_t pages = 0;
    if (format == kPdf) {
        const Result<std::unique_ptr<FilePainter>> painter = painterFor(kPdf);
        if (!painter)
            return kUsage;
        const Settings settings(userSettings());
        const PageSource source = layOut(std::move(report), PageSetup::load(settings), **painter);
        pages = source.count;
        content = textOf((*painter)->pdf(source));
    } else {
        content = format == kHtml ? renderHtml(report) : renderText(report);
    }
    Output output;
    if (out.empty()) {
        if (format == kText)
            output.put(ShownText::asItIs(content));
        else
            output.putData(content);
        return output.finish(code);
    }
    if (const Result<void> written = writeFileAtomically(pathFromUtf8(out), bytesOf(content)); !written) {
        complain(fileMessage(written.error(), FileAction::Save, out).text);
        if (written.error().kind != ErrorKind::NotDurable)
            return kFailed;
        code = kIncomplete;
    }
    if (!what.empty())
        output.put(pages > 0 ? counted(TextId::CliPrinted, pages, out, what, pages)
                             : text(TextId::CliExported, out, what));
    return output.finish(code, text(TextId::CliHasBeenWritten, out));
}

ExitCode print(const PrintOptions& options) {
    if (!mayReplace(options.out, options.files))
        return kUsage;
    const std::string format = printFormat(options.format, options.out, printFormats());
    if (format.empty())
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
    return putReport(std::move(report), format, options.out, selection.completeness(), what);
}

} // namespace quobrix::cli
