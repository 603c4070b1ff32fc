#include "tests/upgrade/ToolRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace Vornu::Upgrade
{
namespace
{

using Test::DeepFolder;
using Test::FirstLines;
using Test::kCurrent;
using Test::kLegacyV3;
using Test::RunScript;
using Test::TestFolder;
using Test::ToolRun;

TEST(BadInput, EntriesThatAreNoFiles)
{
    const TestFolder folder;
    ASSERT_EQ(::mkfifo((folder / "fifo.vscene").c_str(), 0600), 0);
    ASSERT_EQ(::mknod((folder / "socket.vscene").c_str(), S_IFSOCK | 0600, 0), 0);
    std::filesystem::create_symlink("loop.vscene", folder / "loop.vscene");
    std::filesystem::create_symlink("nowhere", folder / "dangling.vscene");
    std::filesystem::create_symlink(".", folder / "again");
    folder.Write("d.vscene/a.vscene", kLegacyV3);
    for (const char* const name : {"fifo.vscene", "socket.vscene", "loop.vscene", "dangling.vscene",
                                   "/dev/null", "d.vscene/a.vscene/x"})
    {
        EXPECT_EQ(RunScript(folder, std::string("upgrade --check d.vscene ") + name).Text(),
                  "[err] Not found: " + std::string(name) + "\n[exit] 2");
    }
    EXPECT_EQ(RunScript(folder, "upgrade --check .").Text(),
              "legacy   ./d.vscene/a.vscene (scene format version 3)\n"
              "[err] vornu-upgrade: directory_entry::status: Too many levels of symbolic links: "
              "\"./loop.vscene\"\n[exit] 1");
}

TEST(BadInput, OutputsThatAreNoFiles)
{
    const TestFolder folder;
    folder.Write("a.vscene", kLegacyV3);
    folder.Write("current.vscene", kCurrent);
    folder.Write("folder/x", "");
    ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
    ASSERT_EQ(::mknod((folder / "socket").c_str(), S_IFSOCK | 0600, 0), 0);
    std::filesystem::create_symlink("fifo", folder / "link");
    std::filesystem::create_symlink("made", folder / "dangling");
    for (const std::string name : {"fifo", "socket", "folder", "link"})
    {
        const auto before = std::filesystem::symlink_status(folder / name).type();
        EXPECT_EQ(RunScript(folder, "upgrade --output " + name + " a.vscene").Text(),
                  "[err] FAILED   a.vscene: output is not a regular file: " + name + "\n[exit] 1");
        EXPECT_EQ(std::filesystem::symlink_status(folder / name).type(), before);
    }
    EXPECT_EQ(RunScript(folder, "upgrade --output fifo current.vscene").Text(),
              "current  current.vscene\n[err] [exit] 0");
    EXPECT_EQ(RunScript(folder, "upgrade --output dangling a.vscene").exitCode, 0);
    EXPECT_EQ(folder.Read("made").substr(0, 16), "scene_version 6\n");
    EXPECT_EQ(folder.Read("a.vscene"), kLegacyV3);
    EXPECT_EQ(folder.List(),
              "a.vscene a.vscene.vmeta current.vscene current.vscene.vmeta dangling fifo folder "
              "link made socket");
}

TEST(BadInput, TheLastOriginalIsNotConvertedAway)
{
    const TestFolder folder;
    const std::string refused =
        "a backup of an earlier conversion is not converted in place without a backup";
    const struct
    {
        const char* name;
        bool isBackup;
    } rows[] = {
        {"a.vscene.legacy-v3", true},
        {"a.vscene.legacy-v3-2", true},
        {"x.legacy-v6-10", true},
        {"link", true},
        {"l.legacy-v3", true},
        {".legacy-v3", false},
        {"a.legacy-v", false},
        {"a.legacy-v3-", false},
        {"a.legacy-v3-2.vscene", false},
        {"a.legacy-v-2", false},
        {"3", false},
        {"a-3", false},
    };
    std::filesystem::create_symlink("a.vscene.legacy-v3", folder / "link");
    std::filesystem::create_symlink("plain", folder / "l.legacy-v3");
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        const std::string name = row.name;
        folder.Write(row.name, kLegacyV3);
        EXPECT_EQ(RunScript(folder, "upgrade --no-backup " + name).Text(),
                  row.isBackup ? "[err] FAILED   " + name + ": " + refused + "\n[exit] 1"
                               : "upgraded " + name + " -> " + name +
                                     " (converted from scene format version 3)\n[err] [exit] 0");
        folder.Write(row.name, kLegacyV3);
        EXPECT_EQ(RunScript(folder, "upgrade " + name + " && upgrade --no-backup " + name + " >&2").exitCode,
                  0);
    }
    folder.Write("b.legacy-v3", kLegacyV3);
    EXPECT_EQ(RunScript(folder, "upgrade --no-backup --output o b.legacy-v3").exitCode, 0);
}

TEST(BadInput, ALinkToAFolderLeadsWhereTheSystemSays)
{
    const TestFolder folder;
    folder.Write("far/sub/x", "");
    folder.Write("far/a.vscene", kLegacyV3);
    folder.Write("a.vscene", "near");
    std::filesystem::create_directory_symlink("far/sub", folder / "link");
    EXPECT_EQ(RunScript(folder, "upgrade link/../a.vscene").Text(),
              "upgraded link/../a.vscene -> link/../a.vscene (converted from scene format version 3), backup "
              "link/../a.vscene.legacy-v3\n[err] [exit] 0");
    EXPECT_EQ(folder.Read("a.vscene"), "near");
    EXPECT_EQ(folder.Read("far/a.vscene").substr(0, 16), "scene_version 6\n");
    EXPECT_EQ(folder.Read("far/a.vscene.legacy-v3"), kLegacyV3);
}

TEST(BadInput, UsersWithoutAFolderOfTheirOwnConvertToo)
{
    const TestFolder folder;
    folder.Write("P/a.vscene", kLegacyV3);
    folder.Write("P/b.vscene", kLegacyV3);
    EXPECT_EQ(RunScript(folder, "VORNU_USER_SETTINGS_DIR=/dev/null/x; upgrade P/a.vscene").exitCode, 0);
    // An installed program.
    folder.Write("root/Config/EngineVersion.json", "{}");
    std::filesystem::create_directories(folder / "root/bin");
    std::filesystem::create_directories(folder / "root/Assets/Exports");
    std::filesystem::create_directory(folder / "tmp");
    std::filesystem::copy(VORNU_UPGRADE_PROGRAM, folder / "root/bin/vornu-upgrade");
    EXPECT_EQ(RunScript(folder, "unset VORNU_USER_SETTINGS_DIR XDG_DATA_HOME APPDATA\n"
                                "HOME=/dev/null TMPDIR=\"$PWD/tmp\" root/bin/vornu-upgrade P/b.vscene")
                  .Text(),
              "upgraded P/b.vscene -> P/b.vscene (converted from scene format version 3), backup "
              "P/b.vscene.legacy-v3\n[err] [exit] 0");
    EXPECT_TRUE(std::filesystem::is_empty(folder / "tmp"));
    EXPECT_TRUE(std::filesystem::is_empty(folder / "root/Assets/Exports"));
    std::filesystem::remove_all(folder / "P");
    EXPECT_EQ(FirstLines(folder).substr(0, 34), "root/Config/EngineVersion.json: {}");
    EXPECT_FALSE(std::filesystem::exists(folder / "root/.vornu_user"));
}

TEST(BadInput, ContentsThatAreNoScenes)
{
    const TestFolder folder;
    const std::string fault = ": not a scene file (missing or unsupported scene_version header)\n";
    const struct
    {
        const char* name;
        std::string text;
    } rows[] = {
        {"empty", ""},
        {"comments alone", "# scene_version 3\n\n#\n"},
        {"NUL bytes", std::string(100'000, '\0')},
        {"not UTF-8", "\xff\xfe s\x80"},
        {"UTF-8 mark", "\xef\xbb\xbfscene_version 3\n"},
        {"version 0", "scene_version 0\n"},
        {"version 7", "scene_version 7\n"},
        {"no number", "scene_version x\n"},
        {"number too large", "scene_version 4294967296\n"},
        {"one long line", std::string(1'000'000, 'x')},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        folder.Write("a.vscene", row.text);
        EXPECT_EQ(RunScript(folder, "upgrade a.vscene").Text(),
                  "[err] FAILED   a.vscene" + fault + "[exit] 1");
        EXPECT_TRUE(folder.Read("a.vscene") == row.text);
        EXPECT_EQ(folder.List(), "a.vscene a.vscene.vmeta");
    }
}

TEST(BadInput, OddTextStillConverts)
{
    const TestFolder folder;
    const struct
    {
        const char* name;
        std::string text;
    } rows[] = {
        {"carriage returns", "scene_version 3\r\nentity \"\" \"Root\"\r\ntransform 1 2 3\r\n"},
        {"none at the end", "scene_version 3\nentity \"\" \"Root\"\ntransform 1 2 3"},
        {"a record of 100 MB",
         "scene_version 3\nentity \"\" \"Root\"\n" + std::string(100'000'000, 'x') + "\ntransform 1 2 3\n"},
        {"NULs behind a record",
         "scene_version 3\nentity \"\" \"Root\"\ntransform 1 2 3" + std::string(9, '\0')},
    };
    std::string converted;
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        folder.Write("a.vscene", row.text);
        EXPECT_EQ(RunScript(folder, "upgrade --no-backup a.vscene").Text(),
                  "upgraded a.vscene -> a.vscene (converted from scene format version 3)\n[err] [exit] 0");
        converted = converted.empty() ? folder.Read("a.vscene") : converted;
        EXPECT_EQ(folder.Read("a.vscene"), converted);
    }
    EXPECT_NE(converted.find("property \"position\" \"1 2 3\"\n"), std::string::npos);
    EXPECT_EQ(converted.find('\r'), std::string::npos);

    const std::string name = "caf\xe9 \\\"x\\\" ";
    folder.Write("a.vscene", "scene_version 3\nentity \"\" \"" + name + "\"\n");
    RunScript(folder, "upgrade a.vscene");
    EXPECT_NE(folder.Read("a.vscene").find(" \"" + name + "\"\nparent"), std::string::npos);
}

TEST(BadInput, LinksAreKept)
{
    const TestFolder folder;
    folder.Write("store/real.vscene", kLegacyV3);
    std::filesystem::create_directories(folder / "levels");
    std::filesystem::create_symlink("../store/real.vscene", folder / "levels/a.vscene");
    std::filesystem::create_hard_link(folder / "store/real.vscene", folder / "store/hard");
    EXPECT_EQ(RunScript(folder, "upgrade levels").Text(),
              "upgraded levels/a.vscene -> levels/a.vscene (converted from scene format version 3), backup "
              "levels/a.vscene.legacy-v3\n[err] [exit] 0");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "levels/a.vscene"));
    EXPECT_EQ(FirstLines(folder), "levels/a.vscene: scene_version 6\n"
                                  "levels/a.vscene.legacy-v3: scene_version 3\n"
                                  "store/hard: scene_version 3\n"
                                  "store/real.vscene: scene_version 6\n");
    EXPECT_FALSE(std::filesystem::is_symlink(folder / "levels/a.vscene.legacy-v3"));
}

