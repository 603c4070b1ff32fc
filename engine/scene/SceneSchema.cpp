#include "engine/scene/SceneSchema.h"

namespace Vornu::Scene
{

void EnsureSceneSchema() {}

} // namespace Vornu::Scene
