#include "tables/option_table.h"

#include "settings/settings.h"

#include <cmath>

namespace quobrix {
namespace {

std::string_view valueName(const Column& column) { return column.kind() == ColumnKind::Text ? "default" : "Value"; }

Value kept(const Settings& settings, const Column& column) {
    const std::string_view section = column.spec().key, name = valueName(column);
    const Requirements& r = column.requirements();
    switch (column.kind()) {
    case ColumnKind::Boolean:
        return settings.getBoolean(section, name, r.defaultValue != 0);
    case ColumnKind::Integer: {
        const auto fallback = r.isDefaulted ? static_cast<std::int32_t>(r.defaultValue) : kMissingInteger;
        const std::int32_t value = settings.getInteger(section, name, fallback);
        return value == kMissingInteger ? Value() : Value(std::int64_t{value});
    }
    case ColumnKind::Real: {
        const double value = settings.getReal(section, name, r.isDefaulted ? r.defaultValue : kNoValue);
        return hasValue(value) ? Value(value) : Value();
    }
    default:
        return settings.getText(section, name);
    }
}

void keep(Settings& settings, const Column& column, const Value& value) {
    const std::string_view section = column.spec().key, name = valueName(column);
    if (const auto* flag = std::get_if<bool>(&value))
        settings.setBoolean(section, name, *flag, true);
    else if (const auto* integer = std::get_if<std::int64_t>(&value))
        settings.setInteger(section, name, static_cast<std::int32_t>(*integer), true);
    else if (const auto* real = std::get_if<double>(&value))
        settings.setReal(section, name, *real, true);
    else
        settings.setText(section, name, std::holds_alternative<std::string>(value) ? std::get<std::string>(value) : "",
                         true);
}

} // namespace

OptionTable::OptionTable(Settings& settings, std::span<const PersistentType* const> columns, SourceText title)
    : settings_(settings), spec_{kType, columns, {}, title}, start_(settings.journalMark()),
      journalWasEnabled_(settings.journalEnabled()) {
    settings_.enableJournal(true);
    insertRows(0, 1);
    load();
}

OptionTable::~OptionTable() {
    settings_.undoTo(start_);
    settings_.enableJournal(journalWasEnabled_);
}

void OptionTable::load() {
    for (std::size_t i = 0; i < columnCount(); ++i)
        column(i).setValue(0, kept(settings_, column(i)));
}

void OptionTable::accept() {
    settings_.discardTo(start_);
    marks_.clear();
}

void OptionTable::cancel() {
    settings_.undoTo(start_);
    marks_.clear();
    load();
}

void OptionTable::cellEdited(std::size_t index, RowIndex row) {
    marks_.push_back(settings_.journalMark());
    keep(settings_, column(index), column(index).value(row));
}

void OptionTable::cellEditUndone(std::size_t, RowIndex) {
    if (marks_.empty())
        return;
    settings_.undoTo(marks_.back());
    marks_.pop_back();
}

} // namespace quobrix
