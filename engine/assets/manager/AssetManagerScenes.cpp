// How an asset manager loads imported models.

#include "engine/assets/cooked/CookedContainer.h"
#include "engine/assets/manager/AssetManager.h"
#include "engine/core/Profile.h"
#include "engine/core/files/InputFile.h"
#include "engine/core/files/ReadFaults.h"
#include "engine/core/logging/Logger.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <stdexcept>
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

/// Models, and the meshes that an importer reads like one.
bool IsImportable(const std::filesystem::path& path)
{
    return IsModelFile(path) || LowerExtension(path) == ".obj";
}

void LogScene(Core::LogLevel level, std::string text)
{
    Core::Log(Core::LogCategory::Assets, level, std::move(text));
}

std::string ImportFailureText()
{
    return Detail::CurrentExceptionText("unknown error", "unknown exception");
}

bool IsCookedModel(const std::filesystem::path& path)
{
    std::array<char, kContainerHeaderSize> bytes;
    Core::InputFile file(path);
    const std::size_t size = file.IsOpen() ? file.Read(bytes.data(), bytes.size()) : 0;
    const auto header = ReadContainerHeader(std::as_bytes(std::span(bytes)).first(size));
    return header && header->kind == ContainerKind("MODL");
}

ImportedSceneData ReadModel(const std::filesystem::path& path)
{
    if (IsCookedModel(path))
    {
        // The stream inside is that of a scene cache, which this program doesn't keep.
        throw std::runtime_error("Failed to load cooked model: " + path.native());
    }
    return ImportModel(path);
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
    const std::shared_ptr<const AssetRecord> record = registry_.FindRecord(id);
    if (const auto stored = sceneRecords_.find(id); stored != sceneRecords_.end())
    {
        const std::vector<AssetId>& parts = stored->second.parts;
        const bool registered = std::all_of(parts.begin(), parts.end(),
                                            [this](AssetId part) { return registry_.FindRecord(part); });
        if (!registered && record)
        {
            FinalizeSceneCommit(*record, stored->second.data); // a refresh has taken the parts out
        }
        return sceneRecords_[id].data;
    }
    if (!record || record->kind != AssetKind::Scene || !IsModelFile(record->path) || !ImportScene(*record))
    {
        return nullptr;
    }
    return sceneRecords_[id].data;
}

/// Imports a model whether it is loaded or not. False, with the reason logged, when it can't be.
bool AssetManager::ImportScene(const AssetRecord& record)
{
    std::string cause;
    const Platform::ReadFaultWatch faults("/");
    try
    {
        cause = PackagedSourceFault(record.dataPath, nullptr);
        if (cause.empty())
        {
            std::shared_ptr<const ImportedSceneData> data;
            {
                const Core::ProfileScope import("Import", "LoadSceneAsset Import Scene");
                data = std::make_shared<const ImportedSceneData>(ReadModel(record.path));
            }
            const Core::ProfileScope commit("Import", "LoadSceneAsset Finalize Scene Commit");
            FinalizeSceneCommit(record, std::move(data));
            return true;
        }
    }
    catch (...)
    {
        cause = ImportFailureText();
    }
    if (const std::string fault = faults.First(); !fault.empty())
    {
        registry_.NoteUnread(record.path, "its parts are unknown, as the system failed to read " + fault);
    }
    const std::string message = "Failed to load scene asset: " + cause;
    if (mode_ == AssetMountMode::ReadOnly)
    {
        failedAssets_[record.id] = cause;
        ReportFallback(message);
    }
    else
    {
        NoteFailure(record.id, message, cause);
    }
    return false;
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
    if (!IsImportable(path))
    {
        LogScene(Core::LogLevel::Error, "Import failed. Unsupported mesh format: " + path.native());
        return 0;
    }
    try
    {
        if (const std::string fault = PackagedSourceFault(path, nullptr); !fault.empty())
        {
            throw std::runtime_error(fault);
        }
        std::shared_ptr<const ImportedSceneData> data;
        {
            const Core::ProfileScope import("Import", "ImportSceneFile Import Scene");
            data = std::make_shared<const ImportedSceneData>(ReadModel(path));
        }
        const AssetId id = registry_.RegisterFile(KindFromExtension(path), path);
        const std::shared_ptr<const AssetRecord> record = registry_.FindRecord(id);
        if (!record)
        {
            throw std::runtime_error("The file can't be registered: " + path.native());
        }
        FinalizeSceneCommit(*record, data);
        LogScene(Core::LogLevel::Info, "Imported scene with " + std::to_string(data->nodes.size()) +
                                           " nodes and " + std::to_string(data->meshes.size()) +
                                           " unique meshes: " + path.native());
        return id;
    }
    catch (...)
    {
        LogScene(Core::LogLevel::Error, "Failed to load scene asset: " + ImportFailureText());
        return 0;
    }
}

