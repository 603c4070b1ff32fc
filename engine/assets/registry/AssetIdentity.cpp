#include "engine/assets/registry/AssetIdentity.h"

#include "engine/core/files/Files.h"
#include "engine/core/files/ReadFaults.h"
#include "engine/core/logging/Logger.h"

#include <utility>

namespace Vornu::Assets
{
namespace
{

namespace fs = std::filesystem;

/// Of one file's sidecar; what concerns several files belongs to the assets.
void WarnOfSidecar(std::string message)
{
    Core::Log(Core::LogCategory::General, Core::LogLevel::Warning, std::move(message));
}

void Warn(std::string message)
{
    Core::Log(Core::LogCategory::Assets, Core::LogLevel::Warning, std::move(message));
}

std::string ContentKey(const fs::path& asset, std::uint64_t stamp)
{
    return LowerExtension(asset) + "|" + std::to_string(stamp);
}

/// Frees the name of a sidecar without losing the identity that may still be in it.
Platform::FileResult SetAside(const fs::path& sidecar)
{
    constexpr int kMostKept = 1000;
    Platform::FileResult moved;
    for (int number = 1; number <= kMostKept; ++number)
    {
        fs::path kept = sidecar;
        kept += number == 1 ? ".unreadable" : ".unreadable-" + std::to_string(number);
        moved = Platform::MoveToFreeName(sidecar, kept);
        if (moved.Succeeded() || !Platform::PathExists(kept))
        {
            break;
        }
    }
    return moved;
}

void WarnUnwritten(ScanEntry& entry, const std::string& error)
{
    WarnOfSidecar("Failed to create asset sidecar " + entry.SidecarFile() + ": " + error);
    entry.fault = error;
}

bool IsLink(const std::string& path)
{
    std::error_code error;
    return fs::is_symlink(fs::symlink_status(path, error));
}

/// Reads the sidecar that stands beside the file. False if the entry has to get another, which `mayWrite`
/// then tells whether to write.
bool LoadSidecar(ScanEntry& entry, const MountedRoot& root, bool& mayWrite)
{
    SidecarReading reading = ReadSidecarFile(entry.SidecarFile());
    if (reading.sidecar)
    {
        entry.sidecar = std::move(reading.sidecar);
        return true;
    }
    WarnOfSidecar("Ignoring unreadable asset sidecar " + entry.SidecarFile() + ": " + reading.error +
                  (root.IsWritable() ? " A new identity is assigned." : ""));
    if (!reading.fault.empty())
    {
        // What can't be read now may be read again: it stays, and the new identity is for this time only.
        entry.fault = std::move(reading.fault);
        entry.isProvisional = true;
        mayWrite = false;
    }
    else if (mayWrite && IsLink(entry.SidecarFile()))
    {
        entry.fault = std::move(reading.error);
        mayWrite = false;
    }
    else if (mayWrite && Platform::PathExists(entry.SidecarFile()))
    {
        const Platform::FileResult freed = SetAside(entry.SidecarFile());
        mayWrite = freed.Succeeded();
        if (!mayWrite)
        {
            WarnUnwritten(entry, freed.message);
        }
    }
    return false;
}

} // namespace

bool MountedRoot::Contains(std::string_view pathKey) const noexcept
{
    return !key.empty() && pathKey.size() > key.size() && pathKey.starts_with(key) &&
           pathKey[key.size()] == '/';
}

OrphanSidecars::OrphanSidecars(std::vector<fs::path> sidecars, const StampByGuid& lastStamps)
    : unread_(std::move(sidecars)), lastStamps_(lastStamps)
{
}

bool OrphanSidecars::Follow(ScanEntry& entry)
{
    ReadAll();
    const std::string key = ContentKey(entry.path, entry.contentStamp);
    std::vector<Orphan>* const found = byContent_.Find(key);
    if (entry.contentStamp == 0 || found == nullptr || found->size() != 1)
    {
        return false;
    }
    Orphan& orphan = found->front();
    if (!Platform::MoveToFreeName(orphan.path, entry.SidecarFile()).Succeeded())
    {
        return false;
    }
    Core::Log(Core::LogCategory::Assets, Core::LogLevel::Info,
              "Asset sidecar followed renamed file: " + entry.path);
    entry.sidecar = std::move(orphan.sidecar);
    entry.hasSidecarFile = true;
    byContent_.Erase(key);
    return true;
}

void OrphanSidecars::ReadAll()
{
    if (lastStamps_.Empty())
    {
        return; // nothing can match
    }
    for (fs::path& path : std::exchange(unread_, {}))
    {
        std::optional<AssetSidecar> sidecar = IsLink(path) ? std::nullopt : ReadSidecar(path);
        const std::uint64_t* const stamp = sidecar ? lastStamps_.Find(sidecar->guid) : nullptr;
        if (stamp != nullptr)
        {
            const std::string key = ContentKey(AssetPathOfSidecar(path), *stamp);
            byContent_[key].push_back({std::move(path), std::move(*sidecar)});
        }
    }
}

Core::Guid PathDerivedGuid(const MountedRoot& root, std::string_view pathKey)
{
    if (root.Contains(pathKey))
    {
        return Core::GuidFromName("vornu-asset:content:" + std::string(pathKey.substr(root.key.size() + 1)));
    }
    return Core::GuidFromName("vornu-asset:path:" + std::string(pathKey));
}

void LoadOrCreateSidecar(ScanEntry& entry, const MountedRoot& root, OrphanSidecars* orphans)
{
    const bool hasPlace = root.IsWritable() && root.Contains(entry.Key());
    bool mayWrite = hasPlace;
    if (entry.hasSidecarFile && LoadSidecar(entry, root, mayWrite))
    {
        return;
    }
    entry.hasSidecarFile = false;
    if (mayWrite && orphans != nullptr && orphans->Follow(entry))
    {
        return;
    }
    entry.sidecar = MakeDefaultSidecar(entry.kind, entry.path, PathDerivedGuid(root, entry.Key()));
    entry.sidecar->version = hasPlace ? AssetSidecar::kVersion : 0;
    std::string error;
    if (mayWrite)
    {
        entry.hasSidecarFile = WriteSidecar(entry.SidecarFile(), *entry.sidecar, &error);
        if (!entry.hasSidecarFile)
        {
            WarnUnwritten(entry, error);
        }
    }
}

void AssignNewIdentity(ScanEntry& entry, const MountedRoot& root)
{
    AssetSidecar& sidecar = *entry.sidecar;
    Warn("Duplicate asset GUID " + sidecar.guid.ToString() + " in " + entry.path +
         " (copied sidecar); assigning a new identity.");
    const bool writes = !entry.isProvisional && root.IsWritable() && entry.hasSidecarFile &&
                        root.Contains(entry.Key()) && !IsLink(entry.SidecarFile());
    const auto renew = [&](Core::Guid& guid)
    {
        guid = writes ? Core::Guid::Generate()
                      : Core::GuidFromName("vornu-duplicate:" + guid.ToString() + ":" + entry.Key());
    };
    renew(sidecar.guid);
    for (AssetSidecarSubAsset& sub : sidecar.subAssets)
    {
        renew(sub.guid);
    }
    std::string error;
    if (writes && !WriteSidecar(entry.SidecarFile(), sidecar, &error))
    {
        entry.fault = error;
        entry.isProvisional = true;
        Warn("Failed to rewrite duplicate asset sidecar " + entry.SidecarFile() + ": " + error);
    }
}

void ResolveDuplicates(std::vector<ScanEntry>& entries, const MountedRoot& root,
                       const PathKeyByGuid& lastPathKeys)
{
    Core::OrderedMap<Core::Guid, std::size_t, Core::GuidHash> holders;
    holders.Reserve(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i)
    {
        const auto [holder, isFirst] = holders.Emplace(entries[i].sidecar->guid, i);
        if (isFirst)
        {
            continue;
        }
        const std::uint64_t* const lastKey = lastPathKeys.Find(entries[i].sidecar->guid);
        const bool wasHere = lastKey != nullptr && *lastKey == Core::KeyedHash(entries[i].Key());
        // An identity that was only guessed gives way to one that a file holds.
        const bool keepsIt = entries[i].isProvisional == entries[*holder].isProvisional
                                 ? wasHere
                                 : entries[*holder].isProvisional;
        const std::size_t loser = keepsIt ? std::exchange(*holder, i) : i;
        AssignNewIdentity(entries[loser], root);
        holders.Emplace(entries[loser].sidecar->guid, loser);
    }
}

} // namespace Vornu::Assets
