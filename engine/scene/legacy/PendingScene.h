#pragma once

#include "engine/scene/Environment.h"
#include "engine/scene/legacy/PendingEntity.h"

#include <cstdint>
#include <deque>

namespace Vornu::Assets
{
class AssetManager;
}

namespace Vornu::Scene
{
class Scene;
}

namespace Vornu::Scene::Legacy
{

/// What a file has given when its last line is read; no entity exists yet.
struct PendingScene
{
    std::uint32_t version = 0; // 0 before the header was read
    EnvironmentSettings environment;
    std::deque<PendingEntity> entities; // in file order
};

/// Makes the scene. `target` is what it is going to replace: no handle into that stays valid. Throws
/// `std::runtime_error`.
Scene BuildScene(PendingScene& pending, const ComponentRecordTable& table, const Scene& target,
                 Assets::AssetManager& assets);

} // namespace Vornu::Scene::Legacy
