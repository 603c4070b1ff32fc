#include "tests/upgrade/ToolRun.h"

#include <gtest/gtest.h>

#include <utility>

namespace Vornu::Upgrade
{
namespace
{

using Test::FirstLines;
using Test::kCurrent;
using Test::kLegacyV3;
using Test::RunScript;
using Test::TestFolder;
using Test::ToolRun;

const std::string kUsage =
    "Usage: vornu-upgrade [--content <ContentFolder>] [--output <file>] [--check | --verify] [--no-backup] "
    "<path>...\n"
    "\n"
    "Converts legacy .vscene and .vprefab files to the current scene format. Directories are\n"
    "searched recursively.\n"
    "\n"
    "  --content <dir>  Project Content folder that asset references resolve against. Default:\n"
    "                   the nearest ancestor folder named Content, else the file's folder.\n"
    "  --output <file>  Write the converted file here (one input only). Default: convert in\n"
    "                   place and keep the original as <file>.legacy-v<version>.\n"
    "  --check          Only report files that need conversion (exit code 1 when any do).\n"
    "  --verify         Load current files with the engine loader and check that a load/save\n"
    "                   round trip is stable (writes only temporary files; exit 1 on failure).\n"
    "  --no-backup      Do not keep the original when converting in place.\n";

struct Row
{
    const char* name;
    const char* arguments; // as in a shell
    std::vector<std::pair<const char*, const char*>> files;
    std::string out;
    std::string err;
    int exitCode;
    const char* filesAfter; // null: as before
};

void ExpectRow(const Row& row)
{
    SCOPED_TRACE(row.name);
    const TestFolder folder;
    for (const auto& [name, text] : row.files)
    {
        folder.Write(name, text);
    }
    const std::string before = FirstLines(folder);
    const ToolRun run = RunScript(folder, std::string("upgrade ") + row.arguments);
    EXPECT_EQ(run.Text(), row.out + "[err] " + row.err + "[exit] " + std::to_string(row.exitCode));
    EXPECT_EQ(FirstLines(folder), row.filesAfter != nullptr ? row.filesAfter : before);
}

TEST(CommandLine, OptionsAreReadFromLeftToRight)
{
    const Row rows[] = {
        {"no arguments", "", {}, kUsage, "", 2, nullptr},
        {"options without a path", "--check --no-backup", {}, kUsage, "", 2, nullptr},
        {"help first", "-h --bogus", {}, kUsage, "", 0, nullptr},
        {"help with a path", "missing.vscene --help", {}, kUsage, "", 0, nullptr},
        {"unknown first", "--bogus -h", {}, kUsage, "Unknown option: --bogus\n", 2, nullptr},
        {"case counts", "--Check .", {}, kUsage, "Unknown option: --Check\n", 2, nullptr},
        {"no value form", "--output=x .", {}, kUsage, "Unknown option: --output=x\n", 2, nullptr},
        {"a lone minus", "-", {}, kUsage, "Unknown option: -\n", 2, nullptr},
        {"output without a value", "a --output", {}, kUsage, "Unknown option: --output\n", 2, nullptr},
        {"content without a value", "a --content", {}, kUsage, "Unknown option: --content\n", 2, nullptr},
        {"help as a value", "--content -h", {}, kUsage, "", 2, nullptr},
        {"an option as a value",
         "--output -x a.vscene",
         {{"a.vscene", kLegacyV3}},
         "upgraded a.vscene -> -x (converted from scene format version 3)\n",
         "",
         0,
         "-x: scene_version 6\na.vscene: scene_version 3\n"},
        {"the last of two",
         "--output x --output y a.vscene",
         {{"a.vscene", kLegacyV3}},
         "upgraded a.vscene -> y (converted from scene format version 3)\n",
         "",
         0,
         "a.vscene: scene_version 3\ny: scene_version 6\n"},
        {"check wins over verify",
         "--check --verify .",
         {{"a.vscene", kLegacyV3}},
         "legacy   ./a.vscene (scene format version 3)\n",
         "",
         1,
         nullptr},
    };
    for (const Row& row : rows)
    {
        ExpectRow(row);
    }
}

TEST(CommandLine, InputsAreExpandedBeforeAnyFileIsTouched)
{
    const Row rows[] = {
        {"missing first", "none a", {{"a", kLegacyV3}}, "", "Not found: none\n", 2, nullptr},
        {"missing last", "a none", {{"a", kLegacyV3}}, "", "Not found: none\n", 2, nullptr},
        {"an empty path", "a ''", {{"a", kLegacyV3}}, "", "Not found: \n", 2, nullptr},
        {"an empty path alone", "''", {}, "", "Not found: \n", 2, nullptr},
        {"a directory without scenes",
         "d",
         {{"d/a.VSCENE", kLegacyV3}, {"d/.vscene", kLegacyV3}, {"d/a.vscene.old", kLegacyV3}},
         "",
         "",
         0,
         nullptr},
        {"output for no file",
         "--output o d",
         {{"d/a.txt", ""}},
         "",
         "--output needs exactly one input file.\n",
         2,
         nullptr},
        {"output for two files",
         "--output o d",
         {{"d/a.vscene", kLegacyV3}, {"d/e/b.vprefab", kLegacyV3}},
         "",
         "--output needs exactly one input file.\n",
         2,
         nullptr},
        {"output in check mode",
         "--check --output o d d",
         {{"d/a.vscene", kLegacyV3}},
         "",
         "--output needs exactly one input file.\n",
         2,
         nullptr},
        {"output for a directory of one file",
         "--output o d",
         {{"d/e/a.vprefab", kLegacyV3}},
         "upgraded d/e/a.vprefab -> o (converted from scene format version 3)\n",
         "",
         0,
         "d/e/a.vprefab: scene_version 3\no: scene_version 6\n"},
        {"a named file of any extension, twice",
         "a.VSCENE ./a.VSCENE",
         {{"a.VSCENE", kLegacyV3}},
         "upgraded a.VSCENE -> a.VSCENE (converted from scene format version 3), backup a.VSCENE.legacy-v3\n"
         "current  ./a.VSCENE\n",
         "",
         0,
         "a.VSCENE: scene_version 6\na.VSCENE.legacy-v3: scene_version 3\n"},
    };
    for (const Row& row : rows)
    {
        ExpectRow(row);
    }
}

TEST(CommandLine, EachModeReportsEachFile)
{
    const char* const broken = "scene_version 6\nentity \"\" \"x\"\n";
    const std::vector<std::pair<const char*, const char*>> files = {
        {"broken.vscene", broken},
        {"current.vscene", kCurrent},
        {"legacy.vscene", kLegacyV3},
        {"notes.txt", "hello\n"},
        {"refused.vscene", "scene_version 6\nentity \"1\" \"x\"\ntransform\n"},
    };
    const char* const named = "notes.txt legacy.vscene current.vscene broken.vscene refused.vscene";
    const std::string check = std::string("--check --no-backup --content none ") + named;
    const std::string verify = std::string("--verify ") + named;
    const std::string upgrade = std::string("--no-backup ") + named;
    const std::string fault = "Failed to parse scene file at line 2: Malformed or null entity GUID.\n";
    const Row rows[] = {
        {"check", check.c_str(), files,
         "legacy   legacy.vscene (scene format version 3)\n"
         "legacy   refused.vscene (positional record 'transform' at line 3)\n",
         "", 1, nullptr},
        {"verify", verify.c_str(), files, "verified current.vscene\n",
         "FAILED   notes.txt: Failed to parse scene file at line 1: Scene records require a version header.\n"
         "legacy   legacy.vscene (scene format version 3)\n"
         "FAILED   broken.vscene: " +
             fault + "legacy   refused.vscene (positional record 'transform' at line 3)\n",
         1, nullptr},
        {"upgrade", upgrade.c_str(), files,
         "upgraded legacy.vscene -> legacy.vscene (converted from scene format version 3)\n"
         "current  current.vscene\n"
         "current  broken.vscene\n",
         "FAILED   notes.txt: not a scene file (missing or unsupported scene_version header)\n"
         "FAILED   refused.vscene: legacy read failed: " +
             fault,
         1,
         "broken.vscene: scene_version 6\ncurrent.vscene: scene_version 6\nlegacy.vscene: scene_version 6\n"
         "notes.txt: hello\nrefused.vscene: scene_version 6\n"},
        {"nothing legacy", "--check .", {{"a.vscene", kCurrent}, {"b.vscene", ""}}, "", "", 0, nullptr},
        {"verified", "--verify a.vscene", {{"a.vscene", kCurrent}}, "verified a.vscene\n", "", 0, nullptr},
    };
    for (const Row& row : rows)
    {
        ExpectRow(row);
    }
}

TEST(CommandLine, TwoConversionsKeepTwoBackups)
{
    const TestFolder folder;
    folder.Write("legacy", kLegacyV3);
    const ToolRun run = RunScript(folder, "cp legacy a.vscene; upgrade a.vscene\n"
                                          "cp legacy a.vscene; upgrade a.vscene\n");
    EXPECT_EQ(run.Text(), "upgraded a.vscene -> a.vscene (converted from scene format version 3), backup "
                          "a.vscene.legacy-v3\n"
                          "upgraded a.vscene -> a.vscene (converted from scene format version 3), backup "
                          "a.vscene.legacy-v3-2\n[err] [exit] 0");
    EXPECT_EQ(folder.List(), "a.vscene a.vscene.legacy-v3 a.vscene.legacy-v3-2 legacy");
    EXPECT_EQ(folder.Read("a.vscene.legacy-v3-2"), kLegacyV3);
}

} // namespace
} // namespace Vornu::Upgrade
