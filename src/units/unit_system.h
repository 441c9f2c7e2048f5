#pragma once

#include "base/no_value.h"
#include "units/number_format.h"
#include "units/unit_catalogue.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// The name of the built-in system, which has no file, and of the one that is current when nothing else is chosen.
inline constexpr std::string_view kSiSystemName = "S.I.";
inline constexpr std::string_view kUsSystemName = "U.S.";

/// What a unit system chooses. A plain value: a system is loaded into a copy that then takes the current one's place.
struct UnitChoices {
    std::string name{kSiSystemName};
    bool locked = true;             ///< its file is read-only, or it has none
    bool modified = false;          ///< differs from its file
    bool fractionDiameters = false; ///< show diameters in inches as fractions
    /// By unit type. The arrays below the first two repeat the unit's record, so that a conversion needs no look-up.
    std::array<UnitId, kUnitTypeCount> units{};
    std::array<std::uint8_t, kUnitTypeCount> decimals{}; ///< 0 to 9
    std::array<double, kUnitTypeCount> factors{};
    std::array<double, kUnitTypeCount> offsets{};
    std::array<bool, kUnitTypeCount> secondsPerUnit{};

    /// "S.I.": every type's default unit with its default decimals.
    UnitChoices();
    /// Takes UNIT's record for TYPE; the decimals stay.
    void choose(UnitTypeId type, UnitId unit);

    bool operator==(const UnitChoices&) const = default;
};

/// Why a listener is called.
enum class UnitsChange {
    SystemLoaded = 0, ///< everything may have changed
    Unit = 1,
    Decimals = 2,
    FractionDiameters = 3,
};

/// A view that shows values. It may add and remove listeners, itself among them, while it is called.
class UnitsListener {
public:
    /// TYPE is the unit type concerned, none for SystemLoaded and FractionDiameters.
    virtual void unitsChanged(UnitsChange reason, std::optional<UnitTypeId> type) = 0;

protected:
    ~UnitsListener() = default;
};

/// How the person's locale writes numbers and the halves of the day.
struct TextLocale {
    NumberFormat numbers;
    std::string am; ///< empty: "AM"
    std::string pm; ///< empty: "PM"
};

/// The current unit system: every base value is converted and written through it. User-interface thread only.
class TUnitSystem {
public:
    /// Starts as "S.I.".
    explicit TUnitSystem(TextLocale locale = {}) : locale_(std::move(locale)) {}
    TUnitSystem(const TUnitSystem&) = delete;
    TUnitSystem& operator=(const TUnitSystem&) = delete;

    const UnitChoices& choices() const { return choices_; }
    const std::string& name() const { return choices_.name; }
    bool locked() const { return choices_.locked; }
    bool modified() const { return choices_.modified; }
    bool fractionDiameters() const { return choices_.fractionDiameters; }
    /// Diameters are in inches and shown as fractions of them, whatever their decimals.
    bool showsFractions() const { return choices_.fractionDiameters && unit(UnitTypeId::Diameter) == UnitId::Inch; }
    const TextLocale& locale() const { return locale_; }

    UnitId unit(UnitTypeId type) const { return choices_.units[index(type)]; }
    std::string_view unitName(UnitTypeId type) const { return unitRecord(unit(type)).name; }
    /// What follows a number: a blank and the unit's name, or nothing.
    std::string_view unitLabel(UnitTypeId type) const { return unitRecord(unit(type)).label; }
    int decimals(UnitTypeId type) const { return choices_.decimals[index(type)]; }

    /// A base value in the current unit; kNoValue stays kNoValue.
    double toDisplay(UnitTypeId type, double base) const {
        if (!hasValue(base))
            return kNoValue;
        const std::size_t i = index(type);
        const double sum = base + choices_.offsets[i];
        return choices_.secondsPerUnit[i] ? sum / choices_.factors[i] : sum * choices_.factors[i];
    }
    /// A value in the current unit as a base value.
    double toBase(UnitTypeId type, double shown) const {
        const std::size_t i = index(type);
        return (choices_.secondsPerUnit[i] ? shown * choices_.factors[i] : shown / choices_.factors[i]) -
               choices_.offsets[i];
    }

    // Text, as the locale writes numbers. With a buffer (ValueText) nothing is allocated and the result points into it.
    std::string_view formatNumber(double value, int decimals, std::span<char> buffer) const {
        return quobrix::formatNumber(locale_.numbers, value, decimals, buffer);
    }
    std::string_view formatInteger(std::int64_t value, std::span<char> buffer) const {
        return quobrix::formatInteger(locale_.numbers, value, buffer);
    }
    /// A base value in the current unit with the current decimals: "60"; or as a fraction, see showsFractions().
    /// Nothing for kNoValue: a conversion would make a figure of it that was never measured.
    std::string_view formatValue(UnitTypeId type, double base, std::span<char> buffer) const {
        if (!hasValue(base))
            return {};
        if (type == UnitTypeId::Diameter && showsFractions())
            return formatFraction(locale_.numbers, toDisplay(type, base), buffer);
        return formatNumber(toDisplay(type, base), decimals(type), buffer);
    }
    /// The same followed by the label: "60 MPH"; what reads "1" has one of it: "1 Second".
    std::string_view formatValueWithUnits(UnitTypeId type, double base, std::span<char> buffer) const;

    std::string formatNumber(double value, int decimals) const;
    std::string formatInteger(std::int64_t value) const;
    std::string formatValue(UnitTypeId type, double base) const;
    std::string formatValueWithUnits(UnitTypeId type, double base) const;

    /// Takes UNIT, which must be one of TYPE's, with its default decimals.
    void setUnit(UnitTypeId type, UnitId unit);
    /// Takes DECIMALS (clamped to 0 to 9).
    void setDecimals(UnitTypeId type, int decimals);
    void setFractionDiameters(bool flag);
    void resetToSI() { replace({}); }
    /// Makes CHOICES current and tells the listeners.
    void replace(UnitChoices choices);
    /// The system is now in the file NAME: neither modified nor locked. Values do not change, so listeners are not
    /// told.
    void markSaved(std::string_view name);
    /// The system's file has become read-only.
    void markLocked() { choices_.locked = true; }
    void setLocale(TextLocale locale);

    /// Listeners are called in the order in which they were added, and must be removed before they end.
    void addListener(UnitsListener& listener);
    void removeListener(UnitsListener& listener);

private:
    static constexpr std::size_t index(UnitTypeId type) { return static_cast<std::size_t>(type); }
    void notify(UnitsChange reason, std::optional<UnitTypeId> type);

    UnitChoices choices_;
    TextLocale locale_;
    std::vector<UnitsListener*> listeners_; ///< null: removed during a call
    int notifying_ = 0;
};

/// Decimals as a person enters them: TEXT is read as a number and truncated; 0 to 9 are taken, anything below or above
/// means 9. Nothing if there is no number, so that the field goes back to what it was.
std::optional<int> decimalsFromText(std::string_view text);

} // namespace quobrix
