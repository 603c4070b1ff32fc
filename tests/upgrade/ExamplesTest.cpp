#include "engine/assets/manager/AssetManager.h"
#include "engine/core/logging/Logger.h"
#include "engine/scene/Scene.h"
#include "engine/scene/files/CookedScene.h"
#include "engine/scene/files/SceneFile.h"
#include "tests/upgrade/ToolRun.h"
#include "tools/upgrade/InputFiles.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace Vornu::Upgrade
{
namespace
{

namespace fs = std::filesystem;
using Test::FilesBelow;
using Test::RunScript;
using Test::ScopedVariable;
using Test::TestFolder;
using Test::ToolRun;
using Files = std::map<std::string, std::string>;

/// A copy of the example project, converted by the program.
class Examples : public testing::Test
{
protected:
    Examples()
    {
        fs::copy(VORNU_EXAMPLES, folder_.Path(), fs::copy_options::recursive);
        original_ = FilesBelow(folder_);
        const ToolRun run = RunScript(folder_, "upgrade Content");
        EXPECT_EQ(run.exitCode, 0) << run.err;
        converted_ = FilesBelow(folder_);
    }

    /// What the file has to be after the conversion; a file that is current stays as it was.
    static std::string Expected(const std::string& name)
    {
        const fs::path expected = fs::path(VORNU_TEST_DATA "/examples") / name;
        const fs::path current = fs::path(VORNU_EXAMPLES) / name;
        return Platform::ReadFileBinary(fs::exists(expected) ? expected : current).bytes;
    }

    TestFolder folder_;
    Files original_;
    Files converted_;
};

TEST_F(Examples, ConvertToTheExpectedFilesOnce)
{
    std::string verified;
    for (const auto& [name, text] : original_)
    {
        if (IsSceneFile(name))
        {
            EXPECT_EQ(converted_[name], Expected(name)) << name;
            verified += "verified " + name + "\n";
        }
    }
    const ToolRun verify = RunScript(folder_, "upgrade --verify Content | LC_ALL=C sort");
    EXPECT_EQ(verify.Text(), verified + "[err] [exit] 0");
    EXPECT_EQ(RunScript(folder_, "upgrade Content").exitCode, 0);
    EXPECT_EQ(FilesBelow(folder_), converted_);
}

TEST_F(Examples, KeepTheirIdentitiesButForTheCopy)
{
    const std::string copy = "Content/Textures/cobble_mossy.png.vmeta";
    std::map<std::string, std::string> holders;
    for (const auto& [name, text] : converted_)
    {
        const bool isSidecar = name.ends_with(".vmeta");
        const auto before = original_.find(name);
        if (before != original_.end() && !IsSceneFile(name) && name != copy)
        {
            EXPECT_EQ(text, before->second) << name;
        }
        if (isSidecar)
        {
            const std::string guid = text.substr(text.find("guid "), 41);
            const auto [holder, isNew] = holders.emplace(guid, name);
            EXPECT_TRUE(isNew) << name << " has the identity of " << holder->second;
        }
        else if (name.starts_with("Content/") && name.find(".legacy-v") == std::string::npos)
        {
            EXPECT_TRUE(converted_.contains(name + ".vmeta")) << name;
        }
    }
    EXPECT_EQ(original_[copy], original_["Content/Textures/cobble.png.vmeta"]);
    EXPECT_NE(converted_[copy], original_[copy]);
}

TEST_F(Examples, CookedScenesLoadToWhatTheirTextHolds)
{
    const TestFolder work;
    const ScopedVariable settings("VORNU_USER_SETTINGS_DIR", (work / "settings").string());
    Core::GetLogger().ApplyLevelSpec("off");
    Assets::AssetManager assets;
    assets.Initialize(folder_ / "Content", Assets::AssetMountMode::ReadOnly);
    for (const auto& [name, text] : converted_)
    {
        if (!IsSceneFile(name))
        {
            continue;
        }
        std::vector<std::byte> cooked;
        std::string error;
        ASSERT_TRUE(Scene::CookScene(folder_ / name, cooked, error)) << error;
        const fs::path binary = work.Write(
            "cooked.vscene", std::string(reinterpret_cast<const char*>(cooked.data()), cooked.size()));
        Scene::Scene scene;
        ASSERT_TRUE(Scene::LoadScene(binary, scene, assets, &error)) << name << ": " << error;
        ASSERT_TRUE(Scene::SaveScene(work / "saved.vscene", scene, assets, &error)) << name << ": " << error;
        EXPECT_EQ(work.Read("saved.vscene"), text) << name;
    }
}

} // namespace
} // namespace Vornu::Upgrade
