#pragma once

#include "tables/column.h"

#include <array>

/// Declares a column class from one row of data: its oddities, if any, are in BASE. NEEDS starts from a constant of the
/// namespace requirements.
#define QUOBRIX_COLUMN_CLASS(Name, Base, Key, Unit, Heading, Tooltip, Needs)                                           \
    class Name final : public Base {                                                                                   \
    public:                                                                                                            \
        static constexpr PersistentType kType{#Name, false, 1, &makePersistent<Name>};                                 \
        static constexpr ColumnSpec kSpec{                                                                             \
            kType, Key, UnitTypeId::Unit, SourceText(Heading), SourceText(Tooltip), requirements::Needs};              \
        const ColumnSpec& spec() const override { return kSpec; }                                                      \
    };

/// The members that every table class has; its columns are the array kColumnTypes, the computed ones kComputedTypes.
#define QUOBRIX_TABLE_CLASS(Name, Singleton)                                                                           \
public:                                                                                                                \
    static constexpr PersistentType kType{#Name, Singleton, 1, &makePersistent<Name>};                                 \
    const TableSpec& spec() const override;

namespace quobrix {

/// The types of column classes, in a table's order.
template <class... Columns>
inline constexpr std::array<const PersistentType*, sizeof...(Columns)> kTypesOf = {&Columns::kType...};

} // namespace quobrix
