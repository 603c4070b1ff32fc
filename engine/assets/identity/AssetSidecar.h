#pragma once

#include "engine/assets/identity/AssetKind.h"
#include "engine/core/Guid.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Vornu::Assets
{

/// An asset that was derived from a file, such as one mesh of a model.
struct AssetSidecarSubAsset
{
    std::string name; // its key within the source
    AssetKind kind = AssetKind::Unknown;
    Core::Guid guid;

    friend bool operator==(const AssetSidecarSubAsset&, const AssetSidecarSubAsset&) = default;
};

/// What the `.vmeta` file beside an asset holds: the identity that survives renames, and import settings.
struct AssetSidecar
{
    static constexpr std::uint32_t kVersion = 1;

    std::uint32_t version = 0; // 0 for one that exists in memory alone
    Core::Guid guid;
    std::string importerName; // "native", "model", "texture" or "audio"; files may hold any word
    std::uint32_t importerVersion = 1;
    std::vector<std::pair<std::string, std::string>> settings; // of equal keys the first counts
    std::vector<AssetSidecarSubAsset> subAssets;

    friend bool operator==(const AssetSidecar&, const AssetSidecar&) = default;
};

inline constexpr std::string_view kSidecarExtension = ".vmeta";

// No operation of this header throws for what a file holds or the system reports: each gives an empty result
// or false, and puts a message into `error` unless that is null.

/// `<asset>.vmeta`
std::filesystem::path SidecarPath(const std::filesystem::path& asset);

/// Empty for a path that is no sidecar.
std::filesystem::path AssetPathOfSidecar(const std::filesystem::path& sidecar);

/// By the name alone: `.vmeta`, in letters of either case, behind a name that has an extension of its own.
bool IsSidecarFile(const std::filesystem::path& path);
bool IsSidecarName(std::string_view fileName);

/// Those of `<asset>.vmeta`, `<asset>.materials` and `<asset>.cells` that exist.
std::vector<std::filesystem::path> ExistingSidecars(const std::filesystem::path& asset);

/// The most bytes that a sidecar may have: those of some hundred thousand sub-assets.
inline constexpr std::uint64_t kMaxSidecarSize = std::uint64_t{64} * 1024 * 1024;

/// What came of reading a sidecar.
struct SidecarReading
{
    std::optional<AssetSidecar> sidecar;
    std::string error; // of a failure
    /// Why the bytes that stand there can't be had: the system fails to give them, or it is no regular file
    /// and no link to one. Empty if they can be had, and for a name that nothing has.
    std::string fault;
};

SidecarReading ReadSidecarFile(const std::filesystem::path& path);
std::optional<AssetSidecar> ReadSidecar(const std::filesystem::path& path, std::string* error = nullptr);
std::optional<AssetSidecar> ParseSidecar(std::string_view text, std::string* error = nullptr);
std::string SerializeSidecar(const AssetSidecar& sidecar);

/// Replaces the file whole or not at all; one that holds the same bytes already isn't touched. Refuses what
/// wouldn't read back alike, such as a key with a blank, and a path that anything but a regular file has: a
/// link is never written through.
bool WriteSidecar(const std::filesystem::path& path, const AssetSidecar& sidecar,
                  std::string* error = nullptr);

/// The sidecar of a new asset, with the settings that its importer starts from.
AssetSidecar MakeDefaultSidecar(AssetKind kind, const std::filesystem::path& asset, const Core::Guid& guid);

/// Gives whether the sidecar changed.
bool SetSidecarSetting(AssetSidecar& sidecar, std::string_view key, std::string_view value);

/// Renames what `ExistingSidecars` gives. A new name that is taken fails that one; the others are still
/// moved.
bool MoveSidecars(const std::filesystem::path& oldAsset, const std::filesystem::path& newAsset,
                  std::string* error = nullptr);

/// The asset goes first; if that fails, for instance because the name is taken, nothing is moved.
bool RenameAssetWithSidecars(const std::filesystem::path& oldAsset, const std::filesystem::path& newAsset,
                             std::string* error = nullptr);

} // namespace Vornu::Assets
