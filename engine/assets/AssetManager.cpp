#include "engine/assets/AssetManager.h"

#include "engine/assets/CookedContainer.h"
#include "engine/assets/formats/NativeMesh.h"
#include "engine/core/Folders.h"
#include "engine/core/Logger.h"
#include "engine/core/System.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace Vornu::Assets
{
namespace
{

bool IsModelFile(const std::filesystem::path& path)
{
    const std::string extension = LowerExtension(path);
    return extension == ".fbx" || extension == ".gltf" || extension == ".glb";
}

std::string NoImporterText(const std::filesystem::path& path)
{
    return "No model importer is registered in this program (source importers are authoring-only): " +
           path.native();
}

AssetBytes ReadMeshFile(const std::filesystem::path& path)
{
    std::string error;
    std::optional<AssetBytes> bytes = ReadWholeFile(path, &error);
    if (!bytes)
    {
        throw std::runtime_error(error);
    }
    return std::move(*bytes);
}

AssetLoadPayload DecodeMesh(const std::filesystem::path& path, const AssetBytes& bytes)
{
    auto mesh = std::make_shared<MeshAsset>();
    std::string error;
    if (!ParseNativeMesh(bytes, path.native(), *mesh, error))
    {
        throw std::runtime_error(error);
    }
    return {std::move(mesh), bytes.size()};
}

} // namespace

AssetManager::AssetManager()
{
    AssetLoadHandler meshes;
    meshes.isResident = [this](AssetId id) { return meshes_.contains(id); };
    meshes.prepare = [this](AssetId id) { return PrepareMeshLoad(id); };
    meshes.unload = [this](AssetId id) { meshes_.erase(id); };
    loader_.RegisterHandler(AssetKind::Mesh, std::move(meshes));
}

AssetManager::~AssetManager()
{
    loader_.Reset();
}

void AssetManager::Initialize(const std::filesystem::path& path, AssetMountMode mode)
{
    std::error_code error;
    if (mode == AssetMountMode::ReadOnly && !std::filesystem::is_directory(path, error))
    {
        throw std::runtime_error("Read-only asset content directory is missing: " + path.native());
    }
    mode_ = mode;
    loader_.Reset();
    meshes_.clear();
    builtinMeshes_.clear();
    failedAssets_.clear();
    registry_.Clear();
    if (mode == AssetMountMode::Authoring)
    {
        Platform::CreateDirectories(path);
        Platform::CreateDirectories(Core::ExportsFolder());
    }
    Platform::CreateDirectories(Core::GeneratedShadersFolder());
    rootPath_ = Platform::WeaklyCanonical(path);
    registry_.Mount(rootPath_, mode);
    RegisterBuiltins();
    Core::Log(Core::LogCategory::Assets, Core::LogLevel::Info,
              "Asset manager initialized: " + rootPath_.native());
}

void AssetManager::RegisterBuiltins()
{
    for (const BuiltinMesh& mesh : BuiltinMeshes())
    {
        builtinMeshes_[registry_.RegisterBuiltin(std::string(mesh.name), AssetKind::Mesh)] = &mesh;
    }
    for (const char* const texture : {"White", "Black", "Builtin/FlatNormal"})
    {
        registry_.RegisterBuiltin(texture, AssetKind::Texture);
    }
    defaultMaterial_ = registry_.RegisterBuiltin("Builtin/DefaultMaterial", AssetKind::Material);
}

void AssetManager::PreloadProjectAssets(PreloadProgress*)
{
    for (const auto& record : registry_.ListRecordsOfKind(AssetKind::Scene))
    {
        if (!record->isBuiltin && !record->path.empty() && IsModelFile(record->path))
        {
            LoadSceneAsset(record->id);
        }
    }
}

bool AssetManager::LoadSceneAsset(AssetId id)
{
    const std::shared_ptr<const AssetRecord> record = registry_.FindRecord(id);
    if (!record || record->kind != AssetKind::Scene || !IsModelFile(record->path))
    {
        return false;
    }
    NoteFailure(id, "Failed to load scene asset: " + NoImporterText(record->path));
    return false;
}

bool AssetManager::EnsureMeshLoaded(AssetId id)
{
    if (meshes_.contains(id))
    {
        return true;
    }
    const auto builtin = builtinMeshes_.find(id);
    if (builtin != builtinMeshes_.end())
    {
        meshes_[id] = builtin->second->make();
        meshes_[id].lods = {{id}};
        return true;
    }
    const std::shared_ptr<const AssetRecord> record = registry_.FindRecord(id);
    if (!record || record->kind != AssetKind::Mesh)
    {
        return false;
    }
    const AssetLoadHandle handle = loader_.Submit(id, AssetKind::Mesh, kBlockingLoadPriority);
    loader_.Pin(id);
    return loader_.Wait(handle);
}

AssetLoadRecipe AssetManager::PrepareMeshLoad(AssetId id)
{
    AssetLoadRecipe recipe;
    const std::shared_ptr<const AssetRecord> record = registry_.FindRecord(id);
    if (!record || record->kind != AssetKind::Mesh)
    {
        recipe.error = "Unknown mesh asset " + std::to_string(id);
        return recipe;
    }
    if (mode_ == AssetMountMode::ReadOnly && failedAssets_.contains(id))
    {
        recipe.error = "Mesh asset previously failed to load: " + record->name;
        return recipe;
    }
    if (LowerExtension(record->path) != ".vmesh")
    {
        recipe.error = NoImporterText(record->path);
        recipe.fail = [this, id](const std::string& text) { NoteFailure(id, text); };
        return recipe;
    }
    recipe.read = [path = record->dataPath] { return ReadMeshFile(path); };
    recipe.decode = [path = record->dataPath](AssetBytes bytes) { return DecodeMesh(path, bytes); };
    recipe.publish = [this, id, path = record->path](AssetLoadPayload& payload)
    {
        meshes_[id] = std::move(*static_cast<MeshAsset*>(payload.value.get()));
        Core::Log(Core::LogCategory::Assets, Core::LogLevel::Info,
                  "Loaded native mesh asset: " + path.native());
    };
    recipe.fail = [this, id, path = record->path](const std::string&)
    { NoteFailure(id, "Failed to load native mesh asset: " + path.native()); };
    return recipe;
}

void AssetManager::NoteFailure(AssetId id, const std::string& text)
{
    failedAssets_[id] = text;
    Core::Log(Core::LogCategory::Assets, Core::LogLevel::Error, text);
}

const MeshAsset* AssetManager::FindMesh(AssetId id) const noexcept
{
    const auto found = meshes_.find(id);
    return found == meshes_.end() ? nullptr : &found->second;
}

} // namespace Vornu::Assets
