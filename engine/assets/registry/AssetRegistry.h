#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/assets/identity/AssetKind.h"
#include "engine/assets/identity/AssetRecord.h"
#include "engine/assets/identity/AssetSidecar.h"
#include "engine/assets/registry/AssetScan.h"
#include "engine/core/Guid.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Vornu::Assets
{

/// The identities of the assets of one content folder; it holds no asset data.
///
/// A registry is a handle: copies share what they hold, so a callback may keep one. All operations are safe
/// from any thread. Only `Mount` throws; whatever else goes wrong is logged, and the registry stays usable.
/// Paths may be given in any form.
class AssetRegistry
{
public:
    using RecordPointer = std::shared_ptr<const AssetRecord>;

    /// Empty, without a folder.
    AssetRegistry();
    AssetRegistry(const AssetRegistry&) = default;
    AssetRegistry& operator=(const AssetRegistry&) = default;
    ~AssetRegistry();

    /// Takes over a folder and scans it; built-ins stay. An authoring mount creates the folder and gives
    /// every asset a sidecar, and waits some seconds for another program that does the same. Throws
    /// `std::filesystem::filesystem_error` ("create_directories", "status") or, if a read-only mount finds no
    /// folder, `std::runtime_error`; the registry is then as it was.
    void Mount(const std::filesystem::path& contentRoot, AssetMountMode mode);

    /// Scans the folder again. Sub-assets go until they are registered anew; ids stay.
    void Refresh();

    /// Forgets everything but the stripped kinds.
    void Clear();

    /// Enters a file, inside the folder or outside, and gives it an identity as a scan would.
    AssetId RegisterFile(AssetKind kind, const std::filesystem::path& path);
    AssetId RegisterBuiltin(AssetKind kind, const std::string& name);

    /// Enters an asset that `source` holds, or that was generated from it into the file `child` unless that
    /// is empty. `key` tells it from the others of the source; its GUID is listed in the source's sidecar.
    AssetId RegisterSubAsset(AssetKind kind, const std::filesystem::path& source,
                             const std::filesystem::path& child, const std::string& key,
                             const std::string& displayName);

    /// The same for several assets of one source, whose sidecar is written once. Gives their ids in order.
    std::vector<AssetId> RegisterSubAssets(const std::filesystem::path& source,
                                           const std::vector<SubAssetEntry>& entries);

    /// Takes out all sub-assets of a source.
    void RemoveAssetsOfFile(const std::filesystem::path& source);

    /// Changes an import setting of a file that has a sidecar file; false for any other, and if read-only.
    bool SetFileSetting(const std::filesystem::path& path, std::string_view key, std::string_view value);

    /// Null when there is none. A record never changes; a new one takes its place.
    RecordPointer FindRecord(AssetId id) const;

    // 0 when there is none. A kind of Unknown stands for any.
    AssetId FindByGuid(const Core::Guid& guid) const;
    AssetId FindByPath(const std::filesystem::path& path) const;
    AssetId FindBuiltin(std::string_view name) const;
    AssetId FindSubAsset(const std::filesystem::path& source, std::string_view key, AssetKind kind) const;
    /// The sub-asset of `source` that was generated into `child`. With `reduceNames`, a leading `<number>_`
    /// of either file name doesn't count.
    AssetId FindDerivedFile(const std::filesystem::path& source, const std::filesystem::path& child,
                            bool reduceNames, AssetKind kind) const;
    /// The asset whose path an old scene names by the hash `number`, on the machine where it was saved. Such
    /// a path began with this registry's folder or with one of `otherRoots`.
    AssetId FindByPathHash(std::uint64_t number, const std::vector<std::filesystem::path>& otherRoots) const;

    /// Null when there is none.
    Core::Guid GuidOf(AssetId id) const;
    std::optional<AssetInfo> FindInfo(const Core::Guid& guid) const;
    /// Of any file that was seen since the last scan.
    std::optional<AssetSidecar> FindSidecar(const std::filesystem::path& path) const;
    /// The file whose sidecar lists the GUID, whether the sub-asset is registered or not.
    std::optional<std::filesystem::path> SourceOfSubGuid(const Core::Guid& guid) const;

    /// By name, then id; built-ins last.
    std::vector<RecordPointer> ListRecords() const;
    /// By path, then key, then name.
    std::vector<RecordPointer> ListRecordsOfKind(AssetKind kind) const;

    /// Canonical; empty without a folder.
    std::filesystem::path GetContentRoot() const;
    AssetMountMode GetMode() const;
    /// Rises with every change.
    std::uint64_t GetRevision() const;

    /// What of the content folder the last scan, or a registration since, couldn't read, and an identity that
    /// it couldn't write: "<path>: <cause>" of the first in the order of paths, empty if there is none. An
    /// asset that isn't found may stand there.
    std::string UnreadPart() const;
    void NoteUnread(const std::filesystem::path& path, const std::string& cause);
    /// The asset's sidecar couldn't be read, so that its GUID is good for this run alone. No file should hold
    /// a reference to it.
    bool IsProvisional(AssetId id) const;
    /// How many references have come out empty or provisional so far; who compares two counts knows whether
    /// one did in between.
    std::uint64_t UnresolvedReferences() const noexcept;
    void NoteUnresolvedReference() const noexcept;

    /// Kinds that this package doesn't carry: a reference to one that doesn't resolve is no error.
    void SetStrippedKinds(std::vector<AssetKind> kinds);
    bool IsStripped(AssetKind kind) const;

    // What the resolving of references has found out stands until the revision changes, as told at
    // `ReferenceMemo`.

    struct PlainAnswer
    {
        AssetId id = 0;        // 0 for none
        std::string otherCase; // the path that was found if its names differ in case
    };

    /// The asset of a path below the content folder that consists of plain names, as most references do.
    /// Nothing if it takes another look at the disk to tell.
    std::optional<PlainAnswer> FindPlainPath(std::string_view relative) const;
    /// The only entry of a folder that has the name in some case; nothing if there is none, or more than one.
    std::optional<std::string> FindEntryIgnoringCase(const std::filesystem::path& folder,
                                                     const std::string& name) const;
    /// The asset that a text was found to name; nothing for a text that isn't known.
    std::optional<AssetId> FindAnswer(std::string_view text, AssetKind requiredKind) const;
    /// For an answer that was found at `revision`; nothing is kept of one that is older by now.
    void KeepAnswer(std::string_view text, AssetKind requiredKind, AssetId id, std::uint64_t revision) const;
    /// True the first time that a reference is noted, for messages that come once per reference.
    bool NoteReference(std::string_view text) const;

private:
    struct State;

    std::shared_ptr<State> state_;
};

} // namespace Vornu::Assets
