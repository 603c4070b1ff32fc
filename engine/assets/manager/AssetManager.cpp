#include "engine/assets/manager/AssetManager.h"

#include "engine/core/Profile.h"
#include "engine/core/files/Folders.h"
#include "engine/core/logging/Logger.h"
#include "engine/core/system/System.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace Vornu::Assets
{
namespace
{

struct BuiltinTexture
{
    const char* name;
    std::array<unsigned char, 4> color; // RGBA
};

constexpr BuiltinTexture kBuiltinTextures[] = {
    {"White", {255, 255, 255, 255}},
    {"Black", {0, 0, 0, 255}},
    {"Builtin/FlatNormal", {128, 128, 255, 255}},
};

TextureAsset MakePixel(const std::array<unsigned char, 4>& color)
{
    TextureAsset texture{1, 1, TextureFormat::Rgba8, {}};
    for (const unsigned char channel : color)
    {
        texture.pixels.push_back(std::byte{channel});
    }
    return texture;
}

/// Creates the folders that the engine writes to beside the content; a mount needs none of them.
void MakeEngineFolders(AssetMountMode mode)
{
    std::string faults;
    const auto attempt = [&faults](void (*make)())
    {
        try
        {
            make();
        }
        catch (const std::filesystem::filesystem_error& error)
        {
            faults += (faults.empty() ? "" : "; ") + std::string(error.what());
        }
    };
    if (mode == AssetMountMode::Authoring)
    {
        attempt([] { Platform::CreateDirectories(Core::ExportsFolder()); });
    }
    attempt(
        []
        {
            Core::MakeUserSettingsFolder();
            Platform::CreateDirectories(Core::GeneratedShadersFolder());
        });
    if (!faults.empty())
    {
        Core::Log(Core::LogCategory::Assets, Core::LogLevel::Warning,
                  "Engine folders could not be made: " + faults);
    }
}

} // namespace

AssetManager::AssetManager() : ownerThread_(std::this_thread::get_id())
{
    AssetLoadHandler textures;
    textures.isResident = [this](AssetId id) { return textures_.contains(id); };
    textures.prepare = [this](AssetId id) { return PrepareTextureLoad(id); };
    textures.unload = [this](AssetId id) { tableGeneration_ += textures_.erase(id); };
    loader_.RegisterHandler(AssetKind::Texture, std::move(textures));

    AssetLoadHandler meshes;
    meshes.isResident = [this](AssetId id) { return meshes_.contains(id); };
    meshes.prepare = [this](AssetId id) { return PrepareMeshLoad(id); };
    meshes.unload = [this](AssetId id) { tableGeneration_ += meshes_.erase(id); };
    loader_.RegisterHandler(AssetKind::Mesh, std::move(meshes));
}

AssetManager::~AssetManager()
{
    loader_.Reset();
}

void AssetManager::Initialize(const std::filesystem::path& path, AssetMountMode mode)
{
    const Core::ProfileScope profile("Assets", "AssetManager::Initialize");
    std::error_code error;
    if (mode == AssetMountMode::ReadOnly && !std::filesystem::is_directory(path, error))
    {
        throw std::runtime_error("Read-only asset content directory is missing: " + path.native());
    }
    mode_ = mode;
    loader_.Reset();
    meshes_.clear();
    textures_.clear();
    sceneRecords_.clear();
    builtinMeshes_.clear();
    failedAssets_.clear();
    systemErrors_.clear();
    fallbackTexts_.clear();
    fallbackCount_ = 0;
    reloads_.clear();
    rootPath_.clear();
    defaultMaterial_ = 0;
    ++tableGeneration_;
    registry_.Clear();
    if (mode == AssetMountMode::Authoring)
    {
        Platform::CreateDirectories(path);
    }
    MakeEngineFolders(mode);
    rootPath_ = Platform::WeaklyCanonical(path);
    registry_.Mount(rootPath_, mode);
    registry_.SetStrippedKinds(strippedKinds_);
    RegisterBuiltins();
    PruneTables();
    Core::Log(Core::LogCategory::Assets, Core::LogLevel::Info,
              "Asset manager initialized: " + rootPath_.native());
}

void AssetManager::RegisterBuiltins()
{
    for (const BuiltinMesh& mesh : BuiltinMeshes())
    {
        builtinMeshes_[registry_.RegisterBuiltin(AssetKind::Mesh, std::string(mesh.name))] = &mesh;
    }
    for (const BuiltinTexture& texture : kBuiltinTextures)
    {
        textures_[registry_.RegisterBuiltin(AssetKind::Texture, texture.name)] = MakePixel(texture.color);
    }
    defaultMaterial_ = registry_.RegisterBuiltin(AssetKind::Material, "Builtin/DefaultMaterial");
}

void AssetManager::Refresh(bool rebuildImportedScenes)
{
    const Core::ProfileScope profile("Assets", "AssetManager::Refresh");
    std::vector<std::filesystem::path> loadedScenes;
    for (const AssetKind kind : {AssetKind::Scene, AssetKind::Mesh}) // an `.obj` file is a mesh
    {
        for (const auto& record : registry_.ListRecordsOfKind(kind))
        {
            if (!record->path.empty() && sceneRecords_.contains(record->id))
            {
                loadedScenes.push_back(record->path);
            }
        }
    }
    registry_.Refresh();
    systemErrors_.clear();
    if (mode_ == AssetMountMode::Authoring)
    {
        failedAssets_.clear(); // the files may be mended; those of a package don't change
    }
    if (rebuildImportedScenes)
    {
        RebuildImportedSceneAssets(loadedScenes);
    }
    PruneTables();
    loader_.UnloadFailed();
}

void AssetManager::PruneTables()
{
    const auto prune = [this](auto& table, const auto& drop)
    {
        std::vector<AssetId> gone;
        for (const auto& [id, value] : table)
        {
            if (!registry_.FindRecord(id))
            {
                gone.push_back(id);
            }
        }
        std::for_each(gone.begin(), gone.end(), drop);
    };
    prune(meshes_, [this](AssetId id) { DropMesh(id); });
    prune(textures_,
          [this](AssetId id)
          {
              loader_.Drop(id);
              tableGeneration_ += textures_.erase(id);
          });
    prune(sceneRecords_, [this](AssetId id) { sceneRecords_.erase(id); });
    prune(failedAssets_, [this](AssetId id) { failedAssets_.erase(id); });
}

void AssetManager::DropMesh(AssetId id)
{
    loader_.Drop(id); // knows nothing of a mesh that came with its scene
    tableGeneration_ += meshes_.erase(id);
}

void AssetManager::SetStrippedKinds(std::vector<AssetKind> kinds)
{
    strippedKinds_ = std::move(kinds);
    registry_.SetStrippedKinds(strippedKinds_);
}

std::uint32_t AssetManager::UpdateAsyncLoads()
{
    assert(std::this_thread::get_id() == ownerThread_);
    loader_.Update();
    std::erase_if(reloads_,
                  [](const AssetLoadHandle& handle) { return IsTerminal(AssetLoader::State(handle)); });
    return loader_.Stats().jobsInFlight;
}

const MeshAsset* AssetManager::FindMesh(AssetId id) const noexcept
{
    const auto found = meshes_.find(id);
    return found == meshes_.end() ? nullptr : &found->second;
}

const TextureAsset* AssetManager::FindTexture(AssetId id) const noexcept
{
    const auto found = textures_.find(id);
    return found == textures_.end() ? nullptr : &found->second;
}

std::string AssetManager::FailureText(AssetId id) const
{
    const auto found = failedAssets_.find(id);
    return found == failedAssets_.end() ? std::string() : found->second;
}

void AssetManager::ReportFallback(const std::string& text)
{
    ++fallbackCount_;
    if (fallbackTexts_.insert(text).second)
    {
        Core::Log(Core::LogCategory::Assets, Core::LogLevel::Error, text + " Using a built-in fallback.");
    }
}

void AssetManager::NoteFailure(AssetId id, const std::string& message, const std::string& cause)
{
    const auto [noted, isNew] = failedAssets_.try_emplace(id, cause);
    if (!isNew && noted->second == cause)
    {
        return;
    }
    noted->second = cause;
    Core::Log(Core::LogCategory::Assets, Core::LogLevel::Error, message);
    if (message.find(cause) == std::string::npos)
    {
        Core::Log(Core::LogCategory::Assets, Core::LogLevel::Error, cause);
    }
}

} // namespace Vornu::Assets
