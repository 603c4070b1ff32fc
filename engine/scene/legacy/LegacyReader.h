#pragma once

#include <filesystem>
#include <string>

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

/// Reads a scene or prefab file of format versions 1 to 6 whose component data may be positional records. The
/// only reader that accepts them. On false the scene is as it was and `error`, where given, tells why.
bool Load(const std::filesystem::path& path, Scene& scene, Assets::AssetManager& assets, std::string* error);

} // namespace Vornu::Scene::Legacy
