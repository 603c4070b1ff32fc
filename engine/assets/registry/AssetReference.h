#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/assets/identity/AssetKind.h"
#include "engine/assets/registry/AssetRegistry.h"
#include "engine/reflection/SchemaCodec.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Vornu::Assets
{

// The text by which files name an asset, in one of these forms:
//
//   (empty)                        no asset
//   guid:<36 characters>           any asset that has an identity
//   builtin:<name>                 a built-in
//   content:<path>                 a file below the content folder
//   path:<path>                    a file elsewhere
//   derived:<file>|subkey:<hex>    a sub-asset of a file, by the bytes of its key
//   derived:<file>|<file>          a file that was generated from another
//
// Paths have `/` separators; `\` reads as one. `derived:` is read and never written. But for the functions of
// the codec nothing here throws: faults of a reference give 0 or an empty result.

/// The asset that a text names; 0 for none. `requiredKind` restricts `derived:` alone; callers compare.
AssetId ResolveAssetReference(const AssetRegistry& registry, std::string_view text,
                              AssetKind requiredKind = AssetKind::Unknown);

/// The text under which files name an asset; empty when the id is null or unknown.
std::string FormatAssetReference(const AssetRegistry& registry, AssetId id);

/// The canonical path that a text names, whether it exists or not; of a sub-asset that of its source. A name
/// that doesn't exist as it stands is looked for in Windows-1252, which sets `legacyEncoding`, and below the
/// content folder without regard to the case of A to Z, if that leaves one choice. Empty for `builtin:`, for
/// an unknown GUID and for text of no form.
std::filesystem::path ResolveReferencePath(const AssetRegistry& registry, std::string_view text,
                                           bool* legacyEncoding = nullptr);

/// `content:` or `path:` text of a path.
std::string FormatPathReference(const AssetRegistry& registry, const std::filesystem::path& path);

/// The `guid:`, `content:` and `derived:` references in text of any format.
std::vector<std::string> ScanAssetReferences(std::string_view text);

/// The text is of a form that holds a path.
bool IsPathReference(std::string_view text) noexcept;

/// The asset of a number that an old scene holds in place of a text: an id of this process, or a hash of the
/// asset's path on the machine where the scene was saved. 0 for none.
AssetId ResolveLegacyAssetId(const AssetRegistry& registry, std::uint64_t number);

/// The asset functions of the schema codec. They share the registry. A reference that doesn't resolve, or to
/// an asset of another kind, throws `std::runtime_error`.
Reflection::SchemaCodecContext MakeSceneCodecContext(const AssetRegistry& registry);

} // namespace Vornu::Assets
