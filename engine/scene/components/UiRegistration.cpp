#include "engine/scene/components/Registration.h"

#include "engine/scene/components/UiComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

namespace Vornu::Scene
{

void RegisterUiComponents()
{
    Reflection::RegisterEnum<UICanvasSpace>(
        "UICanvasSpace", {
                             {UICanvasSpace::Screen, "Screen"},
                             {UICanvasSpace::WorldBillboard, "WorldBillboard", "World Billboard"},
                         });

    RegisterComponent<UICanvasComponent>("UICanvasComponent", "UI Canvas", "UI", kAuthored)
        .Description("Hosts a VUI document in screen or world-billboard space.")
        .Field("document", &UICanvasComponent::document, Label("Document").Asset("UiDocument"))
        .Field("space", &UICanvasComponent::space, Label("Space"))
        .Field("visible", &UICanvasComponent::visible, Label("Visible"))
        .Field("receiveInput", &UICanvasComponent::receiveInput, Label("Receive Input"))
        .Field("sortOrder", &UICanvasComponent::sortOrder, Label("Sort Order"))
        .Field("screenOffset", &UICanvasComponent::screenOffset, Label("Screen Offset"))
        .Field("worldSize", &UICanvasComponent::worldSize, Label("World Size"))
        .Field("pivot", &UICanvasComponent::pivot, Label("Pivot"))
        .Field("maxDistance", &UICanvasComponent::maxDistance, Label("Max Distance"));
}

} // namespace Vornu::Scene
