#include "tools/upgrade/UpgradeFile.h"

#include "engine/assets/manager/AssetManager.h"
#include "engine/core/files/FileSystemCalls.h"
#include "engine/core/logging/Logger.h"
#include "tests/upgrade/ToolRun.h"
#include "tools/upgrade/VerifyRoundTrip.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

namespace Vornu::Upgrade
{
namespace
{

using Platform::FileSystemCalls;
using Test::FirstLines;
using Test::kCurrent;
using Test::kLegacyV3;
using Test::ScopedVariable;
using Test::TestFolder;

/// The system's calls with some of them replaced, for the length of a scope.
class ScopedFault
{
public:
    explicit ScopedFault(void (*change)(FileSystemCalls& calls)) : calls_(Platform::ActiveFileSystemCalls())
    {
        change(calls_);
        old_ = Platform::ReplaceFileSystemCalls(&calls_);
    }
    ~ScopedFault() { Platform::ReplaceFileSystemCalls(old_); }
    ScopedFault(const ScopedFault&) = delete;
    ScopedFault& operator=(const ScopedFault&) = delete;

private:
    FileSystemCalls calls_;
    const FileSystemCalls* old_;
};

template<int Error>
int Fail(const char*, const char*)
{
    errno = Error;
    return -1;
}

void NoFault(FileSystemCalls&) {}

void FullDisk(FileSystemCalls& calls)
{
    calls.write = [](int, const void*, std::size_t) -> ssize_t
    {
        errno = ENOSPC;
        return -1;
    };
}

void NoFlush(FileSystemCalls& calls)
{
    calls.fsync = [](int)
    {
        errno = EIO;
        return -1;
    };
}

void NoLink(FileSystemCalls& calls)
{
    calls.link = [](const char* from, const char* to, int) { return Fail<EIO>(from, to); };
}

void NoRename(FileSystemCalls& calls)
{
    calls.rename = Fail<EACCES>;
}

/// The converted file gets other content as soon as it is in its place.
void SpoiledOutput(FileSystemCalls& calls)
{
    calls.rename = [](const char* from, const char* to)
    {
        const int result = std::rename(from, to);
        std::ofstream(to) << "scene_version 6\nrubbish\n";
        return result;
    };
}

/// Someone writes to the input as soon as its backup stands.
void ChangedInput(FileSystemCalls& calls)
{
    calls.close = [](int descriptor)
    {
        std::ofstream("a.vscene", std::ios::app) << "# more\n";
        return ::close(descriptor);
    };
}

/// Someone writes to the input while its replacement is written, after every look at it but the last.
void EditedAtTheFlush(FileSystemCalls& calls)
{
    calls.fsync = [](int descriptor)
    {
        std::ofstream("a.vscene", std::ios::app) << "# more\n";
        return ::fsync(descriptor);
    };
}

class UpgradeFileOutcome : public testing::Test
{
protected:
    UpgradeFileOutcome() : settings_("VORNU_USER_SETTINGS_DIR", (state_ / "settings").string())
    {
        Core::GetLogger().ApplyLevelSpec("off");
        std::filesystem::current_path(folder_.Path());
        assets_.Initialize(folder_.Path(), Assets::AssetMountMode::ReadOnly);
    }
    ~UpgradeFileOutcome() override { std::filesystem::current_path("/"); }

