#pragma once

#include "engine/assets/AssetId.h"
#include "engine/assets/AssetKind.h"
#include "engine/reflection/SchemaCodec.h"

#include <string>
#include <string_view>

namespace Vornu::Assets
{

class AssetRegistry;

/// The asset that a reference's text names: `guid:<36 characters>` or `builtin:<name>`. 0 for empty text and
/// for what the registry doesn't hold. `requiredKind` doesn't restrict these two forms; callers compare.
AssetId ResolveAssetReference(const AssetRegistry& registry, std::string_view text,
                              AssetKind requiredKind = AssetKind::Unknown);

/// The text under which files name an asset; empty when the id is null or unknown.
std::string FormatAssetReference(const AssetRegistry& registry, AssetId id);

/// The asset functions of the schema codec over a registry, which outlives them. A reference that doesn't
/// resolve, or to an asset of another kind, throws `std::runtime_error`.
Reflection::SchemaCodecContext MakeSceneCodecContext(const AssetRegistry& registry);

} // namespace Vornu::Assets
