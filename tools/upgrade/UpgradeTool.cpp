#include "tools/upgrade/UpgradeTool.h"

#include "engine/core/files/Paths.h"
#include "engine/core/files/ReadFaults.h"
#include "engine/core/logging/Logger.h"
#include "engine/core/system/System.h"
#include "engine/scene/components/SceneSchema.h"
#include "tools/upgrade/Classify.h"
#include "tools/upgrade/CommandLine.h"
#include "tools/upgrade/InputFiles.h"
#include "tools/upgrade/UpgradeFile.h"
#include "tools/upgrade/VerifyRoundTrip.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <initializer_list>
#include <optional>
#include <stdexcept>
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
        const Platform::ReadFaultWatch faults("/");
        ProcessOrReport(file);
        // A manager doesn't try again what it couldn't read; the next file gets a new one.
        if (!faults.First().empty())
        {
            assetManagers_.clear();
        }
    }

private:
    void ProcessOrReport(const std::filesystem::path& file)
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
        if (VerifyRoundTrip(file, ManagerFor(file), error))
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

} // namespace

std::filesystem::path FindContentFolder(const std::filesystem::path& file)
{
    const std::filesystem::path own = std::filesystem::absolute(file).parent_path();
    for (std::filesystem::path candidate = own; !candidate.empty();)
    {
        if (candidate.filename() == "Content")
        {
            return candidate;
        }
        const std::filesystem::path parent = candidate.parent_path();
        if (parent == candidate)
        {
            break;
        }
        candidate = parent;
    }
    return own;
}

Assets::AssetManager& AssetManagerFor(const std::filesystem::path& file,
                                      const std::filesystem::path& contentFolder,
                                      AssetManagers& assetManagers)
{
    const std::filesystem::path key =
        contentFolder.empty() ? FindContentFolder(file) : std::filesystem::absolute(contentFolder);
    const auto found = assetManagers.find(key);
    if (found != assetManagers.end())
    {
        return *found->second;
    }
    std::error_code error;
    const Platform::ReadFaultWatch faults(Platform::CanonicalPath(key, error));
    auto manager = std::make_unique<Assets::AssetManager>();
    manager->Initialize(key, Assets::AssetMountMode::Authoring);
    manager->PreloadProjectAssets(nullptr);
    // What wasn't seen would be missing from every file converted with this manager.
    const std::string fault = error ? key.native() + ": " + Platform::SystemErrorText(error) : faults.First();
    if (!fault.empty())
    {
        throw std::runtime_error("the content folder could not be read whole: " + fault);
    }
    return *assetManagers.emplace(key, std::move(manager)).first->second;
}

int RunUpgradeTool(const std::vector<std::string_view>& arguments)
{
    const int exitCode = RunCommandLine(ParseCommandLine(arguments));
    const bool printed = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    return printed ? exitCode : std::max(exitCode, kFound);
}

} // namespace Vornu::Upgrade
