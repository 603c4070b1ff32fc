#include "engine/assets/registry/AssetRegistry.h"

#include "engine/assets/registry/AssetTables.h"
#include "engine/assets/registry/PathHashTable.h"
#include "engine/assets/registry/ReferenceMemo.h"
#include "engine/core/files/FolderLock.h"
#include "engine/core/files/Paths.h"
#include "engine/core/logging/Logger.h"
#include "engine/core/system/System.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace Vornu::Assets
{
namespace
{

namespace fs = std::filesystem;

constexpr std::chrono::seconds kLockPatience{10};

/// Keeps other authoring mounts of the folder out; nothing for a registry that doesn't write.
std::optional<Platform::FolderLock> LockForWriting(const MountedRoot& root)
{
    std::optional<Platform::FolderLock> lock;
    if (root.IsWritable() && !root.path.empty() &&
        lock.emplace(root.path, kLockPatience).Result() == Platform::FolderLock::Outcome::TimedOut)
    {
        Core::Log(Core::LogCategory::Assets, Core::LogLevel::Warning,
                  "Another program is writing sidecars in " + root.path.native() +
                      "; going on all the same.");
    }
    return lock;
}

/// Names are reduced to what older tools put behind a number of their own.
fs::path WithoutLeadingNumber(const fs::path& path)
{
    const std::string name = path.filename().native();
    const std::size_t end = name.find_first_not_of("0123456789");
    const bool numbered = end != 0 && end != std::string::npos && name[end] == '_';
    return numbered ? path.parent_path() / name.substr(end + 1) : path;
}

template<class Value>
std::optional<Value> Copied(const Value* value)
{
    return value == nullptr ? std::nullopt : std::optional(*value);
}

MountedRoot CheckedRoot(const fs::path& contentRoot, AssetMountMode mode)
{
    if (mode == AssetMountMode::Authoring)
    {
        Platform::CreateDirectories(contentRoot);
    }
    else if (!fs::is_directory(Platform::Status(contentRoot)))
    {
        std::error_code ignored;
        throw std::runtime_error("Read-only asset content directory is missing: " +
                                 fs::absolute(contentRoot, ignored).native());
    }
    MountedRoot root;
    root.path = Platform::CanonicalPath(contentRoot);
    root.key = Platform::NormalizedCaseKey(root.path);
    while (root.key.size() > 1 && root.key.back() == '/')
    {
        root.key.pop_back();
    }
    root.mode = mode;
    return root;
}

} // namespace

struct AssetRegistry::State
{
    mutable std::shared_mutex mutex;
    AssetTables tables;
    std::vector<AssetKind> strippedKinds;
    PathHashTable pathHashes; // used under the shared lock; its own lock lies inside
    std::mutex memoMutex;     // inside the other one
    ReferenceMemo memo;
    std::atomic<std::uint64_t> unresolvedReferences = 0;
    std::atomic<bool> hasProvisional = false;

    /// The memo as it stands for the present tables, held by its lock.
    std::pair<ReferenceMemo&, std::unique_lock<std::mutex>> Memo()
    {
        std::unique_lock lock(memoMutex);
        memo.StartRevision(tables.Revision());
        return {memo, std::move(lock)};
    }

    /// Changes the tables.
    template<class Change>
    auto Write(Change change)
    {
        const std::unique_lock lock(mutex);
        struct Finish
        {
            ~Finish() { state.hasProvisional = state.tables.HasProvisional(); }
            State& state;
        };
        const Finish finish{*this};
        return change(tables);
    }
};

AssetRegistry::AssetRegistry() : state_(std::make_shared<State>()) {}

AssetRegistry::~AssetRegistry() = default;

void AssetRegistry::Mount(const fs::path& contentRoot, AssetMountMode mode)
{
    MountedRoot root = CheckedRoot(contentRoot, mode);
    // Waiting for other programs mustn't hold up the lookups of this one.
    const std::optional<Platform::FolderLock> folderLock = LockForWriting(root);
    state_->Write([&](AssetTables& tables) { tables.Mount(std::move(root)); });
}

void AssetRegistry::Refresh()
{
    std::shared_lock reading(state_->mutex);
    const MountedRoot root = state_->tables.Root();
    reading.unlock();
    const std::optional<Platform::FolderLock> folderLock = LockForWriting(root);
    state_->Write([](AssetTables& tables) { tables.Refresh(); });
}

void AssetRegistry::Clear()
{
    state_->Write([](AssetTables& tables) { tables.Clear(); });
}

AssetId AssetRegistry::RegisterFile(AssetKind kind, const fs::path& path)
{
    return state_->Write([&](AssetTables& tables) { return tables.RegisterFile(kind, path); });
}

AssetId AssetRegistry::RegisterBuiltin(AssetKind kind, const std::string& name)
{
    const std::unique_lock lock(state_->mutex);
    return state_->tables.RegisterBuiltin(kind, name);
}

AssetId AssetRegistry::RegisterSubAsset(AssetKind kind, const fs::path& source, const fs::path& child,
                                        const std::string& key, const std::string& displayName)
{
    return RegisterSubAssets(source, {{kind, child, key, displayName}}).front();
}

std::vector<AssetId> AssetRegistry::RegisterSubAssets(const fs::path& source,
                                                      const std::vector<SubAssetEntry>& entries)
{
    return state_->Write([&](AssetTables& tables) { return tables.RegisterSubAssets(source, entries); });
}

void AssetRegistry::RemoveAssetsOfFile(const fs::path& source)
{
    const std::string key = PathKey(source);
    const std::unique_lock lock(state_->mutex);
    state_->tables.RemoveAssetsOfFile(key);
}

bool AssetRegistry::SetFileSetting(const fs::path& path, std::string_view key, std::string_view value)
{
    const std::string pathKey = PathKey(path);
    const std::unique_lock lock(state_->mutex);
    return state_->tables.SetFileSetting(pathKey, key, value);
}

AssetRegistry::RecordPointer AssetRegistry::FindRecord(AssetId id) const
{
    const std::shared_lock lock(state_->mutex);
    return state_->tables.FindRecord(id);
}

AssetId AssetRegistry::FindByGuid(const Core::Guid& guid) const
{
    const std::shared_lock lock(state_->mutex);
    return state_->tables.FindByGuid(guid);
}

AssetId AssetRegistry::FindByPath(const fs::path& path) const
{
    const std::string key = PathKey(path);
    const std::shared_lock lock(state_->mutex);
    return state_->tables.FindByPathKey(key);
}

AssetId AssetRegistry::FindBuiltin(std::string_view name) const
{
    const std::shared_lock lock(state_->mutex);
    return state_->tables.FindBuiltin(name);
}

AssetId AssetRegistry::FindSubAsset(const fs::path& source, std::string_view key, AssetKind kind) const
{
    const std::string sourceKey = PathKey(source);
    const std::shared_lock lock(state_->mutex);
    return state_->tables.FindSubAsset(
        sourceKey, kind, [&](const AssetRecord& record, const std::string&) { return record.subKey == key; });
}

AssetId AssetRegistry::FindDerivedFile(const fs::path& source, const fs::path& child, bool reduceNames,
                                       AssetKind kind) const
{
    const std::string sourceKey = PathKey(source);
    const std::string wanted = PathKey(reduceNames ? WithoutLeadingNumber(child) : child);
    const std::shared_lock lock(state_->mutex);
    return state_->tables.FindSubAsset(
        sourceKey, kind,
        [&](const AssetRecord& record, const std::string& dataKey)
        { return (reduceNames ? PathKey(WithoutLeadingNumber(record.dataPath)) : dataKey) == wanted; });
}

AssetId AssetRegistry::FindByPathHash(std::uint64_t number, const std::vector<fs::path>& otherRoots) const
{
    const std::shared_lock lock(state_->mutex);
    return state_->pathHashes.Find(number, state_->tables, otherRoots);
}

Core::Guid AssetRegistry::GuidOf(AssetId id) const
{
    const RecordPointer record = FindRecord(id);
    return record ? record->guid : Core::Guid{};
}

std::optional<AssetInfo> AssetRegistry::FindInfo(const Core::Guid& guid) const
{
    const std::shared_lock lock(state_->mutex);
    return state_->tables.FindInfo(guid);
}

std::optional<AssetSidecar> AssetRegistry::FindSidecar(const fs::path& path) const
{
    const std::string key = PathKey(path);
    const std::shared_lock lock(state_->mutex);
    const SidecarEntry* const entry = state_->tables.FindSidecar(key);
    return Copied(entry == nullptr ? nullptr : &entry->sidecar);
}

std::optional<fs::path> AssetRegistry::SourceOfSubGuid(const Core::Guid& guid) const
{
    const std::shared_lock lock(state_->mutex);
    const std::string_view source = state_->tables.SourceOfSubGuid(guid);
    return source.empty() ? std::nullopt : std::optional(fs::path(source));
}

std::vector<AssetRegistry::RecordPointer> AssetRegistry::ListRecords() const
{
    std::vector<RecordPointer> list;
    {
        const std::shared_lock lock(state_->mutex);
        list = state_->tables.Records(AssetKind::Unknown);
    }
    std::sort(list.begin(), list.end(),
              [](const RecordPointer& a, const RecordPointer& b)
              { return std::tie(a->isBuiltin, a->name, a->id) < std::tie(b->isBuiltin, b->name, b->id); });
    return list;
}

std::vector<AssetRegistry::RecordPointer> AssetRegistry::ListRecordsOfKind(AssetKind kind) const
{
    std::vector<RecordPointer> list;
    if (kind != AssetKind::Unknown) // no asset is
    {
        const std::shared_lock lock(state_->mutex);
        list = state_->tables.Records(kind);
    }
    std::sort(list.begin(), list.end(),
              [](const RecordPointer& a, const RecordPointer& b) {
                  return std::tie(a->path.native(), a->subKey, a->name) <
                         std::tie(b->path.native(), b->subKey, b->name);
              });
    return list;
}

fs::path AssetRegistry::GetContentRoot() const
{
    const std::shared_lock lock(state_->mutex);
    return state_->tables.Root().path;
}

AssetMountMode AssetRegistry::GetMode() const
{
    const std::shared_lock lock(state_->mutex);
    return state_->tables.Root().mode;
}

std::uint64_t AssetRegistry::GetRevision() const
{
    const std::shared_lock lock(state_->mutex);
    return state_->tables.Revision();
}

std::string AssetRegistry::UnreadPart() const
{
    const std::shared_lock lock(state_->mutex);
    return state_->tables.Unread().First();
}

void AssetRegistry::NoteUnread(const fs::path& path, const std::string& cause)
{
    const std::unique_lock lock(state_->mutex);
    state_->tables.NoteUnread(path.native(), cause);
}

bool AssetRegistry::IsProvisional(AssetId id) const
{
    if (!state_->hasProvisional)
    {
        return false; // as nearly always
    }
    const std::shared_lock lock(state_->mutex);
    return state_->tables.IsProvisional(id);
}

std::uint64_t AssetRegistry::UnresolvedReferences() const noexcept
{
    return state_->unresolvedReferences;
}

void AssetRegistry::NoteUnresolvedReference() const noexcept
{
    ++state_->unresolvedReferences;
}

void AssetRegistry::SetStrippedKinds(std::vector<AssetKind> kinds)
{
    const std::unique_lock lock(state_->mutex);
    state_->strippedKinds = std::move(kinds);
}

bool AssetRegistry::IsStripped(AssetKind kind) const
{
    const std::shared_lock lock(state_->mutex);
    const std::vector<AssetKind>& kinds = state_->strippedKinds;
    return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
}

std::optional<AssetRegistry::PlainAnswer> AssetRegistry::FindPlainPath(std::string_view relative) const
{
    const std::shared_lock lock(state_->mutex);
    const MountedRoot& root = state_->tables.Root();
    if (root.key.empty())
    {
        return std::nullopt;
    }
    std::string key = root.key;
    key.append("/").append(relative);
    if (const AssetId id = state_->tables.FindByPathKey(key))
    {
        return PlainAnswer{id, {}}; // keys are canonical, so this is where the file stands
    }
    const auto [memo, memoLock] = state_->Memo();
    const std::optional<ReferenceMemo::Place> place = memo.FindPlace(root.path.native(), relative);
    if (!place)
    {
        return std::nullopt;
    }
    const AssetId id = state_->tables.FindByPathKey(place->canonicalKey);
    if (place->exists && id == 0)
    {
        return std::nullopt; // a link, or no asset
    }
    return PlainAnswer{id, place->exists && place->differsInCase ? place->path : std::string()};
}

std::optional<std::string> AssetRegistry::FindEntryIgnoringCase(const fs::path& folder,
                                                                const std::string& name) const
{
    const std::shared_lock lock(state_->mutex);
    const auto [memo, memoLock] = state_->Memo();
    const ReferenceMemo::Folder* const listed = memo.List(folder.native());
    const auto* const found = listed == nullptr ? nullptr : listed->names.Find(WithoutCase(name));
    return found == nullptr || found->hasOthers ? std::nullopt : std::optional(found->exact);
}

std::optional<AssetId> AssetRegistry::FindAnswer(std::string_view text, AssetKind requiredKind) const
{
    const std::shared_lock lock(state_->mutex);
    const auto [memo, memoLock] = state_->Memo();
    return memo.FindAnswer(text, requiredKind);
}

void AssetRegistry::KeepAnswer(std::string_view text, AssetKind requiredKind, AssetId id,
                               std::uint64_t revision) const
{
    const std::shared_lock lock(state_->mutex);
    if (state_->tables.Revision() == revision)
    {
        const auto [memo, memoLock] = state_->Memo();
        memo.KeepAnswer(text, requiredKind, id);
    }
}

bool AssetRegistry::NoteReference(std::string_view text) const
{
    const std::lock_guard lock(state_->memoMutex);
    return state_->memo.NoteWarning(text);
}

} // namespace Vornu::Assets
