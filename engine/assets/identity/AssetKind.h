#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace Vornu::Reflection
{
class ReflectionRegistry;
}

namespace Vornu::Assets
{

/// What an asset is. The numbers are the native ids of the reflected asset types and stand in files.
enum class AssetKind : std::uint32_t
{
    Unknown = 0,
    Mesh = 1,
    Scene = 2, // scenes and imported models
    Material = 3,
    Texture = 4,
    AudioClip = 5,
    UiDocument = 6,
    Skeleton = 7,
    Rig = 8,
    AnimationClip = 9,
    AnimatorController = 10,
    Prefab = 11,
    NavMesh = 12,
    BehaviorTree = 13,
    ImageDocument = 14,
    ProceduralTexture = 15,
    VectorField = 16,
    VfxEffect = 17,
    RigDefinition = 18,
    InputMap = 19,
    World = 20,
};

/// The kinds that a package may do without: their sources are cooked away, or nothing needs them to play.
inline constexpr AssetKind kStrippedKinds[] = {
    AssetKind::Material,      AssetKind::Texture,           AssetKind::AudioClip,   AssetKind::UiDocument,
    AssetKind::ImageDocument, AssetKind::ProceduralTexture, AssetKind::VectorField, AssetKind::VfxEffect,
};

/// The extension with its dot and its letters A to Z in lower case.
std::string LowerExtension(const std::filesystem::path& path);
std::string LowerExtensionOfName(std::string_view fileName);

/// The kind of a file by its extension, letters of either case; Unknown for what is no asset.
AssetKind KindFromExtension(const std::filesystem::path& path);
AssetKind KindFromName(std::string_view fileName);

/// The word of a kind in sidecar files; "unknown" for any other number.
std::string_view KindWord(AssetKind kind) noexcept;
AssetKind KindFromWord(std::string_view word) noexcept;

/// Registers the kinds that a component property may hold.
void RegisterAssetTypes(Reflection::ReflectionRegistry& registry);

} // namespace Vornu::Assets
