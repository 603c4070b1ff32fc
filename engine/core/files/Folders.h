#pragma once

#include <filesystem>
#include <vector>

namespace Vornu::Core
{

// Every folder is looked up anew on each call, and nothing is created by a look. Status errors other than
// absence are thrown as `std::filesystem::filesystem_error` of the operation "exists". The forms with an
// executable folder answer for a program that runs from there.

/// Folder of the running program. Throws `std::runtime_error` if the system doesn't tell the program's path.
std::filesystem::path ExecutableFolder();

/// The nearest folder, from the executable's own upwards and at most 8 of them, that holds `CMakeLists.txt`
/// or `Config/EngineVersion.json`; if there is none, the second folder above the executable's.
std::filesystem::path EngineRootFolder();
std::filesystem::path EngineRootFolder(const std::filesystem::path& executableFolder);

/// `<engine root>/Assets/Content`
std::filesystem::path DefaultContentFolder();

/// `<engine root>/Assets/Exports`
std::filesystem::path ExportsFolder();

/// The first that exists of `Assets/<relative>` in the executable's folder, its parent and the engine root;
/// the first of the three if none does, for the caller to fail on.
std::filesystem::path FindEngineAsset(const std::filesystem::path& relative);
std::filesystem::path FindEngineAsset(const std::filesystem::path& relative,
                                      const std::filesystem::path& executableFolder);

/// The first that applies: the variable `VORNU_USER_SETTINGS_DIR`, `VornuEngine` in the folder of the
/// variable `APPDATA`, `.vornu_user` in an engine root that is a development tree (it holds
/// `CMakeLists.txt`), `VornuEngine` in `XDG_DATA_HOME` or in `.local/share` of `HOME` if the user can make
/// it there, and a folder below that for temporary files which no other process uses.
std::filesystem::path UserSettingsFolder();
std::filesystem::path UserSettingsFolder(const std::filesystem::path& executableFolder);

/// Creates `UserSettingsFolder` with its parents. A temporary one is closed to others, and goes with all it
/// holds when the process ends. Throws a `std::filesystem::filesystem_error` of "create_directories".
void MakeUserSettingsFolder();

/// `<user settings folder>/editor_preferences.cfg`
std::filesystem::path UserPreferencesPath();

/// `<user settings folder>/GeneratedShaders`
std::filesystem::path GeneratedShadersFolder();

/// The value of the variable `LOCALAPPDATA`, or an empty path.
std::filesystem::path LocalApplicationDataFolder();

/// Fonts that a user interface may try, best first.
std::vector<std::filesystem::path> SystemFontCandidates();

} // namespace Vornu::Core
