#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace Vornu::Assets
{
class AssetManager;
}

namespace Vornu::Upgrade
{

struct UpgradeOptions
{
    std::filesystem::path outputPath; // empty: convert in place
    bool keepBackup = true;           // of a file that is converted in place
};

enum class UpgradeStatus : std::uint8_t
{
    Converted = 0,
    Current = 1,
    Failed = 2,
};

struct UpgradeResult
{
    UpgradeStatus status = UpgradeStatus::Failed;
    std::filesystem::path outputPath;
    std::filesystem::path backupPath; // empty when none was written
    std::string message;              // the outcome in words
};

/// Converts one legacy file: reads it, keeps a backup, writes the current format and proves the result by
/// loading it. The input is lost in no outcome: where it is replaced and a backup is wanted, the backup is
/// complete on disk before.
UpgradeResult UpgradeFile(const std::filesystem::path& input, Assets::AssetManager& assets,
                          const UpgradeOptions& options);

} // namespace Vornu::Upgrade
