#pragma once

#include "engine/assets/formats/mesh/MeshAsset.h"
#include "engine/assets/identity/AssetKind.h"

#include <glm/mat4x4.hpp>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Vornu::Assets
{

inline constexpr std::int32_t kNoImportedIndex = -1;

struct ImportedNode
{
    std::string name;
    std::int32_t parent = kNoImportedIndex; // in the list of nodes
    std::int32_t mesh = kNoImportedIndex;   // in the list of meshes
    glm::mat4 transform{1.0f};              // relative to the parent
};

struct ImportedMesh
{
    std::string name;
    MeshAsset mesh; // its `skeleton` is set when the scene is committed
    std::int32_t skeleton = kNoImportedIndex;
};

/// A part that so far only has an identity.
struct ImportedPart
{
    std::string name;
};

/// What an importer gives for one model file, and what the manager keeps of it.
struct ImportedSceneData
{
    std::vector<ImportedNode> nodes;
    std::vector<ImportedMesh> meshes;
    std::vector<ImportedPart> materials;
    std::vector<ImportedPart> skeletons;
    std::vector<ImportedPart> rigs;
    std::vector<ImportedPart> clips;
};

/// Reads a model file. Throws when it can't. Called from any thread, and from several at once.
using ModelImporterFunction = std::function<ImportedSceneData(const std::filesystem::path&)>;

/// Sets the process's importer; an empty one takes it out. Safe from any thread.
void SetModelImporter(ModelImporterFunction importer);

/// The process's importer; null without one. Safe from any thread, and good after the next change.
std::shared_ptr<const ModelImporterFunction> ModelImporter();

/// Calls the importer. Throws what it throws, or `std::runtime_error` when there is none.
ImportedSceneData ImportModel(const std::filesystem::path& path);

/// The file that stands for the part `index` of a model: below the model's folder, or beside that if it is
/// named "Scene", a folder for the kind, and there `<index>_<clean name><extension>`. With `create` the
/// folder is made; throws `std::filesystem::filesystem_error` when it can't be. Empty for a kind that models
/// don't contain.
std::filesystem::path DerivedChildPath(const std::filesystem::path& source, AssetKind kind,
                                       std::string_view name, std::size_t index, bool create);

} // namespace Vornu::Assets
