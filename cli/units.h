#pragma once

#include "cli/output.h"
#include "tables/column.h"
#include "units/time_zone.h"
#include "units/unit_system.h"

#include <optional>
#include <string>

namespace quobrix::cli {

/// The user's units and place, for texts. Reads the settings and unit-system files and writes neither.
class UserUnits {
public:
    /// Takes the system NAME; without one, the one that the window program uses. Complains about failures; a remembered
    /// system that cannot be had is only told about.
    ExitCode load(const std::optional<std::string>& name);

    /// For people, in English.
    TextContext context() const { return {system_, zone_}; }

private:
    TUnitSystem system_;
    TimeZone zone_ = TimeZone::local();
};

} // namespace quobrix::cli
