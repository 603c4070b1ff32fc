#include "engine/core/logging/Logger.h"

#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

namespace Vornu::Core
{
namespace
{

using Test::ScopedVariable;
using Test::TestFolder;

/// Keeps what it is told, and runs `onWrite` for each record.
class RecordingSink : public LogSink
{
public:
    explicit RecordingSink(std::function<void(const LogRecord&)> onWrite = {}) : onWrite_(std::move(onWrite))
    {
    }

    void Write(const LogRecord& record, std::string_view line) override
    {
        {
            const std::lock_guard lock(mutex_);
            // The time is another on each run.
            lines_ += std::string(line.substr(9)) + "\n";
            ++count_;
        }
        if (onWrite_)
        {
            onWrite_(record);
        }
    }

    void Flush() override
    {
        const std::lock_guard lock(mutex_);
        ++flushes_;
    }

    std::string Lines() const
    {
        const std::lock_guard lock(mutex_);
        return lines_;
    }
    int Count() const
    {
        const std::lock_guard lock(mutex_);
        return count_;
    }
    int Flushes() const
    {
        const std::lock_guard lock(mutex_);
        return flushes_;
    }

private:
    std::function<void(const LogRecord&)> onWrite_;
    mutable std::mutex mutex_;
    std::string lines_;
    int count_ = 0;
    int flushes_ = 0;
};

/// A logger that keeps off the test's own output.
struct QuietLogger : Logger
{
    explicit QuietLogger(LoggerLimits limits = {}) : Logger(limits) { SetConsoleEnabled(false); }
};

/// Times differ from run to run: every digit becomes '#'.
std::string WithoutDigits(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }, '#');
    return text;
}

