#include "engine/assets/AssetManager.h"

#include "engine/core/Folders.h"
#include "engine/core/Logger.h"
#include "engine/core/System.h"

#include <stdexcept>
#include <string>

namespace Vornu::Assets
{

void AssetManager::Initialize(const std::filesystem::path& path, AssetMountMode mode)
{
    std::error_code error;
    if (mode == AssetMountMode::ReadOnly && !std::filesystem::is_directory(path, error))
    {
        throw std::runtime_error("Read-only asset content directory is missing: " + path.native());
    }
    mode_ = mode;
    meshes_.clear();
    registry_.Clear();
    if (mode == AssetMountMode::Authoring)
    {
        Platform::CreateDirectories(path);
        Platform::CreateDirectories(Core::ExportsFolder());
    }
    Platform::CreateDirectories(Core::GeneratedShadersFolder());
    rootPath_ = Platform::WeaklyCanonical(path);
    registry_.Mount(rootPath_, mode);
    defaultMaterial_ = registry_.RegisterBuiltin("Builtin/DefaultMaterial", AssetKind::Material);
    Core::Log(Core::LogCategory::Assets, Core::LogLevel::Info,
              "Asset manager initialized: " + rootPath_.native());
}

void AssetManager::PreloadProjectAssets(PreloadProgress*)
{
    // What a model contains is known to the importer of its format alone, and none is registered.
}

bool AssetManager::EnsureMeshLoaded(AssetId id)
{
    return meshes_.contains(id);
}

const MeshAsset* AssetManager::FindMesh(AssetId id) const noexcept
{
    const auto found = meshes_.find(id);
    return found == meshes_.end() ? nullptr : &found->second;
}

} // namespace Vornu::Assets
