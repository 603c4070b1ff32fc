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

/// Fills a scene from a file of the current format. On false the target is as it was and `error`, where
/// given, tells why. On true every earlier handle into the target has become invalid.
bool LoadScene(const std::filesystem::path& path, Scene& target, Assets::AssetManager& assets,
               std::string* error);

/// Writes a scene in the current format. The file at `path` is replaced whole or not at all; a symbolic link
/// there stays one, and the file that it names is replaced. On false `error`, where given, tells why.
bool SaveScene(const std::filesystem::path& path, const Scene& scene, Assets::AssetManager& assets,
               std::string* error);

} // namespace Vornu::Scene
