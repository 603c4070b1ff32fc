#include "engine/assets/cooked/CookedContainer.h"
#include "engine/assets/formats/mesh/NativeMesh.h"
#include "fuzz/FuzzFiles.h"

#include <span>

/// A mesh reads alike bare and in a container, and comes back from a write. Compared by bytes, since a mesh
/// may hold numbers that don't equal themselves.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Vornu;
    const auto input = std::as_bytes(std::span(data, size));
    const bool isBare = !Fuzz::AsText(data, size).starts_with(Assets::kContainerMagic);
    Assets::MeshAsset mesh;
    std::string error;
    const bool read = Assets::ParseNativeMesh(input, "mesh", mesh, error);
    Fuzz::Require(read == error.empty(), "a read and its error disagree: " + error);

    const auto wrapped = Assets::WrapContainer(Assets::ContainerKind("MESH"), 1, input);
    Assets::MeshAsset packed;
    Fuzz::Require(Assets::ParseNativeMesh(wrapped, "mesh", packed, error) == read || !isBare,
                  "bare and packed mesh read differently: " + error);
    if (!read)
    {
        return 0;
    }
    const std::vector<std::byte> first = Assets::EncodeNativeMesh(mesh);
    Fuzz::Require(Assets::EncodeNativeMesh(packed) == first || !isBare, "bare and packed mesh differ");
    Assets::MeshAsset again;
    Fuzz::Require(Assets::ParseNativeMesh(first, "mesh", again, error),
                  "a written mesh doesn't read: " + error);
    Fuzz::Require(Assets::EncodeNativeMesh(again) == first, "a mesh changed over a write and a read");
    return 0;
}
