#include "engine/assets/registry/AssetTables.h"

#include "engine/assets/registry/SubAssetList.h"
#include "engine/core/files/FileDescriptor.h"
#include "engine/core/files/Files.h"
#include "engine/core/files/Paths.h"
#include "engine/core/files/ReadFaults.h"
#include "engine/core/logging/Logger.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace Vornu::Assets
{
namespace
{

namespace fs = std::filesystem;

void Warn(std::string message)
{
    Core::Log(Core::LogCategory::Assets, Core::LogLevel::Warning, std::move(message));
}

/// A file need not stand at `child` yet, so only its folder is resolved.
fs::path CanonicalChild(const fs::path& child)
{
    return Platform::CanonicalPath(Platform::FolderOf(child)) / child.filename();
}

bool WriteOrWarn(const SidecarEntry& entry)
{
    std::string error;
    if (WriteSidecar(entry.SidecarFile(), entry.sidecar, &error))
    {
        return true;
    }
    Warn("Failed to write asset sidecar " + entry.SidecarFile() + ": " + error);
    return false;
}

template<class Map, class Key>
AssetId IdIn(const Map& map, const Key& key)
{
    const AssetId* const id = map.Find(key);
    return id == nullptr ? 0 : *id;
}

} // namespace

void AssetTables::Mount(MountedRoot root)
{
    root_ = std::move(root);
    Refresh();
}

void AssetTables::Clear()
{
    // Whoever compares revisions has to see this change too.
    const std::uint64_t revision = revision_ + 1;
    *this = AssetTables();
    revision_ = revision;
}

void AssetTables::Refresh()
{
    ++revision_;
    std::vector<AssetId> gone;
    for (const auto& [id, cell] : records_)
    {
        if (!cell.isBuiltin)
        {
            gone.push_back(id);
        }
    }
    std::for_each(gone.begin(), gone.end(), [&](AssetId id) { RemoveRecord(id); });
    sidecarByPathKey_.Clear();
    sourcePathBySubGuid_.Clear();
    idByPathKey_.Clear();
    pathKeyById_.Clear();
    texts_.Clear();
    unread_ = {};
    provisional_.clear();
    if (root_.path.empty() || !Platform::PathExists(root_.path))
    {
        return;
    }
    FolderScan scan = ScanContentFolder(root_.path);
    const bool isWhole = scan.unread.Empty();
    if (!isWhole)
    {
        Warn("Asset scan of " + root_.path.native() + " left out " + scan.unread.First());
        scan.orphans.clear(); // their files may stand in what wasn't seen
    }
    unread_ = scan.unread;
    const PathKeyByGuid former = isWhole ? PathKeyByGuid() : lastPathKeyByGuid_;
    OrphanSidecars orphans(std::move(scan.orphans), lastStampByGuid_);
    for (ScanEntry& entry : scan.entries)
    {
        LoadOrCreateSidecar(entry, root_, entry.hasSidecarFile ? nullptr : &orphans);
    }
    ResolveDuplicates(scan.entries, root_, lastPathKeyByGuid_);
    ReserveFiles(scan.entries.size());
    for (ScanEntry& entry : scan.entries)
    {
        AddFile(std::move(entry));
    }
    // A copy must not come to own the identity of a file that wasn't reached.
    for (const auto& [guid, key] : former)
    {
        lastPathKeyByGuid_.InsertOrAssign(guid, key);
    }
}

AssetId AssetTables::RegisterFile(AssetKind kind, const fs::path& path)
{
    ScanEntry entry = MakeScanEntry(kind, path);
    LoadOrCreateSidecar(entry, root_, nullptr);
    if (BelongsToAnotherFile(entry))
    {
        AssignNewIdentity(entry, root_);
    }
    const SidecarEntry* const known = FindSidecar(entry.Key());
    if (known != nullptr && known->sidecar.guid == entry.sidecar->guid)
    {
        entry.sidecar->subAssets = known->sidecar.subAssets;
    }
    return AddFile(std::move(entry));
}

bool AssetTables::BelongsToAnotherFile(const ScanEntry& entry) const
{
    const AssetId id = FindByGuid(entry.sidecar->guid);
    const RecordPointer record = FindRecord(id);
    if (!record || record->isBuiltin)
    {
        return false;
    }
    const std::string_view* const key = pathKeyById_.Find(id);
    return (key == nullptr || *key != entry.Key()) && Platform::PathExists(record->path);
}

/// Growing tables of whole records step by step would move each of them several times.
void AssetTables::ReserveFiles(std::size_t count)
{
    const auto reserve = [count](auto&... tables) { (tables.Reserve(count), ...); };
    reserve(records_, facts_, idByGuid_, idByPathKey_, pathKeyById_, sidecarByPathKey_, lastPathKeyByGuid_,
            lastStampByGuid_);
}

/// The text that the tables share for a key.
std::string_view AssetTables::KeepKey(std::string_view key)
{
    const std::size_t known = sidecarByPathKey_.PositionOf(key);
    return known != sidecarByPathKey_.kNoPosition ? sidecarByPathKey_.EntryAt(known).first : texts_.Keep(key);
}

AssetId AssetTables::AddFile(ScanEntry entry)
{
    AssetSidecar& sidecar = *entry.sidecar;
    if (!entry.fault.empty())
    {
        unread_.Add(entry.SidecarFile(), entry.fault);
    }
    const AssetId id = AllocateAssetId(sidecar.guid);
    ForgetFormerPlace(id, entry.Key());
    if (entry.isProvisional)
    {
        provisional_.insert(id);
    }
    const std::string_view key = KeepKey(entry.Key());
    const std::string_view path = entry.otherKey.empty() ? key : texts_.Keep(entry.path);
    Enter(id, {nullptr, entry.kind, false, sidecar.guid, path},
          {entry.hasSidecarFile ? sidecar.version : 0, entry.contentStamp, {}});
    idByPathKey_.InsertOrAssign(key, id);
    pathKeyById_.InsertOrAssign(id, key);
    lastPathKeyByGuid_.InsertOrAssign(sidecar.guid, Core::KeyedHash(key));
    if (entry.contentStamp != 0)
    {
        lastStampByGuid_.InsertOrAssign(sidecar.guid, entry.contentStamp);
    }
    for (const AssetSidecarSubAsset& sub : sidecar.subAssets)
    {
        sourcePathBySubGuid_.InsertOrAssign(sub.guid, path);
    }
    sidecarByPathKey_.InsertOrAssign(
        key, SidecarEntry{path, std::move(entry.otherSidecarPath), std::move(sidecar), entry.hasSidecarFile});
    return id;
}

/// Makes room for a file: the asset may have stood elsewhere, and the place may have held another.
void AssetTables::ForgetFormerPlace(AssetId id, const std::string& key)
{
    if (records_.Contains(id))
    {
        const std::string_view* const known = pathKeyById_.Find(id);
        if (known != nullptr && *known != key)
        {
            const std::string_view oldKey = *known;
            RemoveSubAssets(oldKey);
            sidecarByPathKey_.Erase(oldKey);
        }
        RemoveRecord(id);
    }
    if (const AssetId other = IdIn(idByPathKey_, key); other != 0 && other != id)
    {
        RemoveSubAssets(key);
        RemoveRecord(other);
    }
}

void AssetTables::Enter(AssetId id, RecordCell cell, FileFacts facts)
{
    idByGuid_.InsertOrAssign(cell.guid, id);
    facts_.InsertOrAssign(id, std::move(facts));
    records_.InsertOrAssign(id, std::move(cell));
    ++revision_;
}

void AssetTables::Enter(AssetRecord record, FileFacts facts)
{
    RecordCell cell{nullptr, record.kind, record.isBuiltin, record.guid, {}};
    const AssetId id = record.id;
    cell.made = std::make_shared<const AssetRecord>(std::move(record));
    Enter(id, std::move(cell), std::move(facts));
}

AssetTables::RecordPointer AssetTables::Made(AssetId id, const RecordCell& cell)
{
    // Readers hold the registry's lock together.
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    if (!cell.made)
    {
        AssetRecord record;
        record.id = id;
        record.kind = cell.kind;
        record.guid = cell.guid;
        record.path = cell.path;
        record.dataPath = record.path;
        record.name = cell.path.substr(cell.path.rfind('/') + 1);
        cell.made = std::make_shared<const AssetRecord>(std::move(record));
    }
    return cell.made;
}

std::vector<AssetTables::RecordPointer> AssetTables::Records(AssetKind kind) const
{
    std::vector<RecordPointer> list;
    for (const auto& [id, cell] : records_)
    {
        if (kind == AssetKind::Unknown || cell.kind == kind)
        {
            list.push_back(Made(id, cell));
        }
    }
    return list;
}

void AssetTables::RemoveRecord(AssetId id)
{
    const RecordCell* const cell = records_.Find(id);
    if (cell == nullptr)
    {
        return;
    }
    const Core::Guid guid = cell->guid;
    if (FindByGuid(guid) == id)
    {
        idByGuid_.Erase(guid);
    }
    if (const std::string_view* const key = pathKeyById_.Find(id))
    {
        if (FindByPathKey(*key) == id)
        {
            idByPathKey_.Erase(*key);
        }
        pathKeyById_.Erase(id);
    }
    if (const std::string* const sourceKey = sourceKeyById_.Find(id))
    {
        ById<std::string>* const siblings = subAssetsBySource_.Find(*sourceKey);
        siblings->Erase(id);
        if (siblings->Empty())
        {
            subAssetsBySource_.Erase(*sourceKey);
        }
        sourceKeyById_.Erase(id);
    }
    facts_.Erase(id);
    provisional_.erase(id);
    records_.Erase(id);
}

bool AssetTables::RemoveSubAssets(std::string_view sourceKey)
{
    const ById<std::string>* const found = subAssetsBySource_.Find(sourceKey);
    if (found == nullptr)
    {
        return false;
    }
    std::vector<AssetId> ids;
    for (const auto& [id, dataKey] : *found)
    {
        ids.push_back(id);
    }
    std::for_each(ids.begin(), ids.end(), [&](AssetId id) { RemoveRecord(id); });
    return true;
}

void AssetTables::RemoveAssetsOfFile(std::string_view sourceKey)
{
    if (RemoveSubAssets(sourceKey))
    {
        ++revision_;
    }
}

AssetId AssetTables::RegisterBuiltin(AssetKind kind, const std::string& name)
{
    AssetRecord record;
    record.guid = Core::GuidFromName("builtin:" + name);
    record.id = AllocateAssetId(record.guid);
    record.kind = kind;
    record.name = name;
    record.isBuiltin = true;
    const AssetId id = record.id;
    idByBuiltinName_.InsertOrAssign(name, id);
    Enter(std::move(record), {});
    return id;
}

std::vector<AssetId> AssetTables::RegisterSubAssets(const fs::path& source,
                                                    const std::vector<SubAssetEntry>& entries)
{
    const fs::path path = Platform::CanonicalPath(source);
    const std::string sourceKey = Platform::NormalizedCaseKey(path);
    SidecarEntry* const sidecar = SidecarOfSource(path, sourceKey);
    const Core::Guid sourceGuid =
        sidecar != nullptr ? sidecar->sidecar.guid : PathDerivedGuid(root_, sourceKey);
    const bool isProvisional = IsProvisional(FindByPathKey(sourceKey));
    const std::vector<Core::Guid> guids =
        sidecar != nullptr ? GuidsOfSubAssets(*sidecar, sourceKey, entries) : std::vector<Core::Guid>();
    std::vector<AssetId> ids;
    for (std::size_t i = 0; i < entries.size(); ++i)
    {
        const SubAssetEntry& entry = entries[i];
        AssetRecord record;
        record.guid = sidecar != nullptr ? guids[i] : DerivedSubGuid(sourceGuid, entry.kind, entry.key);
        record.id = AllocateAssetId(record.guid);
        record.kind = entry.kind;
        record.name = entry.displayName;
        record.path = path;
        record.dataPath = entry.child.empty() ? path : CanonicalChild(entry.child);
        record.subKey = entry.key;
        record.isSubAsset = true;
        const AssetId id = record.id;
        RemoveRecord(id);
        const std::string dataKey = PathKey(record.dataPath);
        FileFacts facts;
        if (sidecar != nullptr && sourceGuid.IsValid())
        {
            facts.dependencies.push_back(sourceGuid);
        }
        Enter(std::move(record), std::move(facts));
        if (isProvisional)
        {
            provisional_.insert(id);
        }
        sourceKeyById_.InsertOrAssign(id, sourceKey);
        subAssetsBySource_[sourceKey].InsertOrAssign(id, dataKey);
        ids.push_back(id);
    }
    return ids;
}

/// Null if the source isn't on disk.
SidecarEntry* AssetTables::SidecarOfSource(const fs::path& source, const std::string& sourceKey)
{
    SidecarEntry* const known = sidecarByPathKey_.Find(sourceKey);
    if (known != nullptr)
    {
        return known;
    }
    std::error_code error;
    if (!fs::is_regular_file(source, error))
    {
        Platform::NoteReadFault(source, error.value());
        return nullptr;
    }
    const AssetKind kind = KindFromExtension(source);
    RegisterFile(kind == AssetKind::Unknown ? AssetKind::Scene : kind, source);
    return sidecarByPathKey_.Find(sourceKey);
}

std::vector<Core::Guid> AssetTables::GuidsOfSubAssets(SidecarEntry& source, const std::string& sourceKey,
                                                      const std::vector<SubAssetEntry>& entries)
{
    SubAssetList list(source.sidecar);
    if (const ById<std::string>* const records = subAssetsBySource_.Find(sourceKey))
    {
        for (const auto& [id, dataKey] : *records)
        {
            list.NoteLive(records_.Find(id)->made->subKey);
        }
    }
    std::vector<Core::Guid> guids;
    for (const SubAssetEntry& entry : entries)
    {
        guids.push_back(list.Take(entry.kind, entry.key));
        sourcePathBySubGuid_.InsertOrAssign(guids.back(), source.path);
    }
    // Nothing is written outside of the folder that is mounted.
    if (list.HasChanged() && root_.IsWritable() && source.hasSidecarFile && root_.Contains(sourceKey) &&
        !WriteOrWarn(source))
    {
        unread_.Add(source.SidecarFile(), "the identities of its parts could not be written");
    }
    return guids;
}

bool AssetTables::SetFileSetting(std::string_view pathKey, std::string_view key, std::string_view value)
{
    SidecarEntry* const entry = sidecarByPathKey_.Find(pathKey);
    if (!root_.IsWritable() || entry == nullptr || !entry->hasSidecarFile)
    {
        return false;
    }
    SidecarEntry changed = *entry;
    if (SetSidecarSetting(changed.sidecar, key, value) && WriteOrWarn(changed))
    {
        *entry = std::move(changed);
        ++revision_;
    }
    return true;
}

AssetTables::RecordPointer AssetTables::FindRecord(AssetId id) const
{
    const RecordCell* const cell = records_.Find(id);
    return cell == nullptr ? nullptr : Made(id, *cell);
}

AssetId AssetTables::FindByGuid(const Core::Guid& guid) const
{
    return IdIn(idByGuid_, guid);
}

AssetId AssetTables::FindByPathKey(std::string_view pathKey) const
{
    return IdIn(idByPathKey_, pathKey);
}

AssetId AssetTables::FindBuiltin(std::string_view name) const
{
    const AssetId id = IdIn(idByBuiltinName_, name);
    return records_.Contains(id) ? id : 0;
}

std::optional<AssetInfo> AssetTables::FindInfo(const Core::Guid& guid) const
{
    const AssetId id = FindByGuid(guid);
    const RecordPointer record = FindRecord(id);
    if (!record)
    {
        return std::nullopt;
    }
    const FileFacts& facts = *facts_.Find(id);
    return AssetInfo{
        guid, record->path, record->kind, facts.sidecarVersion, facts.contentStamp, facts.dependencies};
}

const SidecarEntry* AssetTables::FindSidecar(std::string_view pathKey) const
{
    return sidecarByPathKey_.Find(pathKey);
}

std::string_view AssetTables::SourceOfSubGuid(const Core::Guid& guid) const
{
    const std::string_view* const path = sourcePathBySubGuid_.Find(guid);
    return path == nullptr ? std::string_view() : *path;
}

AssetId
AssetTables::FindSubAsset(std::string_view sourceKey, AssetKind kind,
                          Core::FunctionRef<bool(const AssetRecord&, const std::string&)> matches) const
{
    const ById<std::string>* const records = subAssetsBySource_.Find(sourceKey);
    if (records == nullptr)
    {
        return 0;
    }
    for (const auto& [id, dataKey] : *records)
    {
        const AssetRecord& record = *records_.Find(id)->made;
        if ((kind == AssetKind::Unknown || record.kind == kind) && matches(record, dataKey))
        {
            return id;
        }
    }
    return 0;
}

} // namespace Vornu::Assets
