#include "engine/core/files/Folders.h"

#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace fs = std::filesystem;

namespace Vornu::Core
{
namespace
{

using Test::ScopedVariable;
using Test::TestFolder;

TEST(Folders, EngineRootIsTheNearestMarkedFolderOfEight)
{
    const TestFolder folder;
    folder.Write("CMakeLists.txt", "");
    EXPECT_EQ(EngineRootFolder(folder / "build/bin/Release"), folder.Path());
    EXPECT_EQ(EngineRootFolder(folder / "1/2/3/4/5/6/7"), folder.Path());
    EXPECT_EQ(EngineRootFolder(folder / "1/2/3/4/5/6/7/8"), folder / "1/2/3/4/5/6");
    folder.Write("build/Config/EngineVersion.json", "{}");
    EXPECT_EQ(EngineRootFolder(folder / "build/bin/Release"), folder / "build");
}

TEST(Folders, AStatusErrorOfAMarkerIsThrown)
{
    const TestFolder folder;
    fs::create_symlink("loop", folder / "loop");
    try
    {
        EngineRootFolder(folder / "loop");
        FAIL();
    }
    catch (const fs::filesystem_error& error)
    {
        const std::string path = (folder / "loop/CMakeLists.txt").string();
        EXPECT_EQ(std::string(error.what()), "exists: Too many levels of symbolic links: \"" + path + "\"");
    }
}

TEST(Folders, UserSettingsFollowTheEnvironmentInOrder)
{
    const TestFolder folder;
    folder.Write("CMakeLists.txt", "");
    folder.Write("file", "");
    const std::string local = (folder / ".vornu_user").string();
    const std::string data = (folder / "xdg").string(); // can be made
    const std::string user = (folder / "home/u").string();
    const std::string file = (folder / "file").string();
    const fs::path installed = "/none/a/b";
    const ScopedVariable temporary("TMPDIR", folder.Path().string());
    using Value = std::optional<std::string>;
    const struct
    {
        Value settings;
        Value appData;
        Value xdg;
        Value home;
        fs::path executableFolder;
        std::string expected;
    } rows[] = {
        {"/set", "/app", data, user, folder / "bin", "/set"},
        {"", "/app", data, user, folder / "bin", "/app/VornuEngine"},
        {"", "", data, user, folder / "bin", local},
        {{}, {}, {}, {}, folder / "bin", local},
        {{}, {}, data, user, installed, data + "/VornuEngine"},
        {{}, {}, "relative", user, installed, user + "/.local/share/VornuEngine"},
        {{}, {}, {}, {}, installed, "temporary"},
        {{}, {}, {}, file, installed, "temporary"},
        {{}, {}, {}, "/dev/null", installed, "temporary"},
    };
    for (const auto& row : rows)
    {
        const ScopedVariable settings("VORNU_USER_SETTINGS_DIR", row.settings);
        const ScopedVariable appData("APPDATA", row.appData);
        const ScopedVariable xdg("XDG_DATA_HOME", row.xdg);
        const ScopedVariable home("HOME", row.home);
        const fs::path found = UserSettingsFolder(row.executableFolder);
        const bool isTemporary = found.filename().string().starts_with("vornu-user-");
        EXPECT_EQ(isTemporary ? "temporary" : found.string(), row.expected);
        EXPECT_EQ(UserSettingsFolder(row.executableFolder), found);
    }
    EXPECT_EQ(folder.List(), "CMakeLists.txt file");
}

TEST(Folders, EngineAssetsAreSoughtFromTheExecutableUpwards)
{
    const TestFolder folder;
    folder.Write("CMakeLists.txt", "");
    const fs::path executable = folder / "build/bin";
    EXPECT_EQ(FindEngineAsset("x/a", executable), folder / "build/bin/Assets/x/a");
    for (const char* place : {"Assets/x/a", "build/Assets/x/a", "build/bin/Assets/x/a"})
    {
        folder.Write(place, "");
        EXPECT_EQ(FindEngineAsset("x/a", executable), folder / place);
    }
}

} // namespace
} // namespace Vornu::Core
