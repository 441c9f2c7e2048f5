#include "export/xlsx.h"

#include "base/path_text.h"
#include "base/utf8.h"
#include "export/export_file.h"
#include "export/zip_check.h"
#include "units/date_time.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <xlsxwriter.h>

#include <locale.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <memory>
#include <new>
#include <string>
#include <system_error>
#include <vector>

namespace quobrix {
namespace {

constexpr std::size_t kMostCharacters = 32'767; // in a cell
constexpr double kFirstOf1970 = 25'569;         // days since the spreadsheets' day 0
constexpr double kNarrowest = 8, kWidest = 60;  // columns, in characters

std::string dateFormat(const TUnitSystem& units) {
    const UnitId order = units.unit(UnitTypeId::Date);
    const std::string date = order == UnitId::DayMonthYear   ? "dd/mm/yyyy"
                             : order == UnitId::YearMonthDay ? "yyyy/mm/dd"
                                                             : "mm/dd/yyyy";
    return date + (units.unit(UnitTypeId::Time) == UnitId::Hour24 ? " hh:mm" : " hh:mm AM/PM");
}

/// How a spreadsheet shows the numbers of COLUMN; empty: as they are.
std::string numberFormat(const Column& column, const TUnitSystem& units) {
    if (column.isElapsedTime())
        return "[hh]:mm:ss";
    if (column.kind() == ColumnKind::DateTime)
        return dateFormat(units);
    if (column.kind() != ColumnKind::Real)
        return {};
    const int decimals = units.decimals(column.unitOf(0));
    return decimals == 0 ? "#,##0" : "#,##0." + std::string(static_cast<std::size_t>(decimals), '0');
}

/// A name that sheets may have: of 31 characters, and without some.
std::string sheetName(const std::string& title) {
    std::string name = oneLine(title);
    std::erase_if(name, [](char c) { return std::string_view("[]:*?/\\'").find(c) != std::string_view::npos; });
    while (characterCount(name) > LXW_SHEETNAME_MAX)
        name = validUtf8(std::string_view(name).substr(0, name.size() - 1));
    return name;
}

/// While it lives the library writes numbers with a point, whatever the user's language.
class NumbersWithPoint {
public:
    NumbersWithPoint() : plain_(newlocale(LC_ALL_MASK, "C", nullptr)), before_(uselocale(plain_)) {}
    ~NumbersWithPoint() {
        uselocale(before_);
        freelocale(plain_);
    }
    NumbersWithPoint(const NumbersWithPoint&) = delete;
    NumbersWithPoint& operator=(const NumbersWithPoint&) = delete;

private:
    locale_t plain_, before_;
};

/// The width of a column under HEADING, which may take two lines and has a button beside it.
double headingWidth(const std::string& heading) {
    constexpr std::size_t kButton = 3;
    std::size_t longest = (characterCount(heading) + 1) / 2;
    for (std::size_t from = 0; from < heading.size();) {
        const std::size_t end = std::min(heading.find(' ', from), heading.size());
        longest = std::max(longest, characterCount(std::string_view(heading).substr(from, end - from)));
        from = end + 1;
    }
    return static_cast<double>(longest + kButton);
}

class Sheet {
public:
    Sheet(lxw_workbook* book, const ShownText& title, const TextContext& context)
        : book_(book), context_(context), sheet_(workbook_add_worksheet(book, sheetName(title).c_str())) {}

    bool made() const { return sheet_; }

    /// False if RECORD has given it up.
    bool write(std::span<const ExportRecords> records, const std::function<bool()>& record) {
        const std::size_t shift = records.front().file ? 1 : 0;
        const std::size_t count = shift + records.front().columns.size();
        widths_.assign(count, kNarrowest);
        heading_ = addFormat("");
        format_set_bold(heading_);
        format_set_text_wrap(heading_);
        format_set_bottom(heading_, LXW_BORDER_THIN);
        if (shift)
            writeHeading(0, fileHeading());
        for (std::size_t i = 0; i < records.front().columns.size(); ++i) {
            const ExportColumn& column = records.front().columns[i];
            writeHeading(i + shift, exportHeading(column, context_));
            const std::string format = numberFormat(*column.column, context_.units);
            formats_.push_back(format.empty() ? nullptr : addFormat(format));
        }
        std::size_t line = 0;
        for (const ExportRecords& part : records)
            for (const RowIndex row : part.rows) {
                ++line;
                if (part.file)
                    writeText(line, 0, *part.file);
                for (std::size_t i = 0; i < part.columns.size(); ++i)
                    writeCell(line, i + shift, *part.columns[i].column, row, formats_[i]);
                if (record && !record())
                    return false;
            }
        for (std::size_t i = 0; i < count; ++i)
            worksheet_set_column(sheet_, column(i), column(i), std::min(widths_[i], kWidest) + 1, nullptr);
        worksheet_freeze_panes(sheet_, 1, 0);
        if (count > 0)
            worksheet_autofilter(sheet_, 0, 0, static_cast<lxw_row_t>(line), column(count - 1));
        return true;
    }

    std::size_t cut() const { return cut_; }

private:
    static lxw_col_t column(std::size_t index) { return static_cast<lxw_col_t>(index); }

