#include "tools/upgrade/UpgradeTool.h"

#include "engine/core/logging/Logger.h"
#include "engine/core/system/System.h"
#include "engine/scene/components/SceneSchema.h"
#include "tools/upgrade/Classify.h"
#include "tools/upgrade/CommandLine.h"
#include "tools/upgrade/InputFiles.h"
#include "tools/upgrade/UnreadContentCheck.h"
#include "tools/upgrade/UpgradeFile.h"
#include "tools/upgrade/VerifyRoundTrip.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <initializer_list>
#include <optional>
#include <string>
#include <system_error>

namespace Vornu::Upgrade
{
namespace
{

constexpr int kSuccess = 0;
constexpr int kFound = 1; // legacy files in check mode, failed files otherwise
constexpr int kUsageError = 2;

void Print(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

/// What was printed before comes first, also where both streams lead to one place. Needs no memory, as it may
/// be the lack of it that is told.
void PrintError(std::initializer_list<std::string_view> parts)
{
    std::fflush(stdout);
    for (const std::string_view part : parts)
    {
        std::fwrite(part.data(), 1, part.size(), stderr);
    }
    std::fflush(stderr);
}

/// One run over a list of files, in one mode.
class Run
{
public:
    explicit Run(const CommandLine& commandLine) : commandLine_(commandLine) {}

    bool FoundAny() const noexcept { return legacyCount_ > 0 || failureCount_ > 0; }

    void Process(const std::filesystem::path& file)
    {
        try
        {
            if (commandLine_.checkOnly)
            {
                Check(file);
            }
            else if (commandLine_.verifyOnly)
            {
                Verify(file);
            }
            else
            {
                Upgrade(file);
            }
        }
        catch (const std::exception& error)
        {
            ReportFailure(file, error.what());
        }
    }

private:
    void Check(const std::filesystem::path& file)
    {
        if (const std::optional<std::string> reason = ClassifyFile(file))
        {
            ++legacyCount_;
            Print(LegacyLine(file, *reason));
        }
    }

    void Verify(const std::filesystem::path& file)
    {
        if (const std::optional<std::string> reason = ClassifyFile(file))
        {
            ++failureCount_;
            PrintError({LegacyLine(file, *reason)});
            return;
        }
        std::string error;
        Assets::AssetManager& assets = ManagerFor(file);
        const UnreadContentCheck unread(assets);
        const bool isStable = VerifyRoundTrip(file, assets, error);
        if (const std::string fault = unread.Fault(); !fault.empty())
        {
            ReportFailure(file, fault);
        }
        else if (isStable)
        {
            Print("verified " + file.native() + "\n");
        }
        else
        {
            ReportFailure(file, error);
        }
    }

    void Upgrade(const std::filesystem::path& file)
    {
        const UpgradeOptions options{commandLine_.outputPath, commandLine_.keepBackup};
        const UpgradeResult result = UpgradeFile(file, ManagerFor(file), options);
        switch (result.status)
        {
        case UpgradeStatus::Converted:
        {
            std::string line = "upgraded " + file.native() + " -> " + result.outputPath.native() + " (" +
                               result.message + ")";
            if (!result.backupPath.empty())
            {
                line += ", backup " + result.backupPath.native();
            }
            Print(line + "\n");
            break;
        }
        case UpgradeStatus::Current:
            Print("current  " + file.native() + "\n");
            break;
        case UpgradeStatus::Failed:
            ReportFailure(file, result.message);
            break;
        }
    }

    Assets::AssetManager& ManagerFor(const std::filesystem::path& file)
    {
        return AssetManagerFor(file, commandLine_.contentFolder, assetManagers_);
    }

    static std::string LegacyLine(const std::filesystem::path& file, const std::string& reason)
    {
        return "legacy   " + file.native() + " (" + reason + ")\n";
    }

    void ReportFailure(const std::filesystem::path& file, std::string_view message)
    {
        ++failureCount_;
        PrintError({"FAILED   ", file.native(), ": ", message, "\n"});
    }

    const CommandLine& commandLine_;
    AssetManagers assetManagers_;
    std::int32_t legacyCount_ = 0;
    std::int32_t failureCount_ = 0;
};

void ApplyLogLevels()
{
    const std::optional<std::string> levels = Platform::GetEnvironmentValue("VORNU_LOG_LEVELS");
    if (levels && !Core::GetLogger().ApplyLevelSpec(*levels))
    {
        Core::Log(Core::LogCategory::Core, Core::LogLevel::Warning,
                  "VORNU_LOG_LEVELS contains an invalid entry: '" + *levels + "'.");
    }
}

int ProcessInputs(const CommandLine& commandLine)
{
    const InputFiles inputs = ExpandInputs(commandLine.inputs);
    for (const std::string& fault : inputs.faults)
    {
        PrintError({"vornu-upgrade: ", fault, "\n"});
    }
    if (inputs.missing)
    {
        PrintError({"Not found: ", inputs.missing->native(), "\n"});
        return kUsageError;
    }
    if (!commandLine.outputPath.empty() && inputs.files.size() != 1)
    {
        PrintError({"--output needs exactly one input file.\n"});
        return kUsageError;
    }
    ApplyLogLevels();
    Scene::EnsureSceneSchema();
    Run run(commandLine);
    for (const std::filesystem::path& file : inputs.files)
    {
        run.Process(file);
    }
    return run.FoundAny() || !inputs.faults.empty() ? kFound : kSuccess;
}

int RunCommandLine(const CommandLine& commandLine)
{
    if (!commandLine.unknownOption.empty())
    {
        PrintError({"Unknown option: ", commandLine.unknownOption, "\n"});
        Print(kUsageText);
        return kUsageError;
    }
    if (commandLine.helpRequested || commandLine.inputs.empty())
    {
        Print(kUsageText);
        return commandLine.helpRequested ? kSuccess : kUsageError;
    }
    try
    {
        return ProcessInputs(commandLine);
    }
    catch (const std::exception& error)
    {
        PrintError({"vornu-upgrade: ", error.what(), "\n"});
        return kFound;
    }
}

/// Absolute and without "." and "..", which leads out of the folder that a link points to. Links stay where
/// no ".." follows them.
std::filesystem::path AbsolutePath(const std::filesystem::path& path)
{
    const std::filesystem::path full = std::filesystem::absolute(path);
    std::filesystem::path result = full.root_path();
    for (const std::filesystem::path& name : full.relative_path())
    {
        if (name == "..")
        {
            std::error_code ignored; // of a status that can't be had; the system's own way is the safe one
            const std::filesystem::file_status status = std::filesystem::symlink_status(result, ignored);
            const bool isFolder = std::filesystem::is_directory(status);
            result = (isFolder ? result : Platform::WeaklyCanonical(result)).parent_path();
        }
        else if (name != "." && !name.empty())
        {
            result /= name;
        }
    }
    return result;
}

/// The nearest folder above `file` that is named "Content".
std::optional<std::filesystem::path> ContentFolderAbove(const std::filesystem::path& file)
{
    for (std::filesystem::path folder = file.parent_path(); folder.has_relative_path();
         folder = folder.parent_path())
    {
        if (folder.filename() == "Content")
        {
            return folder;
        }
    }
    return std::nullopt;
}

} // namespace

std::filesystem::path FindContentFolder(const std::filesystem::path& file)
{
    const std::filesystem::path full = AbsolutePath(file);
    if (const std::optional<std::filesystem::path> found = ContentFolderAbove(full))
    {
        return *found;
    }
    return ContentFolderAbove(Platform::WeaklyCanonical(full)).value_or(full.parent_path());
}

Assets::AssetManager& AssetManagerFor(const std::filesystem::path& file,
                                      const std::filesystem::path& contentFolder,
                                      AssetManagers& assetManagers)
{
    const std::filesystem::path key = Platform::WeaklyCanonical(
        contentFolder.empty() ? FindContentFolder(file) : AbsolutePath(contentFolder));
    const auto found = assetManagers.find(key);
    if (found != assetManagers.end())
    {
        return *found->second;
    }
    auto manager = std::make_unique<Assets::AssetManager>();
    manager->Initialize(key, Assets::AssetMountMode::Authoring);
    manager->PreloadProjectAssets(nullptr);
    return *assetManagers.emplace(key, std::move(manager)).first->second;
}

int RunUpgradeTool(const std::vector<std::string_view>& arguments)
{
    const int exitCode = RunCommandLine(ParseCommandLine(arguments));
    const bool printed = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    return printed ? exitCode : std::max(exitCode, kFound);
}

} // namespace Vornu::Upgrade
