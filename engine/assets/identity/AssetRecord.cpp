#include "engine/assets/identity/AssetRecord.h"

#include "engine/core/OrderedMap.h"

#include <mutex>

namespace Vornu::Assets
{

AssetId AllocateAssetId(const Core::Guid& guid)
{
    constexpr AssetId kFirstId = 0x100000001;
    static std::mutex mutex;
    static Core::OrderedMap<Core::Guid, AssetId, Core::GuidHash> ids;
    const std::lock_guard lock(mutex);
    return *ids.Emplace(guid, kFirstId + ids.Size()).first;
}

} // namespace Vornu::Assets