std::size_t CountLines(const std::string& text)
{
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST(LogRecord, LineFormat)
{
    const struct
    {
        LogLevel level;
        LogCategory category;
        const char* expected;
    } rows[] = {
        {LogLevel::Info, LogCategory::Assets, "14:03:27 [Info] [Assets] text"},
        {LogLevel::Warning, LogCategory::General, "14:03:27 [Warn] text"},
        {LogLevel::Fatal, LogCategory::Editor, "14:03:27 [Fatal] [Editor] text"},
        {static_cast<LogLevel>(6), static_cast<LogCategory>(10), "14:03:27 [Log] [Unknown] text"},
    };
    for (const auto& row : rows)
    {
        std::string line;
        AppendLogLine({row.level, row.category, 1, 1, "14:03:27", "text"}, line);
        EXPECT_EQ(line, row.expected);
    }
}

TEST(LogLevels, SpecsApplyInOrderAndReportWhatIsUnknown)
{
    // One digit per category: the least level that is let through.
    const struct
    {
        const char* text;
        bool valid;
        const char* expected;
    } rows[] = {
        {"", true, "2222222222"},
        {"assets=debug, physics=off", true, "2221262222"},
        {"Debug", true, "1111111111"},
        {" * = WARN ;\teditor = trace ,;", true, "3333333330"},
        {"error;core=warning", true, "4344444444"},
        {"core=fatal,trace", true, "0000000000"},
        {"bogus", false, "2222222222"},
        {"debug;bogus", false, "1111111111"},
        {"bogus=debug;net=off", false, "2222222622"},
        {"core=;=debug;core=debug=off;debug x", false, "2222222222"},
        {"unknown=debug", false, "2222222222"},
    };
    for (const auto& row : rows)
    {
        QuietLogger logger;
        EXPECT_EQ(logger.ApplyLevelSpec(row.text), row.valid) << row.text;
        std::string levels;
        for (int category = 0; category < 10; ++category)
        {
            int level = 0;
            while (level < 6 &&
                   !logger.IsEnabled(static_cast<LogCategory>(category), static_cast<LogLevel>(level)))
            {
                ++level;
            }
            levels += std::to_string(level);
        }
        EXPECT_EQ(levels, row.expected) << row.text;
    }
}

TEST(Logger, DropsWhatIsNotEnabledOrNoMessage)
{
    QuietLogger logger;
    logger.Log(LogCategory::Core, LogLevel::Debug, "below the level");
    logger.Log(LogCategory::Core, LogLevel::Info, "kept");
    logger.Log(LogCategory::Core, LogLevel::Off, "no level");
    logger.Log(static_cast<LogCategory>(10), LogLevel::Error, "no category");
    logger.SetMinimumLevel(static_cast<LogCategory>(10), LogLevel::Trace);
    const std::vector<LogRecord> history = logger.CopyHistory();
    ASSERT_EQ(history.size(), 1u);
    EXPECT_EQ(history[0].sequence, 1u);
    EXPECT_EQ(history[0].message, "kept");
    EXPECT_EQ(WithoutDigits(history[0].time), "##:##:##");
}

TEST(Logger, HistoryKeepsTheLastRecords)
{
    QuietLogger logger;
    for (int i = 1; i <= 8193; ++i)
    {
        logger.Log(LogCategory::General, LogLevel::Info, std::to_string(i));
    }
    const std::vector<LogRecord> history = logger.CopyHistory();
    ASSERT_EQ(history.size(), 8192u);
    for (std::size_t i = 0; i < history.size(); ++i)
    {
        ASSERT_EQ(history[i].sequence, i + 2);
    }
    std::vector<LogRecord> since;
    EXPECT_EQ(logger.HistorySince(8191, since), 8193u);
    ASSERT_EQ(since.size(), 2u);
    EXPECT_EQ(since[0].message, "8192");
    EXPECT_EQ(logger.HistorySince(9000, since), 8193u);
    EXPECT_TRUE(since.empty());
    const std::vector<std::string> tail = logger.FormattedTail(2, 10);
    ASSERT_EQ(tail.size(), 2u);
    EXPECT_EQ(tail[1].substr(8), " [Info] 8193");
    EXPECT_EQ(logger.FormattedTail(10'000, 10).size(), 8192u);
    logger.ClearHistory();
    EXPECT_EQ(logger.HistorySince(0, since), 8193u);
    EXPECT_TRUE(since.empty());

    QuietLogger tiny({0, 0});
    tiny.Log(LogCategory::General, LogLevel::Info, "a");
    tiny.Log(LogCategory::General, LogLevel::Info, "b");
    EXPECT_EQ(tiny.CopyHistory().size(), 1u);
}

TEST(Logger, TheConsoleGetsWholeLinesAtOnce)
{
    Logger logger;
    testing::internal::CaptureStdout();
    logger.Log(LogCategory::Scene, LogLevel::Error, "one");
    logger.Log(LogCategory::General, LogLevel::Info, "two");
    logger.SetConsoleEnabled(false);
    logger.Log(LogCategory::General, LogLevel::Info, "three");
    EXPECT_EQ(WithoutDigits(testing::internal::GetCapturedStdout()),
              "##:##:## [Error] [Scene] one\n##:##:## [Info] two\n");
}

TEST(Logger, TwoFilesWithTheSameHeadAndLines)
{
    const TestFolder folder;
    folder.Write("Logs/My_App_-_2.latest.log", "of the last session\n");
    QuietLogger logger;
    logger.OpenLogFiles("My App:-_2", folder / "Logs");
    const fs::path session = logger.GetSessionLogPath();
    EXPECT_EQ(WithoutDigits(session.filename().string()), "My_App_-_#_########_######.log");
    logger.OpenLogFiles("Other", folder / "Other");
    logger.Log(LogCategory::Net, LogLevel::Info, "line");
    logger.CloseLogFiles();
    logger.Log(LogCategory::Net, LogLevel::Info, "too late");
    EXPECT_EQ(logger.GetSessionLogPath(), "");

    const std::string latest = folder.Read("Logs/My_App_-_2.latest.log");
    const std::string head = "========== My_App_-_2 Log ==========\nSession Log: " + session.string() +
                             "\nLatest Log: " + (folder / "Logs/My_App_-_2.latest.log").string() +
                             "\n====================================\n";
    ASSERT_EQ(latest.substr(0, head.size()), head);
    EXPECT_EQ(latest.substr(head.size() + 8), " [Info] [Net] line\n");
    EXPECT_EQ(folder.Read("Logs/" + session.filename().string()), latest);
    EXPECT_EQ(folder.List(), "Logs");

    logger.OpenLogFiles("", folder / "Logs");
    EXPECT_TRUE(fs::exists(folder / "Logs/VornuEngine.latest.log"));
}

TEST(Logger, AFolderThatCannotBeMadeLeavesTheOtherOutputs)
{
    const TestFolder folder;
    folder.Write("file", "");
    const auto sink = std::make_shared<RecordingSink>();
    QuietLogger logger;
    logger.AddSink(sink);
    logger.OpenLogFiles("App", folder / "file/Logs");
    EXPECT_EQ(logger.GetSessionLogPath(), "");
    logger.Log(LogCategory::General, LogLevel::Info, "still here");
    logger.Flush();
    EXPECT_EQ(sink->Lines(), "[Info] still here\n");
    // One file alone fails: a folder has its name.
    fs::create_directory(folder / "App.latest.log");
    logger.OpenLogFiles("App", folder.Path());
    logger.Log(LogCategory::General, LogLevel::Fatal, "in one file");
    EXPECT_NE(folder.Read(logger.GetSessionLogPath().filename().string()).find("in one file"),
              std::string::npos);
}

TEST(Logger, TheEnvironmentSetsLevelsWhenFilesOpen)
{
    const ScopedVariable levels("VORNU_LOG_LEVELS", "debug;bogus");
    const ScopedVariable settings("VORNU_USER_SETTINGS_DIR", "");
    const auto sink = std::make_shared<RecordingSink>();
    QuietLogger logger;
    logger.AddSink(sink);
    logger.OpenLogFiles("App", "");
    logger.Log(LogCategory::Audio, LogLevel::Debug, "now let through");
    logger.CloseLogFiles();
    EXPECT_EQ(sink->Lines(), "[Warn] [Core] VORNU_LOG_LEVELS contains an invalid entry: 'debug;bogus'.\n"
                             "[Debug] [Audio] now let through\n");
    logger.Log(LogCategory::General, LogLevel::Info, "written by this thread");
    EXPECT_TRUE(sink->Lines().ends_with("through\n[Info] written by this thread\n"));
}

TEST(Logger, AFatalMessageIsOnDiskWhenLogReturns)
{
    const TestFolder folder;
    QuietLogger logger;
    logger.OpenLogFiles("App", folder.Path());
    for (int i = 0; i < 50; ++i)
    {
        const std::string text = "fatal " + std::to_string(i) + "\n";
        logger.Log(LogCategory::General, LogLevel::Info, "before");
        logger.Log(LogCategory::General, LogLevel::Fatal, text.substr(0, text.size() - 1));
        ASSERT_TRUE(folder.Read("App.latest.log").ends_with(text));
    }
}

TEST(Logger, SinksMayLogThrowAndRemoveThemselves)
{
    for (const bool async : {false, true})
    {
        QuietLogger logger;
        const auto thrower =
            std::make_shared<RecordingSink>([](const LogRecord&) { throw std::runtime_error("x"); });
        const auto talker = std::make_shared<RecordingSink>(
            [&](const LogRecord& record)
            {
                if (record.message == "first")
                {
                    logger.Log(LogCategory::Script, LogLevel::Fatal, "from the sink");
                    logger.Flush();
                }
            });
        std::uint64_t leaverId = 0;
        const auto leaver =
            std::make_shared<RecordingSink>([&](const LogRecord&) { logger.RemoveSink(leaverId); });
        logger.AddSink(thrower);
        logger.AddSink(talker);
        leaverId = logger.AddSink(leaver);
        EXPECT_EQ(leaverId, 3u);
        if (async)
        {
            logger.OpenLogFiles("App", "");
        }
        logger.Log(LogCategory::General, LogLevel::Info, "first");
        logger.Flush();
        logger.Log(LogCategory::General, LogLevel::Info, "last");
        logger.CloseLogFiles();
        // Without the sink thread the sink's own message is kept in the history alone.
        EXPECT_EQ(talker->Lines(), async ? "[Info] first\n[Fatal] [Script] from the sink\n[Info] last\n"
                                         : "[Info] first\n[Info] last\n");
        EXPECT_EQ(thrower->Lines(), talker->Lines());
        EXPECT_EQ(leaver->Lines(), "[Info] first\n");
        EXPECT_GE(talker->Flushes(), 2);
        EXPECT_EQ(logger.CopyHistory().size(), 3u);
    }
}

TEST(Logger, ASinkMayCloseTheLogger)
{
    const TestFolder folder;
    const auto sink = std::make_shared<RecordingSink>();
    for (int round = 0; round < 20; ++round)
    {
        QuietLogger logger;
        logger.AddSink(std::make_shared<RecordingSink>([&](const LogRecord&) { logger.CloseLogFiles(); }));
        logger.AddSink(sink);
        logger.OpenLogFiles("App", folder.Path());
        logger.Log(LogCategory::General, LogLevel::Info, "closes");
        logger.Flush();
        EXPECT_EQ(logger.GetSessionLogPath(), "");
        logger.Log(LogCategory::General, LogLevel::Info, "after");
        logger.OpenLogFiles("App", folder.Path());
        logger.Log(LogCategory::General, LogLevel::Info, "again");
    }
    EXPECT_EQ(sink->Count(), 60);
}

TEST(Logger, AFullQueueHoldsProducersUntilTheSinkTakesIt)
{
    std::mutex gate;
    const auto sink =
        std::make_shared<RecordingSink>([&](const LogRecord&) { const std::lock_guard pass(gate); });
    QuietLogger logger({.queue = 4});
    logger.AddSink(sink);
    logger.OpenLogFiles("App", "");
    std::unique_lock closed(gate);
    std::atomic<int> logged = 0;
    std::thread producer(
        [&]
        {
            for (int i = 0; i < 100; ++i)
            {
                logger.Log(LogCategory::General, LogLevel::Info, std::to_string(i));
                ++logged;
            }
        });
    while (logged < 4)
    {
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    // One batch is with the sink, at most four records wait behind it.
    EXPECT_LE(logged, 8);
    closed.unlock();
    producer.join();
    logger.Flush();
    EXPECT_EQ(sink->Count(), 100);
}

TEST(Logger, ManyProducersLoseNothingWhileTheLoggerStopsAndStarts)
{
    constexpr int kProducers = 4;
    constexpr int kRecords = 3000;
    const TestFolder folder;
    const auto sink = std::make_shared<RecordingSink>();
    std::set<std::uint32_t> threads;
    {
        QuietLogger logger({.queue = 64, .history = kProducers * kRecords});
        logger.AddSink(sink);
        logger.OpenLogFiles("App", folder.Path());
        std::vector<std::thread> producers;
        for (int p = 0; p < kProducers; ++p)
        {
            producers.emplace_back(
                [&logger, p]
                {
                    for (int i = 0; i < kRecords; ++i)
                    {
                        const bool fatal = i % 500 == 499;
                        logger.Log(LogCategory::Core, fatal ? LogLevel::Fatal : LogLevel::Info,
                                   std::to_string(p));
                    }
                });
        }
        std::atomic<bool> done = false;
        std::thread reader(
            [&]
            {
                std::vector<LogRecord> records;
                while (!done)
                {
                    logger.HistorySince(0, records);
                    logger.FormattedTail(10, 1);
                    logger.RemoveSink(logger.AddSink(std::make_shared<RecordingSink>()));
                }
            });
        for (int i = 0; i < 10; ++i)
        {
            logger.CloseLogFiles();
            logger.OpenLogFiles("App", folder.Path());
        }
        for (std::thread& producer : producers)
        {
            producer.join();
        }
        done = true;
        reader.join();
        const std::vector<LogRecord> history = logger.CopyHistory();
        ASSERT_EQ(history.size(), static_cast<std::size_t>(kProducers * kRecords));
        for (std::size_t i = 0; i < history.size(); ++i)
        {
            ASSERT_EQ(history[i].sequence, i + 1);
            threads.insert(history[i].threadNumber);
        }
    }
    EXPECT_EQ(threads.size(), static_cast<std::size_t>(kProducers));
    EXPECT_EQ(sink->Count(), kProducers * kRecords);
    EXPECT_EQ(CountLines(sink->Lines()), static_cast<std::size_t>(kProducers * kRecords));
}

TEST(Logger, DestructionWritesWhatIsQueuedInOrder)
{
    const TestFolder folder;
    std::string expected;
    {
        QuietLogger logger;
        logger.OpenLogFiles("App", folder.Path());
        for (int i = 0; i < 2000; ++i)
        {
            logger.Log(LogCategory::General, LogLevel::Info, std::to_string(i));
            expected += "[Info] " + std::to_string(i) + "\n";
        }
    }
    const std::string text = folder.Read("App.latest.log");
    std::string lines;
    std::size_t start = text.find("=\n", text.find("Latest Log")) + 2;
    for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
    {
        lines += text.substr(start + 9, end - start - 8);
    }
    EXPECT_EQ(lines, expected);
}

} // namespace
} // namespace Vornu::Core
