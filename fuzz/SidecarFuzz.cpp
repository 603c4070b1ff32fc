#include "engine/assets/identity/AssetSidecar.h"
#include "fuzz/FuzzFiles.h"

/// Every sidecar that reads can be written, and comes back from its file as it was.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Vornu;
    static const std::filesystem::path path = Fuzz::ScratchFile("asset.png.vmeta");
    std::string error;
    std::optional<Assets::AssetSidecar> sidecar = Assets::ParseSidecar(Fuzz::AsText(data, size), &error);
    Fuzz::Require(sidecar.has_value() == error.empty(), "a read and its error disagree: " + error);
    if (!sidecar)
    {
        return 0;
    }
    Fuzz::Require(Assets::WriteSidecar(path, *sidecar, &error), "a sidecar doesn't write: " + error);
    if (sidecar->importerName.empty())
    {
        sidecar->importerName = "native"; // what a missing name stands for, once written
    }
    Fuzz::Require(Assets::ReadSidecar(path, &error) == sidecar, "a sidecar changed over a write: " + error);
    return 0;
}
