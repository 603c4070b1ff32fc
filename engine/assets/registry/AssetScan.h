#pragma once

#include "engine/assets/identity/AssetKind.h"
#include "engine/assets/identity/AssetSidecar.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Vornu::Assets
{

/// A file on its way into the registry. Paths are kept as text: a path object holds each of its parts once
/// more, which would be most of the memory and of the time of a scan.
struct ScanEntry
{
    std::string path;     // canonical
    std::string otherKey; // empty where the key is the path
    AssetKind kind = AssetKind::Unknown;
    std::uint64_t contentStamp = 0;
    std::string otherSidecarPath; // empty where the usual name counts
    bool hasSidecarFile = false;
    std::optional<AssetSidecar> sidecar; // once the entry has its identity
    /// Why the sidecar file doesn't hold that identity although it should; empty if it does.
    std::string fault;
    /// Another run may give the file another identity, so that no file may hold this one.
    bool isProvisional = false;

    const std::string& Key() const noexcept { return otherKey.empty() ? path : otherKey; }
    std::string SidecarFile() const
    {
        return otherSidecarPath.empty() ? path + std::string(kSidecarExtension) : otherSidecarPath;
    }
};

/// A sub-asset on its way into a registry. An empty `child` stands for the source.
struct SubAssetEntry
{
    AssetKind kind = AssetKind::Unknown;
    std::filesystem::path child; // the file that was generated for it
    std::string key;             // tells it from the others of the source
    std::string displayName;
};

/// What of a content folder isn't known or isn't as it should be.
class UnreadParts
{
public:
    void Add(const std::string& path, const std::string& cause);

    /// "<path>: <cause>" of the first part in the order of paths; empty if there is none.
    std::string First() const { return path_.empty() ? std::string() : path_ + ": " + cause_; }
    bool Empty() const noexcept { return path_.empty(); }

private:
    std::string path_;
    std::string cause_;
};

/// What one walk through a folder found.
struct FolderScan
{
    std::vector<ScanEntry> entries; // by key, ascending; no key twice
    /// Sidecars of files that weren't found, by the key of the file, ascending.
    std::vector<std::filesystem::path> orphans;
    UnreadParts unread;
};

/// The text by which paths are compared: the canonical form with `/` separators.
std::string PathKey(const std::filesystem::path& path);

/// Size and time of the last modification in one number; 0 for a file that can't be examined.
std::uint64_t ContentStamp(const std::filesystem::path& path) noexcept;

/// The entry of one file, without an identity.
ScanEntry MakeScanEntry(AssetKind kind, const std::filesystem::path& path);

/// Finds the assets and sidecars below a canonical folder. Never throws for what the system reports.
FolderScan ScanContentFolder(const std::filesystem::path& root);

} // namespace Vornu::Assets
