// How an asset manager loads meshes and textures.

#include "engine/assets/cooked/CookedContainer.h"
#include "engine/assets/formats/mesh/NativeMesh.h"
#include "engine/assets/formats/texture/ImageDecoder.h"
#include "engine/assets/manager/AssetManager.h"
#include "engine/core/files/Paths.h"
#include "engine/core/files/ReadFaults.h"
#include "engine/core/logging/Logger.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

namespace Vornu::Assets
{
namespace
{

/// Of a native mesh; more is no mesh that anything could draw.
constexpr std::uint64_t kMaxMeshSize = std::uint64_t{2} * 1024 * 1024 * 1024;

AssetBytes ReadMeshFile(const std::filesystem::path& path)
{
    std::string error;
    std::optional<AssetBytes> bytes = ReadWholeFile(path, &error, kMaxMeshSize);
    if (!bytes)
    {
        throw std::runtime_error(error);
    }
    return std::move(*bytes);
}

std::uint64_t SizeOf(const MeshAsset& mesh)
{
    return mesh.vertices.size() * sizeof(MeshVertex) + mesh.indices.size() * sizeof(std::uint32_t);
}

AssetLoadPayload MeshPayload(MeshAsset mesh)
{
    const std::uint64_t size = SizeOf(mesh);
    return {std::make_shared<MeshAsset>(std::move(mesh)), size};
}

using SystemError = std::shared_ptr<std::atomic<int>>;

/// Runs a stage of a load of `path`. One that fails because the system didn't give what it needed, memory
/// included, leaves the error in `error`.
template<class Stage>
auto RunStage(const std::filesystem::path& path, const SystemError& error, Stage stage)
{
    const Platform::ReadFaultWatch faults("/");
    try
    {
        return stage();
    }
    catch (const std::bad_alloc&)
    {
        *error = ENOMEM;
        throw std::runtime_error("Out of memory for " + path.native());
    }
    catch (...)
    {
        *error = faults.FirstError();
        throw;
    }
}

AssetLoadPayload DecodeMesh(const std::filesystem::path& path, const AssetBytes& bytes)
{
    MeshAsset mesh;
    std::string error;
    if (!ParseNativeMesh(bytes, path.native(), mesh, error))
    {
        throw std::runtime_error(error);
    }
    return MeshPayload(std::move(mesh));
}

AssetLoadPayload DecodeTexture(const std::filesystem::path& path)
{
    ImportedTexture image = DecodeImage(path);
    const std::uint64_t pixelSize = image.isFloat ? 4 * sizeof(float) : 4;
    const std::uint64_t pixels = std::uint64_t{image.width} * image.height;
    if (pixels == 0 || image.pixels.size() % pixelSize != 0 || image.pixels.size() / pixelSize != pixels)
    {
        throw std::runtime_error("The decoder's image doesn't have its size: " + path.native());
    }
    auto texture = std::make_shared<TextureAsset>();
    texture->width = image.width;
    texture->height = image.height;
    texture->format = image.isFloat ? TextureFormat::Rgba32Float : TextureFormat::Rgba8;
    texture->pixels = std::move(image.pixels);
    const std::uint64_t size = texture->pixels.size();
    return {std::move(texture), size};
}

/// The mesh of a lone file, such as an `.obj`: the first that the importer finds.
AssetLoadPayload ImportMesh(const std::filesystem::path& path)
{
    ImportedSceneData scene = ImportModel(path);
    if (scene.meshes.empty())
    {
        throw std::runtime_error("The file holds no mesh: " + path.native());
    }
    return MeshPayload(std::move(scene.meshes.front().mesh));
}

/// By where the path leads, however it is spelled.
bool IsInside(const std::filesystem::path& root, const std::filesystem::path& path)
{
    const std::optional<std::filesystem::path> relative = Platform::RelativeToRoot(root, path);
    return relative && *relative != ".";
}

} // namespace

bool AssetManager::IsRecordOfKind(AssetId id, AssetKind kind) const
{
    const auto record = registry_.FindRecord(id);
    return record && record->kind == kind;
}

bool AssetManager::EnsureLoaded(AssetId id, AssetKind kind)
{
    if (!IsRecordOfKind(id, kind))
    {
        return false;
    }
    const AssetLoadHandle handle = loader_.Submit(id, kind, kBlockingLoadPriority);
    loader_.Pin(id);
    const bool isReady = IsTerminal(AssetLoader::State(handle))
                             ? AssetLoader::State(handle) == AssetLoadState::Ready
                             : loader_.Wait(handle);
    if (const auto fault = systemErrors_.find(id); !isReady && fault != systemErrors_.end())
    {
        // It isn't tried again, but everybody who goes on without it has to know why.
        Platform::NoteReadFault(fault->second.first, fault->second.second);
    }
    return isReady;
}

bool AssetManager::EnsureMeshLoaded(AssetId id)
{
    return meshes_.contains(id) || EnsureLoaded(id, AssetKind::Mesh);
}

bool AssetManager::EnsureTextureLoaded(AssetId id)
{
    return textures_.contains(id) || EnsureLoaded(id, AssetKind::Texture);
}

AssetLoadHandle AssetManager::RequestLoad(AssetId id, AssetKind kind)
{
    return IsRecordOfKind(id, kind) ? loader_.Submit(id, kind, kNormalLoadPriority) : AssetLoadHandle{};
}

AssetLoadHandle AssetManager::RequestMeshLoad(AssetId id)
{
    return RequestLoad(id, AssetKind::Mesh);
}

AssetLoadHandle AssetManager::RequestTextureLoad(AssetId id)
{
    return RequestLoad(id, AssetKind::Texture);
}

bool AssetManager::ReloadAsset(AssetId id)
{
    const auto record = registry_.FindRecord(id);
    if (!record)
    {
        return false;
    }
    if (record->isBuiltin)
    {
        return true; // nothing can have changed
    }
    if (record->kind == AssetKind::Scene || record->isSubAsset)
    {
        return RebuildImportedSceneAssets({record->path});
    }
    if (record->kind != AssetKind::Mesh && record->kind != AssetKind::Texture)
    {
        return false;
    }
    if (mode_ == AssetMountMode::Authoring)
    {
        failedAssets_.erase(id);
    }
    loader_.Reload(id);
    reloads_.push_back(loader_.Submit(id, record->kind, kReloadPriority));
    return true;
}

/// Why a package can't hold a file; empty if it does.
std::string AssetManager::PackagedSourceFault(const std::filesystem::path& path, const char* missing) const
{
    if (mode_ != AssetMountMode::ReadOnly)
    {
        return {};
    }
    if (!IsInside(rootPath_, path))
    {
        return "Read-only assets require a packaged source inside content: " + path.native();
    }
    std::error_code error;
    if (missing != nullptr && !std::filesystem::exists(path, error))
    {
        return missing + path.native();
    }
    return {};
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
    const auto publish = [this, id](AssetLoadPayload& payload) -> MeshAsset&
    {
        if (!IsRecordOfKind(id, AssetKind::Mesh))
        {
            throw std::runtime_error("Unknown mesh asset " + std::to_string(id));
        }
        failedAssets_.erase(id);
        systemErrors_.erase(id);
        return meshes_[id] = std::move(*static_cast<MeshAsset*>(payload.value.get()));
    };
    if (const auto builtin = builtinMeshes_.find(id); builtin != builtinMeshes_.end())
    {
        recipe.decode = [make = builtin->second->make](AssetBytes) { return MeshPayload(make()); };
        recipe.publish = [id, publish](AssetLoadPayload& payload) { ListItself(publish(payload), id); };
        return recipe;
    }
    if (record->isSubAsset)
    {
        recipe.publish = [this, id, path = record->path](AssetLoadPayload&)
        {
            RebuildImportedSceneAssets({path});
            if (!meshes_.contains(id))
            {
                throw std::runtime_error("The model doesn't give the mesh: " + path.native());
            }
        };
        recipe.fail = [this, id](const std::string& cause) { NoteFailure(id, cause, cause); };
        return recipe;
    }
    const auto logged = [publish](std::string message)
    {
        return [publish, message = std::move(message)](AssetLoadPayload& payload)
        {
            publish(payload);
            Core::Log(Core::LogCategory::Assets, Core::LogLevel::Info, message);
        };
    };
    recipe.error = PackagedSourceFault(record->dataPath, nullptr);
    const std::filesystem::path& path = record->dataPath;
    const auto systemError = std::make_shared<std::atomic<int>>(0);
    const auto failed = [this, id, path, systemError](const std::string& message, const std::string& cause)
    {
        if (*systemError != 0)
        {
            systemErrors_[id] = {path, *systemError};
        }
        NoteFailure(id, message, cause);
    };
    if (LowerExtension(path) == ".vmesh")
    {
        recipe.read = [path, systemError]
        { return RunStage(path, systemError, [&] { return ReadMeshFile(path); }); };
        recipe.decode = [path, systemError](const AssetBytes& bytes)
        { return RunStage(path, systemError, [&] { return DecodeMesh(path, bytes); }); };
        recipe.publish = logged("Loaded native mesh asset: " + path.native());
        recipe.fail = [failed, message = "Failed to load native mesh asset: " +
                                         path.native()](const std::string& cause) { failed(message, cause); };
        return recipe;
    }
    recipe.decode = [path, systemError](const AssetBytes&)
    { return RunStage(path, systemError, [&] { return ImportMesh(path); }); };
    recipe.publish = [id, publish = logged("Imported mesh asset: " + record->name)](AssetLoadPayload& payload)
    {
        ListItself(*static_cast<MeshAsset*>(payload.value.get()), id);
        publish(payload);
    };
    recipe.fail = [failed](const std::string& cause) { failed(cause, cause); };
    return recipe;
}

AssetLoadRecipe AssetManager::PrepareTextureLoad(AssetId id)
{
    AssetLoadRecipe recipe;
    const std::shared_ptr<const AssetRecord> record = registry_.FindRecord(id);
    if (!record || record->kind != AssetKind::Texture)
    {
        recipe.error = "Unknown texture asset " + std::to_string(id);
        return recipe;
    }
    recipe.error = PackagedSourceFault(record->dataPath, "Missing packaged texture: ");
    // Decoders open the file themselves, so there is nothing to read ahead.
    recipe.decode = [path = record->dataPath](const AssetBytes&) { return DecodeTexture(path); };
    recipe.publish = [this, id](AssetLoadPayload& payload)
    {
        if (!IsRecordOfKind(id, AssetKind::Texture))
        {
            throw std::runtime_error("Unknown texture asset " + std::to_string(id));
        }
        failedAssets_.erase(id);
        textures_[id] = std::move(*static_cast<TextureAsset*>(payload.value.get()));
    };
    recipe.fail = [this, id, message = "Failed to load texture asset: " + record->name](
                      const std::string& cause) { NoteFailure(id, message, cause); };
    return recipe;
}

} // namespace Vornu::Assets
