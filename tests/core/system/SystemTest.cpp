#include "engine/core/system/System.h"

#include "engine/core/files/Backup.h"
#include "engine/core/files/FileSystemCalls.h"
#include "engine/core/files/TemporaryFile.h"
#include "engine/core/system/Signals.h"
#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <functional>
#include <string>
#include <thread>

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace Vornu::Platform
{
namespace
{

using Test::ScopedVariable;
using Test::TestFolder;

std::string FileSystemFailure(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const fs::filesystem_error& error)
    {
        return error.what();
    }
    return "none";
}

/// The wait status of a child process that runs `body`.
int StatusOfChild(const std::function<int()>& body)
{
    const pid_t child = ::fork();
    if (child == 0)
    {
        ::_exit(body());
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

std::string NameGivenToThread(const char* name)
{
    std::array<char, 16> text{};
    std::thread(
        [&]
        {
            SetCurrentThreadName(name);
            pthread_getname_np(pthread_self(), text.data(), text.size());
        })
        .join();
    return text.data();
}

TEST(System, AnEmptyVariableCountsAsNotSet)
{
    const ScopedVariable set("VORNU_TEST_SET", "value");
    const ScopedVariable empty("VORNU_TEST_EMPTY", "");
    EXPECT_EQ(GetEnvironmentValue("VORNU_TEST_SET"), "value");
    EXPECT_EQ(GetEnvironmentValue("VORNU_TEST_EMPTY"), std::nullopt);
    EXPECT_EQ(GetEnvironmentValue("VORNU_TEST_NONE"), std::nullopt);
}

TEST(System, ThreadNamesAreCutBetweenCharacters)
{
    EXPECT_EQ(NameGivenToThread("Vornu Log Sink"), "Vornu Log Sink");
    EXPECT_EQ(NameGivenToThread("0123456789abcdef"), "0123456789abcde");
    EXPECT_EQ(NameGivenToThread("0123456789abcd\xC3\xA9"), "0123456789abcd");
    EXPECT_EQ(NameGivenToThread("0123456789abc\xC3\xA9"), "0123456789abc\xC3\xA9");
}

TEST(System, ErrorTexts)
{
    EXPECT_EQ(SystemErrorText(ENOENT), "No such file or directory");
    EXPECT_EQ(SystemErrorText(99999), "Unknown Win32 error");
    EXPECT_EQ(SystemErrorText(-1), "Unknown Win32 error");
    EXPECT_EQ(SystemErrorText(std::make_error_code(std::errc::is_a_directory)), "Is a directory");
}

TEST(System, RandomBytesFillTheWholeBuffer)
{
    std::array<unsigned char, 4096> bytes{};
    ASSERT_TRUE(RandomBytes(bytes.data(), bytes.size()));
    for (std::size_t i = 0; i < bytes.size(); i += 32)
    {
        EXPECT_NE(std::string(bytes.begin() + static_cast<std::ptrdiff_t>(i),
                              bytes.begin() + static_cast<std::ptrdiff_t>(i + 32)),
                  std::string(32, '\0'));
    }
}

TEST(System, FileErrorsStartWithTheOperation)
{
    const TestFolder folder;
    const fs::path file = folder.Write("file", "");
    const fs::path none = folder / "none";
    fs::create_symlink("loop", folder / "loop");
    const fs::path loop = folder / "loop";
    const std::string loops = ": Too many levels of symbolic links: \"" + loop.string() + "\"";
    const std::string absent = ": No such file or directory: \"" + none.string() + "\"";
    const struct
    {
        std::function<void()> call;
        std::string expected;
    } rows[] = {
        {[&] { CreateDirectories(file); }, "create_directories: Not a directory: \"" + file.string() + "\""},
        {[&] { Exists(none); }, "none"},
        {[&] { Exists(loop); }, "exists" + loops},
        {[&] { Status(none); }, "none"},
        {[&] { Status(loop); }, "status" + loops},
        {[&] { EntryStatus(loop); }, "directory_entry::status" + loops},
        {[&] { WeaklyCanonical(loop); }, "weakly_canonical" + loops},
        {[&] { CopyFile(none, file); }, "copy_file" + absent},
        {[&] { LastWriteTime(none); }, "last_write_time" + absent},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(FileSystemFailure(row.call), row.expected);
    }
    const ScopedVariable place("TMPDIR", none.string());
    EXPECT_EQ(FileSystemFailure([] { TempDirectoryPath(); }).substr(0, 21), "temp_directory_path: ");
}

TEST(Signals, AFatalSignalRemovesTemporaryFilesAndTakesItsCourse)
{
    const TestFolder folder;
    for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP})
    {
        const int status = StatusOfChild(
            [&]
            {
                std::signal(signalNumber, SIG_DFL); // whatever the test itself was started with
                InstallTemporaryFileCleanup();
                fs::current_path(folder.Path());
                const TemporaryFile file("a.tmp", "a");
                {
                    const TemporaryFile moved(folder / "moved.tmp", folder / "moved");
                    fs::rename(folder / "moved.tmp", folder / "moved");
                }
                folder.Write("moved.tmp", "");
                fs::current_path("/");
                ::raise(signalNumber);
                return 0;
            });
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signalNumber) << status;
        EXPECT_EQ(folder.List(), "moved moved.tmp");
    }
}

