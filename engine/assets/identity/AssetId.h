#pragma once

#include <cstdint>

namespace Vornu::Assets
{

/// Process-local handle of an asset; 0 is the null reference. Files never hold it: they name the asset by
/// text.
using AssetId = std::uint64_t;

/// What the codec reads for a reference to a kind of asset that this package doesn't carry.
inline constexpr AssetId kStrippedAssetId = ~AssetId{0};

} // namespace Vornu::Assets
