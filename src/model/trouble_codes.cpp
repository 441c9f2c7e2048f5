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
static_assert(std::size(kTroubleCodes) == 2066);
static_assert(std::is_sorted(std::begin(kTroubleCodes), std::end(kTroubleCodes),
                             [](const auto& a, const auto& b) { return a.code < b.code; }));

/// A category of codes: the letter, the second characters, the third characters (empty: any).
struct Category {
    char letter;
    std::string_view second, third;
    SourceText description;
};

// The first row that fits counts. A powertrain code whose third character is no decimal digit is described by its
// second character as a network code: this is how the codes have always been described.
constexpr Category kCategories[] = {
    {'P', "0", "0",
     SourceText("Unknown Powertrain DTC (SAE Controlled; Fuel and Air Metering and Auxiliary Emission Controls)")},
    {'P', "0", "12", SourceText("Unknown Powertrain DTC (SAE Controlled; Fuel and Air Metering)")},
    {'P', "0", "3", SourceText("Unknown Powertrain DTC (SAE Controlled; Ignition System or Misfire)")},
    {'P', "0", "4", SourceText("Unknown Powertrain DTC (SAE Controlled; Auxiliary Emission Controls)")},
    {'P', "0", "5",
     SourceText("Unknown Powertrain DTC (SAE Controlled; Vehicle Speed, Idle Control, and Auxiliary Inputs)")},
    {'P', "0", "6", SourceText("Unknown Powertrain DTC (SAE Controlled; Computer and Auxiliary Outputs)")},
    {'P', "0", "789", SourceText("Unknown Powertrain DTC (SAE Controlled; Transmission)")},
    {'P', "1", "0",
     SourceText(
         "Unknown Powertrain DTC (Manufacturer Controlled; Fuel and Air Metering and Auxiliary Emission Controls)")},
    {'P', "1", "12", SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Fuel and Air Metering)")},
    {'P', "1", "3", SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Ignition System or Misfire)")},
    {'P', "1", "4", SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Auxiliary Emission Controls)")},
    {'P', "1", "5",
     SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Vehicle Speed, Idle Control, and Auxiliary Inputs)")},
    {'P', "1", "6", SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Computer and Auxiliary Outputs)")},
    {'P', "1", "789", SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Transmission)")},
    {'P', "2", "012",
     SourceText("Unknown Powertrain DTC (SAE Controlled; Fuel and Air Metering and Auxiliary Emission Controls)")},
    {'P', "2", "3", SourceText("Unknown Powertrain DTC (SAE Controlled; Ignition System or Misfire)")},
    {'P', "2", "456789", SourceText("Unknown Powertrain DTC (SAE Controlled; Reserved)")},
    {'P', "3", "012",
     SourceText(
         "Unknown Powertrain DTC (Manufacturer Controlled; Fuel and Air Metering and Auxiliary Emission Controls)")},
    {'P', "3", "3", SourceText("Unknown Powertrain DTC (Manufacturer Controlled; Ignition System or Misfire)")},
    {'P', "3", "456789", SourceText("Unknown Powertrain DTC (SAE Controlled; Reserved)")},
    {'C', "0", "", SourceText("Unknown Chassis DTC (SAE Controlled)")},
    {'C', "12", "", SourceText("Unknown Chassis DTC (Manufacturer Controlled)")},
    {'C', "3", "", SourceText("Unknown Chassis DTC (Reserved)")},
    {'B', "0", "", SourceText("Unknown Body DTC (SAE Controlled)")},
    {'B', "12", "", SourceText("Unknown Body DTC (Manufacturer Controlled)")},
    {'B', "3", "", SourceText("Unknown Body DTC (Reserved)")},
    {'U', "0", "", SourceText("Unknown Network DTC (SAE Controlled)")},
    {'U', "12", "", SourceText("Unknown Network DTC (Manufacturer Controlled)")},
    {'U', "3", "", SourceText("Unknown Network DTC (Reserved)")},
    {'P', "0", "", SourceText("Unknown Network DTC (SAE Controlled)")},
    {'P', "12", "", SourceText("Unknown Network DTC (Manufacturer Controlled)")},
    {'P', "3", "", SourceText("Unknown Network DTC (Reserved)")},
};

} // namespace

SourceText troubleCodeDescription(std::string_view code) {
    if (code.empty())
        return {};
    if (code.size() != 5)
        return SourceText("Invalid DTC");
    const auto found =
        std::lower_bound(std::begin(kTroubleCodes), std::end(kTroubleCodes), code,
                         [](const TroubleCode& entry, std::string_view wanted) { return entry.code < wanted; });
    if (found != std::end(kTroubleCodes) && found->code == code)
        return found->description;
    for (const Category& category : kCategories)
        if (code[0] == category.letter && category.second.find(code[1]) != std::string_view::npos &&
            (category.third.empty() || category.third.find(code[2]) != std::string_view::npos))
            return category.description;
    return SourceText("Unknown DTC");
}

} // namespace quobrix
