#include "engine/core/logging/Logger.h"

#include "engine/core/files/Folders.h"
#include "engine/core/system/System.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <exception>
#include <optional>
#include <thread>

namespace fs = std::filesystem;

namespace Vornu::Core
{
namespace
{

std::atomic<std::uint32_t> nextThreadNumber = 1;

/// The logger whose output stage the thread is in; null outside.
thread_local const Logger* outputStageOwner = nullptr;

/// Marks the thread as being in a logger's output stage.
class OutputStage
{
public:
    explicit OutputStage(const Logger* owner) : outer_(std::exchange(outputStageOwner, owner)) {}
    ~OutputStage() { outputStageOwner = outer_; }
    OutputStage(const OutputStage&) = delete;
    OutputStage& operator=(const OutputStage&) = delete;

private:
    const Logger* outer_;
};

std::uint32_t ThreadNumber()
{
    thread_local const std::uint32_t number = nextThreadNumber.fetch_add(1, std::memory_order_relaxed);
    return number;
}

std::tm LocalTime(std::time_t now)
{
    std::tm parts = {};
    localtime_r(&now, &parts);
    return parts;
}

/// The clock text changes once a second, so each thread keeps its last one.
std::string ClockText()
{
    thread_local std::time_t second = -1;
    thread_local char text[32] = {};
    const std::time_t now = std::time(nullptr);
    if (now != second)
    {
        second = now;
        const std::tm parts = LocalTime(now);
        std::snprintf(text, sizeof text, "%02d:%02d:%02d", parts.tm_hour, parts.tm_min, parts.tm_sec);
    }
    return text;
}

std::string FileStampText()
{
    const std::tm parts = LocalTime(std::time(nullptr));
    char text[80] = {};
    std::snprintf(text, sizeof text, "%04d%02d%02d_%02d%02d%02d", parts.tm_year + 1900, parts.tm_mon + 1,
                  parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
    return text;
}

bool IsStemCharacter(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' || c == '_';
}

std::string FileStem(std::string_view applicationName)
{
    if (applicationName.empty())
    {
        return "VornuEngine";
    }
    std::string stem(applicationName);
    std::replace_if(
        stem.begin(), stem.end(), [](char c) { return !IsStemCharacter(c); }, '_');
    return stem;
}

/// Opened without a buffer, so that a batch reaches the file by one write.
Platform::FileHandle OpenUnbuffered(const fs::path& path, const char* mode)
{
    Platform::FileHandle file = Platform::OpenFileShared(path, mode);
    if (file != nullptr)
    {
        std::setvbuf(file.get(), nullptr, _IONBF, 0);
    }
    return file;
}

void WriteText(std::FILE* file, const std::string& text)
{
    if (file != nullptr)
    {
        std::fwrite(text.data(), 1, text.size(), file);
    }
}

void FlushFile(std::FILE* file)
{
    if (file != nullptr)
    {
        std::fflush(file);
    }
}

/// A sink's failure is its own and never reaches those who log.
template<class Call>
void CallSink(Call call)
{
    try
    {
        call();
    }
    catch (...) // NOLINT(bugprone-empty-catch)
    {
    }
}

} // namespace

/// One run of the sink thread. A thread that ends late, detached, doesn't see the flags of the next one.
struct Logger::Worker
{
    std::thread thread;
    bool stopRequested = false;
};

Logger::Logger(LoggerLimits limits)
    : limits_{std::max<std::size_t>(limits.queue, 1), std::max<std::size_t>(limits.history, 1)}
{
}

Logger::~Logger()
{
    StopSinkThread();
    decltype(sinks_) sinks; // a sink that logs when it is destroyed does so without the lock and the list
    {
        const std::unique_lock output = LockOutput();
        FlushOutputs();
        CloseFiles();
        sinks.swap(sinks_);
    }
}

void Logger::Log(LogCategory category, LogLevel level, std::string message)
{
    if (!IsEnabled(category, level))
    {
        return;
    }
    LogRecord record{level, category, 0, ThreadNumber(), ClockText(), std::move(message)};
    const bool inOutput = InOutputStage();

    std::unique_lock state(stateLock_);
    if (!inOutput)
    {
        queueDrained_.wait(state, [this] { return !asyncEnabled_ || queue_.size() < limits_.queue; });
    }
    record.sequence = nextSequence_++;
    if (history_.size() >= limits_.history)
    {
        history_.pop_front();
    }
    history_.push_back(record);
    if (asyncEnabled_)
    {
        lastQueuedSequence_ = record.sequence;
        const bool wasEmpty = queue_.empty();
        queue_.push_back(std::move(record));
        state.unlock();
        if (wasEmpty)
        {
            queueFilled_.notify_all();
        }
        if (level >= LogLevel::Fatal)
        {
            Flush();
        }
        return;
    }
    state.unlock();
    if (!inOutput)
    {
        const std::unique_lock output = LockOutput();
        std::vector<LogRecord> batch;
        batch.push_back(std::move(record));
        Deliver(batch);
    }
}

void Logger::OpenLogFiles(std::string_view applicationName, const fs::path& folder)
{
    try
    {
        const std::unique_lock output = LockOutput();
        if (closeRequested_)
        {
            CloseFiles(); // by the sink that asks for new ones now
        }
        if (!filesOpen_ && !folder.empty())
        {
            OpenFiles(applicationName, folder);
        }
    }
    catch (const std::exception&) // NOLINT(bugprone-empty-catch)
    {
        // The console goes on alone.
    }
    ApplyEnvironmentLevels();
    StartSinkThread();
}

void Logger::OpenLogFiles(std::string_view applicationName)
{
    fs::path folder;
    try
    {
        folder = UserSettingsFolder() / "Logs";
    }
    catch (const std::exception&) // NOLINT(bugprone-empty-catch)
    {
        // As with a folder that can't be made.
    }
    OpenLogFiles(applicationName, folder);
}

void Logger::CloseLogFiles()
{
    StopSinkThread();
    if (InOutputStage())
    {
        closeRequested_ = true;
        return;
    }
    const std::unique_lock output = LockOutput();
    FlushOutputs();
    CloseFiles();
}

void Logger::Flush()
{
    if (InOutputStage())
    {
        return;
    }
    {
        std::unique_lock state(stateLock_);
        if (asyncEnabled_)
        {
            // Every queued record is written in the end, by the last step of the sink thread at the latest.
            const std::uint64_t target = lastQueuedSequence_;
            written_.wait(state, [this, target] { return lastWrittenSequence_ >= target; });
            return;
        }
    }
    const std::unique_lock output = LockOutput();
    FlushOutputs();
}

bool Logger::IsEnabled(LogCategory category, LogLevel level) const noexcept
{
    return levels_.IsEnabled(category, level);
}

void Logger::SetMinimumLevel(LogCategory category, LogLevel level) noexcept
{
    levels_.SetMinimum(category, level);
}

void Logger::SetMinimumLevelForAll(LogLevel level) noexcept
{
    levels_.SetMinimumForAll(level);
}

bool Logger::ApplyLevelSpec(std::string_view text) noexcept
{
    return levels_.ApplySpec(text);
}

void Logger::SetConsoleEnabled(bool enabled) noexcept
{
    consoleEnabled_.store(enabled, std::memory_order_relaxed);
}

std::uint64_t Logger::AddSink(std::shared_ptr<LogSink> sink)
{
    if (sink == nullptr)
    {
        return 0;
    }
    const std::unique_lock output = LockOutput();
    sinks_.emplace_back(nextSinkId_, std::move(sink));
    return nextSinkId_++;
}

void Logger::RemoveSink(std::uint64_t id)
{
    // The sink may be destroyed here, and its destructor may log: after the lock is gone.
    std::shared_ptr<LogSink> removed;
    const std::unique_lock output = LockOutput();
    const auto found =
        std::find_if(sinks_.begin(), sinks_.end(), [id](const auto& s) { return s.first == id; });
    if (found != sinks_.end())
    {
        removed = std::move(found->second);
        sinks_.erase(found);
    }
}

std::vector<LogRecord> Logger::CopyHistory() const
{
    const std::lock_guard state(stateLock_);
    return {history_.begin(), history_.end()};
}

std::uint64_t Logger::HistorySince(std::uint64_t sequence, std::vector<LogRecord>& out) const
{
    const std::lock_guard state(stateLock_);
    const auto first = std::upper_bound(history_.begin(), history_.end(), sequence,
                                        [](std::uint64_t s, const LogRecord& r) { return s < r.sequence; });
    out.assign(first, history_.end());
    return nextSequence_ - 1;
}

std::vector<std::string> Logger::FormattedTail(std::size_t count, std::uint32_t waitMilliseconds) const
{
    std::vector<LogRecord> records;
    {
        // By the system clock, as the thread sanitizer doesn't know the lock that waits by the steady one.
        const std::unique_lock state(stateLock_, std::chrono::system_clock::now() +
                                                     std::chrono::milliseconds(waitMilliseconds));
        if (!state.owns_lock())
        {
            return {};
        }
        const std::size_t taken = std::min(count, history_.size());
        records.assign(history_.end() - static_cast<std::ptrdiff_t>(taken), history_.end());
    }
    std::vector<std::string> lines(records.size());
    for (std::size_t i = 0; i < records.size(); ++i)
    {
        AppendLogLine(records[i], lines[i]);
    }
    return lines;
}

void Logger::ClearHistory()
{
    const std::lock_guard state(stateLock_);
    history_.clear();
}

fs::path Logger::GetSessionLogPath() const
{
    const std::unique_lock output = LockOutput();
    return sessionPath_;
}

bool Logger::InOutputStage() const noexcept
{
    return outputStageOwner == this;
}

/// In the output stage the thread holds the lock already.
std::unique_lock<std::mutex> Logger::LockOutput() const
{
    std::unique_lock lock(outputLock_, std::defer_lock);
    if (!InOutputStage())
    {
        lock.lock();
    }
    return lock;
}

void Logger::OpenFiles(std::string_view applicationName, const fs::path& folder)
{
    Platform::CreateDirectories(folder);
    const std::string stem = FileStem(applicationName);
    const fs::path sessionPath = folder / (stem + "_" + FileStampText() + ".log");
    const fs::path latestPath = folder / (stem + ".latest.log");
    const std::string head = "========== " + stem + " Log ==========\nSession Log: " + sessionPath.string() +
                             "\nLatest Log: " + latestPath.string() +
                             "\n====================================\n";
    sessionFile_ = OpenUnbuffered(sessionPath, "ab");
    latestFile_ = OpenUnbuffered(latestPath, "wb");
    filesOpen_ = sessionFile_ != nullptr || latestFile_ != nullptr;
    sessionPath_ = sessionFile_ != nullptr ? sessionPath : fs::path();
    latestPath_ = latestFile_ != nullptr ? latestPath : fs::path();
    WriteText(sessionFile_.get(), head);
    WriteText(latestFile_.get(), head);
}

void Logger::CloseFiles()
{
    sessionFile_.reset();
    latestFile_.reset();
    sessionPath_.clear();
    latestPath_.clear();
    filesOpen_ = false;
    closeRequested_ = false;
}

void Logger::ApplyEnvironmentLevels()
{
    const std::optional<std::string> value = Platform::GetEnvironmentValue("VORNU_LOG_LEVELS");
    if (value && !ApplyLevelSpec(*value))
    {
        Log(LogCategory::Core, LogLevel::Warning,
            "VORNU_LOG_LEVELS contains an invalid entry: '" + *value + "'.");
    }
}

void Logger::StartSinkThread()
{
    const std::lock_guard state(stateLock_);
    if (worker_ == nullptr)
    {
        worker_ = std::make_shared<Worker>();
        ++runningWorkers_;
        worker_->thread = std::thread([this, worker = worker_] { RunSinkThread(*worker); });
        asyncEnabled_ = true;
    }
}

void Logger::StopSinkThread()
{
    std::shared_ptr<Worker> worker;
    {
        const std::lock_guard state(stateLock_);
        worker = std::exchange(worker_, nullptr);
        if (worker != nullptr)
        {
            worker->stopRequested = true;
        }
    }
    queueFilled_.notify_all();
    if (InOutputStage())
    {
        // This is the sink thread, or it holds the lock that the sink thread may wait for.
        if (worker != nullptr)
        {
            worker->thread.detach();
        }
        return;
    }
    if (worker != nullptr)
    {
        worker->thread.join();
    }
    // Another caller, or a sink, may have stopped a thread that still writes.
    std::unique_lock state(stateLock_);
    workerEnded_.wait(state, [this] { return runningWorkers_ == (worker_ != nullptr ? 1u : 0u); });
}

void Logger::RunSinkThread(const Worker& worker)
{
    Platform::SetCurrentThreadName("Vornu Log Sink");
    std::vector<LogRecord> batch;
    std::unique_lock state(stateLock_);
    while (true)
    {
        queueFilled_.wait(state, [&] { return !queue_.empty() || worker.stopRequested; });
        if (worker.stopRequested)
        {
            break;
        }
        batch.swap(queue_);
        state.unlock();
        queueDrained_.notify_all();
        {
            const std::unique_lock output = LockOutput();
            Deliver(batch);
        }
        MarkWritten(batch.back().sequence);
        batch.clear();
        state.lock();
    }
    state.unlock();
    FinishSinkThread();
}

/// Ends queueing and writes what is left, in one step for the producers: those that find queueing off come
/// behind what was queued.
void Logger::FinishSinkThread()
{
    std::vector<LogRecord> rest;
    {
        std::unique_lock state(stateLock_, std::defer_lock);
        std::unique_lock output(outputLock_, std::defer_lock);
        std::lock(state, output);
        asyncEnabled_ = worker_ != nullptr;
        if (worker_ == nullptr)
        {
            rest.swap(queue_); // a newer thread writes its own
        }
        state.unlock();
        queueDrained_.notify_all();
        Deliver(rest);
    }
    if (!rest.empty())
    {
        MarkWritten(rest.back().sequence);
    }
    const std::lock_guard state(stateLock_);
    --runningWorkers_;
    // Under the lock, as the logger may be destroyed once another thread has it.
    workerEnded_.notify_all();
}

void Logger::Deliver(const std::vector<LogRecord>& batch)
{
    WriteBatch(batch);
    FlushOutputs();
}

void Logger::WriteBatch(const std::vector<LogRecord>& batch)
{
    const OutputStage stage(this);
    // A copy, as a sink may add and remove sinks.
    const auto sinks = sinks_;
    std::string line;
    batchText_.clear();
    for (const LogRecord& record : batch)
    {
        line.clear();
        AppendLogLine(record, line);
        batchText_ += line;
        batchText_ += '\n';
        for (const auto& [id, sink] : sinks)
        {
            CallSink([&, &target = *sink] { target.Write(record, line); });
        }
    }
    if (consoleEnabled_.load(std::memory_order_relaxed))
    {
        WriteText(stdout, batchText_);
    }
    WriteText(sessionFile_.get(), batchText_);
    WriteText(latestFile_.get(), batchText_);
}

void Logger::FlushOutputs()
{
    if (consoleEnabled_.load(std::memory_order_relaxed))
    {
        FlushFile(stdout);
    }
    FlushFile(sessionFile_.get());
    FlushFile(latestFile_.get());
    {
        const OutputStage stage(this);
        const auto sinks = sinks_;
        for (const auto& [id, sink] : sinks)
        {
            CallSink([&target = *sink] { target.Flush(); });
        }
    }
    if (closeRequested_)
    {
        CloseFiles();
    }
}

void Logger::MarkWritten(std::uint64_t sequence)
{
    {
        const std::lock_guard state(stateLock_);
        lastWrittenSequence_ = std::max(lastWrittenSequence_, sequence);
    }
    written_.notify_all();
}

Logger& GetLogger()
{
    static Logger logger;
    return logger;
}

void Log(LogCategory category, LogLevel level, std::string message)
{
    GetLogger().Log(category, level, std::move(message));
}

void LogInfo(std::string message)
{
    Log(LogCategory::General, LogLevel::Info, std::move(message));
}

void LogWarning(std::string message)
{
    Log(LogCategory::General, LogLevel::Warning, std::move(message));
}

void LogError(std::string message)
{
    Log(LogCategory::General, LogLevel::Error, std::move(message));
}

} // namespace Vornu::Core
