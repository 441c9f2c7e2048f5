#include "tables/check.h"

#include "base/fold_case.h"
#include "base/utf8.h"
#include "tables/range_text.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>

namespace quobrix {
namespace {

bool isEmpty(const Value& value) {
    const auto* text = std::get_if<std::string>(&value);
    return std::holds_alternative<std::monostate>(value) || (text && text->empty());
}

ShownText outsideText(const Column& column, const Range& range, double figure, Severity severity,
                      const TextContext& context) {
    const auto figureText = [&](double base) { return column.figureText(base, context); };
    const std::string value = figureText(figure), wanted = rangeText(range, figureText);
    if (range.lower == range.upper)
        return severity == Severity::Required ? text(TextId::NotTheRequiredValue, value, wanted)
                                              : text(TextId::NotTheRecommendedValue, value, wanted);
    return severity == Severity::Required ? text(TextId::OutsideRequiredRange, value, wanted)
                                          : text(TextId::OutsideRecommendedRange, value, wanted);
}

ShownText lengthText(const CountRange& range, Severity severity, const TextContext& context) {
    const std::string wanted = countRangeText(range, context);
    return severity == Severity::Required ? text(TextId::NotTheRequiredLength, wanted)
                                          : text(TextId::NotTheRecommendedLength, wanted);
}

std::optional<double> figureOf(const Value& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        return static_cast<double>(*integer);
    if (const auto* real = std::get_if<double>(&value))
        return *real;
    return {};
}

bool isSelectable(const Column& column, std::int64_t code) {
    const std::vector<Selection> selections = column.selections();
    return std::ranges::any_of(selections, [&](const Selection& selection) { return selection.code == code; });
}

/// What a person fills in, and what is computed beside it, about which there may be something to remark.
bool isChecked(const Column& column, const Table& table) {
    return column.editable() || (!column.stored() && table.spec().rows.editable);
}

} // namespace

ShownText cellMarkText(Severity severity) {
    return severity == Severity::Required ? text(TextId::ValueInError) : text(TextId::ValueMayBeInError);
}

ShownText uniquenessText(Severity severity, Uniqueness uniqueness) {
    const bool sensitive = uniqueness == Uniqueness::CaseSensitive;
    if (severity == Severity::Required)
        return sensitive ? text(TextId::MustBeUniqueCase) : text(TextId::MustBeUniqueNoCase);
    return sensitive ? text(TextId::ShouldBeUniqueCase) : text(TextId::ShouldBeUniqueNoCase);
}

std::string uniquenessKey(const Value& value, Uniqueness uniqueness) {
    if (const auto* text = std::get_if<std::string>(&value))
        return uniqueness == Uniqueness::CaseInsensitive ? foldCase(*text) : *text;
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        return fmt::to_string(*integer);
    if (const auto* real = std::get_if<double>(&value))
        return fmt::to_string(std::bit_cast<std::uint64_t>(*real == 0 ? 0.0 : *real));
    return {};
}

std::vector<Finding> checkValue(const Column& column, const Value& value, const TextContext& context) {
    std::vector<Finding> findings;
    const Requirements& r = column.requirements();
    const auto add = [&](Severity severity, ShownText what) { findings.push_back({severity, std::move(what)}); };
    if (isEmpty(value)) {
        if (r.need == Need::Required)
            add(Severity::Required, text(TextId::RequiredButMissing));
        else if (r.need == Need::Recommended)
            add(Severity::Recommended, text(TextId::RecommendedButMissing));
        return findings;
    }
    if (column.kind() == ColumnKind::Selection && column.editable()) {
        const auto* code = std::get_if<std::int64_t>(&value);
        if (!code || !isSelectable(column, *code))
            add(Severity::Required, text(TextId::NotASelection));
    }
    if (const auto* words = std::get_if<std::string>(&value)) {
        const std::size_t length = characterCount(*words);
        if (!r.requiredCharacters.contains(length))
            add(Severity::Required, lengthText(r.requiredCharacters, Severity::Required, context));
        else if (!r.recommendedCharacters.contains(length))
            add(Severity::Recommended, lengthText(r.recommendedCharacters, Severity::Recommended, context));
    } else if (const std::optional<double> figure = figureOf(value)) {
        if (!r.required.contains(*figure))
            add(Severity::Required, outsideText(column, r.required, *figure, Severity::Required, context));
        else if (!r.recommended.contains(*figure))
            add(Severity::Recommended, outsideText(column, r.recommended, *figure, Severity::Recommended, context));
    }
    if (ShownText doubt = column.doubt(value); !doubt.empty())
        add(Severity::Recommended, std::move(doubt));
    std::ranges::stable_sort(findings, std::ranges::greater(), &Finding::severity);
    return findings;
}

bool TableChecker::isUnique(const Column& column, std::size_t index, const Value& value, Uniqueness uniqueness) {
    const std::string key = uniquenessKey(value, uniqueness);
    if (key.empty())
        return true;
    Counts& counts = counts_[index * 2 + (uniqueness == Uniqueness::CaseInsensitive)];
    if (counts.byKey.empty() || counts.revision != column.revision() || counts.rows != column.rowCount()) {
        counts = {column.revision(), column.rowCount(), {}};
        counts.byKey.reserve(counts.rows);
        for (RowIndex row = 0; row < counts.rows; ++row)
            ++counts.byKey[uniquenessKey(column.value(row), uniqueness)];
    }
    return counts.byKey[key] <= 1;
}

Finding TableChecker::finding(Severity severity, ShownText text, const ColumnSpec* column, RowIndex row) const {
    return {severity, std::move(text), table_.id(), quobrix::text(table_.spec().title), column, row};
}

void TableChecker::append(const Column& column, std::size_t index, RowIndex row, const TextContext& context,
                          std::vector<Finding>& findings) {
    if (!table_.columnLock(column).empty())
        return; // what could not be read is not wrong
    const Requirements& r = column.requirements();
    const Value value = column.value(row);
    std::vector<Finding> found = checkValue(column, value, context);
    // What records hold is a fact that cannot be corrected here.
    if (!found.empty() && found.front().severity == Severity::Required && !column.lockedBecause(row).empty())
        std::erase_if(found, [](const Finding& each) { return each.severity == Severity::Required; });
    if (r.mustBeUnique != Uniqueness::None && !isUnique(column, index, value, r.mustBeUnique))
        found.insert(found.begin(), finding(Severity::Required, uniquenessText(Severity::Required, r.mustBeUnique)));
    if (r.shouldBeUnique != Uniqueness::None && !isUnique(column, index, value, r.shouldBeUnique))
        found.push_back(finding(Severity::Recommended, uniquenessText(Severity::Recommended, r.shouldBeUnique)));
    if (ShownText conflict = column.conflict(row); !conflict.empty())
        found.insert(found.begin(), finding(Severity::Required, std::move(conflict)));
    for (Finding& each : found)
        findings.push_back(finding(each.severity, std::move(each.text), &column.spec(), row));
}

std::vector<Finding> TableChecker::cell(std::size_t index, RowIndex row, const TextContext& context) {
    std::vector<Finding> findings;
    const Column& column = table_.column(index);
    if (isChecked(column, table_) && row < column.rowCount())
        append(column, index, row, context, findings);
    return findings;
}

std::vector<Finding> TableChecker::all(const TextContext& context) {
    std::vector<Finding> findings;
    const RowRequirements& rows = table_.spec().rows;
    const RowIndex count = table_.rowCount();
    if (rows.required.most < count)
        findings.push_back(finding(Severity::Required, text(TextId::MoreThanAllowableRows)));
    else if (rows.recommended.most < count)
        findings.push_back(finding(Severity::Recommended, text(TextId::MoreThanRecommendedRows)));
    if (count < rows.recommended.least)
        findings.push_back(finding(Severity::Recommended, text(TextId::FewerThanRecommendedRows)));
    std::vector<std::size_t> checked; // what is neither editable nor to be a certain way needs no look at its cells
    for (std::size_t i = 0; i < table_.columnCount(); ++i)
        if (isChecked(table_.column(i), table_))
            checked.push_back(i);
    for (RowIndex row = 0; row < count; ++row)
        for (const std::size_t i : checked)
            append(table_.column(i), i, row, context, findings);
    return findings;
}

} // namespace quobrix
