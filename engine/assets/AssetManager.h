#pragma once

#include "engine/assets/AssetId.h"
#include "engine/assets/AssetRegistry.h"
#include "engine/assets/MeshAsset.h"

#include <cstdint>
#include <filesystem>
#include <unordered_map>

namespace Vornu::Assets
{

/// Progress of a preload, for a host that shows it.
struct PreloadProgress;

/// The front of the assets of one content folder. Belongs to the thread that made it.
class AssetManager
{
public:
    AssetManager() = default;
    AssetManager(const AssetManager&) = delete;
    AssetManager& operator=(const AssetManager&) = delete;

    /// Mounts a content folder. An authoring mount creates the folder and the generated folders; a read-only
    /// one wants it to exist. Throws `std::runtime_error` or `std::filesystem::filesystem_error`.
    void Initialize(const std::filesystem::path& path, AssetMountMode mode);

    /// Loads the models of the project, so that references to what they contain resolve.
    void PreloadProjectAssets(PreloadProgress* progress);

    AssetRegistry& GetRegistry() noexcept { return registry_; }
    const AssetRegistry& GetRegistry() const noexcept { return registry_; }
    const std::filesystem::path& RootPath() const noexcept { return rootPath_; }

    /// Makes a mesh resident; false when it can't be.
    bool EnsureMeshLoaded(AssetId id);
    /// A resident mesh; null otherwise.
    const MeshAsset* FindMesh(AssetId id) const noexcept;

    /// The built-in material of renderers that name none.
    AssetId DefaultMaterial() const noexcept { return defaultMaterial_; }

private:
    AssetRegistry registry_;
    AssetMountMode mode_ = AssetMountMode::Authoring;
    std::filesystem::path rootPath_;
    std::unordered_map<AssetId, MeshAsset> meshes_;
    AssetId defaultMaterial_ = 0;
};

} // namespace Vornu::Assets
