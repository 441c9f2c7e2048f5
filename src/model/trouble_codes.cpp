#include "model/trouble_log.h"

#include <algorithm>
#include <iterator>

namespace quobrix {
namespace {

struct TroubleCode {
    std::string_view code;
    SourceText description;
};

constexpr TroubleCode kTroubleCodes[] = {
#define CODE(Code, Description) {Code, SourceText(Description)},
#include "model/trouble_codes.def"
#undef CODE
};

constexpr std::ptrdiff_t codesOf(std::string_view beginning) {
    return std::ranges::count_if(kTroubleCodes, [=](const auto& entry) { return entry.code.starts_with(beginning); });
}
// The table is the standard's, so what a slip of the hand leaves out or adds is known by the count.
static_assert(codesOf("P0") == 1024 && codesOf("P2") == 645 && codesOf("P3") == 98 && codesOf("U") == 299);
static_assert(std::size(kTroubleCodes) == 1024 + 645 + 98 + 299);
static_assert(std::is_sorted(std::begin(kTroubleCodes), std::end(kTroubleCodes),
                             [](const auto& a, const auto& b) { return a.code < b.code; }));

/// A category of codes: the letter, the second characters, the third characters (empty: any).
struct Category {
    char letter;
    std::string_view second, third;
    SourceText description;
    SourceText control;
    SourceText subsystem{}; ///< if the category has one
};

constexpr SourceText kSae("SAE (the same in every make)"), kMaker("The manufacturer (told in its documents only)"),
    kReserved("Nobody yet (reserved)");
constexpr SourceText kFuelAirAndEmissions("Fuel and Air Metering and Auxiliary Emission Controls"),
    kFuelAndAir("Fuel and Air Metering"), kIgnition("Ignition System or Misfire"),
    kEmissions("Auxiliary Emission Controls"), kSpeedAndIdle("Vehicle Speed, Idle Control, and Auxiliary Inputs"),
    kComputer("Computer and Auxiliary Outputs"), kTransmission("Transmission");

// The first row that fits counts. A powertrain code whose third character is no decimal digit is described by its
// second character as a network code: this is how the codes have always been described.
constexpr Category kCategories[] = {
    {'P', "0", "0",
     SourceText("Unknown Powertrain DTC (SAE Controlled; Fuel and Air Metering and Auxiliary Emission Controls)"), kSae,
     kFuelAirAndEmissions},
    {'P', "0", "12", SourceText("Unknown Powertrain DTC (SAE Controlled; Fuel and Air Metering)"), kSae, kFuelAndAir},
    {'P', "0", "3", SourceText("Unknown Powertrain DTC (SAE Controlled; Ignition System or Misfire)"), kSae, kIgnition},
    {'P', "0", "4", SourceText("Unknown Powertrain DTC (SAE Controlled; Auxiliary Emission Controls)"), kSae,
     kEmissions},
    {'P', "0", "5",
     SourceText("Unknown Powertrain DTC (SAE Controlled; Vehicle Speed, Idle Control, and Auxiliary Inputs)"), kSae,
     kSpeedAndIdle},
    {'P', "0", "6", SourceText("Unknown Powertrain DTC (SAE Controlled; Computer and Auxiliary Outputs)"), kSae,
     kComputer},
    {'P', "0", "789", SourceText("Unknown Powertrain DTC (SAE Controlled; Transmission)"), kSae, kTransmission},
    {'P', "1", "0",
     SourceText(
         "Unknown Powertrain DTC (Manufacturer Controlled; Fuel and Air Metering and Auxiliary Emission Controls)"),
     kMaker, kFuelAirAndEmissions},
    {'P', "1", "12", SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Fuel and Air Metering)"), kMaker,
     kFuelAndAir},
    {'P', "1", "3", SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Ignition System or Misfire)"), kMaker,
     kIgnition},
    {'P', "1", "4", SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Auxiliary Emission Controls)"), kMaker,
     kEmissions},
    {'P', "1", "5",
     SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Vehicle Speed, Idle Control, and Auxiliary Inputs)"),
     kMaker, kSpeedAndIdle},
    {'P', "1", "6", SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Computer and Auxiliary Outputs)"),
     kMaker, kComputer},
    {'P', "1", "789", SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Transmission)"), kMaker,
     kTransmission},
    {'P', "2", "012",
     SourceText("Unknown Powertrain DTC (SAE Controlled; Fuel and Air Metering and Auxiliary Emission Controls)"), kSae,
     kFuelAirAndEmissions},
    {'P', "2", "3", SourceText("Unknown Powertrain DTC (SAE Controlled; Ignition System or Misfire)"), kSae, kIgnition},
    {'P', "2", "456789", SourceText("Unknown Powertrain DTC (SAE Controlled; Reserved)"), kSae},
    {'P', "3", "012",
     SourceText(
         "Unknown Powertrain DTC (Manufacturer Controlled; Fuel and Air Metering and Auxiliary Emission Controls)"),
     kMaker, kFuelAirAndEmissions},
    {'P', "3", "3", SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Ignition System or Misfire)"), kMaker,
     kIgnition},
    {'P', "3", "456789", SourceText("Unknown Powertrain DTC (SAE Controlled; Reserved)"), kSae},
    {'C', "0", "", SourceText("Unknown Chassis DTC (SAE Controlled)"), kSae},
    {'C', "12", "", SourceText("Unknown Chassis DTC (Manufacturer Controlled)"), kMaker},
    {'C', "3", "", SourceText("Unknown Chassis DTC (Reserved)"), kReserved},
    {'B', "0", "", SourceText("Unknown Body DTC (SAE Controlled)"), kSae},
    {'B', "12", "", SourceText("Unknown Body DTC (Manufacturer Controlled)"), kMaker},
    {'B', "3", "", SourceText("Unknown Body DTC (Reserved)"), kReserved},
    {'U', "0", "", SourceText("Unknown Network DTC (SAE Controlled)"), kSae},
    {'U', "12", "", SourceText("Unknown Network DTC (Manufacturer Controlled)"), kMaker},
    {'U', "3", "", SourceText("Unknown Network DTC (Reserved)"), kReserved},
    {'P', "0", "", SourceText("Unknown Network DTC (SAE Controlled)"), kSae},
    {'P', "12", "", SourceText("Unknown Network DTC (Manufacturer Controlled)"), kMaker},
    {'P', "3", "", SourceText("Unknown Network DTC (Reserved)"), kReserved},
};

