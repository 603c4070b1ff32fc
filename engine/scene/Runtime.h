#pragma once

#include "engine/scene/entities/Entity.h"

/// The run-time systems that a load calls once over the scene that it has made. They leave authored data as
/// it is; without a running game they have nothing to do.
namespace Vornu::Assets
{
class AssetManager;
}

namespace Vornu::Scene
{

class Scene;

/// Brings an entity's animated state to the given time, in seconds. Does nothing without a runtime.
inline void EvaluateAnimator(Scene&, Entity, Assets::AssetManager&, float /*time*/) {}

/// Brings generated spline meshes up to date. Does nothing without a runtime.
inline void UpdateSplines(Scene&, Assets::AssetManager&) {}

} // namespace Vornu::Scene
