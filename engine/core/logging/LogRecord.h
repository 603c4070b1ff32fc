#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Vornu::Core
{

enum class LogLevel : std::uint8_t
{
    Trace,
    Debug,
    Info,
    Warning,
    Error,
    Fatal,
    /// A filter value only, never the level of a message.
    Off,
};

enum class LogCategory : std::uint8_t
{
    General,
    Core,
    Render,
    Assets,
    Scene,
    Physics,
    Audio,
    Net,
    Script,
    Editor,
};

inline constexpr std::size_t kLogCategoryCount = 10;

struct LogRecord
{
    LogLevel level = LogLevel::Info;
    LogCategory category = LogCategory::General;
    /// Counts the accepted records of a logger from 1.
    std::uint64_t sequence = 0;
    /// Counts the threads of the process from 1, in the order of their first message.
    std::uint32_t threadNumber = 0;
    /// Local time, HH:MM:SS.
    std::string time;
    std::string message;
};

/// Such as "[Warn]"; "[Log]" for a value that is no message level.
std::string_view LogLevelTag(LogLevel level) noexcept;

/// Such as "Assets"; "Unknown" for any other value.
std::string_view LogCategoryName(LogCategory category) noexcept;

/// Takes a level's name, "Warn" included, in any case of letters.
std::optional<LogLevel> ParseLevel(std::string_view text) noexcept;

/// Takes a category's name in any case of letters.
std::optional<LogCategory> ParseCategory(std::string_view text) noexcept;

/// Appends `<time> <tag> [<category>] <message>` without a line feed; General has no category part.
void AppendLogLine(const LogRecord& record, std::string& out);

} // namespace Vornu::Core
