#include "model/quobrix_document.h"
#include "tables/tabbed_text.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <cstdlib>

using namespace quobrix;

namespace {

void require(bool condition) {
    if (!condition)
        std::abort();
}

/// Some locale, units and order of dates, by the bits of CHOICE.
void choose(TUnitSystem& units, std::uint8_t choice) {
    TextLocale locale;
    if (choice & 1) {
        locale.numbers.decimalSeparator = ",";
        locale.numbers.thousandsSeparator = choice & 2 ? "." : "\u202F";
    }
    if (choice & 4)
        locale.numbers.grouping = DigitGrouping::parse("3;2;0");
    units.setLocale(locale);
    if (choice & 8)
        units.setUnit(UnitTypeId::Speed, UnitId::MilePerHour);
    units.setUnit(UnitTypeId::Date, choice & 16 ? UnitId::DayMonthYear : UnitId::YearMonthDay);
}

/// What is taken for a value of COLUMN reads as one: it comes back from its own editor.
void typeInto(Table& table, std::size_t index, std::string_view text, const TextContext& context) {
    Column& column = table.column(index);
    const Parsed parsed = column.parse(text, context);
    if (!parsed.ok() || !column.editable())
        return;
    column.setValue(0, parsed.value);
    require(column.parse(column.editText(0, context), context).ok());
}

Bytes bytesOf(const Table& table) {
    ByteWriter out;
    table.write(out);
    for (std::size_t i = 0; i < table.columnCount(); ++i)
        table.column(i).write(out);
    return out.take();
}

} // namespace

/// Any text on the clipboard: as a block it comes back from what is written of it; pasted among names it changes
/// everything that it should or nothing, and undo takes it back to the byte. A cell of it is typed into every kind of
/// column. The first byte chooses locale and units.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    static TQuobrixDocument document;
    static TCurrentSpeedBandsTable speeds;
    static TCurrentParametersTable parameters;
    static const bool ready = [] {
        document.drivers().insertRows(0, 2);
        document.troubles().insertRows(0, 1);
        speeds.insertRows(0, 1);
        parameters.insertRows(0, 1);
        return true;
    }();
    require(ready);
    TUnitSystem units;
    const TimeZone zone;
    const TextContext context{units, zone};
    choose(units, data[0]);
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);

    typeInto(speeds, 1, text, context);
    for (std::size_t i = 0; i < 2; ++i)
        typeInto(parameters, i, text, context);
    for (std::size_t i = 0; i < document.troubles().columnCount(); ++i)
        document.troubles().column(i).parse(text, context);

    const std::optional<TabbedText> block = TabbedText::parse(text);
    if (!block)
        return 0;
    const std::optional<TabbedText> again = TabbedText::parse(block->text());
    require(again && again->rows() == block->rows() && again->text() == block->text());

    DriverNamesTable& drivers = document.drivers();
    document.edits().clear(); // or what follows would redo a step of the run before
    const Bytes before = bytesOf(drivers);
    const std::size_t columns[] = {0, 1, 2};
    const RowIndex rows[] = {1};
    const EditOutcome outcome = document.edits().paste(drivers.id(), columns, rows, *block, context);
    require(outcome.ok() || bytesOf(drivers) == before);
    const Bytes after = bytesOf(drivers);
    document.edits().undo();
    require(bytesOf(drivers) == before);
    document.edits().redo();
    require(bytesOf(drivers) == after);
    document.edits().undo();
    return 0;
}
