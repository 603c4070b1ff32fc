#include "engine/scene/components/Registration.h"

#include "engine/scene/components/ClothComponents.h"
#include "engine/scene/components/OceanComponents.h"
#include "engine/scene/components/RenderingComponents.h"
#include "engine/scene/components/SplineComponents.h"
#include "engine/scene/components/TerrainComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

namespace Vornu::Scene
{
namespace
{

/// Whether the entity has a component that generated the mesh.
template<class Component>
bool Generated(const ComponentSaveContext& context, Assets::AssetId mesh)
{
    const auto* const component = context.registry->TryGet<Component>(context.entity);
    return component != nullptr && component->generatedMesh == mesh;
}

/// A mesh that another component makes at run time is none of the file's.
void DropGeneratedMesh(MeshRendererComponent& renderer, const ComponentSaveContext& context)
{
    if (renderer.mesh == 0)
    {
        return;
    }
    if (Generated<SplineComponent>(context, renderer.mesh) ||
        Generated<TerrainComponent>(context, renderer.mesh) ||
        Generated<OceanComponent>(context, renderer.mesh))
    {
        renderer.mesh = 0;
    }
    else if (Generated<ClothComponent>(context, renderer.mesh))
    {
        renderer.mesh = context.registry->TryGet<ClothComponent>(context.entity)->sourceMesh;
    }
}

} // namespace

void RegisterRenderingComponents()
{
    Reflection::RegisterEnum<BillboardFacingMode>(
        "BillboardFacingMode", {
                                   {BillboardFacingMode::ScreenAligned, "ScreenAligned", "Screen Aligned"},
                                   {BillboardFacingMode::WorldUp, "WorldUp", "World Up"},
                               });

    RegisterComponent<MeshRendererComponent>("MeshRendererComponent", "Mesh Renderer", "Rendering", kAuthored)
        .Description("Draws a mesh with one or more materials.")
        .Field("mesh", &MeshRendererComponent::mesh, Label("Mesh").Asset("Mesh"))
        .Field("material", &MeshRendererComponent::material, Label("Material").Asset("Material"))
        .Field("materialSlots", &MeshRendererComponent::materialSlots,
               Label("Material Slots").Asset("Material"))
        .Field("skeleton", &MeshRendererComponent::skeleton, Label("Skeleton").Asset("Skeleton"))
        .Field("skinningEnabled", &MeshRendererComponent::skinningEnabled, Label("Skinning Enabled"))
        .Field("visible", &MeshRendererComponent::visible, Label("Visible"))
        .Field("occluder", &MeshRendererComponent::occluder, Label("Occluder"))
        .Field("allowOcclusion", &MeshRendererComponent::allowOcclusion, Label("Allow Occlusion"))
        .Field("enableLod", &MeshRendererComponent::enableLod, Label("Enable LOD").Group("LOD"))
        .Field("forceLodLevel", &MeshRendererComponent::forceLodLevel, Label("Force LOD Level").Group("LOD"))
        .Field("forcedLodLevel", &MeshRendererComponent::forcedLodLevel,
               Label("Forced LOD Level").Group("LOD"))
        .Field("lodDistanceScale", &MeshRendererComponent::lodDistanceScale,
               Label("LOD Distance Scale").Range(0.01f, 100).Group("LOD"))
        .Field("maxDrawDistance", &MeshRendererComponent::maxDrawDistance,
               Label("Max Draw Distance").Range(0, 100000).Group("LOD"))
        .OnSave(&DropGeneratedMesh);

    RegisterComponent<BillboardComponent>("BillboardComponent", "Billboard", "Rendering", kAuthored)
        .Description("Draws a camera-facing sprite or quad.")
        .Field("material", &BillboardComponent::material, Label("Material").Asset("Material"))
        .Field("size", &BillboardComponent::size, Label("Size"))
        .Field("pivot", &BillboardComponent::pivot, Label("Pivot"))
        .Field("facingMode", &BillboardComponent::facingMode, Label("Facing Mode"))
        .Field("visible", &BillboardComponent::visible, Label("Visible"))
        .Field("rotationDegrees", &BillboardComponent::rotationDegrees,
               Label("Rotation").With(PropertyFlags::Degrees))
        .Field("allowOcclusion", &BillboardComponent::allowOcclusion, Label("Allow Occlusion"))
        .Field("maxDrawDistance", &BillboardComponent::maxDrawDistance, Label("Max Draw Distance"))
        .Field("sortBias", &BillboardComponent::sortBias, Label("Sort Bias"));

    RegisterComponent<CameraComponent>("CameraComponent", "Camera", "Rendering", kAuthored)
        .Description("Renders a scene view when marked primary or targeted by camera logic.")
        .Field("verticalFovDegrees", &CameraComponent::verticalFovDegrees,
               Label("Vertical FOV").Range(1, 179).With(PropertyFlags::Degrees))
        .Field("nearClip", &CameraComponent::nearClip, Label("Near Clip").Range(0.001f, 1000))
        .Field("farClip", &CameraComponent::farClip, Label("Far Clip").Range(0.01f, 100000))
        .Field("primary", &CameraComponent::primary, Label("Primary"));
}

} // namespace Vornu::Scene
