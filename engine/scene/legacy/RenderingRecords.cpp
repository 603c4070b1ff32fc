#include "engine/assets/manager/AssetManager.h"
#include "engine/scene/legacy/Records.h"
#include "engine/scene/legacy/StrictNumbers.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace Vornu::Scene::Legacy
{
namespace
{

/// The words behind the three references: nothing below eight, and the skinning flag in front of eight when
/// there are more.
void TakeRendererWords(const std::vector<std::string_view>& words, MeshRendererComponent& renderer)
{
    constexpr std::size_t kSettings = 8;
    if (words.size() < kSettings)
    {
        return;
    }
    auto word = words.begin();
    if (words.size() > kSettings)
    {
        renderer.skinningEnabled = StrictInt(*word++) != 0;
    }
    renderer.visible = StrictInt(*word++) != 0;
    renderer.occluder = StrictInt(*word++) != 0;
    renderer.allowOcclusion = StrictInt(*word++) != 0;
    renderer.enableLod = StrictInt(*word++) != 0;
    renderer.forceLodLevel = StrictInt(*word++) != 0;
    renderer.forcedLodLevel = StrictUnsigned(*word++);
    renderer.lodDistanceScale = StrictFloat(*word++);
    renderer.maxDrawDistance = StrictFloat(*word++);
}

void ReadMeshRenderer(RecordLine& line, RecordContext& context)
{
    auto renderer = BeginComponent<MeshRendererComponent>(context, "Duplicate mesh_renderer component.");
    line.Read(AssetField{renderer.mesh}, AssetField{renderer.material}, AssetField{renderer.skeleton});
    std::vector<std::string_view> words;
    for (std::string_view word = line.ReadWord(); !word.empty(); word = line.ReadWord())
    {
        words.push_back(word);
    }
    TakeRendererWords(words, renderer);

    if (renderer.skinningEnabled && renderer.skeleton == 0 && renderer.mesh != 0 &&
        context.assets.EnsureMeshLoaded(renderer.mesh))
    {
        if (const Assets::MeshAsset* const mesh = context.assets.FindMesh(renderer.mesh))
        {
            renderer.skeleton = mesh->skeleton;
        }
    }
    if (renderer.material != 0)
    {
        renderer.materialSlots = {renderer.material};
    }
    context.entity.components.Set(std::move(renderer));
}

void ReadMeshMaterialSlot(RecordLine& line, RecordContext& context)
{
    RefuseNamedRecord(context, "MeshRendererComponent",
                      "Legacy mesh_material_slot cannot modify a named schema.");
    std::uint32_t index = 0;
    Assets::AssetId material = 0;
    line.Read(index, AssetField{material});
    auto& renderer = context.entity.components.FindOrAdd<MeshRendererComponent>();
    ElementAt(context, renderer.materialSlots, index, renderer.material) = material;
    if (index == 0 || renderer.material == 0)
    {
        renderer.material = material;
    }
}

void ReadCamera(RecordLine& line, RecordContext& context)
{
    CameraComponent camera;
    line.Read(camera.verticalFovDegrees, camera.nearClip, camera.farClip, camera.primary);
    context.entity.components.Set(camera);
}

constexpr std::array kRecords = {
    EntityRecord{"mesh_renderer", &ReadMeshRenderer},
    EntityRecord{"mesh_material_slot", &ReadMeshMaterialSlot},
    EntityRecord{"camera", &ReadCamera},
};

} // namespace

std::span<const EntityRecord> RenderingRecords() noexcept
{
    return kRecords;
}

void CompleteMeshRenderer(MeshRendererComponent& renderer, Assets::AssetManager& assets)
{
    if (renderer.material == 0)
    {
        renderer.material = assets.DefaultMaterial();
    }
    if (renderer.materialSlots.empty() && renderer.material != 0)
    {
        renderer.materialSlots = {renderer.material};
    }
    if (renderer.mesh == 0 || !assets.EnsureMeshLoaded(renderer.mesh))
    {
        return;
    }
    const Assets::MeshAsset* const mesh = assets.FindMesh(renderer.mesh);
    if (mesh == nullptr || mesh->submeshes.empty())
    {
        return;
    }
    if (renderer.materialSlots.size() < mesh->submeshes.size())
    {
        renderer.materialSlots.resize(mesh->submeshes.size(), renderer.material);
    }
    std::replace(renderer.materialSlots.begin(), renderer.materialSlots.end(), Assets::AssetId{0},
                 renderer.material);
}

} // namespace Vornu::Scene::Legacy
