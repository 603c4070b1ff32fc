#pragma once

#include "engine/core/files/Files.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Vornu::Platform
{

/// One argument of a child process, from UTF-8 text or from a path.
class ProcessArgument
{
public:
    ProcessArgument(std::string text) : text_(std::move(text)) {}
    ProcessArgument(const char* text) : text_(text) {}
    ProcessArgument(const std::filesystem::path& path) : text_(path.string()) {}

    const std::string& Text() const noexcept { return text_; }

private:
    std::string text_;
};

struct ProcessRequest
{
    std::filesystem::path executable;
    /// Without the program's own name. Each reaches the child as it stands; no shell sees it.
    std::vector<ProcessArgument> arguments;
    /// The executable's folder if empty.
    std::filesystem::path workingDirectory;
};

/// How a child that was waited for ended. `errorCode` and `errorMessage` tell of any failure, as in
/// `FileResult`.
struct ProcessResult
{
    /// The `errorCode` of a child that never ran; 0 if it ran.
    std::int32_t failureCode = 0;
    /// -1 until known; 128 and the signal's number for a child that a signal ended.
    std::int32_t exitCode = -1;
    /// Standard output and standard error in the order they came.
    std::string output;
    std::int32_t errorCode = 0;
    std::string errorMessage;
};

/// What `CapturedProcess::Poll` found.
struct ProcessSnapshot
{
    /// 1 while the child runs or more output is waiting, 0 once it has ended and all output was delivered.
    std::int32_t state = 1;
    /// -1 until `state` is 0; 128 and the signal's number for a child that a signal ended.
    std::int32_t exitCode = -1;
    /// Bytes that came since the last poll.
    std::string output;
    /// As in `FileResult`; a poll that failed may leave `state` at 1 for good.
    std::int32_t errorCode = 0;
    std::string errorMessage;
};

/// A running child with captured output. Polled by one thread. Destroying it doesn't stop the child.
class CapturedProcess
{
public:
    virtual ~CapturedProcess() = default;

    /// Fills `snapshot` anew without ever waiting, with at most 65,536 bytes of output.
    virtual void Poll(ProcessSnapshot& snapshot) = 0;
};

/// Runs a child to its end. Standard input is shared with it. Waits for whoever holds the child's output
/// open.
ProcessResult RunCaptured(const ProcessRequest& request);

/// Starts a child in a session of its own and forgets it.
FileResult StartDetached(const ProcessRequest& request);

/// Starts a child and puts it into the empty `slot`; a slot in use is refused.
FileResult StartCaptured(const ProcessRequest& request, std::unique_ptr<CapturedProcess>& slot);

/// One argument in the quoting that C runtimes take command lines apart by.
std::string QuoteCommandLineArgument(std::string_view argument);

} // namespace Vornu::Platform