/// What the table holds of CODE; nothing for a code that it does not.
const TroubleCode* knownCode(std::string_view code) {
    const auto found =
        std::lower_bound(std::begin(kTroubleCodes), std::end(kTroubleCodes), code,
                         [](const TroubleCode& entry, std::string_view wanted) { return entry.code < wanted; });
    return found != std::end(kTroubleCodes) && found->code == code ? found : nullptr;
}

/// The category of CODE, which has five characters; nothing if it is of none.
const Category* categoryOf(std::string_view code) {
    const auto fits = [code](const Category& category) {
        return code[0] == category.letter && category.second.find(code[1]) != std::string_view::npos &&
               (category.third.empty() || category.third.find(code[2]) != std::string_view::npos);
    };
    const auto found = std::ranges::find_if(kCategories, fits);
    return found == std::end(kCategories) ? nullptr : found;
}

constexpr std::size_t kCodeLength = 5;

SourceText systemOf(char letter) {
    switch (letter) {
    case 'P':
        return SourceText("Powertrain");
    case 'C':
        return SourceText("Chassis");
    case 'B':
        return SourceText("Body");
    default:
        return SourceText("Network");
    }
}

} // namespace

SourceText troubleCodeDescription(std::string_view code) {
    if (code.empty())
        return {};
    if (code.size() != kCodeLength)
        return SourceText("Invalid DTC");
    if (const TroubleCode* const known = knownCode(code))
        return known->description;
    const Category* const category = categoryOf(code);
    return category ? category->description : SourceText("Unknown DTC");
}

TroubleCodeParts troubleCodeParts(std::string_view code) {
    const Category* const category = code.size() == kCodeLength ? categoryOf(code) : nullptr;
    if (!category)
        return {};
    // SAE J2012 describes all codes of the table, whoever has the others of their category.
    return {systemOf(category->letter), knownCode(code) ? kSae : category->control, category->subsystem};
}

} // namespace quobrix
