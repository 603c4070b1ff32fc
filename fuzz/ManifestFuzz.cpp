#include "engine/assets/cooked/CookedManifest.h"
#include "fuzz/FuzzFiles.h"

namespace
{

using namespace Vornu;

/// These lines are read in any version, and written from version 3.
void DropNewerParts(Assets::CookedManifest& manifest)
{
    if (manifest.version < 3)
    {
        manifest.cookerVersion = 0;
        for (Assets::CookedManifestAsset& asset : manifest.assets)
        {
            asset.dependencies.clear();
        }
    }
}

} // namespace

/// A manifest that reads comes back from a write as it was.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::filesystem::path path = Fuzz::ScratchFile("CookedAssetManifest.vmanifest");
    Fuzz::WriteBytes(path, Fuzz::AsText(data, size));
    Assets::CookedManifest manifest;
    std::string error;
    const bool read = Assets::ReadCookedManifest(path, manifest, &error);
    Fuzz::Require(read == error.empty(), "a read and its error disagree: " + error);
    if (!read)
    {
        return 0;
    }
    DropNewerParts(manifest);
    Fuzz::Require(Assets::WriteCookedManifest(path, manifest, &error), "a manifest doesn't write: " + error);
    Assets::CookedManifest again;
    Fuzz::Require(Assets::ReadCookedManifest(path, again, &error),
                  "a written manifest doesn't read: " + error);
    Fuzz::Require(again == manifest, "a manifest changed over a write and a read");
    return 0;
}
