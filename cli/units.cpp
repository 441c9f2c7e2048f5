#include "cli/units.h"

#include "platform/paths.h"
#include "settings/file_settings.h"
#include "units/unit_system_store.h"

#include <fmt/format.h>

namespace quobrix::cli {

ExitCode UserUnits::load(const std::optional<std::string>& name) {
    const UnitSystemFolders folders{deliveredFolder(), userDataFolder()};
    if (!name) {
        Settings settings(userSettings());
        if (const std::optional<Message> problem = UnitSystemStore(system_, folders, &settings).loadAtStartUp())
            complain(problem->text);
        return kDone;
    }
    UnitSystemStore store(system_, folders);
    const Result<void> loaded = store.loadSystem(*name);
    if (loaded)
        return kDone;
    if (loaded.error().kind == ErrorKind::NotFound) {
        complain(
            fmt::format("there is no unit system \"{}\"; there are {}", *name, fmt::join(store.listSystems(), ", ")));
        return kUsage;
    }
    complain(fmt::format("the unit system \"{}\" cannot be read ({})", *name, loaded.error().detail));
    return kFailed;
}

} // namespace quobrix::cli
