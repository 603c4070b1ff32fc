#include "engine/assets/AssetRecord.h"

#include <mutex>
#include <unordered_map>

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

} // namespace Vornu::Assets
