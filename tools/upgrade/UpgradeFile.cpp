#include "tools/upgrade/UpgradeFile.h"

#include "engine/assets/manager/AssetManager.h"
#include "engine/core/files/Backup.h"
#include "engine/core/files/FileAccess.h"
#include "engine/core/files/FileStamp.h"
#include "engine/core/files/Paths.h"
#include "engine/core/files/ReadFaults.h"
#include "engine/core/logging/AccessWarning.h"
#include "engine/core/system/System.h"
#include "engine/scene/Scene.h"
#include "engine/scene/files/SceneFile.h"
#include "engine/scene/files/SceneStage.h"
#include "engine/scene/legacy/LegacyReader.h"
#include "tools/upgrade/Classify.h"
#include "tools/upgrade/UnreadContentCheck.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>

namespace Vornu::Upgrade
{
namespace
{

/// Whether a name is taken, if only by a dangling link. Where the system can't tell, the copy will.
bool IsTaken(const std::filesystem::path& path)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::symlink_status(path, error);
    return !error && std::filesystem::exists(status);
}

/// The first free name of `<input>.legacy-v<version>`, `...-2`, `...-3` and so on.
std::filesystem::path FreeBackupPath(const std::filesystem::path& input, std::uint32_t version)
{
    std::filesystem::path first = input;
    first += ".legacy-v" + std::to_string(version);
    std::filesystem::path candidate = first;
    for (std::uint64_t number = 2; IsTaken(candidate); ++number)
    {
        candidate = first;
        candidate += "-";
        candidate += std::to_string(number);
    }
    return candidate;
}

bool ConsumeDigits(std::string_view& text)
{
    const std::size_t rest = std::min(text.find_last_not_of("0123456789") + 1, text.size());
    const bool any = rest < text.size();
    text = text.substr(0, rest);
    return any;
}

bool ConsumeEnd(std::string_view& text, std::string_view end)
{
    const bool found = text.ends_with(end);
    text.remove_suffix(found ? end.size() : 0);
    return found;
}

/// Whether `FreeBackupPath` may have given the name.
bool IsBackupName(const std::filesystem::path& path)
{
    const std::string name = path.filename().native();
    std::string_view rest = name;
    if (!ConsumeDigits(rest))
    {
        return false;
    }
    return (ConsumeEnd(rest, ".legacy-v") ||
            (ConsumeEnd(rest, "-") && ConsumeDigits(rest) && ConsumeEnd(rest, ".legacy-v"))) &&
           !rest.empty();
}

class FileUpgrade
{
public:
    FileUpgrade(const std::filesystem::path& input, Assets::AssetManager& assets,
                const UpgradeOptions& options)
        : input_(input), assets_(assets), options_(options)
    {
        result_.outputPath = options.outputPath.empty() ? input : options.outputPath;
    }

    UpgradeResult Run()
    {
        stamp_ = ReadStamp();
        const Classification found = Classify(input_);
        version_ = found.probe.version;
        if (!found.reason)
        {
            ReportNotLegacy(found.probe);
        }
        else if (MayConvert() && Convert())
        {
            result_.status = UpgradeStatus::Converted;
            result_.message = "converted from " + *found.reason;
        }
        return std::move(result_);
    }

private:
    void ReportNotLegacy(const Scene::SceneVersionProbe& probe)
    {
        if (probe.found && probe.version == Scene::kSceneFormatVersion)
        {
            result_.status = UpgradeStatus::Current;
            result_.message = "already in the current format";
        }
        else
        {
            result_.message = "not a scene file (missing or unsupported scene_version header)";
        }
    }

    /// Refuses what would be lost by the conversion.
    bool MayConvert()
    {
        if (options_.outputPath.empty())
        {
            const bool isBackup =
                IsBackupName(input_) || IsBackupName(Platform::FollowLinks(input_).value_or(input_));
            return options_.keepBackup || !isBackup ||
                   Fail("a backup of an earlier conversion is not converted in place without a backup");
        }
        std::error_code error;
        const std::filesystem::file_status status = std::filesystem::status(options_.outputPath, error);
        return !std::filesystem::exists(status) || std::filesystem::is_regular_file(status) ||
               Fail("output is not a regular file: " + options_.outputPath.native());
    }

