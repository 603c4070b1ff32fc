#include "engine/core/files/Folders.h"

#include "engine/core/Guid.h"
#include "engine/core/system/System.h"

#include <cerrno>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace Vornu::Core
{
namespace
{

constexpr int kRootSearchLevels = 8;
constexpr const char* kProductFolder = "VornuEngine";
constexpr const char* kLocalSettingsFolder = ".vornu_user";

bool IsDevelopmentTree(const fs::path& folder)
{
    return Platform::Exists(folder / "CMakeLists.txt");
}

bool IsEngineRoot(const fs::path& folder)
{
    return IsDevelopmentTree(folder) || Platform::Exists(folder / "Config" / "EngineVersion.json");
}

/// Where the desktop keeps data of the user; empty if it doesn't say.
fs::path DesktopDataFolder()
{
    // A relative value is to be ignored by the rules of that variable.
    const std::optional<std::string> data = Platform::GetEnvironmentValue("XDG_DATA_HOME");
    if (data && fs::path(*data).is_absolute())
    {
        return *data;
    }
    const std::optional<std::string> home = Platform::GetEnvironmentValue("HOME");
    return home ? fs::path(*home) / ".local" / "share" : fs::path();
}

/// Whether the user may make the folder, or it is there and open to the user.
bool CanBeMade(const fs::path& folder)
{
    for (fs::path place = folder;; place = place.parent_path())
    {
        struct stat status = {};
        if (::stat(place.c_str(), &status) == 0)
        {
            return S_ISDIR(status.st_mode) && ::access(place.c_str(), W_OK | X_OK) == 0;
        }
        if (errno != ENOENT || place == place.parent_path())
        {
            return false;
        }
    }
}

/// A folder of this process alone, for users who have none. It goes when the process ends.
class TemporarySettings
{
public:
    TemporarySettings()
    {
        std::error_code error;
        const fs::path temporary = fs::temp_directory_path(error);
        path_ = (error ? fs::path("/tmp") : temporary) / ("vornu-user-" + Guid::Generate().ToString());
    }
    ~TemporarySettings()
    {
        std::error_code ignored; // what can't be removed is the system's to clear
        if (made_)
        {
            fs::remove_all(path_, ignored);
        }
    }
    TemporarySettings(const TemporarySettings&) = delete;
    TemporarySettings& operator=(const TemporarySettings&) = delete;

    const fs::path& Path() const noexcept { return path_; }

    void Make()
    {
        if (!made_)
        {
            Platform::CreatePrivateDirectory(path_);
            made_ = true;
        }
    }

private:
    fs::path path_;
    bool made_ = false;
};

TemporarySettings& SettingsOfThisRun()
{
    static TemporarySettings settings;
    return settings;
}

/// The folder that the environment names; empty if it names none.
fs::path ConfiguredSettingsFolder()
{
    if (const std::optional<std::string> folder = Platform::GetEnvironmentValue("VORNU_USER_SETTINGS_DIR"))
    {
        return *folder;
    }
    if (const std::optional<std::string> folder = Platform::GetEnvironmentValue("APPDATA"))
    {
        return fs::path(*folder) / kProductFolder;
    }
    return {};
}

fs::path SettingsFolderOfRoot(const fs::path& root)
{
    if (IsDevelopmentTree(root))
    {
        return root / kLocalSettingsFolder;
    }
    const fs::path data = DesktopDataFolder();
    return !data.empty() && CanBeMade(data / kProductFolder) ? data / kProductFolder
                                                             : SettingsOfThisRun().Path();
}

} // namespace

fs::path ExecutableFolder()
{
    const std::optional<fs::path> executable = Platform::ExecutablePath();
    if (!executable)
    {
        throw std::runtime_error("Failed to resolve executable path.");
    }
    return executable->parent_path();
}

fs::path EngineRootFolder()
{
    return EngineRootFolder(ExecutableFolder());
}

fs::path EngineRootFolder(const fs::path& executableFolder)
{
    fs::path folder = executableFolder;
    for (int level = 0; level < kRootSearchLevels; ++level)
    {
        if (IsEngineRoot(folder))
        {
            return folder;
        }
        folder = folder.parent_path();
    }
    return executableFolder.parent_path().parent_path();
}

fs::path DefaultContentFolder()
{
    return EngineRootFolder() / "Assets" / "Content";
}

fs::path ExportsFolder()
{
    return EngineRootFolder() / "Assets" / "Exports";
}

fs::path FindEngineAsset(const fs::path& relative)
{
    return FindEngineAsset(relative, ExecutableFolder());
}

fs::path FindEngineAsset(const fs::path& relative, const fs::path& executableFolder)
{
    const fs::path asset = fs::path("Assets") / relative;
    const fs::path first = executableFolder / asset;
    if (Platform::Exists(first))
    {
        return first;
    }
    const fs::path second = executableFolder.parent_path() / asset;
    if (Platform::Exists(second))
    {
        return second;
    }
    const fs::path third = EngineRootFolder(executableFolder) / asset;
    return Platform::Exists(third) ? third : first;
}

fs::path UserSettingsFolder()
{
    // The environment alone decides where it can, even for a program that can't tell its own folder.
    const fs::path configured = ConfiguredSettingsFolder();
    return configured.empty() ? SettingsFolderOfRoot(EngineRootFolder()) : configured;
}

fs::path UserSettingsFolder(const fs::path& executableFolder)
{
    const fs::path configured = ConfiguredSettingsFolder();
    return configured.empty() ? SettingsFolderOfRoot(EngineRootFolder(executableFolder)) : configured;
}

void MakeUserSettingsFolder()
{
    const fs::path folder = UserSettingsFolder();
    if (ConfiguredSettingsFolder().empty() && folder == SettingsOfThisRun().Path())
    {
        SettingsOfThisRun().Make();
        return;
    }
    Platform::CreateDirectories(folder);
}

fs::path UserPreferencesPath()
{
    return UserSettingsFolder() / "editor_preferences.cfg";
}

fs::path GeneratedShadersFolder()
{
    return UserSettingsFolder() / "GeneratedShaders";
}

fs::path LocalApplicationDataFolder()
{
    return Platform::GetEnvironmentValue("LOCALAPPDATA").value_or(std::string());
}

std::vector<fs::path> SystemFontCandidates()
{
    return {"C:/Windows/Fonts/segoeui.ttf", "C:/Windows/Fonts/arial.ttf"};
}

} // namespace Vornu::Core
