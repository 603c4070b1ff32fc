#pragma once

#include "engine/assets/AssetId.h"
#include "engine/assets/AssetLoader.h"
#include "engine/assets/AssetRegistry.h"
#include "engine/assets/BuiltinMeshes.h"
#include "engine/assets/MeshAsset.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <unordered_map>

namespace Vornu::Assets
{

/// Progress of a preload, for a host that shows it.
struct PreloadProgress;

/// The front of the assets of one content folder. Belongs to the thread that made it.
class AssetManager
{
public:
    AssetManager();
    ~AssetManager();
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

    /// Loads the scene of an imported model. False, with the reason logged, when it can't be: for a record of
    /// another kind, and for every model as long as this program has no importer.
    bool LoadSceneAsset(AssetId id);

    /// Makes a mesh resident, waiting for its load; false when it can't be. A failure is logged.
    bool EnsureMeshLoaded(AssetId id);
    /// A resident mesh; null otherwise.
    const MeshAsset* FindMesh(AssetId id) const noexcept;

    /// The built-in material of renderers that name none.
    AssetId DefaultMaterial() const noexcept { return defaultMaterial_; }

private:
    AssetRegistry registry_;
    AssetMountMode mode_ = AssetMountMode::Authoring;
    std::filesystem::path rootPath_;
    void RegisterBuiltins();
    AssetLoadRecipe PrepareMeshLoad(AssetId id);
    void NoteFailure(AssetId id, const std::string& text);

    std::unordered_map<AssetId, MeshAsset> meshes_;
    std::unordered_map<AssetId, const BuiltinMesh*> builtinMeshes_; // made when they are first asked for
    std::unordered_map<AssetId, std::string> failedAssets_;         // with the last error
    AssetId defaultMaterial_ = 0;
    AssetLoader loader_; // its jobs fill the tables, which outlive them
};

} // namespace Vornu::Assets
