#pragma once

#include <cstddef>
#include <filesystem>
#include <random>
#include <string>

/// A content folder to measure with, and the references of scenes into it.
namespace Vornu::Bench
{

/// How many assets the references of a scene name.
inline constexpr std::size_t kMeshes = 240;
inline constexpr std::size_t kMaterials = 240;

/// Writes meshes, materials and textures, twenty a folder, each with its sidecar, beside the assets of the
/// example project.
void MakeContent(const std::filesystem::path& contentFolder);

/// Which assets a scene names.
enum class References
{
    Usual,   // of a hundred two are missing, two are written in another case, and five are empty
    Missing, // one of a thousand missing files in the folder Unsorted each, which may be crowded
};

/// One reference as positional records have it and as current ones do. The second is empty for a missing
/// asset.
struct Reference
{
    std::string legacy;
    std::string current;
};

Reference MeshReference(std::mt19937_64& random, References references);
Reference MaterialReference(std::mt19937_64& random, References references);

} // namespace Vornu::Bench
