#include "engine/assets/registry/AssetReference.h"
#include "engine/core/Hash.h"
#include "fuzz/FuzzFiles.h"

#include <algorithm>
#include <iterator>

namespace
{

using namespace Vornu;
using Assets::AssetRegistry;

/// A folder with names that differ in case and encoding, and parts of a model.
AssetRegistry& Registry()
{
    static AssetRegistry registry;
    [[maybe_unused]] static const bool mounted = []
    {
        const std::filesystem::path root = Fuzz::ScratchFile("Content");
        std::filesystem::create_directories(root / "Sub");
        for (const char* const name : {"Sub/Hero.fbx", "Caf\u00e9.png", "case.vmat", "Case.vmat", "a.vmesh"})
        {
            Fuzz::WriteBytes(root / name, {});
        }
        registry.Mount(root, Assets::AssetMountMode::ReadOnly);
        registry.RegisterBuiltin(Assets::AssetKind::Mesh, "Builtin/Cube");
        registry.RegisterSubAsset(Assets::AssetKind::Mesh, root / "Sub/Hero.fbx",
                                  root / "Cache/12_Body.vmesh", "Body", "Body");
        return true;
    }();
    return registry;
}

/// What a text names is named alike by the text that files get for it.
void CheckReference(std::string_view text)
{
    const AssetRegistry& registry = Registry();
    if (const Assets::AssetId id = Assets::ResolveAssetReference(registry, text))
    {
        const std::string canonical = Assets::FormatAssetReference(registry, id);
        Fuzz::Require(Assets::ResolveAssetReference(registry, canonical) == id,
                      "an asset isn't found by " + canonical);
    }
    const std::filesystem::path path = Assets::ResolveReferencePath(registry, text);
    if (!path.empty())
    {
        const std::string canonical = Assets::FormatPathReference(registry, path);
        Fuzz::Require(Assets::ResolveReferencePath(registry, canonical) == path,
                      path.native() + " isn't found by " + canonical);
    }
    const Assets::AssetId old = Assets::ResolveLegacyAssetId(registry, Core::Fnv1a(text));
    Fuzz::Require(old == 0 || registry.FindRecord(old) != nullptr, "an old number names nothing");
}

/// Looks at every position for every prefix.
std::vector<std::string> ScanPlainly(std::string_view text)
{
    std::vector<std::string> found;
    for (std::size_t at = 0; at < text.size(); ++at)
    {
        const std::string_view rest = text.substr(at);
        std::size_t end = 0;
        if (rest.starts_with("guid:"))
        {
            end = std::min<std::size_t>(rest.size(), 5 + 36);
        }
        else if (rest.starts_with("content:") || rest.starts_with("derived:"))
        {
            end = static_cast<std::size_t>(
                std::find_if(rest.begin(), rest.end(),
                             [](char c) { return c == '\0' || c == '\n' || c == '\r' || c == '"'; }) -
                rest.begin());
        }
        if (end != 0)
        {
            found.emplace_back(rest.substr(0, end));
            at += end - 1;
        }
    }
    return found;
}

} // namespace

/// The input is a reference and a text with references.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = Fuzz::AsText(data, size);
    const std::vector<std::string> found = Assets::ScanAssetReferences(text);
    Fuzz::Require(found == ScanPlainly(text), "other references are found");
    CheckReference(text);
    for (const std::string& reference : found)
    {
        CheckReference(reference);
    }
    return 0;
}
