#include "cli/units.h"

#include "platform/paths.h"
#include "settings/file_settings.h"
#include "texts/text.h"
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
        complain(text(TextId::CliNoSuchUnitSystem, *name, fmt::format("{}", fmt::join(store.listSystems(), ", "))));
        return kUsage;
    }
    complain(text(TextId::CliUnitSystemUnreadable, *name, loaded.error().detail));
    return kFailed;
}

} // namespace quobrix::cli
