#include "engine/scene/components/SceneSchema.h"

#include "engine/assets/identity/AssetKind.h"
#include "engine/reflection/ReflectionRegistry.h"
#include "engine/scene/components/Registration.h"

#include <stdexcept>
#include <string>

namespace Vornu::Scene
{

namespace
{

/// The order is that of the component serials, and so that of the records in saved files.
void RegisterTypes(Reflection::ReflectionRegistry& reflection)
{
    Assets::RegisterAssetTypes(reflection);
    RegisterEnvironmentTypes();
    RegisterCoreComponents();
    RegisterPhysicsComponents();
    RegisterOceanComponents();
    RegisterScriptingComponents();
    RegisterRenderingComponents();
    RegisterParticleComponents();
    RegisterAnimationComponents();
    RegisterLightingComponents();
    RegisterGameplayComponents();
    RegisterNavigationComponents();
    RegisterSplineComponents();
    RegisterTerrainComponents();
    RegisterAiComponents();
    RegisterStreamingComponents();
    RegisterVfxComponents();
    RegisterAudioComponents();
    RegisterUiComponents();
    RegisterNetworkComponents();
}

} // namespace

void EnsureSceneSchema()
{
    static bool registered = false;
    static bool typesAdded = false; // a type is added once; a further attempt validates again
    if (registered)
    {
        return;
    }
    auto& reflection = Reflection::ReflectionRegistry::Instance();
    if (!typesAdded)
    {
        RegisterTypes(reflection);
        typesAdded = true;
    }

    std::string fault;
    if (!reflection.Validate(&fault))
    {
        throw std::invalid_argument("Scene component schema validation failed: " + fault);
    }
    registered = true;
}

} // namespace Vornu::Scene
