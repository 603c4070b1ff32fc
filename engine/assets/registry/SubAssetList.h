#pragma once

#include "engine/assets/identity/AssetSidecar.h"
#include "engine/core/Guid.h"
#include "engine/core/Hash.h"
#include "engine/core/OrderedMap.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Vornu::Assets
{

/// The GUID of a sub-asset that its source's sidecar doesn't list.
Core::Guid DerivedSubGuid(const Core::Guid& source, AssetKind kind, const std::string& key);

/// Finds the identities of a source's sub-assets in its sidecar, and enters those that are missing. Each
/// takes constant time.
class SubAssetList
{
public:
    /// `sidecar` outlives the list and isn't changed by others meanwhile.
    explicit SubAssetList(AssetSidecar& sidecar);

    /// Keeps the listed sub-asset of a key that is in use from being taken over.
    void NoteLive(const std::string& key) { live_.Emplace(key); }

    /// The GUID of a sub-asset, which is in use from now on: that of the key; else that of a key which
    /// differs in its number alone and isn't in use, and which is replaced; else a new one.
    Core::Guid Take(AssetKind kind, const std::string& key);

    /// Something was entered or replaced.
    bool HasChanged() const noexcept { return hasChanged_; }

private:
    struct Group
    {
        std::vector<std::size_t> places; // in the sidecar
        std::size_t next = 0;            // those in front are in use
    };

    void Index(std::size_t place);
    AssetSidecarSubAsset* TakeOver(AssetKind kind, const std::string& key);

    AssetSidecar& sidecar_;
    Core::OrderedMap<std::string, std::size_t, Core::TextHash> places_;
    Core::OrderedMap<std::string, Group, Core::TextHash> groups_; // of keys that differ in their number alone
    Core::OrderedMap<std::string, bool, Core::TextHash> live_;
    bool hasChanged_ = false;
};

} // namespace Vornu::Assets
