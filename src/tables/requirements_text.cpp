#include "tables/requirements_text.h"

#include "tables/range_text.h"
#include "units/unit_system.h"

namespace quobrix {
namespace {

std::string_view kindText(const Column& column) {
    switch (column.kind()) {
    case ColumnKind::Boolean:
        return "A boolean value, such as Yes, No, True or False.";
    case ColumnKind::Integer:
        return "An integer number, such as -1, 0 or 10.";
    case ColumnKind::Real:
        return "A real number, such as -1.1, 0 or 10.0e+3.";
    case ColumnKind::Text:
        return "A text string, such as The Quick Brown Fox.";
    case ColumnKind::Selection:
        return "A selection out of a list.";
    case ColumnKind::DateTime:
        return "A date and time.";
    case ColumnKind::Table:
        break;
    }
    return "A table.";
}

std::string uniqueText(Uniqueness uniqueness) {
    return uniqueness == Uniqueness::CaseSensitive ? "Yes (case sensitive)" : "Yes (case insensitive)";
}

} // namespace

std::string requirementsText(const Column& column, const TextContext& context) {
    const Requirements& r = column.requirements();
    std::string text(kindText(column));
    const auto paragraph = [&](std::string_view label, std::string_view what) {
        text.append("\n\n").append(label).append(what);
    };
    if (column.editable()) {
        paragraph("Required? ", r.need == Need::Required ? "Yes" : "No");
        if (r.need == Need::Optional)
            text += ". This is optional.";
        if (r.need == Need::Recommended)
            paragraph("Recommended? Yes", "");
        if (r.isDefaulted)
            paragraph("Defaulted? ", "Yes");
    }
    if (column.kind() == ColumnKind::Selection)
        paragraph("Range : Restricted to the list of available selections.", "");
    const auto range = [&](std::string_view label, const Range& limits) {
        if (limits.limited())
            paragraph(label, rangeText(limits, [&](double base) { return column.figureText(base, context); }));
    };
    range("Required Range : ", r.required);
    range("Recommended Range : ", r.recommended);
    const auto count = [&](std::string_view label, const CountRange& limits) {
        if (limits.limited())
            paragraph(label, countRangeText(limits, context));
    };
    count("Required Characters : ", r.requiredCharacters);
    count("Recommended Characters : ", r.recommendedCharacters);
    count("Required Rows : ", r.requiredRows);
    count("Recommended Rows : ", r.recommendedRows);
    if (r.mustBeUnique != Uniqueness::None)
        paragraph("Must Be Unique? ", uniqueText(r.mustBeUnique));
    if (r.shouldBeUnique != Uniqueness::None)
        paragraph("Should Be Unique? ", uniqueText(r.shouldBeUnique));
    if (column.kind() == ColumnKind::Real && !context.units.unitName(column.spec().unit).empty())
        paragraph("Unit Type : ", unitTypeRecord(column.spec().unit).name);
    if (r.notApplicable)
        paragraph("This does not currently apply; see Help for more information.", "");
    else if (!column.editable())
        paragraph("This is not editable; see Help for more information.", "");
    return text;
}

} // namespace quobrix
