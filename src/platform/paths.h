#pragma once

#include <filesystem>

namespace quobrix {

/// The running program's file, links followed; empty if the system does not say.
std::filesystem::path executablePath();

/// The folder of the program EXECUTABLE, ending in a separator, in which its data files and the logger library are
/// looked for; empty if EXECUTABLE is, for what lies in the current folder is not the program's. A program that is
/// run from a build's Release folder finds them beside that folder: the first "Release" folder of the path is left
/// out, so C:\Work\Release\Sub\x.exe yields C:\Work\Sub\.
std::filesystem::path programFolder(const std::filesystem::path& executable);

/// Where the files lie that are delivered with the program: in its folder, or, once it is installed as a package, in
/// share/quobrix beside that. Empty if the system does not say where the program is.
std::filesystem::path deliveredFolder();

/// The same for all names of one file: without links, and in one case where the system does not tell cases apart. Only
/// to be compared.
std::filesystem::path comparablePath(const std::filesystem::path& path);

/// Where this user's data and settings of the program lie; may not exist yet. Empty if the user has no home.
std::filesystem::path userDataFolder();
std::filesystem::path userConfigFolder();

} // namespace quobrix
