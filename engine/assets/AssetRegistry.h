#pragma once

#include "engine/assets/AssetId.h"
#include "engine/assets/AssetKind.h"
#include "engine/core/Guid.h"
#include "engine/core/Hash.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Vornu::Assets
{

enum class AssetMountMode : std::uint32_t
{
    Authoring = 0,
    ReadOnly = 1,
};

/// What is known of one asset.
struct AssetRecord
{
    AssetId id = 0;
    AssetKind kind = AssetKind::Unknown;
    std::string name;               // file name with its extension; a built-in's name
    std::filesystem::path path;     // empty for built-ins
    std::filesystem::path dataPath; // the file that holds the bytes
    std::string subKey;             // of a sub-asset within its source
    bool isBuiltin = false;
    bool isSubAsset = false;
    Core::Guid guid;
};

/// The id that a GUID has in this process: the one handed out before, or the next. Safe from any thread.
AssetId AllocateAssetId(const Core::Guid& guid);

/// The assets that one content folder offers. Lookups are safe from any thread.
class AssetRegistry
{
public:
    /// Forgets all records and takes over the folder, which isn't scanned: only built-in assets resolve.
    void Mount(const std::filesystem::path& contentRoot, AssetMountMode mode);
    void Clear();

    AssetId RegisterBuiltin(const std::string& name, AssetKind kind);

    /// Null when there is none. A record never changes; a new one takes its place.
    std::shared_ptr<const AssetRecord> FindRecord(AssetId id) const;
    /// 0 when there is none.
    AssetId FindByGuid(const Core::Guid& guid) const;
    AssetId FindBuiltin(std::string_view name) const;

    std::filesystem::path ContentRoot() const;
    AssetMountMode Mode() const;

    /// Kinds that this package doesn't carry: a reference to one that doesn't resolve is no error.
    void SetStrippedKinds(std::vector<AssetKind> kinds);
    bool IsStripped(AssetKind kind) const;

private:
    mutable std::shared_mutex mutex_;
    std::filesystem::path contentRoot_;
    AssetMountMode mode_ = AssetMountMode::Authoring;
    std::vector<AssetKind> strippedKinds_;
    std::unordered_map<AssetId, std::shared_ptr<const AssetRecord>> records_;
    std::unordered_map<std::string, AssetId, Core::TextHash, std::equal_to<>> builtins_;
};

} // namespace Vornu::Assets
