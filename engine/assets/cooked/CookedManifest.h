#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/assets/identity/AssetKind.h"
#include "engine/core/Guid.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Vornu::Assets
{

struct CookedManifestDependency
{
    std::filesystem::path path;
    std::uint64_t hash = 0;

    friend bool operator==(const CookedManifestDependency&, const CookedManifestDependency&) = default;
};

/// One asset of a cooked project. What the columns between the name and the dependencies mean is the cooking
/// tool's business.
struct CookedManifestAsset
{
    AssetId id = 0;  // version 1 only
    Core::Guid guid; // from version 2
    AssetKind kind = AssetKind::Unknown;
    std::string name;
    std::filesystem::path firstPath;
    std::filesystem::path secondPath;
    std::filesystem::path thirdPath;
    std::string text;
    std::uint64_t firstNumber = 0;
    std::uint64_t secondNumber = 0;
    bool flag = false;
    // From version 3:
    std::uint64_t firstHash = 0;
    std::uint64_t secondHash = 0;
    std::string secondText;
    std::uint64_t thirdHash = 0;
    std::string thirdText;
    std::uint32_t number32 = 0;
    std::vector<CookedManifestDependency> dependencies;

    friend bool operator==(const CookedManifestAsset&, const CookedManifestAsset&) = default;
};

/// The text file at the root of cooked content that lists what was cooked.
struct CookedManifest
{
    static constexpr std::uint32_t kLatestVersion = 3;

    std::uint32_t version = kLatestVersion; // 1 to 3
    std::string platform = "windows";
    std::uint32_t cookerVersion = 0;
    std::filesystem::path contentRoot;
    std::filesystem::path outputRoot;
    bool requireCookedScenes = false;
    std::vector<CookedManifestAsset> assets;

    friend bool operator==(const CookedManifest&, const CookedManifest&) = default;
};

/// Reads a manifest. On false `error`, where given, tells why, and the manifest may be partly filled.
bool ReadCookedManifest(const std::filesystem::path& path, CookedManifest& manifest, std::string* error);

/// Writes a manifest whole or not at all. On false `error`, where given, tells why.
bool WriteCookedManifest(const std::filesystem::path& path, const CookedManifest& manifest,
                         std::string* error);

/// Whether the manifest at a content root demands that scenes are cooked; no without one. Looks at the file
/// again only when its time has changed. Safe from any thread.
bool RequiresCookedScenes(const std::filesystem::path& contentRoot);

} // namespace Vornu::Assets
