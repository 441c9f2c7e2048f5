#pragma once

#include <cstdint>
#include <limits>

namespace quobrix {

/// Whether a cell is to have a value.
enum class Need : std::uint8_t { Optional, Recommended, Required };

/// Whether no two rows may hold the same value; texts are compared exactly or whatever their case.
enum class Uniqueness : std::uint8_t { None, CaseSensitive, CaseInsensitive };

inline constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A range of figures, in base units. An end at infinity is no limit.
struct Range {
    enum class Form : std::uint8_t {
        Closed,      ///< a <= x <= b
        Open,        ///< a < x < b
        ClosedBelow, ///< a <= x < b
        AtLeast,     ///< a <= x
        Above,       ///< a < x
    };

    double lower = -kInfinity;
    double upper = kInfinity;
    Form form = Form::Closed;

    constexpr bool limited() const { return lower != -kInfinity || upper != kInfinity; }
    /// Equal bounds mean that one value, whatever the form. Not-a-number is outside.
    constexpr bool contains(double x) const {
        if (lower == upper)
            return x == lower;
        const bool above = form == Form::Open || form == Form::Above ? lower < x : lower <= x;
        const bool below = form == Form::Open || form == Form::ClosedBelow ? x < upper : x <= upper;
        return above && below;
    }
};

/// How many characters a text or rows a table has; both ends count.
struct CountRange {
    static constexpr std::uint32_t kUnlimited = std::numeric_limits<std::uint32_t>::max();

    std::uint32_t least = 0;
    std::uint32_t most = kUnlimited;

    constexpr bool limited() const { return least != 0 || most != kUnlimited; }
    constexpr bool contains(std::uint64_t n) const { return n >= least && (most == kUnlimited || n <= most); }
};

/// What the values of a column must and should be. Part of the column's description: each row of a .def file starts
/// from one of the constants below and adds what else holds, such as Required.characters(1, 20).uniqueAnyCase().
struct Requirements {
    Need need = Need::Optional;
    bool readOnly = false;
    bool recorded = false;      ///< the logger or the program has put it down
    bool notApplicable = false; ///< does not currently apply
    bool isDefaulted = false;
    double defaultValue = 0; ///< in base units; 0 and 1 for booleans
    Range required{}, recommended{};
    CountRange requiredCharacters{}, recommendedCharacters{}; ///< of texts, in code points
    CountRange requiredRows{}, recommendedRows{};             ///< of the tables in the cells
    Uniqueness mustBeUnique = Uniqueness::None;
    Uniqueness shouldBeUnique = Uniqueness::None;

    /// With one member changed. Clang 14 wants it before its uses in constant expressions.
    template <class T>
    constexpr Requirements with(T Requirements::*member, T value) const {
        Requirements r = *this;
        r.*member = value;
        return r;
    }

    constexpr Requirements defaulted(double value) const {
        Requirements r = *this;
        r.isDefaulted = true;
        r.defaultValue = value;
        return r;
    }
    constexpr Requirements between(double lower, double upper) const {
        return with(&Requirements::required, Range{lower, upper, Range::Form::Closed});
    }
    constexpr Requirements atLeast(double lower) const {
        return with(&Requirements::required, Range{lower, kInfinity, Range::Form::AtLeast});
    }
    constexpr Requirements above(double lower) const {
        return with(&Requirements::required, Range{lower, kInfinity, Range::Form::Above});
    }
    constexpr Requirements betterBetween(double lower, double upper) const {
        return with(&Requirements::recommended, Range{lower, upper, Range::Form::Closed});
    }
    constexpr Requirements characters(std::uint32_t least, std::uint32_t most) const {
        return with(&Requirements::requiredCharacters, CountRange{least, most});
    }
    constexpr Requirements betterCharacters(std::uint32_t least, std::uint32_t most) const {
        return with(&Requirements::recommendedCharacters, CountRange{least, most});
    }
    constexpr Requirements unique() const { return with(&Requirements::mustBeUnique, Uniqueness::CaseSensitive); }
    constexpr Requirements uniqueAnyCase() const {
        return with(&Requirements::mustBeUnique, Uniqueness::CaseInsensitive);
    }
    constexpr Requirements betterUniqueAnyCase() const {
        return with(&Requirements::shouldBeUnique, Uniqueness::CaseInsensitive);
    }
};

/// Whether and how far the rows of a table may be added, inserted and deleted.
struct RowRequirements {
    bool editable = false;  ///< false: rows are records, or fixed
    bool removable = false; ///< records that can be deleted, though none can be added by hand
    CountRange required{}, recommended{};
};

/// Where the requirements of a row of a .def file start.
namespace requirements {
inline constexpr Requirements Optional{.need = Need::Optional};
inline constexpr Requirements Recommended{.need = Need::Recommended};
inline constexpr Requirements Required{.need = Need::Required};
/// What the logger or the program put down is not for editing.
inline constexpr Requirements Recorded{.readOnly = true, .recorded = true};
/// What follows from other columns.
inline constexpr Requirements Computed{.readOnly = true};
} // namespace requirements

} // namespace quobrix
