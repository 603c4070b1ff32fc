#include "engine/core/files/Files.h"

#include "engine/core/files/Backup.h"
#include "engine/core/files/FileStamp.h"
#include "engine/core/files/FileSystemCalls.h"
#include "engine/core/files/TemporaryFile.h"
#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace Vornu::Platform
{
namespace
{

using Test::TestFolder;
using Test::Text;

/// What the faulty table below does; the real calls do the rest.
struct FaultPlan
{
    const FileSystemCalls* real = nullptr;
    int failAt = 0;
    int error = 0;
    bool unnamedFiles = true;
    bool links = true;
    bool attributes = true;
    bool shortWrites = false;
    bool renamed = false;
    int calls = 0;

    bool Fails()
    {
        errno = error;
        return ++calls == failAt;
    }
};

FaultPlan plan;

constexpr FileSystemCalls kFaultyCalls = {
    [](const char* path, int flags, mode_t mode)
    {
        if (!plan.unnamedFiles && (flags & O_TMPFILE) == O_TMPFILE)
        {
            errno = EOPNOTSUPP;
            return -1;
        }
        return plan.Fails() ? -1 : plan.real->open(path, flags, mode);
    },
    [](int file, void* buffer, std::size_t length)
    { return plan.Fails() ? -1 : plan.real->read(file, buffer, length); },
    [](int file, const void* buffer, std::size_t length)
    {
        if (plan.shortWrites && plan.calls % 2 == 0)
        {
            ++plan.calls;
            errno = EINTR;
            return static_cast<ssize_t>(-1);
        }
        return plan.Fails()
                   ? -1
                   : plan.real->write(file, buffer, plan.shortWrites ? std::min(length, 3ul) : length);
    },
    [](int file) { return plan.Fails() ? -1 : plan.real->fsync(file); },
    [](const char* from, const char* to)
    {
        plan.renamed = !plan.Fails();
        return plan.renamed ? plan.real->rename(from, to) : -1;
    },
    [](const char* from, const char* to, int flags)
    {
        if (!plan.links)
        {
            errno = EPERM;
            return -1;
        }
        return plan.Fails() ? -1 : plan.real->link(from, to, flags);
    },
    [](int file)
    {
        // A close that reports an error has closed the file nevertheless.
        plan.real->close(file);
        return plan.Fails() ? -1 : 0;
    },
    [](int file, const char* name, const void* value, std::size_t size)
    {
        if (!plan.attributes)
        {
            errno = ENOTSUP;
            return -1;
        }
        return plan.Fails() ? -1 : plan.real->fsetxattr(file, name, value, size);
    },
};

/// Puts the faulty table in use for a scope.
class FaultScope
{
public:
    explicit FaultScope(FaultPlan wanted)
    {
        plan = wanted;
        plan.real = ReplaceFileSystemCalls(&kFaultyCalls);
    }
    ~FaultScope() { ReplaceFileSystemCalls(plan.real); }
};

/// Runs `attempt` once for each of its calls, with that call failing; gives the number of attempts.
int SweepFaults(bool unnamedFiles, const std::function<void(const FaultPlan&)>& attempt)
{
    int attempts = 0;
    for (const int error : {ENOSPC, EIO})
    {
        for (int failAt = 1;; ++failAt, ++attempts)
        {
            attempt({.failAt = failAt, .error = error, .unnamedFiles = unnamedFiles});
            if (plan.calls < failAt || testing::Test::HasFailure())
            {
                break;
            }
        }
    }
    return attempts;
}

FileResult SaveThroughTemporary(const TestFolder& folder, std::string_view text)
{
    TemporaryFile file(folder / "a.tmp", folder / "a");
    file.Write(text);
    if (!file.Close())
    {
        return {FileResult::kSystemFailure, file.ErrorText()};
    }
    return ReplaceFileAtomically(file.Path(), folder / "a", true);
}

TEST(ReplaceFile, RefusesWhatItCannotDo)
{
    const TestFolder folder;
    const fs::path a = folder.Write("a", "one");
    const std::string longName(300, 'n');
    const std::string sub = (folder / "sub").string();
    fs::create_directory(sub);
    const struct
    {
        fs::path source;
        fs::path destination;
        std::string expected;
    } rows[] = {
        {"", a, "1 Path is empty."},
        {folder / "none", a, "2 Path does not exist: " + (folder / "none").string()},
        {longName, a, "4 Failed to inspect path '" + longName + "': File name too long"},
        {a, "", "1 Destination path is empty."},
        {a, a, "1 Source and destination identify the same file."},
        {a, folder / "sub/../a", "1 Source and destination identify the same file."},
        {a, sub, "4 Failed to replace file: Is a directory"},
        {a, folder / "none/a", "4 Failed to replace file: No such file or directory"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(Text(ReplaceFileAtomically(row.source, row.destination, false)), row.expected);
        EXPECT_EQ(folder.Read("a"), "one");
    }
}

TEST(ReplaceFile, LeadsThroughALinkToAFolderAsTheSystemDoes)
{
    const TestFolder folder;
    folder.Write("far/sub/x", "");
    folder.Write("a", "near");
    folder.Write("far/a", "far");
    folder.Write("far/new", "new");
    fs::create_directory_symlink("far/sub", folder / "link");
    EXPECT_EQ(Text(ReplaceFileAtomically(folder / "link/../new", folder / "link/../a", true)), "0 ");
    EXPECT_EQ(folder.Read("far/a"), "new");
    EXPECT_EQ(folder.Read("a"), "near");
    EXPECT_EQ(Text(CopyFileExclusive(folder / "link/../a", folder / "link/../b")), "0 ");
    EXPECT_EQ(folder.Read("far/b"), "new");
    EXPECT_EQ(Text(SetFileHidden(folder / "link/..", false)), "0 ");
}

TEST(ReplaceFile, IsAskedForDirectlyBeforeTheStep)
{
    const TestFolder folder;
    folder.Write("a", "old");
    folder.Write("b", "new");
    std::string seen;
    const auto answer = [&](bool mayReplace)
    {
        return ReplaceFileAtomically(folder / "b", folder / "a", true,
                                     [&]
                                     {
                                         seen += folder.Read("a");
                                         return mayReplace;
                                     });
    };
    EXPECT_EQ(Text(answer(false)), "4 Failed to replace file: Operation canceled");
    EXPECT_EQ(folder.Read("a") + folder.Read("b"), "oldnew");
    EXPECT_EQ(Text(answer(true)), "0 ");
    EXPECT_EQ(folder.Read("a"), "new");
    EXPECT_EQ(seen, "oldold");
}

TEST(ReplaceFile, KeepsThePermissionsOfTheTarget)
{
    const TestFolder folder;
    for (const mode_t mode : {0640u, 0600u, 0755u})
    {
        folder.Write("a", "old");
        ASSERT_EQ(::chmod((folder / "a").c_str(), mode), 0);
        EXPECT_EQ(Text(SaveThroughTemporary(folder, "new")), "0 ");
        struct stat status = {};
        ASSERT_EQ(::stat((folder / "a").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777u, mode);
        EXPECT_EQ(folder.Read("a"), "new");
        EXPECT_EQ(folder.List(), "a");
    }
}

TEST(ReplaceFile, AnyFailureLeavesTheTargetAndNoTemporaryFile)
{
    const int attempts =
        SweepFaults(true,
                    [](const FaultPlan& wanted)
                    {
                        const TestFolder folder;
                        folder.Write("a", "old");
                        FileResult result;
                        {
                            const FaultScope faults(wanted);
                            result = SaveThroughTemporary(folder, "new");
                        }
                        // Only the last flush of the folder comes too late to take anything back.
                        EXPECT_EQ(folder.Read("a"), result.Succeeded() || plan.renamed ? "new" : "old")
                            << wanted.failAt;
                        EXPECT_EQ(folder.List(), "a") << wanted.failAt;
                    });
    // At least open, write and close, then open, flush, close, open of the folder, rename and flush, per
    // error.
    EXPECT_GE(attempts, 2 * 9);
}

TEST(ReplaceFile, AFolderThatCannotBeFlushedIsNoFailure)
{
    const TestFolder folder;
    folder.Write("a", "old");
    int flushOfFolder = 0;
    {
        const FaultScope faults({});
        SaveThroughTemporary(folder, "new");
        flushOfFolder = plan.calls - 1;
    }
    for (const auto& [error, expected] : {std::pair(EINVAL, "0 "), std::pair(ENOTSUP, "0 "),
                                          std::pair(EIO, "4 Failed to replace file: Input/output error")})
    {
        const FaultScope faults({.failAt = flushOfFolder, .error = error});
        EXPECT_EQ(Text(SaveThroughTemporary(folder, "new")), expected);
    }
}

TEST(TemporaryFile, WritesWholeThroughShortWritesAndInterruptions)
{
    const TestFolder folder;
    {
        const FaultScope faults({.shortWrites = true});
        EXPECT_EQ(Text(SaveThroughTemporary(folder, "all of these bytes")), "0 ");
    }
    EXPECT_EQ(folder.Read("a"), "all of these bytes");
}

TEST(TemporaryFile, RemovesItsOwnFileOnly)
{
    const TestFolder folder;
    folder.Write("old.tmp", "left by a crash");
    folder.Write("target", "kept");
    fs::create_symlink(folder / "target", folder / "link.tmp");
    {
        TemporaryFile emptied(folder / "old.tmp", folder / "old");
        EXPECT_TRUE(emptied.IsOpen());
        EXPECT_EQ(folder.Read("old.tmp"), "");
        TemporaryFile moved(folder / "moved.tmp", folder / "moved");
        EXPECT_TRUE(moved.Write("moved") && moved.Close());
        fs::rename(folder / "moved.tmp", folder / "moved");
        folder.Write("moved.tmp", "of another writer");
        TemporaryFile refused(folder / "link.tmp", folder / "link");
        EXPECT_FALSE(refused.IsOpen() || refused.Good() || refused.Write("x") || refused.Close());
        EXPECT_EQ(refused.ErrorText(), "Too many levels of symbolic links");
    }
    EXPECT_EQ(folder.List(), "link.tmp moved moved.tmp target");
    EXPECT_EQ(folder.Read("target"), "kept");
}

TEST(CopyFileExclusive, KeepsBytesAndPermissionsAndNeverOverwrites)
{
    for (const bool unnamedFiles : {true, false})
    {
        const TestFolder folder;
        const FaultScope faults({.unnamedFiles = unnamedFiles});
        const std::string bytes(600'000, 'b');
        ASSERT_EQ(::chmod(folder.Write("a", bytes).c_str(), 0640), 0);
        EXPECT_EQ(Text(CopyFileExclusive(folder / "a", folder / "b")), "0 ");
        EXPECT_EQ(folder.Read("b"), bytes);
        struct stat status = {};
        ASSERT_EQ(::stat((folder / "b").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777u, 0640u);

        folder.Write("a", "newer");
        EXPECT_EQ(Text(CopyFileExclusive(folder / "a", folder / "b")), "4 File exists");
        EXPECT_EQ(Text(CopyFileExclusive(folder / "none", folder / "c")), "4 No such file or directory");
        EXPECT_EQ(Text(CopyFileExclusive(folder.Path(), folder / "c")), "4 Is a directory");
        EXPECT_EQ(Text(CopyFileExclusive(folder / "a", folder / "none/c")), "4 No such file or directory");
        EXPECT_EQ(Text(CopyFileExclusive(folder / "a", "")), "4 No such file or directory");
        EXPECT_EQ(Text(CopyFileExclusive(folder / "a", folder / "c", ReadFileStamp(folder / "b"))),
                  "4 Stale file handle");
        EXPECT_EQ(folder.Read("b"), bytes);
        EXPECT_EQ(folder.List(), "a b");
    }
}

TEST(CopyFileExclusive, WorksOnFileSystemsWithoutHardLinks)
{
    const TestFolder folder;
    folder.Write("a", "new");
    folder.Write("taken", "old");
    for (const bool unnamedFiles : {true, false})
    {
        const FaultScope scope({.unnamedFiles = unnamedFiles, .links = false});
        EXPECT_EQ(Text(CopyFileExclusive(folder / "a", folder / "b")), "0 ");
        EXPECT_EQ(Text(CopyFileExclusive(folder / "a", folder / "taken")), "4 File exists");
        EXPECT_EQ(folder.Read("b"), "new");
        EXPECT_EQ(folder.Read("taken"), "old");
        EXPECT_EQ(folder.List(), "a b taken");
        std::filesystem::remove(folder / "b");
    }
}

TEST(CopyFileExclusive, AnyFailureLeavesNothingBehind)
{
    for (const bool unnamedFiles : {true, false})
    {
        const int attempts = SweepFaults(unnamedFiles,
                                         [](const FaultPlan& wanted)
                                         {
                                             const TestFolder folder;
                                             folder.Write("a", "bytes");
                                             FileResult result;
                                             {
                                                 const FaultScope faults(wanted);
                                                 result = CopyFileExclusive(folder / "a", folder / "b");
                                             }
                                             EXPECT_EQ(folder.List(), result.Succeeded() ? "a b" : "a")
                                                 << wanted.failAt;
                                             EXPECT_EQ(folder.Read("a"), "bytes");
                                             if (result.Succeeded())
                                             {
                                                 EXPECT_EQ(folder.Read("b"), "bytes") << wanted.failAt;
                                             }
                                         });
        EXPECT_GE(attempts, 2 * 10);
    }
}

TEST(ReadFileBinary, TellsAFailedReadFromTheEnd)
{
    const TestFolder folder;
    const std::string bytes(200'000, '\0');
    folder.Write("a", bytes);
    EXPECT_EQ(ReadFileBinary(folder / "a").bytes, bytes);
    EXPECT_EQ(Text(ReadFileBinary(folder / "none").result), "4 No such file or directory");
    EXPECT_EQ(Text(ReadFileBinary(folder.Path()).result), "4 Is a directory");
    EXPECT_FALSE(ReadFileBinary(folder.Path()).opened);
    // The third call is the second read: the bytes are there, but not that the file ends here.
    const FaultScope faults({.failAt = 3, .error = EIO});
    const FileContents contents = ReadFileBinary(folder / "a");
    EXPECT_TRUE(contents.opened);
    EXPECT_EQ(Text(contents.result), "4 Input/output error");
    EXPECT_EQ(contents.bytes, "");
}

TEST(SetFileHidden, KnowsTheLeadingDotOnly)
{
    const TestFolder folder;
    folder.Write("a", "");
    folder.Write(".b/c", "");
    const std::string refused = "4 Failed to update file attributes: Operation not supported";
    EXPECT_EQ(Text(SetFileHidden(folder / "a", false)), "0 ");
    EXPECT_EQ(Text(SetFileHidden(folder / "a", true)), refused);
    EXPECT_EQ(Text(SetFileHidden(folder / ".b/", true)), "0 ");
    EXPECT_EQ(Text(SetFileHidden(folder / ".b/../a", false)), "0 ");
    EXPECT_EQ(Text(SetFileHidden(folder / ".b", false)), refused);
    EXPECT_EQ(Text(SetFileHidden(folder / ".none", true)),
              "2 Path does not exist: " + (folder / ".none").string());
}

TEST(FileStamp, ChangesWithTheFileAndNotWithItsName)
{
    const TestFolder folder;
    folder.Write("a", "one");
    fs::create_symlink("a", folder / "link");
    const auto first = ReadFileStamp(folder / "a");
    ASSERT_TRUE(first);
    EXPECT_EQ(first->size, 3u);
    EXPECT_EQ(ReadFileStamp(folder / "link"), first);
    EXPECT_EQ(ReadFileStamp(folder / "none"), std::nullopt);
    // The same bytes and time in another file.
    fs::copy_file(folder / "a", folder / "b");
    fs::last_write_time(folder / "b", fs::last_write_time(folder / "a"));
    fs::rename(folder / "b", folder / "a");
    EXPECT_NE(ReadFileStamp(folder / "a"), first);
}

} // namespace
} // namespace Vornu::Platform