TEST(BadInput, ADanglingLinkOccupiesTheNameOfABackup)
{
    const TestFolder folder;
    folder.Write("a.vscene", kLegacyV3);
    std::filesystem::create_symlink("nowhere", folder / "a.vscene.legacy-v3");
    RunScript(folder, "upgrade a.vscene");
    EXPECT_EQ(folder.List(), "a.vscene a.vscene.legacy-v3 a.vscene.legacy-v3-2 a.vscene.vmeta");
}

TEST(BadInput, AFileThatFailsDoesNotStopTheRun)
{
    const TestFolder folder;
    folder.Write("a.vscene", kLegacyV3);
    folder.Write("b.vscene", kLegacyV3);
    folder.Write("file", "");
    const std::string mount = "create_directories: Not a directory: \"" + (folder / "file").string() + "\"\n";
    EXPECT_EQ(RunScript(folder, "upgrade --content file a.vscene b.vscene").Text(),
              "[err] FAILED   a.vscene: " + mount + "FAILED   b.vscene: " + mount + "[exit] 1");
    folder.Write("current.vscene", kCurrent);
    const ToolRun run = RunScript(folder, "TMPDIR=\"$PWD/none\"; export TMPDIR\n"
                                          "upgrade --verify current.vscene");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.substr(0, 46), "FAILED   current.vscene: temp_directory_path: ");
    EXPECT_EQ(run.exitCode, 1);
}

