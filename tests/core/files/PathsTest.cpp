#include "engine/core/files/Paths.h"

#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace fs = std::filesystem;

namespace Vornu::Platform
{
namespace
{

using Test::TestFolder;

TEST(Paths, CanonicalFormResolvesLinksInThePartThatExists)
{
    const TestFolder folder;
    folder.Write("real/a", "");
    fs::create_directory_symlink("real", folder / "link");
    folder.Write("real/sub/x", "");
    folder.Write("far/a", "");
    fs::create_directory_symlink("../real/sub", folder / "far/link");
    fs::create_symlink("loop", folder / "loop");
    const std::string root = folder.Path().string();
    const struct
    {
        std::string path;
        std::string expected;
    } rows[] = {
        {"", ""},
        {"/", "/"},
        {"/..//", "/"},
        {root + "/", root},
        {root + "/link/a", root + "/real/a"},
        {root + "/link/none/b/", root + "/real/none/b"},
        {root + "/real/./x/../a", root + "/real/a"},
        // Behind a link ".." is the folder above the one that it leads to.
        {root + "/far/link/../a", root + "/real/a"},
        {root + "/far/link/../none", root + "/real/none"},
        // What can't be resolved stays.
        {root + "/loop/x", root + "/loop/x"},
        {root + "/" + std::string(300, 'n') + "/", root + "/" + std::string(300, 'n')},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(CanonicalPath(row.path).string(), row.expected);
    }
    EXPECT_EQ(CanonicalPath("none"), fs::canonical(fs::current_path()) / "none");
}

TEST(Paths, SamePathLooksThroughLinks)
{
    const TestFolder folder;
    folder.Write("real/a", "");
    fs::create_directory_symlink("real", folder / "link");
    EXPECT_TRUE(IsSamePath(folder / "real/a", folder / "link/../link/a"));
    EXPECT_FALSE(IsSamePath(folder / "real/a", folder / "real/A"));
    EXPECT_TRUE(IsSamePath("", ""));
    EXPECT_FALSE(IsSamePath("", "."));
}

TEST(Paths, UnderARootMeansWholeComponents)
{
    const struct
    {
        const char* root;
        const char* key;
        bool expected;
    } rows[] = {
        {"", "/a", false}, {"/a", "/a", true},    {"/a", "/a/b", true},  {"/a", "/ab", false},
        {"/", "/a", true}, {"/a/", "/a/b", true}, {"/a/b", "/a", false}, {"/a", "/A/b", false},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(IsPathUnder(row.root, row.key), row.expected) << row.root << " " << row.key;
    }
    EXPECT_EQ(NormalizedCaseKey("C:\\Game/A\\b"), "C:/Game/A/b");
}

TEST(Paths, RelativeToARoot)
{
    const struct
    {
        const char* root;
        const char* path;
        const char* expected;
    } rows[] = {
        {"/Game/Content", "/Game/Content/Maps/a.vscene", "Maps/a.vscene"},
        {"/Game/Content/", "/Game/Content", "."},
        {"/Game/Content", "/Game/Content/x/../y/", "y"},
        {"/", "/Game", "Game"},
        {"/Game/Content", "/Game/Content2/x", "none"},
        {"/Game/Content", "/game/content/x", "none"},
        {"/Game/Content", "/Game", "none"},
        {"", "/Game", "none"},
        {"/Game", "", "none"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(RelativeToRoot(row.root, row.path).value_or("none"), row.expected)
            << row.root << " " << row.path;
    }
}

} // namespace
} // namespace Vornu::Platform
