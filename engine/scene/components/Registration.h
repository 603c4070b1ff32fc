#pragma once

#include "engine/scene/registration/ComponentTypeEntry.h"

/// The registration functions of the scene schema, one a group of types. `EnsureSceneSchema` calls them in
/// the order that gives the components their serials.
namespace Vornu::Scene
{

/// Flags of components that users add and scenes save.
inline constexpr ComponentFlags kAddable = ComponentFlags::UserAddable | ComponentFlags::Serialized;
inline constexpr ComponentFlags kAuthored = kAddable | ComponentFlags::EditorVisible;

void RegisterEnvironmentTypes();
void RegisterCoreComponents();
void RegisterPhysicsComponents();
void RegisterOceanComponents();
void RegisterScriptingComponents();
void RegisterRenderingComponents();
void RegisterParticleComponents();
void RegisterAnimationComponents();
void RegisterLightingComponents();
void RegisterGameplayComponents();
void RegisterNavigationComponents();
void RegisterSplineComponents();
void RegisterTerrainComponents();
void RegisterAiComponents();
void RegisterStreamingComponents();
void RegisterVfxComponents();
void RegisterAudioComponents();
void RegisterUiComponents();
void RegisterNetworkComponents();

} // namespace Vornu::Scene
