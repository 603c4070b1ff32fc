#include "engine/core/process/Process.h"

#include "engine/core/files/FileDescriptor.h"
#include "engine/core/files/FileSystemCalls.h"
#include "engine/core/system/System.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace Vornu::Platform
{
namespace
{

constexpr std::size_t kReadBlock = 4'096;
constexpr std::size_t kBytesPerPoll = 65'536;
/// What shells report for a child that a signal ended.
constexpr std::int32_t kSignalExitBase = 128;

struct ResolvedRequest
{
    fs::path executable;
    fs::path workingDirectory;
};

struct Pipe
{
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

FileResult ResolveExecutable(const fs::path& path, fs::path& out)
{
    if (path.empty())
    {
        return {FileResult::kInvalidArgument, "Executable path is empty."};
    }
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::none)
    {
        return FileResult::SystemFailure("Failed to inspect executable '" + path.string() + "'",
                                         error.value());
    }
    if (!fs::exists(status))
    {
        return {FileResult::kNotFound, "Executable does not exist: " + path.string()};
    }
    if (!fs::is_regular_file(status))
    {
        return {FileResult::kInvalidArgument,
                "Executable path does not identify a regular file: " + path.string()};
    }
    out = fs::canonical(path, error);
    return error ? FileResult::SystemFailure("Failed to resolve executable path", error.value())
                 : FileResult{};
}

FileResult ResolveWorkingDirectory(const fs::path& path, fs::path& out)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::none)
    {
        return FileResult::SystemFailure("Failed to inspect process working directory", error.value());
    }
    if (!fs::exists(status))
    {
        return {FileResult::kNotFound, "Process working directory does not exist: " + path.string()};
    }
    if (!fs::is_directory(status))
    {
        return {FileResult::kInvalidArgument,
                "Process working directory is not a directory: " + path.string()};
    }
    out = fs::canonical(path, error);
    return error ? FileResult::SystemFailure("Failed to resolve process working directory", error.value())
                 : FileResult{};
}

FileResult ResolveRequest(const ProcessRequest& request, ResolvedRequest& out)
{
    FileResult result = ResolveExecutable(request.executable, out.executable);
    if (!result.Succeeded())
    {
        return result;
    }
    if (request.workingDirectory.empty())
    {
        out.workingDirectory = out.executable.parent_path();
        return {};
    }
    return ResolveWorkingDirectory(request.workingDirectory, out.workingDirectory);
}

int CreatePipe(Pipe& out)
{
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0)
    {
        return errno;
    }
    out.readEnd = FileDescriptor(ends[0]);
    out.writeEnd = FileDescriptor(ends[1]);
    return 0;
}

/// Attributes and file actions of a launch. All steps report through `Error`.
class SpawnSetup
{
public:
    SpawnSetup()
    {
        Record(::posix_spawnattr_init(&attributes_));
        Record(::posix_spawn_file_actions_init(&actions_));
    }
    ~SpawnSetup()
    {
        ::posix_spawn_file_actions_destroy(&actions_);
        ::posix_spawnattr_destroy(&attributes_);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;

    void SetFolder(const fs::path& folder)
    {
        Record(::posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str()));
    }

    void SetOutput(const FileDescriptor& output)
    {
        Record(::posix_spawn_file_actions_adddup2(&actions_, output.Get(), STDOUT_FILENO));
        Record(::posix_spawn_file_actions_adddup2(&actions_, output.Get(), STDERR_FILENO));
    }

    /// The engine ignores signals that other programs rely on.
    void SetSignalsAndSession(bool ownSession)
    {
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGPIPE);
        sigaddset(&defaults, SIGXFSZ);
        Record(::posix_spawnattr_setsigdefault(&attributes_, &defaults));
        const int flags = POSIX_SPAWN_SETSIGDEF | (ownSession ? POSIX_SPAWN_SETSID : 0);
        Record(::posix_spawnattr_setflags(&attributes_, static_cast<short>(flags)));
    }

    int Spawn(const fs::path& executable, const std::vector<char*>& arguments, pid_t& out)
    {
        if (error_ == 0)
        {
            Record(
                ::posix_spawn(&out, executable.c_str(), &actions_, &attributes_, arguments.data(), environ));
        }
        return error_;
    }