    TestFolder state_;
    ScopedVariable settings_;
    TestFolder folder_;
    Assets::AssetManager assets_;
};

TEST_F(UpgradeFileOutcome, WhatStandsOnDiskAfterwards)
{
    const std::string duplicates = std::string(kLegacyV3) + "entity \"\" \"Root\"\n";
    const std::string noSpace = "No space left on device";
    const struct
    {
        const char* name;
        std::string input;
        const char* output;
        bool keepBackup;
        void (*fault)(FileSystemCalls&);
        UpgradeStatus status;
        std::string message;
        const char* backup;
        const char* files;
    } rows[] = {
        {"converted", kLegacyV3, "", true, NoFault, UpgradeStatus::Converted,
         "converted from scene format version 3", "a.vscene.legacy-v3",
         "a.vscene: scene_version 6\na.vscene.legacy-v3: scene_version 3\n"},
        {"positional record of version 6", "scene_version 6\nenvironment\n", "", true, NoFault,
         UpgradeStatus::Converted, "converted from positional record 'environment' at line 2",
         "a.vscene.legacy-v6", "a.vscene: scene_version 6\na.vscene.legacy-v6: scene_version 6\n"},
        {"no backup", kLegacyV3, "", false, NoFault, UpgradeStatus::Converted,
         "converted from scene format version 3", "", "a.vscene: scene_version 6\n"},
        {"output", kLegacyV3, "o", true, NoFault, UpgradeStatus::Converted,
         "converted from scene format version 3", "", "a.vscene: scene_version 3\no: scene_version 6\n"},
        {"current", kCurrent, "o", true, NoFault, UpgradeStatus::Current, "already in the current format", "",
         "a.vscene: scene_version 6\no: old\n"},
        {"no scene", "text\n", "o", true, NoFault, UpgradeStatus::Failed,
         "not a scene file (missing or unsupported scene_version header)", "", "a.vscene: text\no: old\n"},
        {"broken but current", "scene_version 6\nentity \"1\" \"\"\n", "", true, NoFault,
         UpgradeStatus::Current, "already in the current format", "", "a.vscene: scene_version 6\n"},
        {"not read", "scene_version 6\ntransform 1 2 3\n", "", true, NoFault, UpgradeStatus::Failed,
         "legacy read failed: Failed to parse scene file at line 2: Version 6 requires a named component "
         "schema for transform",
         "", "a.vscene: scene_version 6\n"},
        {"refused by the saver", duplicates, "", true, NoFault, UpgradeStatus::Failed,
         "Failed to save scene: Cannot save duplicate entity GUIDs.", "a.vscene.legacy-v3",
         "a.vscene: scene_version 3\na.vscene.legacy-v3: scene_version 3\n"},
        {"no folder for the output", kLegacyV3, "none/o", true, NoFault, UpgradeStatus::Failed,
         "Failed to open scene file for writing.", "", "a.vscene: scene_version 3\n"},
        {"disk full at the backup", kLegacyV3, "", true, FullDisk, UpgradeStatus::Failed,
         "could not write backup a.vscene.legacy-v3: " + noSpace, "", "a.vscene: scene_version 3\n"},
        {"backup not flushed", kLegacyV3, "", true, NoFlush, UpgradeStatus::Failed,
         "could not write backup a.vscene.legacy-v3: Input/output error", "", "a.vscene: scene_version 3\n"},
        {"backup not named", kLegacyV3, "", true, NoLink, UpgradeStatus::Failed,
         "could not write backup a.vscene.legacy-v3: Input/output error", "", "a.vscene: scene_version 3\n"},
        {"disk full at the output", kLegacyV3, "o", true, FullDisk, UpgradeStatus::Failed,
         "Failed to save scene: Failed to finish writing scene file.", "",
         "a.vscene: scene_version 3\no: old\n"},
        {"not replaced", kLegacyV3, "", true, NoRename, UpgradeStatus::Failed,
         "Failed to save scene: Failed to replace scene file: Failed to replace file: Permission denied",
         "a.vscene.legacy-v3", "a.vscene: scene_version 3\na.vscene.legacy-v3: scene_version 3\n"},
        {"does not load", kLegacyV3, "", true, SpoiledOutput, UpgradeStatus::Failed,
         "converted file does not load: Failed to parse scene file at line 2: Unsupported scene record "
         "'rubbish'. Positional records are a legacy format; convert the file with the offline tool: "
         "vornu-upgrade --content <ProjectContentFolder> \"a.vscene\"",
         "a.vscene.legacy-v3", "a.vscene: scene_version 6\na.vscene.legacy-v3: scene_version 3\n"},
        {"changed meanwhile", kLegacyV3, "", true, ChangedInput, UpgradeStatus::Failed,
         "the file changed on disk while it was being converted", "a.vscene.legacy-v3",
         "a.vscene: scene_version 3\na.vscene.legacy-v3: scene_version 3\n"},
        {"changed at the last moment", kLegacyV3, "", false, EditedAtTheFlush, UpgradeStatus::Failed,
         "the file changed on disk while it was being converted", "", "a.vscene: scene_version 3\n"},
        {"changed beside its output", kLegacyV3, "o", false, EditedAtTheFlush, UpgradeStatus::Failed,
         "the file changed on disk while it was being converted", "", "a.vscene: scene_version 3\no: old\n"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        for (const auto& entry : std::filesystem::directory_iterator(folder_.Path()))
        {
            std::filesystem::remove_all(entry.path());
        }
        folder_.Write("a.vscene", row.input);
        if (row.output == std::string("o"))
        {
            folder_.Write("o", "old");
        }
        UpgradeResult result;
        {
            const ScopedFault fault(row.fault);
            result = UpgradeFile("a.vscene", assets_, {row.output, row.keepBackup});
        }
        EXPECT_EQ(result.status, row.status);
        EXPECT_EQ(result.message, row.message);
        EXPECT_EQ(result.outputPath, *row.output != '\0' ? row.output : "a.vscene");
        EXPECT_EQ(result.backupPath, row.backup);
        EXPECT_EQ(FirstLines(folder_), row.files);
        if (*row.backup != '\0')
        {
            EXPECT_EQ(folder_.Read(row.backup).substr(0, row.input.size()), row.input);
        }
    }
}

TEST_F(UpgradeFileOutcome, ARoundTripIsProvenWithoutATrace)
{
    const char* const frame = "entity \"1a2b3c4d-0000-4000-8000-000000000001\" \"\"\nparent \"\"\n";
    const std::string transform = "component_schema \"Transform\" 1 1\nproperty \"position\" \"1 2 3\"\n"
                                  "end_component_schema\n";
    const struct
    {
        const char* name;
        std::string text;
        const char* error;
    } rows[] = {
        {"saved form", kCurrent, ""},
        {"another layout", std::string("# note\n\nscene_version   6\n") + frame + transform + "end_entity",
         ""},
        {"no transform", std::string("scene_version 6\n") + frame + "end_entity\n",
         "Failed to parse scene file at line 2: Entity is missing its TransformComponent record."},
        {"no terminator", std::string("scene_version 6\n") + frame + transform,
         "Scene read failed or entity terminator is missing."},
        {"legacy", kLegacyV3,
         "Scene format version 3 is a legacy format the engine no longer reads. Convert it to version 6 with "
         "the offline tool: vornu-upgrade --content <ProjectContentFolder> \"a.vscene\""},
    };
    const ScopedVariable temporary("TMPDIR", (state_ / "tmp").string());
    std::filesystem::create_directory(state_ / "tmp");
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        folder_.Write("a.vscene", row.text);
        const auto modified = std::filesystem::last_write_time("a.vscene");
        std::string error;
        EXPECT_EQ(VerifyRoundTrip("a.vscene", assets_, error), *row.error == '\0');
        EXPECT_EQ(error, row.error);
        EXPECT_EQ(folder_.Read("a.vscene"), row.text);
        EXPECT_EQ(std::filesystem::last_write_time("a.vscene"), modified);
        EXPECT_TRUE(std::filesystem::is_empty(state_ / "tmp"));
    }
    folder_.Write("a.vscene", kCurrent);
    std::string error;
    {
        const ScopedFault fault(NoRename);
        EXPECT_FALSE(VerifyRoundTrip("a.vscene", assets_, error));
    }
    EXPECT_EQ(
        error,
        "Failed to save scene: Failed to replace scene file: Failed to replace file: Permission denied");
    EXPECT_TRUE(std::filesystem::is_empty(state_ / "tmp"));
}

TEST_F(UpgradeFileOutcome, NoCopyIsOpenToMoreUsersThanItsSource)
{
    static mode_t openToOthers = 0;
    const ScopedFault fault(
        [](FileSystemCalls& calls)
        {
            calls.write = [](int descriptor, const void* bytes, std::size_t size)
            {
                struct stat status = {};
                ::fstat(descriptor, &status);
                openToOthers |= status.st_mode & 077u;
                return ::write(descriptor, bytes, size);
            };
            calls.rename = [](const char* from, const char* to)
            {
                struct stat status = {};
                ::stat(from, &status);
                openToOthers |= status.st_mode & 077u;
                return std::rename(from, to);
            };
        });
    folder_.Write("a.vscene", kLegacyV3);
    ASSERT_EQ(::chmod("a.vscene", 0600), 0);
    EXPECT_EQ(UpgradeFile("a.vscene", assets_, {"o", true}).status, UpgradeStatus::Converted);
    EXPECT_EQ(UpgradeFile("a.vscene", assets_, {"", true}).status, UpgradeStatus::Converted);
    ASSERT_EQ(::chmod("a.vscene", 0644), 0); // readable, but perhaps not its folder
    std::string error;
    EXPECT_TRUE(VerifyRoundTrip("a.vscene", assets_, error)) << error;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path()))
    {
        openToOthers |= entry.path().filename() == "a.vscene"
                            ? 0u
                            : static_cast<mode_t>(entry.status().permissions()) & 077u;
    }
    EXPECT_EQ(openToOthers, 0u);
}

TEST_F(UpgradeFileOutcome, TheSecondSaveIsComparedWithTheFirst)
{
    // The second file loses its last byte on its way into place.
    const ScopedFault fault(
        [](FileSystemCalls& calls)
        {
            calls.rename = [](const char* from, const char* to)
            {
                if (std::string_view(to).ends_with(".b.vscene"))
                {
                    std::filesystem::resize_file(from, std::filesystem::file_size(from) - 1);
                }
                return std::rename(from, to);
            };
        });
    folder_.Write("a.vscene", kCurrent);
    std::string error;
    EXPECT_FALSE(VerifyRoundTrip("a.vscene", assets_, error));
    EXPECT_EQ(error, "load/save round trip is not stable");
}

} // namespace
} // namespace Vornu::Upgrade