    bool Convert()
    {
        Scene::Scene scene;
        std::string error;
        const Platform::ReadFaultWatch faults(assets_.RootPath());
        const UnreadContentCheck unread(assets_);
        const bool isLoaded = Scene::Legacy::Load(input_, scene, assets_, &error);
        if (std::string fault = unread.Fault(); !fault.empty())
        {
            return Fail(std::move(fault));
        }
        if (!isLoaded)
        {
            return Fail("legacy read failed: " + error);
        }
        // The reader goes on without an asset that it can't look at, and the reference to it would be lost.
        if (const std::string fault = faults.First(); !fault.empty())
        {
            return Fail("legacy read failed: could not read " + fault);
        }
        if (!RequireUnchangedInput() || !KeepBackup() || !RequireUnchangedInput())
        {
            return false;
        }
        if (!Save(scene))
        {
            return false;
        }
        Scene::Scene proof;
        if (!Scene::LoadScene(result_.outputPath, proof, assets_, &error))
        {
            return Fail("converted file does not load: " + error);
        }
        return true;
    }

    bool Save(const Scene::Scene& scene)
    {
        Scene::SaveOptions saving;
        saving.mayReplace = [this] { return RequireUnchangedInput(); };
        if (!options_.outputPath.empty())
        {
            Platform::FileAccess access;
            if (const int fault = Platform::ReadFileAccess(input_, access))
            {
                return Fail("the file could not be examined: " + Platform::SystemErrorText(fault));
            }
            saving.limit = Platform::LimitOf(access);
        }
        std::string error;
        if (Scene::SaveScene(result_.outputPath, scene, assets_, &error, saving))
        {
            return true;
        }
        return result_.message.empty() && Fail(error); // else the input has changed
    }

    bool KeepBackup()
    {
        if (!options_.outputPath.empty() || !options_.keepBackup)
        {
            return true;
        }
        const std::filesystem::path backup = FreeBackupPath(input_, version_);
        const Platform::FileResult copied = Platform::CopyFileExclusive(input_, backup, stamp_);
        if (!copied.Succeeded())
        {
            return RequireUnchangedInput() &&
                   Fail("could not write backup " + backup.native() + ": " + copied.message);
        }
        Core::WarnIfNarrowed(copied, backup);
        result_.backupPath = backup;
        return true;
    }

    /// What was read is what is going to be replaced.
    bool RequireUnchangedInput()
    {
        const std::optional<Platform::FileStamp> now = ReadStamp();
        if (stampError_ != 0)
        {
            return Fail("the file could not be examined: " + Platform::SystemErrorText(stampError_));
        }
        return now == stamp_ || Fail("the file changed on disk while it was being converted");
    }

    std::optional<Platform::FileStamp> ReadStamp()
    {
        const std::optional<Platform::FileStamp> stamp = Platform::ReadFileStamp(input_);
        if (!stamp && stampError_ == 0)
        {
            stampError_ = errno;
        }
        return stamp;
    }

    bool Fail(std::string message)
    {
        result_.message = std::move(message);
        return false;
    }

    const std::filesystem::path& input_;
    Assets::AssetManager& assets_;
    const UpgradeOptions& options_;
    std::optional<Platform::FileStamp> stamp_;
    int stampError_ = 0; // of the first stamp that couldn't be had
    std::uint32_t version_ = 0;
    UpgradeResult result_;
};

} // namespace

UpgradeResult UpgradeFile(const std::filesystem::path& input, Assets::AssetManager& assets,
                          const UpgradeOptions& options)
{
    return FileUpgrade(input, assets, options).Run();
}

} // namespace Vornu::Upgrade