private:
    void Record(int error) { error_ = error_ != 0 ? error_ : error; }

    posix_spawnattr_t attributes_ = {};
    posix_spawn_file_actions_t actions_ = {};
    int error_ = 0;
};

/// `output` is null for a child that shares the parent's output.
FileResult Launch(const ProcessRequest& request, const ResolvedRequest& resolved,
                  const FileDescriptor* output, pid_t& out)
{
    // The child sees the name that it was asked for by, as one program may serve several names.
    std::vector<std::string> texts = {request.executable.string()};
    for (const ProcessArgument& argument : request.arguments)
    {
        texts.push_back(argument.Text());
    }
    std::vector<char*> arguments;
    for (std::string& text : texts)
    {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);

    SpawnSetup setup;
    setup.SetFolder(resolved.workingDirectory);
    if (output != nullptr)
    {
        setup.SetOutput(*output);
    }
    setup.SetSignalsAndSession(output == nullptr);
    const int error = setup.Spawn(resolved.executable, arguments, out);
    return error == 0 ? FileResult{} : FileResult::SystemFailure("Failed to launch process", error);
}

/// waitpid(2) without interruptions: 1 once the child has ended, 0 while it runs, -1 for an error.
int WaitFor(pid_t process, int options, std::int32_t& exitCode)
{
    int status = 0;
    pid_t waited = 0;
    do
    {
        waited = ::waitpid(process, &status, options);
    } while (waited < 0 && errno == EINTR);
    if (waited <= 0)
    {
        return static_cast<int>(waited);
    }
    exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : kSignalExitBase + WTERMSIG(status);
    return 1;
}

/// Collects a child that nobody waits for any more, so that it doesn't stay in the process table.
void ReapInBackground(pid_t process)
{
    try
    {
        std::thread(
            [process]
            {
                std::int32_t ignored = 0;
                WaitFor(process, 0, ignored);
            })
            .detach();
    }
    catch (const std::system_error&)
    {
        // Out of threads: the entry in the process table goes when this program ends.
    }
}

/// Appends up to `limit` bytes. Ends at the limit, at the pipe's end or, for a pipe that doesn't wait, when
/// it holds nothing; gives 0 or the error number.
int ReadPipe(const FileDescriptor& pipe, std::size_t limit, std::string& out)
{
    std::array<char, kReadBlock> block;
    while (limit > 0)
    {
        const ssize_t count =
            ActiveFileSystemCalls().read(pipe.Get(), block.data(), std::min(limit, block.size()));
        if (count == 0 || (count < 0 && errno == EAGAIN))
        {
            return 0;
        }
        if (count > 0)
        {
            out.append(block.data(), static_cast<std::size_t>(count));
            limit -= static_cast<std::size_t>(count);
        }
        else if (errno != EINTR)
        {
            return errno;
        }
    }
    return 0;
}

class PosixCapturedProcess final : public CapturedProcess
{
public:
    PosixCapturedProcess(pid_t process, FileDescriptor output) : process_(process), output_(std::move(output))
    {
    }

    ~PosixCapturedProcess() override
    {
        if (!exitCode_)
        {
            ReapInBackground(process_);
        }
    }

    PosixCapturedProcess(const PosixCapturedProcess&) = delete;
    PosixCapturedProcess& operator=(const PosixCapturedProcess&) = delete;

    void Poll(ProcessSnapshot& snapshot) override
    {
        snapshot = {};
        // Asked for first: what a child that has ended wrote is all in the pipe by then.
        const int waitError = PollState();
        const int readError = ReadPipe(output_, kBytesPerPoll, snapshot.output);
        if (waitError != 0)
        {
            SetError(snapshot, "Failed to poll process", waitError);
            return;
        }
        if (readError != 0)
        {
            SetError(snapshot, "Failed to read process output", readError);
        }
        if (exitCode_ && snapshot.output.size() < kBytesPerPoll)
        {
            snapshot.state = 0;
            snapshot.exitCode = *exitCode_;
        }
    }

private:
    int PollState()
    {
        std::int32_t exitCode = 0;
        const int state = exitCode_ ? 0 : WaitFor(process_, WNOHANG, exitCode);
        if (state == 1)
        {
            exitCode_ = exitCode;
        }
        return state < 0 ? errno : 0;
    }

