#include "engine/assets/AssetReference.h"
#include "engine/assets/AssetSidecar.h"
#include "engine/assets/CookedManifest.h"
#include "fuzz/FuzzFiles.h"

#include <string_view>

/// The text files of the asset layer, and the references that any text may hold. A manifest that reads is
/// written and read again as the same bytes; a sidecar that is written comes back alike.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Vornu;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    static const std::filesystem::path path = Fuzz::ScratchFile("asset-text");

    if (const auto sidecar = Assets::ParseSidecar(text); sidecar && Assets::WriteSidecar(path, *sidecar))
    {
        const auto again = Assets::ReadSidecar(path);
        Fuzz::Require(again.has_value(), "a written sidecar doesn't read");
        Fuzz::Require(Assets::SerializeSidecar(*again) == Assets::SerializeSidecar(*sidecar),
                      "a sidecar changed over a write and a read");
    }

    Fuzz::WriteBytes(path, data, size);
    Assets::CookedManifest manifest;
    if (Assets::ReadCookedManifest(path, manifest, nullptr))
    {
        Fuzz::Require(Assets::WriteCookedManifest(path, manifest, nullptr), "a manifest doesn't write");
        const std::string first = Fuzz::ReadBytes(path);
        Fuzz::Require(Assets::ReadCookedManifest(path, manifest, nullptr), "a written manifest doesn't read");
        Fuzz::Require(Assets::WriteCookedManifest(path, manifest, nullptr), "a manifest doesn't write again");
        Fuzz::Require(Fuzz::ReadBytes(path) == first, "a manifest changed over a write and a read");
    }

    const Assets::AssetRegistry& registry = Fuzz::SharedAssets().GetRegistry();
    for (const std::string& reference : Assets::ScanAssetReferences(text))
    {
        Assets::ResolveAssetReference(registry, reference);
    }
    Assets::ResolveAssetReference(registry, text);
    return 0;
}
