#include "engine/assets/formats/mesh/NativeMesh.h"
#include "engine/assets/manager/AssetManager.h"
#include "engine/assets/registry/AssetReference.h"
#include "engine/core/logging/Logger.h"
#include "engine/scene/Scene.h"
#include "engine/scene/components/RenderingComponents.h"
#include "engine/scene/files/SceneFile.h"
#include "engine/scene/legacy/LegacyReader.h"
#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace Vornu::Scene
{
namespace
{

using Assets::AssetId;

TEST(LegacyMeshReferences, RenderersNameOneMaterialForEachSubmeshAndStayLinked)
{
    const Vornu::Test::TestFolder user;
    setenv("VORNU_USER_SETTINGS_DIR", user.Path().c_str(), 1);
    Core::GetLogger().SetConsoleEnabled(false);
    const Vornu::Test::TestFolder content;
    Assets::MeshAsset mesh = Assets::BuiltinMeshes()[0].make();
    mesh.submeshes.resize(3);
    const std::vector<std::byte> bytes = Assets::EncodeNativeMesh(mesh);
    content.Write("Meshes/rock.vmesh",
                  std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    content.Write("Materials/moss.vmat", "");
    const auto scenePath =
        content.Write("Levels/a.vscene", "scene_version 3\n"
                                         "entity \"\" \"plain\"\n"
                                         "mesh_renderer \"content:Meshes/rock.vmesh\" \"\" \"\"\n"
                                         "entity \"\" \"slots\"\n"
                                         "mesh_renderer \"content:Meshes\\\\rock.vmesh\" \"\" \"\"\n"
                                         "mesh_material_slot 1 \"content:Materials/moss.vmat\"\n"
                                         "entity \"\" \"gone\"\n"
                                         "mesh_renderer \"content:none.vmesh\" \"\" \"\"\n"
                                         "entity \"\" \"cube\"\n"
                                         "mesh_renderer \"builtin:Cube\" \"\" \"\"\n");
    Assets::AssetManager assets;
    assets.Initialize(content.Path(), Assets::AssetMountMode::Authoring);
    Scene scene;
    std::string error;
    ASSERT_TRUE(Legacy::Load(scenePath, scene, assets, &error)) << error;

    const AssetId rock = Assets::ResolveAssetReference(assets.GetRegistry(), "content:Meshes/rock.vmesh");
    const AssetId moss = Assets::ResolveAssetReference(assets.GetRegistry(), "content:Materials/moss.vmat");
    const AssetId cube = Assets::ResolveAssetReference(assets.GetRegistry(), "builtin:Cube");
    const AssetId standard = assets.DefaultMaterial();
    ASSERT_NE(rock, 0u);
    ASSERT_NE(moss, 0u);
    const struct
    {
        AssetId mesh;
        AssetId material;
        std::vector<AssetId> slots;
    } expected[] = {
        {rock, standard, {standard, standard, standard}},
        {rock, moss, {moss, moss, moss}},
        {0, standard, {standard}},
        {cube, standard, {standard}},
    };
    for (int pass = 0; pass < 2; ++pass)
    {
        ASSERT_EQ(scene.AliveEntities().size(), std::size(expected));
        for (std::size_t i = 0; i < std::size(expected); ++i)
        {
            const auto& renderer = scene.Get<MeshRendererComponent>(scene.AliveEntities()[i]);
            EXPECT_EQ(renderer.mesh, expected[i].mesh) << i;
            EXPECT_EQ(renderer.material, expected[i].material) << i;
            EXPECT_EQ(renderer.materialSlots, expected[i].slots) << i;
        }
        ASSERT_TRUE(SaveScene(scenePath, scene, assets, &error)) << error;
        ASSERT_TRUE(LoadScene(scenePath, scene, assets, &error)) << error;
    }
    EXPECT_NE(content.Read("Levels/a.vscene").find("property \"mesh\" \"guid:"), std::string::npos);
    Core::GetLogger().SetConsoleEnabled(true);
}

} // namespace
} // namespace Vornu::Scene
