#include "tables/requirements_text.h"

#include "tables/range_text.h"
#include "texts/text.h"
#include "units/unit_system.h"

namespace quobrix {
namespace {

std::string kindText(const Column& column) {
    switch (column.kind()) {
    case ColumnKind::Boolean:
        return text(TextId::KindBoolean);
    case ColumnKind::Integer:
        return text(TextId::KindInteger);
    case ColumnKind::Real:
        return text(TextId::KindReal);
    case ColumnKind::Text:
        return text(TextId::KindText);
    case ColumnKind::Selection:
        return text(TextId::KindSelection);
    case ColumnKind::DateTime:
        return text(TextId::KindDateTime);
    case ColumnKind::Table:
        break;
    }
    return text(TextId::KindTable);
}

std::string uniqueText(Uniqueness uniqueness) {
    return uniqueness == Uniqueness::CaseSensitive ? text(TextId::UniqueCase) : text(TextId::UniqueNoCase);
}

} // namespace

std::string requirementsText(const Column& column, const TextContext& context) {
    const Requirements& r = column.requirements();
    std::string all = kindText(column);
    const auto paragraph = [&](const std::string& what) { all.append("\n\n").append(what); };
    if (column.editable()) {
        paragraph(r.need == Need::Required   ? text(TextId::IsRequired)
                  : r.need == Need::Optional ? text(TextId::IsOptional)
                                             : text(TextId::IsNotRequired));
        if (r.need == Need::Recommended)
            paragraph(text(TextId::IsRecommended));
        if (r.isDefaulted)
            paragraph(text(TextId::IsDefaulted));
    }
    if (column.kind() == ColumnKind::Selection)
        paragraph(text(TextId::RangeOfSelections));
    const auto range = [&](TextOf<1> label, const Range& limits) {
        if (limits.limited())
            paragraph(text(label, rangeText(limits, [&](double base) { return column.figureText(base, context); })));
    };
    range(TextId::RequiredRange, r.required);
    range(TextId::RecommendedRange, r.recommended);
    const auto count = [&](TextOf<1> label, const CountRange& limits) {
        if (limits.limited())
            paragraph(text(label, countRangeText(limits, context)));
    };
    count(TextId::RequiredCharacters, r.requiredCharacters);
    count(TextId::RecommendedCharacters, r.recommendedCharacters);
    count(TextId::RequiredRows, r.requiredRows);
    count(TextId::RecommendedRows, r.recommendedRows);
    if (r.mustBeUnique != Uniqueness::None)
        paragraph(text(TextId::MustBeUnique, uniqueText(r.mustBeUnique)));
    if (r.shouldBeUnique != Uniqueness::None)
        paragraph(text(TextId::ShouldBeUnique, uniqueText(r.shouldBeUnique)));
    if (column.kind() == ColumnKind::Real && !context.units.unitName(column.spec().unit).empty())
        paragraph(text(TextId::UnitTypeIs, text(unitTypeRecord(column.spec().unit).shownName)));
    if (r.notApplicable)
        paragraph(text(TextId::DoesNotApply));
    else if (!column.editable())
        paragraph(text(TextId::NotEditable));
    return all;
}

} // namespace quobrix
