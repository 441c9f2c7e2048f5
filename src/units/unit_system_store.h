#pragma once

#include "base/result.h"
#include "messages/message.h"
#include "settings/settings.h"
#include "units/unit_system.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

/// Where unit-system files lie: beside the program, and, for what cannot be written there, with the user's data.
struct UnitSystemFolders {
    std::filesystem::path program; ///< or the packaged data folder
    std::filesystem::path user;    ///< made when first needed
};

/// The unit systems on the disk, a file NAME.us each ("U.S." is in "U.S..us"), and "S.I.", which has none. Changes the
/// current system only when an operation succeeds; which system is current is remembered in the settings, if any are
/// given. User-interface thread only; the system and the settings must outlive the store.
class UnitSystemStore {
public:
    UnitSystemStore(TUnitSystem& current, UnitSystemFolders folders, Settings* settings = nullptr);

    /// The names of all systems, "S.I." among them, sorted by their bytes.
    std::vector<std::string> listSystems() const;

    /// Why NAME cannot be that of a new system: empty, unfit for a file name, or that of an existing one but for case.
    std::optional<Message> checkName(std::string_view name) const;

    /// Makes the system NAME current. NotFound, or an error of the file.
    Result<void> loadSystem(std::string_view name);
    /// Saves the current system in its file. ReadOnly if it is locked, as it is from then on if its file has become
    /// read-only since it was loaded.
    Result<void> saveSystem();
    /// Saves the current system if it was changed and is not locked; what is changed in a locked one holds until
    /// another is loaded. For the end of the program, too.
    Result<void> saveChanges();
    /// Saves the changes, then loads the other.
    Result<void> switchSystem(std::string_view name);
    /// Saves the changes, then makes a copy of the system BASE under a NAME that checkName() lets pass (else
    /// Unsupported); it becomes current. If BASE is the current system, the copy has what was changed in it, which a
    /// locked one could not keep.
    Result<void> newSystem(std::string_view name, std::string_view base);
    /// Gives the current system a name as newSystem() does; the new file is written before the old one goes.
    Result<void> renameSystem(std::string_view newName);
    /// Deletes the current system's file and loads "U.S.". ReadOnly if it is locked.
    Result<void> deleteSystem();

    /// The choice at start-up: "U.S.", then the remembered system if it can be loaded. What is to be told if not.
    std::optional<Message> loadAtStartUp();

private:
    std::optional<std::filesystem::path> find(std::string_view name) const;
    Result<UnitChoices> read(std::string_view name) const;
    Result<void> write(const UnitChoices& choices) const;
    void remember() const;

    TUnitSystem& current_;
    UnitSystemFolders folders_;
    Settings* settings_;
};

} // namespace quobrix
