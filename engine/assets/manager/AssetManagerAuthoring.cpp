// What an asset manager changes on disk on behalf of an editor.

#include "engine/assets/cooked/CookedContainer.h"
#include "engine/assets/formats/mesh/NativeMesh.h"
#include "engine/assets/manager/AssetManager.h"
#include "engine/core/logging/Logger.h"

#include <stdexcept>
#include <string>

namespace Vornu::Assets
{
namespace
{

bool WriteNewMesh(const std::filesystem::path& path, const MeshAsset& mesh, std::string& error)
{
    std::error_code code;
    if (LowerExtension(path) != ".vmesh" || std::filesystem::exists(path, code))
    {
        error = "the path must be that of a new .vmesh file: " + path.native();
        return false;
    }
    try
    {
        const std::vector<std::byte> bytes = EncodeNativeMesh(mesh);
        MeshAsset read;
        return ParseNativeMesh(bytes, path.native(), read, error) && WriteFileAtomically(path, bytes, &error);
    }
    catch (const std::length_error& fault)
    {
        error = fault.what();
        return false;
    }
}

} // namespace

void AssetManager::RequireAuthoring(std::string_view operation) const
{
    if (mode_ == AssetMountMode::ReadOnly)
    {
        throw std::runtime_error(std::string(operation) + " is unavailable with read-only asset sources.");
    }
}

void AssetManager::RefuseWithoutFormat(std::string_view operation) const
{
    RequireAuthoring(operation);
    throw std::logic_error(std::string(operation) + " has no format in this program.");
}

AssetId AssetManager::CreateMeshAsset(const std::filesystem::path& path, const MeshAsset& mesh)
{
    RequireAuthoring("CreateMeshAsset");
    // A file holds no id of this process.
    MeshAsset stored = mesh;
    std::erase_if(stored.lods,
                  [this](const MeshLod& lod) { return registry_.FindRecord(lod.mesh) != nullptr; });
    std::string error;
    if (!WriteNewMesh(path, stored, error))
    {
        Core::Log(Core::LogCategory::Assets, Core::LogLevel::Error, "Failed to create mesh asset: " + error);
        return 0;
    }
    return registry_.RegisterFile(AssetKind::Mesh, path);
}

AssetId AssetManager::CreateAnimatorControllerAsset(const std::filesystem::path&)
{
    RefuseWithoutFormat("CreateAnimatorControllerAsset");
}

AssetId AssetManager::CreateMaterialAsset(const std::filesystem::path&)
{
    RefuseWithoutFormat("CreateMaterialAsset");
}

AssetId AssetManager::CreateRigDefinitionAsset(const std::filesystem::path&)
{
    RefuseWithoutFormat("CreateRigDefinitionAsset");
}

AssetId AssetManager::CreateUiDocumentAsset(const std::filesystem::path&)
{
    RefuseWithoutFormat("CreateUiDocumentAsset");
}

void AssetManager::SaveAnimationClipAsset(AssetId)
{
    RefuseWithoutFormat("SaveAnimationClipAsset");
}

void AssetManager::SaveAnimatorControllerAsset(AssetId)
{
    RefuseWithoutFormat("SaveAnimatorControllerAsset");
}

void AssetManager::SaveMaterialAsset(AssetId)
{
    RefuseWithoutFormat("SaveMaterialAsset");
}

void AssetManager::SaveRigDefinitionAsset(AssetId)
{
    RefuseWithoutFormat("SaveRigDefinitionAsset");
}

void AssetManager::SaveUiDocumentAsset(AssetId)
{
    RefuseWithoutFormat("SaveUiDocumentAsset");
}

void AssetManager::SaveImportedMaterialOverride(AssetId)
{
    RefuseWithoutFormat("SaveImportedMaterialOverride");
}

void AssetManager::BeginTextureSetImportForImportedModel(AssetId)
{
    RefuseWithoutFormat("BeginTextureSetImportForImportedModel");
}

void AssetManager::ImportTextureSetForImportedModel(AssetId)
{
    RefuseWithoutFormat("ImportTextureSetForImportedModel");
}

void AssetManager::StepTextureSetImport()
{
    RefuseWithoutFormat("StepTextureSetImport");
}

void AssetManager::ImportAnimationClipsForSkeleton(AssetId)
{
    RefuseWithoutFormat("ImportAnimationClipsForSkeleton");
}

void AssetManager::CommitAnimationClipsForSkeleton(AssetId)
{
    RefuseWithoutFormat("CommitAnimationClipsForSkeleton");
}

} // namespace Vornu::Assets
