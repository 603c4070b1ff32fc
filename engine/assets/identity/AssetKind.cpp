#include "engine/assets/identity/AssetKind.h"

#include "engine/reflection/ReflectionRegistry.h"

#include <array>

namespace Vornu::Assets
{
namespace
{

struct KindRow
{
    std::string_view schemaName; // empty where no property can hold the kind
    std::string_view word;
    std::string_view extensions; // each followed by a blank
};

constexpr std::array<KindRow, 21> kKinds = {{
    {"", "unknown", ""},
    {"Mesh", "mesh", ".obj .vmesh "},
    {"Scene", "scene", ".fbx .gltf .glb .vscene "},
    {"Material", "material", ".vmat .vmatpp .vmatinst .vmatfunc "},
    {"Texture", "texture", ".png .jpg .jpeg .tga .bmp .hdr .exr "},
    {"AudioClip", "audio", ".wav .mp3 .m4a .aac .wma .flac "},
    {"UiDocument", "ui", ".vui "},
    {"Skeleton", "skeleton", ".vskel "},
    {"Rig", "rig", ".vrig "},
    {"AnimationClip", "clip", ".vclip "},
    {"AnimatorController", "controller", ".vcontroller "},
    {"Prefab", "prefab", ".vprefab "},
    {"VornuNavMesh", "navmesh", ".vnav "},
    {"BehaviorTree", "behaviortree", ".vbtree "},
    {"", "image", ".vimg "},
    {"", "procedural", ".vproc "},
    {"VectorField", "vectorfield", ".vvfield "},
    {"VfxEffect", "vfx", ".vvfx "},
    {"RigDefinition", "rigdefinition", ".vrigdef "},
    {"", "inputmap", ".vinput "},
    {"World", "world", ".vworld "},
}};

} // namespace

std::string LowerExtension(const std::filesystem::path& path)
{
    const std::string_view text = path.native();
    return LowerExtensionOfName(text.substr(text.rfind('/') + 1));
}

std::string LowerExtensionOfName(std::string_view fileName)
{
    // What a path calls an extension: a leading dot starts none, nor do the names of folders.
    const std::size_t dot = fileName.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || fileName == "..")
    {
        return {};
    }
    std::string extension(fileName.substr(dot));
    for (char& c : extension)
    {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return extension;
}

AssetKind KindFromExtension(const std::filesystem::path& path)
{
    const std::string_view text = path.native();
    return KindFromName(text.substr(text.rfind('/') + 1));
}

AssetKind KindFromName(std::string_view fileName)
{
    std::string extension = LowerExtensionOfName(fileName);
    if (extension.size() < 2 || extension.find(' ') != std::string::npos)
    {
        return AssetKind::Unknown;
    }
    extension.push_back(' ');
    for (std::size_t kind = 0; kind < kKinds.size(); ++kind)
    {
        if (kKinds[kind].extensions.find(extension) != std::string_view::npos)
        {
            return static_cast<AssetKind>(kind);
        }
    }
    return AssetKind::Unknown;
}

std::string_view KindWord(AssetKind kind) noexcept
{
    const auto index = static_cast<std::size_t>(kind);
    return kKinds[index < kKinds.size() ? index : 0].word;
}

AssetKind KindFromWord(std::string_view word) noexcept
{
    for (std::size_t kind = 0; kind < kKinds.size(); ++kind)
    {
        if (kKinds[kind].word == word)
        {
            return static_cast<AssetKind>(kind);
        }
    }
    return AssetKind::Unknown;
}

void RegisterAssetTypes(Reflection::ReflectionRegistry& registry)
{
    for (std::size_t kind = 0; kind < kKinds.size(); ++kind)
    {
        if (!kKinds[kind].schemaName.empty())
        {
            registry.AddAssetType(std::string(kKinds[kind].schemaName), static_cast<std::uint32_t>(kind));
        }
    }
}

} // namespace Vornu::Assets
