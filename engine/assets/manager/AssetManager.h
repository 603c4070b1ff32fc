#pragma once

#include "engine/assets/formats/mesh/BuiltinMeshes.h"
#include "engine/assets/formats/mesh/MeshAsset.h"
#include "engine/assets/formats/texture/TextureAsset.h"
#include "engine/assets/identity/AssetId.h"
#include "engine/assets/loading/AssetLoader.h"
#include "engine/assets/manager/ModelImporter.h"
#include "engine/assets/registry/AssetRegistry.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Vornu::Assets
{

enum class PreloadState : std::uint32_t
{
    Idle = 0,
    Starting = 1,
    Running = 2,
    Done = 5,
};

/// Progress of a preload, for a host that shows it from another thread or stops it.
struct PreloadProgress
{
    std::atomic<PreloadState> state = PreloadState::Idle;
    std::atomic<std::uint32_t> total = 0; // known once the state is Running
    std::atomic<std::uint32_t> finished = 0;
    std::atomic<bool> cancel = false; // set by the host
};

/// The front of the assets of one content folder: the registry of what is there, and what of it is in memory.
/// Belongs to the thread that made it.
///
/// An asset that can't be loaded is logged and noted; only a folder that can't be mounted throws.
class AssetManager
{
public:
    AssetManager();
    ~AssetManager();
    AssetManager(const AssetManager&) = delete;
    AssetManager& operator=(const AssetManager&) = delete;

    /// Mounts a content folder, from empty tables. An authoring mount creates the folder and the generated
    /// folders; a read-only one wants it to exist. Throws `std::runtime_error` or
    /// `std::filesystem::filesystem_error`.
    void Initialize(const std::filesystem::path& path, AssetMountMode mode);

    /// Scans the folder again, drops what has gone from it, and lets failed loads be tried again. The parts
    /// of imported models go too, unless `rebuildImportedScenes` imports the loaded ones anew.
    void Refresh(bool rebuildImportedScenes);

    /// Loads the models of the project, so that references to what they contain resolve. `progress` may be
    /// null.
    void PreloadProjectAssets(PreloadProgress* progress);

    /// Kinds that this package doesn't carry; kept over a new mount.
    void SetStrippedKinds(std::vector<AssetKind> kinds);

    AssetRegistry& GetRegistry() noexcept { return registry_; }
    const AssetRegistry& GetRegistry() const noexcept { return registry_; }
    const std::filesystem::path& RootPath() const noexcept { return rootPath_; }
    AssetMountMode Mode() const noexcept { return mode_; }

    /// The scene of an imported model, loaded if it isn't yet. Null, with the reason logged, when it can't
    /// be; null for the record of anything else that wasn't imported.
    std::shared_ptr<const ImportedSceneData> LoadSceneAsset(AssetId id);
    /// Registers and imports a model or `.obj` file. 0, with the reason logged, when it can't.
    AssetId ImportSceneFile(const std::filesystem::path& path);
    /// Imports models and `.obj` files again; what can't be imported keeps its old scene. False if no path is
    /// that of such a file in the registry.
    bool RebuildImportedSceneAssets(const std::vector<std::filesystem::path>& paths);

    /// Makes an asset resident, waiting for its load; false when it can't be, and for an id that isn't of the
    /// kind. What failed isn't tried again before `Refresh` or `ReloadAsset`.
    bool EnsureMeshLoaded(AssetId id);
    bool EnsureTextureLoaded(AssetId id);
    /// Starts a load that `UpdateAsyncLoads` finishes, as long as the handle lives. Empty for an id that
    /// isn't of the kind.
    [[nodiscard]] AssetLoadHandle RequestMeshLoad(AssetId id);
    [[nodiscard]] AssetLoadHandle RequestTextureLoad(AssetId id);
    /// Starts to load a mesh or texture again; what is resident stays until the new data is there. Imports a
    /// model again. False for an id that isn't known or of which nothing is ever loaded.
    bool ReloadAsset(AssetId id);
    /// Moves the loads on, once per frame. Gives the number of jobs in flight.
    std::uint32_t UpdateAsyncLoads();

    /// What is resident, a built-in mesh from its first load on; null otherwise. Good until the tables
    /// change.
    const MeshAsset* FindMesh(AssetId id) const noexcept;
    const TextureAsset* FindTexture(AssetId id) const noexcept;
    /// Rises whenever a resident mesh or texture is dropped.
    std::uint64_t TableGeneration() const noexcept { return tableGeneration_; }
    /// Of the last failed load; empty without one.
    std::string FailureText(AssetId id) const;

    /// The built-in material of renderers that name none.
    AssetId DefaultMaterial() const noexcept { return defaultMaterial_; }

    /// Notes that a built-in stands in for something. A text is logged the first time.
    void ReportFallback(const std::string& text);
    std::uint64_t FallbackCount() const noexcept { return fallbackCount_; }

    /// Writes a new `.vmesh` file and registers it. 0, with the reason logged, when it can't be written, when
    /// the file is there already or when the mesh points out of itself.
    /// Throws `std::runtime_error` on a read-only mount.
    AssetId CreateMeshAsset(const std::filesystem::path& path, const MeshAsset& mesh);

    // What follows throws `std::runtime_error` on a read-only mount, and `std::logic_error` on an authoring
    // one: this program has none of the formats.
    AssetId CreateAnimatorControllerAsset(const std::filesystem::path& path);
    AssetId CreateMaterialAsset(const std::filesystem::path& path);
    AssetId CreateRigDefinitionAsset(const std::filesystem::path& path);
    AssetId CreateUiDocumentAsset(const std::filesystem::path& path);
    void SaveAnimationClipAsset(AssetId id);
    void SaveAnimatorControllerAsset(AssetId id);
    void SaveMaterialAsset(AssetId id);
    void SaveRigDefinitionAsset(AssetId id);
    void SaveUiDocumentAsset(AssetId id);
    void SaveImportedMaterialOverride(AssetId id);
    void BeginTextureSetImportForImportedModel(AssetId id);
    void ImportTextureSetForImportedModel(AssetId id);
    void StepTextureSetImport();
    void ImportAnimationClipsForSkeleton(AssetId id);
    void CommitAnimationClipsForSkeleton(AssetId id);

private:
    struct LoadedScene
    {
        std::shared_ptr<const ImportedSceneData> data;
        std::vector<AssetId> parts;
        std::vector<AssetId> meshes; // of the parts
    };

    void RegisterBuiltins();
    void PruneTables();
    void DropMesh(AssetId id);
    AssetLoadRecipe PrepareMeshLoad(AssetId id);
    AssetLoadRecipe PrepareTextureLoad(AssetId id);
    bool EnsureLoaded(AssetId id, AssetKind kind);
    AssetLoadHandle RequestLoad(AssetId id, AssetKind kind);
    std::string PackagedSourceFault(const std::filesystem::path& path, const char* missing) const;
    static void ListItself(MeshAsset& mesh, AssetId id);
    bool IsRecordOfKind(AssetId id, AssetKind kind) const;
    bool ImportScene(const AssetRecord& record);
    void FinalizeSceneCommit(const AssetRecord& record, std::shared_ptr<const ImportedSceneData> data);
    void RequireAuthoring(std::string_view operation) const;
    [[noreturn]] void RefuseWithoutFormat(std::string_view operation) const;
    void NoteFailure(AssetId id, const std::string& message, const std::string& cause);

    AssetRegistry registry_;
    AssetMountMode mode_ = AssetMountMode::Authoring;
    std::filesystem::path rootPath_;
    std::vector<AssetKind> strippedKinds_;
    const std::thread::id ownerThread_;

    std::unordered_map<AssetId, MeshAsset> meshes_;
    std::unordered_map<AssetId, TextureAsset> textures_;
    std::unordered_map<AssetId, LoadedScene> sceneRecords_;
    std::unordered_map<AssetId, const BuiltinMesh*> builtinMeshes_; // made when they are first asked for
    std::unordered_map<AssetId, std::string> failedAssets_;         // with the last error
    /// The file and the system's error behind failures that say nothing of the asset.
    std::unordered_map<AssetId, std::pair<std::filesystem::path, int>> systemErrors_;
    std::set<std::string, std::less<>> fallbackTexts_;
    std::uint64_t fallbackCount_ = 0;
    std::uint64_t tableGeneration_ = 0;
    AssetId defaultMaterial_ = 0;
    std::vector<AssetLoadHandle> reloads_; // still under way
    AssetLoader loader_;                   // its jobs fill the tables, which outlive them
};

} // namespace Vornu::Assets