    static void SetError(ProcessSnapshot& snapshot, const char* what, int error)
    {
        FileResult result = FileResult::SystemFailure(what, error);
        snapshot.errorCode = result.code;
        snapshot.errorMessage = std::move(result.message);
    }

    pid_t process_;
    FileDescriptor output_;
    std::optional<std::int32_t> exitCode_;
};

/// The words of the failures in setting up an output pipe.
struct PipeWords
{
    const char* create;
    const char* configure;
};

bool MakeNonBlocking(const FileDescriptor& descriptor)
{
    const int flags = ::fcntl(descriptor.Get(), F_GETFL);
    return flags >= 0 && ::fcntl(descriptor.Get(), F_SETFL, flags | O_NONBLOCK) == 0;
}

FileResult LaunchWithPipe(const ProcessRequest& request, const PipeWords& words, bool nonBlocking, Pipe& pipe,
                          pid_t& process)
{
    ResolvedRequest resolved;
    FileResult result = ResolveRequest(request, resolved);
    if (!result.Succeeded())
    {
        return result;
    }
    if (const int error = CreatePipe(pipe))
    {
        return FileResult::SystemFailure(words.create, error);
    }
    if (nonBlocking && !MakeNonBlocking(pipe.readEnd))
    {
        return FileResult::SystemFailure(words.configure, errno);
    }
    result = Launch(request, resolved, &pipe.writeEnd, process);
    // Held open here, the pipe would never come to its end.
    pipe.writeEnd.Close();
    return result;
}

} // namespace

ProcessResult RunCaptured(const ProcessRequest& request)
{
    ProcessResult result;
    Pipe pipe;
    pid_t process = -1;
    FileResult launch = LaunchWithPipe(
        request, {"Failed to create process output pipe", "Failed to configure process output pipe"}, false,
        pipe, process);
    if (!launch.Succeeded())
    {
        result.failureCode = launch.code;
        result.errorCode = launch.code;
        result.errorMessage = std::move(launch.message);
        return result;
    }
    FileResult failure;
    if (const int error = ReadPipe(pipe.readEnd, static_cast<std::size_t>(-1), result.output))
    {
        failure = FileResult::SystemFailure("Failed to read process output", error);
    }
    pipe.readEnd.Close();
    if (WaitFor(process, 0, result.exitCode) < 0 && failure.Succeeded())
    {
        failure = FileResult::SystemFailure("Failed while waiting for process", errno);
    }
    result.errorCode = failure.code;
    result.errorMessage = std::move(failure.message);
    return result;
}

FileResult StartDetached(const ProcessRequest& request)
{
    ResolvedRequest resolved;
    FileResult result = ResolveRequest(request, resolved);
    if (!result.Succeeded())
    {
        return result;
    }
    pid_t process = -1;
    result = Launch(request, resolved, nullptr, process);
    if (result.Succeeded())
    {
        ReapInBackground(process);
    }
    return result;
}

FileResult StartCaptured(const ProcessRequest& request, std::unique_ptr<CapturedProcess>& slot)
{
    if (slot != nullptr)
    {
        return {FileResult::kInvalidArgument, "Process handle already owns a job."};
    }
    Pipe pipe;
    pid_t process = -1;
    FileResult result = LaunchWithPipe(
        request, {"Failed to create process pipe", "Failed to configure process pipe"}, true, pipe, process);
    if (!result.Succeeded())
    {
        return result;
    }
    slot = std::make_unique<PosixCapturedProcess>(process, std::move(pipe.readEnd));
    return {};
}

std::string QuoteCommandLineArgument(std::string_view argument)
{
    if (!argument.empty() && argument.find_first_of(" \t\n\v\"") == std::string_view::npos)
    {
        return std::string(argument);
    }
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char c : argument)
    {
        if (c == '"')
        {
            quoted.append(backslashes + 1, '\\');
        }
        backslashes = c == '\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    quoted.append(backslashes, '\\');
    quoted += '"';
    return quoted;
}

} // namespace Vornu::Platform
