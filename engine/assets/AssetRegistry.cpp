#include "engine/assets/AssetRegistry.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace Vornu::Assets
{

AssetId AllocateAssetId(const Core::Guid& guid)
{
    constexpr AssetId kFirstId = 0x100000001;
    static std::mutex mutex;
    static std::unordered_map<Core::Guid, AssetId, Core::GuidHash> ids;
    const std::lock_guard lock(mutex);
    return ids.try_emplace(guid, kFirstId + ids.size()).first->second;
}

void AssetRegistry::Mount(const std::filesystem::path& contentRoot, AssetMountMode mode)
{
    Clear();
    const std::unique_lock lock(mutex_);
    contentRoot_ = contentRoot;
    mode_ = mode;
}

void AssetRegistry::Clear()
{
    const std::unique_lock lock(mutex_);
    records_.clear();
    builtins_.clear();
    contentRoot_.clear();
}

AssetId AssetRegistry::RegisterBuiltin(const std::string& name, AssetKind kind)
{
    AssetRecord record;
    record.guid = Core::GuidFromName("builtin:" + name);
    record.id = AllocateAssetId(record.guid);
    record.kind = kind;
    record.name = name;
    record.isBuiltin = true;
    const AssetId id = record.id;
    const std::unique_lock lock(mutex_);
    builtins_[name] = id;
    records_[id] = std::make_shared<const AssetRecord>(std::move(record));
    return id;
}

std::shared_ptr<const AssetRecord> AssetRegistry::FindRecord(AssetId id) const
{
    const std::shared_lock lock(mutex_);
    const auto found = records_.find(id);
    return found == records_.end() ? nullptr : found->second;
}

AssetId AssetRegistry::FindByGuid(const Core::Guid& guid) const
{
    const std::shared_lock lock(mutex_);
    const auto found = std::find_if(records_.begin(), records_.end(),
                                    [&](const auto& entry) { return entry.second->guid == guid; });
    return found == records_.end() ? 0 : found->first;
}

AssetId AssetRegistry::FindBuiltin(std::string_view name) const
{
    const std::shared_lock lock(mutex_);
    const auto found = builtins_.find(name);
    return found == builtins_.end() ? 0 : found->second;
}

std::filesystem::path AssetRegistry::ContentRoot() const
{
    const std::shared_lock lock(mutex_);
    return contentRoot_;
}

AssetMountMode AssetRegistry::Mode() const
{
    const std::shared_lock lock(mutex_);
    return mode_;
}

void AssetRegistry::SetStrippedKinds(std::vector<AssetKind> kinds)
{
    const std::unique_lock lock(mutex_);
    strippedKinds_ = std::move(kinds);
}

bool AssetRegistry::IsStripped(AssetKind kind) const
{
    const std::shared_lock lock(mutex_);
    return std::find(strippedKinds_.begin(), strippedKinds_.end(), kind) != strippedKinds_.end();
}

} // namespace Vornu::Assets
