#include "engine/core/logging/LogRecord.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Vornu::Core
{
namespace
{

constexpr std::array<std::string_view, 6> kLevelTags = {
    "[Trace]", "[Debug]", "[Info]", "[Warn]", "[Error]", "[Fatal]",
};

constexpr std::array<std::string_view, kLogCategoryCount> kCategoryNames = {
    "General", "Core", "Render", "Assets", "Scene", "Physics", "Audio", "Net", "Script", "Editor",
};

constexpr std::array<std::pair<std::string_view, LogLevel>, 8> kLevelNames = {{
    {"Trace", LogLevel::Trace},
    {"Debug", LogLevel::Debug},
    {"Info", LogLevel::Info},
    {"Warning", LogLevel::Warning},
    {"Warn", LogLevel::Warning},
    {"Error", LogLevel::Error},
    {"Fatal", LogLevel::Fatal},
    {"Off", LogLevel::Off},
}};

char LowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return LowerCase(x) == LowerCase(y); });
}

} // namespace

std::string_view LogLevelTag(LogLevel level) noexcept
{
    const auto index = static_cast<std::size_t>(level);
    return index < kLevelTags.size() ? kLevelTags[index] : "[Log]";
}

std::string_view LogCategoryName(LogCategory category) noexcept
{
    const auto index = static_cast<std::size_t>(category);
    return index < kCategoryNames.size() ? kCategoryNames[index] : "Unknown";
}

std::optional<LogLevel> ParseLevel(std::string_view text) noexcept
{
    for (const auto& [name, level] : kLevelNames)
    {
        if (EqualIgnoringCase(name, text))
        {
            return level;
        }
    }
    return std::nullopt;
}

std::optional<LogCategory> ParseCategory(std::string_view text) noexcept
{
    for (std::size_t i = 0; i < kCategoryNames.size(); ++i)
    {
        if (EqualIgnoringCase(kCategoryNames[i], text))
        {
            return static_cast<LogCategory>(i);
        }
    }
    return std::nullopt;
}

void AppendLogLine(const LogRecord& record, std::string& out)
{
    out += record.time;
    out += ' ';
    out += LogLevelTag(record.level);
    if (record.category != LogCategory::General)
    {
        out += " [";
        out += LogCategoryName(record.category);
        out += ']';
    }
    out += ' ';
    out += record.message;
}

} // namespace Vornu::Core