    lxw_format* addFormat(const std::string& numbers) {
        lxw_format* format = workbook_add_format(book_);
        if (!format)
            throw std::bad_alloc();
        if (!numbers.empty())
            format_set_num_format(format, numbers.c_str());
        return format;
    }

    void writeHeading(std::size_t at, const std::string& words) {
        widths_[at] = std::max(kNarrowest, headingWidth(words));
        worksheet_write_string(sheet_, 0, column(at), harmlessLines(words).c_str(), heading_);
    }

    void writeText(std::size_t line, std::size_t at, std::string_view words) {
        std::string shown = harmlessLines(words);
        if (characterCount(shown) > kMostCharacters) {
            shown = beginning(shown, kMostCharacters - 1) + "…";
            ++cut_;
        }
        widen(at, shown);
        worksheet_write_string(sheet_, static_cast<lxw_row_t>(line), column(at), shown.c_str(), nullptr);
    }

    void writeNumber(std::size_t line, std::size_t at, double number, lxw_format* format) {
        worksheet_write_number(sheet_, static_cast<lxw_row_t>(line), column(at), number, format);
    }

    void writeCell(std::size_t line, std::size_t at, const Column& column, RowIndex row, lxw_format* format) {
        const Value value = column.value(row);
        const ColumnKind kind = column.kind();
        const auto* whole = std::get_if<std::int64_t>(&value);
        const auto* real = std::get_if<double>(&value);
        const std::string_view shown = column.textView(row, context_, buffer_);
        if (shown.empty() || (kind == ColumnKind::Real && !real)) // what is shown of no value is not a figure
            return;
        if (kind == ColumnKind::Real && real && std::isfinite(*real))
            writeNumber(line, at, context_.units.toDisplay(column.unitOf(row), *real), format);
        else if (kind == ColumnKind::DateTime && whole && showsDate(shown, *whole))
            writeNumber(line, at, kFirstOf1970 + inDays(secondsFromFields(local(*whole))), format);
        else if (column.isElapsedTime() && whole && *whole >= 0)
            writeNumber(line, at, inDays(*whole), format);
        else if (kind == ColumnKind::Integer && whole && !column.isElapsedTime())
            writeNumber(line, at, static_cast<double>(*whole), nullptr);
        else
            return writeText(line, at, shown);
        widen(at, shown);
    }

    DateTime local(std::int64_t time) const { return context_.zone.toLocal(static_cast<std::int32_t>(time)); }
    /// Some times are shown otherwise than by the user's clock.
    bool showsDate(std::string_view shown, std::int64_t time) const {
        return shown.find(dateTimeText(context_.units, local(time))) != std::string_view::npos;
    }

    static double inDays(std::int64_t seconds) {
        return static_cast<double>(seconds) / static_cast<double>(kSecondsPerDay);
    }

    static std::string beginning(const std::string& text, std::size_t characters) {
        std::size_t end = 0;
        for (std::size_t count = 0; end < text.size(); ++end)
            if ((static_cast<unsigned char>(text[end]) & 0xC0u) != 0x80u && ++count > characters)
                break;
        return text.substr(0, end);
    }

    void widen(std::size_t at, std::string_view shown) {
        widths_[at] = std::max(widths_[at], static_cast<double>(characterCount(shown)));
    }

    lxw_workbook* book_;
    const TextContext& context_;
    lxw_worksheet* sheet_;
    std::vector<double> widths_;
    lxw_format* heading_ = nullptr;
    std::vector<lxw_format*> formats_;
    TextBuffer buffer_;
    std::size_t cut_ = 0;
};

} // namespace

bool canWriteXlsx() { return true; }

Result<std::size_t> writeXlsx(std::span<const ExportRecords> records, const ShownText& title,
                              const TextContext& context, const std::filesystem::path& file, const ExportRun& run) {
    const NumbersWithPoint numbers;
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    const std::string name = utf8(file);
    std::unique_ptr<lxw_workbook, decltype(&lxw_workbook_free)> book(workbook_new_opt(name.c_str(), &options),
                                                                     &lxw_workbook_free);
    if (!book)
        throw std::bad_alloc();
    Sheet sheet(book.get(), title, context);
    if (!sheet.made())
        return Error{ErrorKind::Io, ShownText::asItIs(std::generic_category().message(errno))};
    if (!sheet.write(records, run.record))
        return Error{ErrorKind::Cancelled, {}};
    const DiskWork pack = [&](DiskProgress&) -> Result<void> {
        const NumbersWithPoint here; // a locale belongs to a thread
        errno = 0;
        if (const lxw_error error = workbook_close(book.release()); error != LXW_NO_ERROR)
            return errno == ENOSPC ? Error{ErrorKind::DiskFull, {}}
                                   : Error{ErrorKind::Io, ShownText::asItIs(lxw_strerror(error))};
        // The library does not look whether its temporary files could be written.
        return zipOfWholeXml(file) ? Result<void>() : Error{ErrorKind::DiskFull, {}};
    };
    DiskProgress unwatched;
    QUOBRIX_TRY(run.disk ? run.disk(pack) : pack(unwatched));
    return sheet.cut();
}

} // namespace quobrix
