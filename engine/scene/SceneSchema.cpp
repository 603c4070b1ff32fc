#include "engine/scene/SceneSchema.h"

#include "engine/assets/AssetKind.h"
#include "engine/reflection/ReflectionRegistry.h"
#include "engine/scene/components/Registration.h"

#include <stdexcept>
#include <string>

namespace Vornu::Scene
{

void EnsureSceneSchema()
{
    static bool registered = false;
    if (registered)
    {
        return;
    }
    auto& reflection = Reflection::ReflectionRegistry::Instance();
    Assets::RegisterAssetTypes(reflection);

    // The order is that of the component serials, and so that of the records in saved files.
    RegisterEnvironmentTypes();
    RegisterCoreComponents();
    RegisterRenderingComponents();
    RegisterLightingComponents();
    RegisterGameplayComponents();

    std::string fault;
    if (!reflection.Validate(&fault))
    {
        throw std::invalid_argument("Scene component schema validation failed: " + fault);
    }
    registered = true;
}

} // namespace Vornu::Scene
