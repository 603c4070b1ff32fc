#include "engine/core/process/Process.h"

#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <string>
#include <thread>

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace Vornu::Platform
{
namespace
{

using Test::TestFolder;
using Test::Text;

ProcessRequest Shell(const char* script)
{
    return {.executable = "/bin/sh", .arguments = {"-c", script, "sh"}, .workingDirectory = "/"};
}

bool WaitUntil(const std::function<bool()>& condition)
{
    for (int i = 0; i < 1000; ++i)
    {
        if (condition())
        {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return false;
}

TEST(Process, BadRequestsFailBeforeAnythingStarts)
{
    const TestFolder folder;
    const fs::path plain = folder.Write("plain", "no program");
    const std::string root = folder.Path().string();
    const std::string longName(300, 'n');
    const struct
    {
        ProcessRequest request;
        std::string expected;
    } rows[] = {
        {{"", {}, root + "/none"}, "1 Executable path is empty."},
        {{longName, {}, {}}, "4 Failed to inspect executable '" + longName + "': File name too long"},
        {{root + "/none", {}, {}}, "2 Executable does not exist: " + root + "/none"},
        {{root, {}, {}}, "1 Executable path does not identify a regular file: " + root},
        {{plain, {}, longName}, "4 Failed to inspect process working directory: File name too long"},
        {{plain, {}, root + "/none"}, "2 Process working directory does not exist: " + root + "/none"},
        {{plain, {}, plain}, "1 Process working directory is not a directory: " + root + "/plain"},
        {{plain, {}, {}}, "4 Failed to launch process: Permission denied"},
    };
    for (const auto& row : rows)
    {
        std::unique_ptr<CapturedProcess> slot;
        const ProcessResult result = RunCaptured(row.request);
        EXPECT_EQ(std::to_string(result.failureCode) + " " + result.errorMessage, row.expected);
        EXPECT_EQ(result.errorCode, result.failureCode);
        EXPECT_EQ(result.exitCode, -1);
        EXPECT_EQ(Text(StartDetached(row.request)), row.expected);
        EXPECT_EQ(Text(StartCaptured(row.request, slot)), row.expected);
        EXPECT_EQ(slot, nullptr);
    }
    ASSERT_EQ(::chmod(plain.c_str(), 0700), 0);
    EXPECT_EQ(RunCaptured({plain, {}, {}}).errorMessage, "Failed to launch process: Exec format error");
}

TEST(Process, CapturesBothOutputsInOrderAndTheExitCode)
{
    const ProcessResult result = RunCaptured(Shell("echo one; echo two >&2; echo three; exit 7"));
    EXPECT_EQ(result.output, "one\ntwo\nthree\n");
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_EQ(result.failureCode, 0);
    EXPECT_EQ(result.errorMessage, "");
    EXPECT_EQ(RunCaptured(Shell("kill -9 $$")).exitCode, 128 + 9);
    EXPECT_EQ(RunCaptured(Shell("head -c 300000 /dev/zero")).output.size(), 300'000u);
}

TEST(Process, ArgumentsReachTheChildUnchanged)
{
    ProcessRequest request = Shell("printf '<%s>' \"$@\"");
    request.arguments.insert(request.arguments.end(), {"a b\\", "", "\"q\\\"", "$HOME *", fs::path("p q")});
    EXPECT_EQ(RunCaptured(request).output, "<a b\\><><\"q\\\"><$HOME *><p q>");
}

TEST(Process, RunsInTheGivenFolderOrThatOfTheExecutable)
{
    const TestFolder folder;
    const fs::path script = folder.Write("bin/run", "#!/bin/sh\npwd\n");
    ASSERT_EQ(::chmod(script.c_str(), 0700), 0);
    fs::create_symlink(script, folder / "link");
    EXPECT_EQ(RunCaptured({script, {}, folder.Path()}).output, folder.Path().string() + "\n");
    EXPECT_EQ(RunCaptured({folder / "link", {}, {}}).output, (folder / "bin").string() + "\n");
}

TEST(Process, TheChildInheritsNeitherFilesNorIgnoredSignals)
{
    const ProcessRequest countFiles = Shell("echo /proc/self/fd/* | wc -w");
    const std::string before = RunCaptured(countFiles).output;
    const FileHandle file = OpenFileShared("/dev/null", "wb");
    std::unique_ptr<CapturedProcess> other;
    ASSERT_EQ(Text(StartCaptured(Shell("true"), other)), "0 ");
    EXPECT_EQ(RunCaptured(countFiles).output, before);
    const auto old = std::signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(RunCaptured(Shell("kill -13 $$")).exitCode, 128 + 13);
    std::signal(SIGPIPE, old);
}

TEST(Process, PollsDeliverAllOutputInBoundedParts)
{
    std::unique_ptr<CapturedProcess> slot;
    const TestFolder folder;
    const std::string script = "head -c 200000 /dev/zero; : > " + (folder / "done").string() + "; exit 3";
    ASSERT_EQ(Text(StartCaptured(Shell(script.c_str()), slot)), "0 ");
    EXPECT_EQ(Text(StartCaptured(Shell("true"), slot)), "1 Process handle already owns a job.");
    std::size_t total = 0;
    ProcessSnapshot snapshot;
    ASSERT_TRUE(WaitUntil(
        [&]
        {
            slot->Poll(snapshot);
            EXPECT_LE(snapshot.output.size(), 65'536u);
            EXPECT_EQ(snapshot.errorMessage, "");
            EXPECT_EQ(snapshot.exitCode, snapshot.state == 0 ? 3 : -1);
            total += snapshot.output.size();
            return snapshot.state == 0;
        }));
    EXPECT_EQ(total, 200'000u);
    slot->Poll(snapshot);
    EXPECT_EQ(snapshot.output + std::to_string(snapshot.state) + std::to_string(snapshot.exitCode), "03");
}

TEST(Process, APollOfASilentChildDoesNotWait)
{
    std::unique_ptr<CapturedProcess> slot;
    ASSERT_EQ(Text(StartCaptured(Shell("sleep 1"), slot)), "0 ");
    const auto start = std::chrono::steady_clock::now();
    ProcessSnapshot snapshot;
    slot->Poll(snapshot);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
    EXPECT_EQ(snapshot.state, 1);
}

TEST(Process, AForgottenChildRunsOnAndLeavesNoZombie)
{
    const TestFolder folder;
    const std::string pidFile = (folder / "pid").string();
    const std::string script = "echo $$ > " + pidFile + ".part; mv " + pidFile + ".part " + pidFile;
    std::unique_ptr<CapturedProcess> slot;
    for (const bool detached : {true, false})
    {
        fs::remove(pidFile);
        EXPECT_EQ(Text(detached ? StartDetached(Shell(script.c_str()))
                                : StartCaptured(Shell(script.c_str()), slot)),
                  "0 ");
        slot.reset();
        ASSERT_TRUE(WaitUntil([&] { return fs::exists(pidFile); }));
        const std::string process = "/proc/" + folder.Read("pid");
        EXPECT_TRUE(WaitUntil([&] { return !fs::exists(process.substr(0, process.size() - 1)); }));
    }
}

TEST(Process, QuotesByTheRuleOfCommandLines)
{
    const struct
    {
        const char* argument;
        const char* expected;
    } rows[] = {
        {"", "\"\""},
        {"plain\\", "plain\\"},
        {"a b", "\"a b\""},
        {"a b\\", "\"a b\\\\\""},
        {"a\\b c\\\\", "\"a\\b c\\\\\\\\\""},
        {"\"", "\"\\\"\""},
        {"a\\\"b", "\"a\\\\\\\"b\""},
        {"a\vb", "\"a\vb\""},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(QuoteCommandLineArgument(row.argument), row.expected);
    }
}

} // namespace
} // namespace Vornu::Platform
