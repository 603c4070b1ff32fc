#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/assets/identity/AssetKind.h"
#include "engine/core/Guid.h"
#include "engine/core/Hash.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Vornu::Assets
{

enum class AssetMountMode : std::uint32_t
{
    Authoring = 0, // writes sidecars
    ReadOnly = 1,  // leaves the disk alone
};

/// What is known of one asset.
struct AssetRecord
{
    AssetId id = 0;
    AssetKind kind = AssetKind::Unknown;
    std::string name;               // file name with its extension; a built-in's or a sub-asset's own name
    std::filesystem::path path;     // of a sub-asset that of its source; empty for built-ins
    std::filesystem::path dataPath; // the file that holds the bytes
    std::string subKey;             // of a sub-asset within its source
    bool isBuiltin = false;
    bool isSubAsset = false;
    Core::Guid guid;
};

/// What is known of an asset's file.
struct AssetInfo
{
    Core::Guid guid;
    std::filesystem::path path;
    AssetKind kind = AssetKind::Unknown;
    std::uint32_t sidecarVersion = 0; // 0 without a sidecar file
    std::uint64_t contentStamp = 0;   // 0 if the file can't be examined
    std::vector<Core::Guid> dependencies;
};

struct AssetIdHash
{
    std::size_t operator()(AssetId id) const noexcept { return Core::Fnv1aOfNumber(id); }
};

/// The id that a GUID has in this process: the one handed out before, or the next. Safe from any thread.
AssetId AllocateAssetId(const Core::Guid& guid);

} // namespace Vornu::Assets
