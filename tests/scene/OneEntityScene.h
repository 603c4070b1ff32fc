#pragma once

#include "engine/assets/manager/AssetManager.h"
#include "engine/scene/Scene.h"
#include "engine/scene/files/SceneFile.h"
#include "tests/core/TestFolder.h"

#include <string>

/// Records of components, loaded and saved as those of a scene's only entity.
namespace Vornu::Test
{

/// A record without fields, or with one.
inline std::string Record(const std::string& name, int version = 1, const std::string& field = "",
                          const std::string& value = "")
{
    return "component_schema \"" + name + "\" " + std::to_string(version) +
           (field.empty() ? " 0\n" : " 1\nproperty \"" + field + "\" \"" + value + "\"\n") +
           "end_component_schema\n";
}

/// Loads a scene of one entity, whose GUID ends with 1, with `records` behind its transform; gives the error
/// without its prefix.
inline std::string Load(const std::string& records, Scene::Scene& scene)
{
    const TestFolder folder;
    const auto path =
        folder.Write("a.vscene", "scene_version 6\nentity \"00000000000000000000000000000001\" E\n" +
                                     Record("TransformComponent") + records + "end_entity\n");
    Assets::AssetManager assets;
    std::string error;
    LoadScene(path, scene, assets, &error);
    const std::size_t prefix = error.find(": ");
    return prefix == std::string::npos ? error : error.substr(prefix + 2);
}

/// The records of the scene's only entity as they are saved, without its transform; or the error.
inline std::string Save(const Scene::Scene& scene)
{
    const TestFolder folder;
    Assets::AssetManager assets;
    std::string error;
    if (!SaveScene(folder / "a.vscene", scene, assets, &error))
    {
        return error;
    }
    const std::string text = folder.Read("a.vscene");
    const std::string transformEnd = "\"1 1 1\"\nend_component_schema\nend_component_schema\n";
    const std::size_t begin = text.find(transformEnd, text.find("entity")) + transformEnd.size();
    return text.substr(begin, text.rfind("end_entity") - begin);
}

} // namespace Vornu::Test
