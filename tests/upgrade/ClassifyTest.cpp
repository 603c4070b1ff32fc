#include "tools/upgrade/Classify.h"

#include "tests/upgrade/ToolRun.h"
#include "tools/upgrade/InputFiles.h"
#include "tools/upgrade/UpgradeTool.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Vornu::Upgrade
{
namespace
{

std::string Reason(std::string_view text, bool incomplete = false)
{
    Core::LineReader source(text, incomplete);
    return ClassifyText(source).reason.value_or("none");
}

TEST(Classify, TheVersionDecides)
{
    const struct
    {
        const char* text;
        const char* reason;
    } rows[] = {
        {"scene_version 1\n", "scene format version 1"},
        {"scene_version 5", "scene format version 5"},
        {"\n# note\n  scene_version 3 # x\nend_entity", "scene format version 3"},
        {"scene_version 3x\n", "scene format version 3"},
        {"scene_version 0\ntransform\n", "none"},
        {"scene_version 6\n", "none"},
        {"scene_version 7\ntransform\n", "none"},
        {"scene_version -1\n", "none"},
        {"scene_version\n3\n", "none"},
        {"entity\nscene_version 3\n", "none"},
        {" \nscene_version 3\n", "none"},
        {"", "none"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(Reason(row.text), row.reason) << row.text;
    }
}

TEST(Classify, ThePositionalRecordsOfTheCurrentVersion)
{
    const struct
    {
        const char* records;
        const char* reason;
    } rows[] = {
        {"entity x\nparent y\nend_entity\nscene_version 9\n", "none"},
        {"component_schema\nproperty\nvalue\nrubbish\nend_component_schema\n", "none"},
        {"environment", "positional record 'environment' at line 2"},
        {"# comment\n\n \t\r\n\tpost_process 1\nother\n", "positional record 'post_process' at line 5"},
        {" # indented\n", "positional record '#' at line 2"},
        {"property\n", "positional record 'property' at line 2"},
        {"value\n", "positional record 'value' at line 2"},
        {"Entity\n", "positional record 'Entity' at line 2"},
        {"end_array\nend_component_schema\nobject\nx\nend_array\ny\n", "positional record 'y' at line 7"},
        {"object_property\narray_property\narray\nend_array\nend_array\nx\n", "none"},
        {"component_schema\nobject\nend_array\nx\nend_component_schema\nx\n",
         "positional record 'x' at line 7"},
        {"\xff\n", "positional record '\xff' at line 2"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(Reason(std::string("scene_version 6\n") + row.records), row.reason) << row.records;
    }
}

TEST(Classify, LinesOfAnyLengthReadAlike)
{
    // Around and beyond the size of a reader's buffer.
    const std::size_t lengths[] = {10, 65'500, 65'520, 65'535, 65'536, 65'537, 131'072, 300'000};
    const struct
    {
        const char* begin;
        char filler;
        const char* end;
    } rows[] = {
        {"scene_version", ' ', "3\nx"},
        {"scene_version 0", '0', "5 x\n"},
        {"scene_version +0", '0', "5\n"},
        {"scene_version -0", '0', "4294967293\n"},
        {"scene_version 1", '0', "\n"},
        {"scene_version 3", 'x', "\r\n"},
        {"scene_version", 'x', " 3\n"},
        {"", ' ', "scene_version 2"},
        {"#", '#', "\r\nscene_version 4"},
        {"scene_version 6", ' ', "\nx"},
        {"scene_version 6\nentity ", 'x', "\ny\n"},
        {"scene_version 6\n", 'x', " y\n"},
        {"scene_version 6\n", ' ', "y z\r\n"},
        {"scene_version 6\n", ' ', "\r\nentity\ny"},
        {"scene_version 6\nparent ", '\r', "\ny"},
        {"scene_version 6\n#", 'x', "y\nz\n"},
        {"scene_version 6\nobject ", ' ', "x\nproperty y\nend_array\ny\n"},
        {"scene_version 6\narray\n", 'x', " y\nend_array\nz\n"},
        {"scene_version 6\narray\n", ' ', "array\nend_array\nx\nend_array\ny\n"},
    };
    const Vornu::Test::TestFolder folder;
    for (const auto& row : rows)
    {
        for (const std::size_t length : lengths)
        {
            const std::string text = row.begin + std::string(length, row.filler) + row.end;
            const std::optional<std::string> found = ClassifyFile(folder.Write("a", text));
            EXPECT_TRUE(found.value_or("none") == Reason(text)) << row.begin << " " << length;
        }
    }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(Classify, AnEndlessLineTakesLittleMemory)
{
    const Vornu::Test::TestFolder folder;
    for (const char* const begin : {"", "#", "scene_version 3", "scene_version 6\nentity ",
                                    "scene_version 6\narray\n", "scene_version 6\n#"})
    {
        std::filesystem::resize_file(folder.Write("a", begin), 400'000'000);
        const Vornu::Test::ToolRun run =
            Vornu::Test::RunScript(folder, "ulimit -v 100000; upgrade --check a");
        EXPECT_EQ(run.err, "") << begin;
        EXPECT_EQ(run.exitCode, std::string_view(begin) == "scene_version 3" ? 1 : 0) << begin;
    }
}
#endif

TEST(Classify, AFailedReadIsNotTheEndOfTheFile)
{
    for (const char* const text : {"", "# head", "scene_version 2\n", "scene_version 6\nentity"})
    {
        EXPECT_THROW(Reason(text, true), std::runtime_error) << text;
    }
}

TEST(InputFiles, ExtensionsOfSceneFiles)
{
    for (const char* const name : {"a.vscene", "d/a.b.vprefab", "..vscene", "a..vscene"})
    {
        EXPECT_TRUE(IsSceneFile(name)) << name;
    }
    for (const char* const name : {".vscene", "a.VSCENE", "a.vscene.", "a.vscene~", "vscene", ".", "..", ""})
    {
        EXPECT_FALSE(IsSceneFile(name)) << name;
    }
}

TEST(UpgradeTool, TheNearestContentFolder)
{
    const struct
    {
        const char* file;
        const char* folder;
    } rows[] = {
        {"/P/Content/Levels/a.vscene", "/P/Content"},
        {"/P/Content/a.vscene", "/P/Content"},
        {"/Content/P/Content/x/a", "/Content/P/Content"},
        {"/P/Levels/a.vscene", "/P/Levels"},
        {"/P/content/x/a.vscene", "/P/content/x"},
        {"/P/MyContent/Content2/a", "/P/MyContent/Content2"},
        {"/P/Content", "/P"},
        {"/a.vscene", "/"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(FindContentFolder(row.file), row.folder) << row.file;
    }
    EXPECT_EQ(FindContentFolder("a.vscene"), FindContentFolder(std::filesystem::current_path() / "a.vscene"));
}

} // namespace
} // namespace Vornu::Upgrade
