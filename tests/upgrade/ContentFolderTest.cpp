#include "tests/upgrade/ToolRun.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace Vornu::Upgrade
{
namespace
{

using Test::kLegacyV3;
using Test::RunScript;
using Test::TestFolder;
using Test::ToolRun;

const std::string kNear = "11111111-0000-4000-8000-000000000001";
const std::string kFar = "22222222-0000-4000-8000-000000000002";

constexpr char kScene[] = "scene_version 3\n"
                          "entity \"\" \"Root\"\n"
                          "mesh_renderer \"builtin:Cube\" \"content:red.vmat\" \"\"\n";

void WriteMaterial(const TestFolder& folder, const std::string& content, const std::string& guid)
{
    folder.Write(content + "/red.vmat", "version 3\n");
    folder.Write(content + "/red.vmat.vmeta",
                 "vmeta 1\nguid " + guid + "\nimporter native 1\nsettings\nend\n");
}

TEST(ContentFolder, TheGivenOneOverridesTheNearest)
{
    for (const bool isGiven : {false, true})
    {
        const TestFolder folder;
        WriteMaterial(folder, "Game/Content", kNear);
        WriteMaterial(folder, "Shared", kFar);
        folder.Write("Game/Content/Levels/a.vscene", kScene);
        const std::string option = isGiven ? "--content Game/../Shared " : "";
        EXPECT_EQ(RunScript(folder, "upgrade " + option + "Game/Content/Levels/a.vscene").exitCode, 0);
        const std::string converted = folder.Read("Game/Content/Levels/a.vscene");
        const std::string material = "property \"material\" \"guid:";
        EXPECT_NE(converted.find(material + (isGiven ? kFar : kNear)), std::string::npos) << converted;
        // Only the folder that is mounted gets sidecars.
        EXPECT_EQ(std::filesystem::exists(folder / "Game/Content/Levels/a.vscene.vmeta"), !isGiven);
    }
}

TEST(ContentFolder, IsTheOneThatTheSystemFinds)
{
    const struct
    {
        const char* name;
        const char* script;
        bool isNear;
    } rows[] = {
        {"a relative path out of another project",
         "cd Near/Content/Levels; upgrade ../../../Far/Content/Levels/a.vscene", false},
        {"a link to the file from outside", "ln -s Near/Content/Levels/a.vscene b.vscene; upgrade b.vscene",
         true},
        {"a link to the file from another project",
         "ln -s ../../Near/Content/Levels/a.vscene Far/Content/b.vscene; upgrade Far/Content/b.vscene",
         false},
        {"a link to the folder above", "ln -s Near/Content/Levels here; upgrade here/a.vscene", true},
        {"back from where a link leads",
         "ln -s ../../Near/Content/Levels Far/Content/there; upgrade --output Near/Content/out.vscene "
         "Far/Content/there/../Levels/a.vscene",
         true},
        {"back from a folder",
         "mv Far/Content Far/x; ln -s x Far/Content; upgrade Far/Content/Levels/../Levels/a.vscene", false},
        {"given with a way back from a link",
         "ln -s Near/Content/Levels here; upgrade --content here/.. Far/Content/Levels/a.vscene", true},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        const TestFolder folder;
        WriteMaterial(folder, "Near/Content", kNear);
        WriteMaterial(folder, "Far/Content", kFar);
        folder.Write("Near/Content/Levels/a.vscene", kScene);
        folder.Write("Far/Content/Levels/a.vscene", kScene);
        EXPECT_EQ(RunScript(folder, row.script).exitCode, 0);
        const std::string converted = folder.Read("Near/Content/Levels/a.vscene") +
                                      folder.Read("Far/Content/Levels/a.vscene") +
                                      folder.Read("Near/Content/out.vscene");
        EXPECT_NE(converted.find("property \"material\" \"guid:" + (row.isNear ? kNear : kFar)),
                  std::string::npos);
    }
}

TEST(ContentFolder, EachIsMountedOnceInARun)
{
    const TestFolder folder;
    for (const char* const name : {"A/Content/1.vscene", "A/Content/x/2.vscene", "B/Content/1.vscene"})
    {
        folder.Write(name, kLegacyV3);
    }
    // Report lines without their details, between the log lines of the mounts.
    const ToolRun run = RunScript(folder, R"(unset VORNU_LOG_LEVELS
show() { sed -n -e "s|^.*Asset manager initialized: $PWD/|mounted |p" -e 's/ ->.*//p' -e '/^verified/p'; }
upgrade A/Content/1.vscene B/Content/1.vscene A/Content/x/2.vscene | show
ln -s Content/x A/y
upgrade --verify A/Content/1.vscene B/Content/1.vscene A/Content/x/../x/2.vscene A/y/2.vscene | show
upgrade --verify --content C A/Content/1.vscene B/Content/1.vscene | show)");
    EXPECT_EQ(run.Text(), R"(mounted A/Content
upgraded A/Content/1.vscene
mounted B/Content
upgraded B/Content/1.vscene
upgraded A/Content/x/2.vscene
mounted A/Content
verified A/Content/1.vscene
mounted B/Content
verified B/Content/1.vscene
verified A/Content/x/../x/2.vscene
verified A/y/2.vscene
mounted C
verified A/Content/1.vscene
verified B/Content/1.vscene
[err] [exit] 0)");
}

} // namespace
} // namespace Vornu::Upgrade
