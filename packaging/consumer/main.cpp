#include "engine/assets/manager/AssetManager.h"
#include "engine/scene/Scene.h"
#include "engine/scene/files/SceneFile.h"

#include <cstdio>
#include <string>

/// Saves a scene and loads it back, as a program does that links the installed libraries.
int main(int argc, char** argv)
{
    using namespace Vornu;
    if (argc != 2)
    {
        std::fprintf(stderr, "Usage: consumer <scene file to write>\n");
        return 2;
    }
    Assets::AssetManager assets;
    Scene::Scene scene;
    scene.CreateCamera("Eye", true);
    std::string error;
    Scene::Scene loaded;
    if (!Scene::SaveScene(argv[1], scene, assets, &error) ||
        !Scene::LoadScene(argv[1], loaded, assets, &error))
    {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    return loaded.FindPrimaryCamera() != Scene::kNullEntity ? 0 : 1;
}