TEST(Signals, AFileIsRegisteredBeforeItExists)
{
    const TestFolder folder;
    folder.Write("source", "");
    static FileSystemCalls calls;
    calls = ActiveFileSystemCalls();
    // The signal comes as soon as a file was created; there are no files without a name.
    calls.open = [](const char* path, int flags, mode_t mode)
    {
        if ((flags & O_TMPFILE) == O_TMPFILE)
        {
            errno = EOPNOTSUPP;
            return -1;
        }
        const int file = ::open(path, flags, mode);
        if ((flags & O_CREAT) != 0)
        {
            ::raise(SIGTERM);
        }
        return file;
    };
    const std::function<void()> writers[] = {
        [&] { const TemporaryFile file(folder / "a.tmp", folder / "a"); },
        [&] { CopyFileExclusive(folder / "source", folder / "copy"); },
    };
    for (const auto& write : writers)
    {
        const int status = StatusOfChild(
            [&]
            {
                std::signal(SIGTERM, SIG_DFL);
                InstallTemporaryFileCleanup();
                ReplaceFileSystemCalls(&calls);
                write();
                return 0;
            });
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
        EXPECT_EQ(folder.List(), "source");
    }
}

TEST(Signals, AnIgnoredSignalStaysIgnored)
{
    const int status = StatusOfChild(
        []
        {
            std::signal(SIGHUP, SIG_IGN);
            InstallTemporaryFileCleanup();
            ::raise(SIGHUP);
            return 5;
        });
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 5) << status;
}

TEST(Signals, ClosedStandardStreamsAreOpenedOnTheNullDevice)
{
    const TestFolder folder;
    const int status = StatusOfChild(
        [&]
        {
            ::close(0);
            ::close(2);
            PrepareStandardStreams();
            struct stat nothing = {};
            struct stat input = {};
            struct stat errors = {};
            const bool opened = ::stat("/dev/null", &nothing) == 0 && ::fstat(0, &input) == 0 &&
                                ::fstat(2, &errors) == 0 && input.st_rdev == nothing.st_rdev &&
                                errors.st_rdev == nothing.st_rdev;
            ::raise(SIGPIPE);
            ::raise(SIGXFSZ);
            const TemporaryFile file(folder / "a", folder / "a");
            return opened && file.IsOpen() ? 0 : 1;
        });
    EXPECT_EQ(status, 0);
}

} // namespace
} // namespace Vornu::Platform
