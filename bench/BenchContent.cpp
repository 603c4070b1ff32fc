#include "bench/BenchContent.h"

#include "engine/core/Guid.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace Vornu::Bench
{
namespace
{

namespace fs = std::filesystem;

constexpr std::size_t kTextures = 160;
constexpr std::size_t kAssetsInFolder = 20;
const fs::path kExamples = VORNU_EXAMPLES "/Content";

/// Assets of one kind: `folder`_<n>/`name`_<i>`extension`, and `folder`_<n>/Lost_<i>`extension` for missing
/// ones.
struct Family
{
    std::string_view folder;
    std::string_view name;
    std::string_view extension;
    std::string_view importer;
    std::size_t count;
    std::string_view original; // in the example project

    std::string PathOf(std::string_view fileName, std::size_t index) const
    {
        std::string path(folder);
        path.append("_").append(std::to_string(index / kAssetsInFolder)).append("/").append(fileName);
        return path.append("_").append(std::to_string(index)).append(extension);
    }

    Core::Guid GuidOf(std::size_t index) const
    {
        std::mt19937_64 random(std::hash<std::string_view>()(folder) + index);
        return {random() | 1, random()};
    }
};

constexpr Family kMeshFamily = {"Models/Set", "Prop", ".vmesh", "native", kMeshes, "Models/lamp_post.vmesh"};
constexpr Family kMaterialFamily = {"Materials/Set", "Surface",  ".vmat",
                                    "native",        kMaterials, "Materials/stone.vmat"};
constexpr Family kTextureFamily = {"Textures/Set", "Albedo",  ".png",
                                   "texture",      kTextures, "Textures/cobble.png"};

std::string ReadText(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void Write(const fs::path& path, std::string_view text)
{
    if (!(std::ofstream(path, std::ios::binary) << text).flush())
    {
        throw std::runtime_error("can't write " + path.native());
    }
}

void MakeAssets(const fs::path& contentFolder, const Family& family)
{
    const std::string original = ReadText(kExamples / family.original);
    for (std::size_t i = 0; i < family.count; ++i)
    {
        const fs::path path = contentFolder / family.PathOf(family.name, i);
        fs::create_directories(path.parent_path());
        Write(path, original);
        Write(path.native() + ".vmeta", "vmeta 1\nguid " + family.GuidOf(i).ToString() + "\nimporter " +
                                            std::string(family.importer) + " 1\nsettings\nend\n");
    }
}

std::string LowerCase(std::string text)
{
    for (char& c : text)
    {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
    }
    return text;
}

Reference MakeReference(std::mt19937_64& random, References references, const Family& family)
{
    constexpr std::string_view kPrefix = "content:";
    constexpr std::size_t kLost = 40;
    constexpr std::size_t kLostInCrowd = 1000;
    const std::size_t lot = random() % 100;
    const std::size_t index = random();
    std::string legacy(kPrefix);
    if (references == References::Missing)
    {
        legacy.append("Unsorted/Lost_").append(std::to_string(index % kLostInCrowd));
        return {legacy.append(family.extension), ""};
    }
    if (lot < 5)
    {
        return {};
    }
    if (lot < 7)
    {
        return {legacy + family.PathOf("Lost", index % kLost), ""};
    }
    const std::size_t asset = index % family.count;
    const std::string path = family.PathOf(family.name, asset);
    return {legacy + (lot < 9 ? LowerCase(path) : path), "guid:" + family.GuidOf(asset).ToString()};
}

} // namespace

void MakeContent(const fs::path& contentFolder)
{
    fs::copy(kExamples, contentFolder, fs::copy_options::recursive);
    fs::remove_all(contentFolder / "Levels"); // scenes of their own come there
    fs::create_directory(contentFolder / "Levels");
    for (const Family& family : {kMeshFamily, kMaterialFamily, kTextureFamily})
    {
        MakeAssets(contentFolder, family);
    }
}

Reference MeshReference(std::mt19937_64& random, References references)
{
    return MakeReference(random, references, kMeshFamily);
}

Reference MaterialReference(std::mt19937_64& random, References references)
{
    return MakeReference(random, references, kMaterialFamily);
}

} // namespace Vornu::Bench
