// How an asset manager loads imported models.

#include "engine/assets/AssetManager.h"
#include "engine/core/Logger.h"
#include "engine/core/Profile.h"
#include "engine/core/System.h"

#include <exception>
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

void LogScene(Core::LogLevel level, std::string text)
{
    Core::Log(Core::LogCategory::Assets, level, std::move(text));
}

std::string OrWord(const std::string& name, const char* word)
{
    return name.empty() ? word : name;
}

} // namespace

void AssetManager::PreloadProjectAssets(PreloadProgress* progress)
{
    const Core::ProfileScope profile("Assets", "AssetManager::PreloadProjectAssets");
    PreloadProgress unseen;
    PreloadProgress& seen = progress != nullptr ? *progress : unseen;
    seen.state = PreloadState::Starting;
    std::vector<AssetId> scenes;
    for (const auto& record : registry_.ListRecordsOfKind(AssetKind::Scene))
    {
        if (!record->isBuiltin && !record->path.empty())
        {
            scenes.push_back(record->id);
        }
    }
    seen.finished = 0;
    seen.total = static_cast<std::uint32_t>(scenes.size());
    seen.state = PreloadState::Running;
    for (const AssetId id : scenes)
    {
        if (seen.cancel)
        {
            break;
        }
        LoadSceneAsset(id);
        ++seen.finished;
    }
    seen.state = PreloadState::Done;
}

std::shared_ptr<const ImportedSceneData> AssetManager::LoadSceneAsset(AssetId id)
{
    const Core::ProfileScope profile("Assets", "AssetManager::LoadSceneAsset");
    if (const auto stored = sceneRecords_.find(id); stored != sceneRecords_.end())
    {
        return stored->second;
    }
    const std::shared_ptr<const AssetRecord> record = registry_.FindRecord(id);
    if (!record || record->kind != AssetKind::Scene || !IsModelFile(record->path))
    {
        return nullptr;
    }
    try
    {
        ImportedSceneData data;
        {
            const Core::ProfileScope import("Import", "LoadSceneAsset Import Scene");
            data = ImportModel(record->path);
        }
        const Core::ProfileScope commit("Import", "LoadSceneAsset Finalize Scene Commit");
        FinalizeSceneCommit(*record, std::move(data));
        return sceneRecords_[id];
    }
    catch (const std::exception& fault)
    {
        const std::string message = std::string("Failed to load scene asset: ") + fault.what();
        if (mode_ == AssetMountMode::ReadOnly)
        {
            failedAssets_[id] = fault.what();
            ReportFallback(message);
        }
        else
        {
            NoteFailure(id, message, fault.what());
        }
        return nullptr;
    }
}

AssetId AssetManager::ImportSceneFile(const std::filesystem::path& path)
{
    const Core::ProfileScope profile("Import", "AssetManager::ImportSceneFile");
    std::error_code error;
    if (!std::filesystem::exists(path, error))
    {
        LogScene(Core::LogLevel::Error, "Import failed. Source file does not exist: " + path.native());
        return 0;
    }
    if (!IsModelFile(path) && LowerExtension(path) != ".obj")
    {
        LogScene(Core::LogLevel::Error, "Import failed. Unsupported mesh format: " + path.native());
        return 0;
    }
    try
    {
        ImportedSceneData data;
        {
            const Core::ProfileScope import("Import", "ImportSceneFile Import Scene");
            data = ImportModel(path);
        }
        const AssetId id = registry_.RegisterFile(KindFromExtension(path), path);
        const std::shared_ptr<const AssetRecord> record = registry_.FindRecord(id);
        if (!record)
        {
            return 0;
        }
        FinalizeSceneCommit(*record, std::move(data));
        const ImportedSceneData& scene = *sceneRecords_[id];
        LogScene(Core::LogLevel::Info, "Imported scene with " + std::to_string(scene.nodes.size()) +
                                           " nodes and " + std::to_string(scene.meshes.size()) +
                                           " unique meshes: " + path.native());
        return id;
    }
    catch (const std::exception& fault)
    {
        LogScene(Core::LogLevel::Error, std::string("Failed to load scene asset: ") + fault.what());
        return 0;
    }
}

void AssetManager::RebuildImportedSceneAssets(const std::vector<std::filesystem::path>& paths)
{
    for (const std::filesystem::path& path : paths)
    {
        if (const AssetId id = registry_.FindByPath(path); id != 0)
        {
            sceneRecords_.erase(id);
            failedAssets_.erase(id);
            LoadSceneAsset(id);
        }
    }
}

AssetId AssetManager::RegisterPart(const AssetRecord& source, AssetKind kind, const std::string& key,
                                   const std::string& name, std::size_t index, const std::string& displayName)
{
    const std::filesystem::path child = DerivedChildPath(source.path, kind, name, index, false);
    return registry_.RegisterSubAsset(kind, source.path, child, key, displayName);
}

void AssetManager::FinalizeSceneCommit(const AssetRecord& record, ImportedSceneData data)
{
    const Core::ProfileScope profile("Import", "AssetManager::FinalizeSceneCommit");
    const auto withFile = [&](const std::string& name)
    { return record.path.filename().native() + "/" + name; };
    const auto numbered = [](const std::string& name, std::size_t i)
    { return name + "#" + std::to_string(i); };

    for (std::size_t i = 0; i < data.materials.size(); ++i)
    {
        const std::string name = OrWord(data.materials[i].name, "Material");
        RegisterPart(record, AssetKind::Material, numbered(name, i), name, i, withFile(name));
    }
    std::vector<AssetId> skeletons;
    for (std::size_t i = 0; i < data.skeletons.size(); ++i)
    {
        const std::string name = OrWord(data.skeletons[i].name, "Skeleton");
        skeletons.push_back(
            RegisterPart(record, AssetKind::Skeleton, "skel#" + numbered(name, i), name, i, name));
    }
    for (std::size_t i = 0; i < data.rigs.size(); ++i)
    {
        const std::string name = OrWord(data.rigs[i].name, "Rig");
        RegisterPart(record, AssetKind::Rig, "rig#" + numbered(name, i), name, i, name);
    }
    for (std::size_t i = 0; i < data.meshes.size(); ++i)
    {
        ImportedMesh& entry = data.meshes[i];
        const std::string name = OrWord(entry.name, "Mesh");
        const AssetId id =
            RegisterPart(record, AssetKind::Mesh, "mesh#" + numbered(name, i), name, i, withFile(name));
        if (static_cast<std::size_t>(entry.skeleton) < skeletons.size())
        {
            entry.mesh.skeleton = skeletons[static_cast<std::size_t>(entry.skeleton)];
        }
        meshes_[id] = entry.mesh;
    }
    for (std::size_t i = 0; i < data.clips.size(); ++i)
    {
        const std::string name = OrWord(data.clips[i].name, "Clip");
        RegisterPart(record, AssetKind::AnimationClip, numbered(name, i), name, i, withFile(name));
    }
    LogScene(Core::LogLevel::Info, "Imported scene with " + std::to_string(data.nodes.size()) + " nodes, " +
                                       std::to_string(data.meshes.size()) + " unique meshes, " +
                                       std::to_string(data.skeletons.size()) + " skeletons, " +
                                       std::to_string(data.clips.size()) + " clips, and " +
                                       std::to_string(data.materials.size()) + " materials.");
    sceneRecords_[record.id] = std::make_shared<const ImportedSceneData>(std::move(data));
}

} // namespace Vornu::Assets
