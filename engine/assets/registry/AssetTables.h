#pragma once

#include "engine/assets/identity/AssetRecord.h"
#include "engine/assets/registry/AssetIdentity.h"
#include "engine/assets/registry/AssetScan.h"
#include "engine/assets/registry/TextPool.h"
#include "engine/core/FunctionRef.h"
#include "engine/core/Guid.h"
#include "engine/core/Hash.h"
#include "engine/core/OrderedMap.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace Vornu::Assets
{

/// The sidecar of a file that has been seen since the last refresh.
struct SidecarEntry
{
    std::string_view path;        // kept by the tables
    std::string otherSidecarPath; // empty where the usual name counts
    AssetSidecar sidecar;
    bool hasSidecarFile = false;

    std::string SidecarFile() const
    {
        return otherSidecarPath.empty() ? std::string(path) + std::string(kSidecarExtension)
                                        : otherSidecarPath;
    }
};

/// What a registry holds, and how it changes. One thread at a time; the registry locks.
class AssetTables
{
public:
    using RecordPointer = std::shared_ptr<const AssetRecord>;

    void Mount(MountedRoot root);
    void Clear();
    void Refresh();

    AssetId RegisterFile(AssetKind kind, const std::filesystem::path& path);
    AssetId RegisterBuiltin(AssetKind kind, const std::string& name);
    std::vector<AssetId> RegisterSubAssets(const std::filesystem::path& source,
                                           const std::vector<SubAssetEntry>& entries);
    void RemoveAssetsOfFile(std::string_view sourceKey);
    bool SetFileSetting(std::string_view pathKey, std::string_view key, std::string_view value);

    void NoteUnread(const std::string& path, const std::string& cause) { unread_.Add(path, cause); }
    /// What the last refresh, and whatever was entered since, couldn't read or write.
    const UnreadParts& Unread() const noexcept { return unread_; }
    bool HasProvisional() const noexcept { return !provisional_.empty(); }
    bool IsProvisional(AssetId id) const { return provisional_.contains(id); }

    const MountedRoot& Root() const noexcept { return root_; }
    std::uint64_t Revision() const noexcept { return revision_; }

    RecordPointer FindRecord(AssetId id) const;
    AssetId FindByGuid(const Core::Guid& guid) const;
    AssetId FindByPathKey(std::string_view pathKey) const;
    AssetId FindBuiltin(std::string_view name) const;
    std::optional<AssetInfo> FindInfo(const Core::Guid& guid) const;
    const SidecarEntry* FindSidecar(std::string_view pathKey) const;
    /// Empty when there is none.
    std::string_view SourceOfSubGuid(const Core::Guid& guid) const;

    /// The first sub-asset of a source, in registry order, that is of the kind (Unknown for any) and for
    /// which `matches` holds; it gets the key of the record's data file.
    AssetId FindSubAsset(std::string_view sourceKey, AssetKind kind,
                         Core::FunctionRef<bool(const AssetRecord&, const std::string&)> matches) const;

    /// All records of a kind (Unknown for all) in the order in which they were entered.
    std::vector<RecordPointer> Records(AssetKind kind) const;

private:
    template<class Value>
    using ByText = Core::OrderedMap<std::string, Value, Core::TextHash>;
    template<class Value>
    using ByPathKey = Core::OrderedMap<std::string_view, Value, Core::TextHash>; // of kept texts
    template<class Value>
    using ByGuid = Core::OrderedMap<Core::Guid, Value, Core::GuidHash>;
    template<class Value>
    using ById = Core::OrderedMap<AssetId, Value, AssetIdHash>;

    /// What `AssetInfo` tells and the record doesn't.
    struct FileFacts
    {
        std::uint32_t sidecarVersion = 0;
        std::uint64_t contentStamp = 0;
        std::vector<Core::Guid> dependencies;
    };

    /// The record of a file is made when it is first asked for: most never are, and its paths would be most
    /// of the memory of a registry.
    struct RecordCell
    {
        mutable RecordPointer made;
        AssetKind kind = AssetKind::Unknown;
        bool isBuiltin = false;
        Core::Guid guid;
        std::string_view path; // of a file
    };

    static RecordPointer Made(AssetId id, const RecordCell& cell);
    std::string_view KeepKey(std::string_view key);
    void ReserveFiles(std::size_t count);
    AssetId AddFile(ScanEntry entry);
    void ForgetFormerPlace(AssetId id, const std::string& key);
    void Enter(AssetId id, RecordCell cell, FileFacts facts);
    void Enter(AssetRecord record, FileFacts facts);
    void RemoveRecord(AssetId id);
    bool RemoveSubAssets(std::string_view sourceKey);
    bool BelongsToAnotherFile(const ScanEntry& entry) const;

    SidecarEntry* SidecarOfSource(const std::filesystem::path& source, const std::string& sourceKey);
    std::vector<Core::Guid> GuidsOfSubAssets(SidecarEntry& source, const std::string& sourceKey,
                                             const std::vector<SubAssetEntry>& entries);

    MountedRoot root_;
    UnreadParts unread_;
    std::unordered_set<AssetId> provisional_;
    std::uint64_t revision_ = 0;
    TextPool texts_; // of the tables by path key
    ById<RecordCell> records_;
    ById<FileFacts> facts_;
    ByGuid<AssetId> idByGuid_;
    ByPathKey<AssetId> idByPathKey_;
    ByText<AssetId> idByBuiltinName_;
    ById<std::string_view> pathKeyById_;
    ById<std::string> sourceKeyById_;
    ByText<ById<std::string>> subAssetsBySource_; // the data key of each
    ByPathKey<SidecarEntry> sidecarByPathKey_;
    ByGuid<std::string_view> sourcePathBySubGuid_;
    // These two outlive a refresh.
    PathKeyByGuid lastPathKeyByGuid_;
    StampByGuid lastStampByGuid_;
};

} // namespace Vornu::Assets
