#pragma once

#include "engine/core/files/Files.h"
#include "engine/core/logging/LogLevels.h"
#include "engine/core/logging/LogRecord.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Vornu::Core
{

/// A listener of a logger. Its operations run one at a time, on whichever thread writes. What they throw is
/// dropped. They may log: such a message goes to the history and, with the sink thread running, to a later
/// batch.
class LogSink
{
public:
    virtual ~LogSink() = default;

    /// `line` is the formatted record without its line feed.
    virtual void Write(const LogRecord& record, std::string_view line) = 0;

    virtual void Flush() = 0;
};

/// Sizes in records; 0 counts as 1.
struct LoggerLimits
{
    /// Records that wait for the sink thread before producers are held up.
    std::size_t queue = 16'384;
    std::size_t history = 8'192;
};

/// Takes messages from any thread, keeps the last ones and writes them to standard output, to two files once
/// those are open, and to the sinks. Until `OpenLogFiles` each message is written by the thread that logs it;
/// from then on a thread of the logger's own writes. No operation throws for bad input or a failed file.
class Logger
{
public:
    explicit Logger(LoggerLimits limits = {});

    /// Writes what is queued, flushes and closes everything.
    ~Logger();

    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// Drops what `IsEnabled` denies. Returns once a `Fatal` message is written and flushed.
    void Log(LogCategory category, LogLevel level, std::string message);

    /// Opens `<stem>_<date>_<time>.log` for appending and `<stem>.latest.log` anew, unless files are open or
    /// `folder` is empty; the stem is the application name with every byte other than letters, digits, `-`
    /// and
    /// `_` replaced. Then applies the variable `VORNU_LOG_LEVELS` and starts the sink thread.
    void OpenLogFiles(std::string_view applicationName, const std::filesystem::path& folder);

    /// The same in the folder `Logs` of the user settings folder.
    void OpenLogFiles(std::string_view applicationName);

    /// Ends the sink thread after what is queued, flushes and closes the files. Called by a sink, it doesn't
    /// wait, and the files close behind the batch being written.
    void CloseLogFiles();

    /// Returns once everything logged before is written and flushed; at once if called by a sink.
    void Flush();

    bool IsEnabled(LogCategory category, LogLevel level) const noexcept;

    /// Every category starts at `Info`. An unknown category is ignored.
    void SetMinimumLevel(LogCategory category, LogLevel level) noexcept;
    void SetMinimumLevelForAll(LogLevel level) noexcept;

    /// Applies `<level>`, `*=<level>` and `<category>=<level>`, separated by `,` or `;`, in order. False if
    /// an entry wasn't understood; the others apply all the same.
    bool ApplyLevelSpec(std::string_view text) noexcept;

    /// On at the start.
    void SetConsoleEnabled(bool enabled) noexcept;

    /// Gives the id for `RemoveSink`. A null sink is ignored and gives 0. The logger shares
    /// the sink until it is removed.
    std::uint64_t AddSink(std::shared_ptr<LogSink> sink);
    /// The sink isn't called any more once this returns, except for the batch being written if a sink calls.
    void RemoveSink(std::uint64_t id);

    std::vector<LogRecord> CopyHistory() const;

    /// Puts the records after `sequence` into `out`, oldest first, and gives the newest record's sequence; 0
    /// before the first.
    std::uint64_t HistorySince(std::uint64_t sequence, std::vector<LogRecord>& out) const;

    /// The last `count` lines, oldest first; none if the logger stays busy for the whole wait.
    std::vector<std::string> FormattedTail(std::size_t count, std::uint32_t waitMilliseconds) const;

    void ClearHistory();

    /// Empty while no files are open.
    std::filesystem::path GetSessionLogPath() const;

private:
    struct Worker;

    bool InOutputStage() const noexcept;
    std::unique_lock<std::mutex> LockOutput() const;

    void OpenFiles(std::string_view applicationName, const std::filesystem::path& folder);
    void CloseFiles();
    void ApplyEnvironmentLevels();

    void StartSinkThread();
    void StopSinkThread();
    void RunSinkThread(const Worker& worker);
    void FinishSinkThread();

    void Deliver(const std::vector<LogRecord>& batch);
    void WriteBatch(const std::vector<LogRecord>& batch);
    void FlushOutputs();
    void MarkWritten(std::uint64_t sequence);

    const LoggerLimits limits_;
    std::atomic<bool> consoleEnabled_ = true;
    LogLevels levels_;

    mutable std::timed_mutex stateLock_;
    std::condition_variable_any queueFilled_;
    std::condition_variable_any queueDrained_;
    std::condition_variable_any written_;
    std::condition_variable_any workerEnded_;
    std::deque<LogRecord> history_;
    std::vector<LogRecord> queue_;
    std::uint64_t nextSequence_ = 1;
    std::uint64_t lastQueuedSequence_ = 0;
    std::uint64_t lastWrittenSequence_ = 0;
    bool asyncEnabled_ = false;
    std::shared_ptr<Worker> worker_;
    std::size_t runningWorkers_ = 0;

    // Taken with stateLock_ held only by the last step of the sink thread, which takes both at once. A sink
    // that logs takes stateLock_ under it.
    mutable std::mutex outputLock_;
    std::string batchText_;
    Platform::FileHandle sessionFile_;
    Platform::FileHandle latestFile_;
    std::filesystem::path sessionPath_;
    std::filesystem::path latestPath_;
    bool filesOpen_ = false;
    bool closeRequested_ = false;
    std::vector<std::pair<std::uint64_t, std::shared_ptr<LogSink>>> sinks_;
    std::uint64_t nextSinkId_ = 1;
};

/// The process's logger, made on first use.
Logger& GetLogger();

// To the process's logger.
void Log(LogCategory category, LogLevel level, std::string message);
void LogInfo(std::string message);
void LogWarning(std::string message);
void LogError(std::string message);

} // namespace Vornu::Core