bool AssetManager::RebuildImportedSceneAssets(const std::vector<std::filesystem::path>& paths)
{
    bool isAny = false;
    for (const std::filesystem::path& path : paths)
    {
        const auto record = IsImportable(path) ? registry_.FindRecord(registry_.FindByPath(path)) : nullptr;
        if (record)
        {
            isAny = true;
            failedAssets_.erase(record->id);
            ImportScene(*record);
        }
    }
    return isAny;
}

/// A mesh without levels of detail is its own only one.
void AssetManager::ListItself(MeshAsset& mesh, AssetId id)
{
    if (mesh.lods.empty())
    {
        mesh.lods = {{id}};
    }
}

void AssetManager::FinalizeSceneCommit(const AssetRecord& record,
                                       std::shared_ptr<const ImportedSceneData> data)
{
    const Core::ProfileScope profile("Import", "AssetManager::FinalizeSceneCommit");
    const std::vector<AssetId> oldMeshes = std::exchange(sceneRecords_[record.id].meshes, {});
    // Live parts of an earlier import would keep their keys from those that are renumbered.
    registry_.RemoveAssetsOfFile(record.path);
    LoadedScene scene;
    std::vector<SubAssetEntry> parts;
    const auto add =
        [&](AssetKind kind, const auto& list, const char* prefix, const char* word, bool withFile)
    {
        const std::size_t first = parts.size();
        for (std::size_t i = 0; i < list.size(); ++i)
        {
            const std::string name = list[i].name.empty() ? word : list[i].name;
            parts.push_back({kind, DerivedChildPath(record.path, kind, name, i, false),
                             prefix + name + "#" + std::to_string(i),
                             withFile ? record.path.filename().native() + "/" + list[i].name : name});
        }
        return first;
    };
    add(AssetKind::Material, data->materials, "", "Material", true);
    const std::size_t firstSkeleton = add(AssetKind::Skeleton, data->skeletons, "skel#", "Skeleton", false);
    add(AssetKind::Rig, data->rigs, "rig#", "Rig", false);
    const std::size_t firstMesh = add(AssetKind::Mesh, data->meshes, "mesh#", "Mesh", true);
    add(AssetKind::AnimationClip, data->clips, "", "Clip", true);
    scene.parts = registry_.RegisterSubAssets(record.path, parts);
    const auto idsFrom = [&](std::size_t first, std::size_t count)
    {
        const auto start = scene.parts.begin() + static_cast<std::ptrdiff_t>(first);
        return std::vector<AssetId>(start, start + static_cast<std::ptrdiff_t>(count));
    };
    const std::vector<AssetId> skeletons = idsFrom(firstSkeleton, data->skeletons.size());
    scene.meshes = idsFrom(firstMesh, data->meshes.size());
    for (std::size_t i = 0; i < scene.meshes.size(); ++i)
    {
        const ImportedMesh& entry = data->meshes[i];
        MeshAsset& mesh = meshes_[scene.meshes[i]] = entry.mesh;
        const auto skeleton = static_cast<std::size_t>(entry.skeleton);
        ListItself(mesh, scene.meshes[i]);
        mesh.skeleton = skeleton < skeletons.size() ? skeletons[skeleton] : 0;
        failedAssets_.erase(scene.meshes[i]);
    }
    for (const AssetId mesh : oldMeshes)
    {
        if (!registry_.FindRecord(mesh))
        {
            DropMesh(mesh);
        }
    }
    failedAssets_.erase(record.id);
    const std::string counts = std::to_string(data->nodes.size()) + " nodes, " +
                               std::to_string(data->meshes.size()) + " unique meshes, " +
                               std::to_string(data->skeletons.size()) + " skeletons, " +
                               std::to_string(data->clips.size()) + " clips, and " +
                               std::to_string(data->materials.size()) + " materials.";
    scene.data = std::move(data);
    sceneRecords_[record.id] = std::move(scene);
    LogScene(Core::LogLevel::Info, "Imported scene with " + counts);
}

} // namespace Vornu::Assets