/// A scene of version 3 whose only entity is drawn with a material.
std::string SceneWith(const std::string& material)
{
    return "scene_version 3\nentity \"\" \"Root\"\nmesh_renderer \"builtin:Cube\" \"" + material +
           "\" \"\"\n";
}

TEST(BadInput, AnUnreadPartOfTheContentFailsTheFilesThatMayNeedIt)
{
    const struct
    {
        const char* name;
        std::string part; // what can't be read, below the folder
        const char* cause;
    } rows[] = {
        {"a sidecar that opens and fails to be read", "b.vmat.vmeta", "Input/output error"},
        {"a sidecar without an end", "b.vmat.vmeta", "not a regular file"},
        {"a sidecar that leads nowhere", "b.vmat.vmeta", "No such file or directory"},
        {"a folder beyond the longest path", std::string(DeepFolder::kNameLength, 'd'), "File name too long"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        const TestFolder folder;
        folder.Write("none.vscene", SceneWith(""));
        folder.Write("good.vscene", SceneWith("content:a.vmat"));
        folder.Write("bad.vscene",
                     SceneWith(row.part == "b.vmat.vmeta" ? "content:b.vmat" : "content:c.vmat"));
        folder.Write("current.vscene", kCurrent);
        folder.Write("broken.vscene",
                     "scene_version 6\nentity \"" + std::string(32, '1') +
                         "\" \"E\"\nparent \"\"\ncomponent_schema \"BillboardComponent\" 1 1\n"
                         "property \"material\" \"guid:" +
                         std::string(32, '2') + "\"\nend_component_schema\nend_entity\n");
        folder.Write("a.vmat", "");
        folder.Write("b.vmat", "");
        std::string part = (folder / row.part).string();
        switch (row.cause[0])
        {
        case 'I':
            std::filesystem::create_symlink("/proc/self/mem", part);
            break;
        case 'n':
            std::filesystem::create_symlink("/dev/zero", part);
            break;
        case 'N':
            std::filesystem::create_symlink("nowhere", part);
            break;
        default:
            const DeepFolder deep(folder.Path());
            while (part.size() < PATH_MAX)
            {
                part += "/" + row.part;
            }
        }
        const std::string fault =
            ".vscene: the content folder could not be read whole: " + part + ": " + row.cause + "\n";
        EXPECT_EQ(RunScript(folder, "upgrade --no-backup bad.vscene good.vscene none.vscene").Text(),
                  "upgraded good.vscene -> good.vscene (converted from scene format version 3)\n"
                  "upgraded none.vscene -> none.vscene (converted from scene format version 3)\n"
                  "[err] FAILED   bad" +
                      fault + "[exit] 1");
        EXPECT_EQ(RunScript(folder, "upgrade --verify broken.vscene current.vscene good.vscene").Text(),
                  "verified current.vscene\nverified good.vscene\n[err] FAILED   broken" + fault +
                      "[exit] 1");
    }
}

TEST(BadInput, AMeshThatMemoryDoesNotSufficeForFailsEveryFileThatDrawsIt)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers need more address space than that";
#endif
    const TestFolder folder;
    folder.Write("a.vmesh", "");
    std::filesystem::resize_file(folder / "a.vmesh", 1'500'000'000);
    std::string failures;
    for (const std::string name : {"1.vscene", "2.vscene"})
    {
        folder.Write(name,
                     "scene_version 3\nentity \"\" \"Root\"\nmesh_renderer \"content:a.vmesh\" \"\" \"\"\n");
        failures += "FAILED   " + name + ": legacy read failed: could not read " +
                    (folder / "a.vmesh").string() + ": Cannot allocate memory\n";
    }
    EXPECT_EQ(RunScript(folder, "ulimit -v 1000000; upgrade 1.vscene 2.vscene").Text(),
              "[err] " + failures + "[exit] 1");
}

TEST(BadInput, OutputThatCannotBeWrittenFailsTheRun)
{
    const TestFolder folder;
    folder.Write("a.vscene", kCurrent);
    folder.Write("legacy.vscene", kLegacyV3);
    const struct
    {
        const char* script;
        int exitCode;
    } rows[] = {
        {"upgrade a.vscene >/dev/full", 1},
        {"upgrade a.vscene >&-", 0},
        {"upgrade --help >/dev/full", 1},
        {"upgrade --help >&-", 0},
        {"upgrade >/dev/full", 2},
        {"upgrade --check a.vscene >&-", 0},
        {"upgrade a.vscene legacy.vscene >&- 2>&-", 0},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(RunScript(folder, row.script).exitCode, row.exitCode) << row.script;
    }
    EXPECT_EQ(FirstLines(folder), "a.vscene: scene_version 6\na.vscene.vmeta: vmeta 1\n"
                                  "legacy.vscene: scene_version 6\n"
                                  "legacy.vscene.legacy-v3: scene_version 3\n"
                                  "legacy.vscene.vmeta: vmeta 1\n");
}

TEST(BadInput, FoldersWithoutAccess)
{
    if (::geteuid() == 0)
    {
        GTEST_SKIP() << "every folder is open to root";
    }
    const TestFolder folder;
    folder.Write("closed/a.vscene", kLegacyV3);
    folder.Write("b.vscene", kLegacyV3);
    const ToolRun run = RunScript(folder, "chmod 555 closed; upgrade closed --content .\n"
                                          "chmod 0 closed; upgrade --check .; chmod 755 closed\n"
                                          "exit 0");
    EXPECT_EQ(run.out, "legacy   ./b.vscene (scene format version 3)\n");
    EXPECT_EQ(run.err,
              "FAILED   closed/a.vscene: could not write backup closed/a.vscene.legacy-v3: Permission "
              "denied\n"
              "vornu-upgrade: recursive_directory_iterator::operator++: Permission denied: "
              "\"./closed\"\n");
    EXPECT_EQ(FirstLines(folder), "b.vscene: scene_version 3\nb.vscene.vmeta: vmeta 1\n"
                                  "closed/a.vscene: scene_version 3\n");
}

TEST(BadInput, ARunThatIsKilledHasToldWhatItDid)
{
    const TestFolder folder;
    constexpr int kFileCount = 300;
    for (int i = 0; i < kFileCount; ++i)
    {
        folder.Write(std::string("a").append(std::to_string(i)) + ".vscene", kLegacyV3);
    }
    const ToolRun run = RunScript(folder, "'" VORNU_UPGRADE_PROGRAM "' . >report & pid=$!\n"
                                          "i=0\n"
                                          "while [ $((i += 1)) -lt 200000 ] && [ ! -s report ]; do :; done\n"
                                          "kill -KILL $pid; wait $pid");
    ASSERT_EQ(run.exitCode, 128 + SIGKILL);
    const std::string report = folder.Read("report");
    EXPECT_EQ(report.back(), '\n');
    const auto told = std::count(report.begin(), report.end(), '\n');
    const std::string files = folder.List();
    std::ptrdiff_t begun = 0;
    for (std::size_t at = files.find(".legacy-v3"); at != std::string::npos;
         at = files.find(".legacy-v3", at + 1))
    {
        ++begun;
    }
    EXPECT_LT(told, kFileCount);
    EXPECT_LE(begun - told, 1);
}

TEST(BadInput, AFatalSignalLeavesNoTemporaryFile)
{
    const TestFolder folder;
    std::string text = "scene_version 3\n";
    for (int i = 0; i < 100'000; ++i)
    {
        text += "entity \"\" \"E" + std::to_string(i) + "\"\npoint_light 1 1 1 5\nend_entity\n";
    }
    folder.Write("a.vscene", text);
    folder.Write("a.vscene.vmeta", "vmeta 1\nguid 00000000000000000000000000000001\n");
    const ToolRun run =
        RunScript(folder, "'" VORNU_UPGRADE_PROGRAM "' --no-backup a.vscene & pid=$!\n"
                          "files=\"$(echo *)\"; i=0\n"
                          "while [ $((i += 1)) -lt 20000 ] && [ \"$(echo *)\" = \"$files\" ]; do :; done\n"
                          "kill -TERM $pid; wait $pid");
    EXPECT_EQ(run.exitCode, 128 + SIGTERM);
    EXPECT_EQ(folder.List(), "a.vscene a.vscene.vmeta");
    EXPECT_TRUE(folder.Read("a.vscene") == text);
}

} // namespace
} // namespace Vornu::Upgrade
