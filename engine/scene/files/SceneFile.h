#pragma once

#include "engine/core/files/FileAccess.h"

#include <filesystem>
#include <functional>
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

struct SaveOptions
{
    /// Asked directly before the file is replaced; if it says no, the file stays and the save fails.
    std::function<bool()> mayReplace;
    /// What a file may get that isn't there yet.
    Platform::AccessLimit limit;
};

/// Writes a scene in the current format. The file at `path` is replaced whole or not at all; a symbolic link
/// there stays one, and the file that it names is replaced. On false `error`, where given, tells why.
bool SaveScene(const std::filesystem::path& path, const Scene& scene, Assets::AssetManager& assets,
               std::string* error, const SaveOptions& options = {});

} // namespace Vornu::Scene
