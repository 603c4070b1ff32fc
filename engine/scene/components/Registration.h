#pragma once

#include "engine/scene/ComponentTypeEntry.h"

/// The registration functions of the scene schema, one a group of types. `EnsureSceneSchema` calls them in
/// the order that gives the components their serials.
namespace Vornu::Scene
{

/// Flags of a component that users add and scenes save.
inline constexpr ComponentFlags kAuthored =
    ComponentFlags::UserAddable | ComponentFlags::Serialized | ComponentFlags::EditorVisible;

void RegisterEnvironmentTypes();
void RegisterCoreComponents();
void RegisterRenderingComponents();
void RegisterLightingComponents();
void RegisterGameplayComponents();

} // namespace Vornu::Scene
