#include "tests/upgrade/ToolRun.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace Vornu::Upgrade
{
namespace
{

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

const std::map<std::string, std::string> kContents = {
    {"legacy", Test::kLegacyV3},
    {"current", Test::kCurrent},
    {"refused", "scene_version 6\nentity \"1\" \"x\"\ntransform\n"},
    {"broken", "scene_version 6\nentity \"\" \"x\"\n"},
    {"text", "hello\n"},
    {"empty", ""},
};

/// One row of the data file: its name, and the lines below each word.
struct Row
{
    std::string name;
    std::vector<std::pair<std::string, std::string>> files;
    std::map<std::string, std::string> lines;
};

std::vector<Row> ReadRows()
{
    std::vector<Row> rows;
    std::ifstream file(VORNU_TEST_DATA "/upgrade/command_lines.txt");
    for (std::string line; std::getline(file, line);)
    {
        const std::size_t blank = std::min(line.find(' '), line.size());
        const std::string word = line.substr(0, blank);
        const std::string rest = line.substr(std::min(blank + 1, line.size()));
        if (word == "==")
        {
            rows.push_back({rest, {}, {}});
        }
        else if (word == "file")
        {
            rows.back().files.emplace_back(rest.substr(0, rest.find(' ')), rest.substr(rest.find(' ') + 1));
        }
        else if (!word.empty() && word != "#")
        {
            rows.back().lines[word] += rest == "<usage>" ? kUsage : rest + "\n";
        }
    }
    return rows;
}

TEST(CommandLine, RowsOfTheDataFile)
{
    const std::vector<Row> rows = ReadRows();
    ASSERT_GT(rows.size(), 20u);
    for (Row row : rows)
    {
        SCOPED_TRACE(row.name);
        const Vornu::Test::TestFolder folder;
        for (const auto& [name, content] : row.files)
        {
            folder.Write(name, kContents.at(content));
        }
        const std::string before = FirstLines(folder);
        const std::string script = row.lines["$"];
        EXPECT_EQ(RunScript(folder, script).Text() + "\n",
                  row.lines["out"] + "[err] " + row.lines["err"] + "[exit] " + row.lines["exit"]);
        EXPECT_EQ(FirstLines(folder), row.lines.contains("after") ? row.lines["after"] : before);
    }
}

} // namespace
} // namespace Vornu::Upgrade
