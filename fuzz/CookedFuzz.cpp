#include "engine/assets/CookedContainer.h"
#include "engine/assets/formats/NativeMesh.h"
#include "engine/scene/CookedScene.h"
#include "fuzz/FuzzFiles.h"

#include <span>

/// The input is a payload, wrapped here so that it passes the checksum. What is read as a scene or as a mesh
/// is written and read again as the same bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Vornu;
    const std::span<const std::byte> payload = std::as_bytes(std::span(data, size));
    std::string error;

    const auto scene = Assets::WrapContainer(Assets::ContainerKind(Scene::kCookedSceneKind),
                                             Scene::kCookedSceneFormat, payload);
    Scene::SceneStage stage;
    if (Scene::DecodeCookedScene(scene, stage, "scene", error))
    {
        const auto first = Scene::EncodeCookedScene(stage);
        Scene::SceneStage again;
        Fuzz::Require(Scene::DecodeCookedScene(first, again, "scene", error),
                      "an encoded scene doesn't decode");
        Fuzz::Require(Scene::EncodeCookedScene(again) == first,
                      "a cooked scene changed over a write and a read");
    }

    Assets::MeshAsset mesh;
    if (Assets::ParseNativeMesh(payload, "mesh", mesh, error))
    {
        const auto first = Assets::EncodeNativeMesh(mesh);
        Assets::MeshAsset again;
        Fuzz::Require(Assets::ParseNativeMesh(first, "mesh", again, error), "an encoded mesh doesn't parse");
        Fuzz::Require(Assets::EncodeNativeMesh(again) == first, "a mesh changed over a write and a read");
    }
    return 0;
}
