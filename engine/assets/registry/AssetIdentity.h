#pragma once

#include "engine/assets/identity/AssetRecord.h"
#include "engine/assets/registry/AssetScan.h"
#include "engine/core/Guid.h"
#include "engine/core/Hash.h"
#include "engine/core/OrderedMap.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Vornu::Assets
{

/// The folder of a registry.
struct MountedRoot
{
    std::filesystem::path path; // canonical
    std::string key;
    AssetMountMode mode = AssetMountMode::Authoring;

    /// False for the root itself.
    bool Contains(std::string_view pathKey) const noexcept;
    bool IsWritable() const noexcept { return mode == AssetMountMode::Authoring; }
};

// What a registry remembers of earlier scans.
using StampByGuid = Core::OrderedMap<Core::Guid, std::uint64_t, Core::GuidHash>;
using PathKeyByGuid = Core::OrderedMap<Core::Guid, std::uint64_t, Core::GuidHash>; // `KeyedHash` of the key

/// Sidecars whose asset wasn't found, to be matched with renamed files. They are read when a file first asks.
class OrphanSidecars
{
public:
    /// `lastStamps` outlives the table.
    OrphanSidecars(std::vector<std::filesystem::path> sidecars, const StampByGuid& lastStamps);

    /// Renames the one orphan that fits the file and hands it over. False if there is none, or more than one.
    bool Follow(ScanEntry& entry);

private:
    struct Orphan
    {
        std::filesystem::path path;
        AssetSidecar sidecar;
    };

    void ReadAll();

    std::vector<std::filesystem::path> unread_;
    const StampByGuid& lastStamps_;
    Core::OrderedMap<std::string, std::vector<Orphan>, Core::TextHash> byContent_;
};

/// The GUID of a file that no sidecar gives one: the same for the same place below the root, or, outside, for
/// the same path.
Core::Guid PathDerivedGuid(const MountedRoot& root, std::string_view pathKey);

/// Gives the entry its sidecar: the one beside the file, one that follows it from its former name, or a new
/// one. Problems are logged, and the entry goes on with a sidecar in memory. A sidecar that can't be read is
/// kept under another name. `orphans` may be null.
void LoadOrCreateSidecar(ScanEntry& entry, const MountedRoot& root, OrphanSidecars* orphans);

/// New GUIDs for a file whose sidecar was copied from another's: random and written down in a writable
/// registry, otherwise the same ones in every run.
void AssignNewIdentity(ScanEntry& entry, const MountedRoot& root);

/// Leaves each GUID to one entry: to the one that had it in the last scan, else to the first.
void ResolveDuplicates(std::vector<ScanEntry>& entries, const MountedRoot& root,
                       const PathKeyByGuid& lastPathKeys);

} // namespace Vornu::Assets
