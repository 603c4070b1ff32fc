#include "engine/core/logging/LogLevels.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace Vornu::Core
{
namespace
{

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

std::string_view Trim(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kWhiteSpace);
    if (first == std::string_view::npos)
    {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

} // namespace

bool LogLevels::IsEnabled(LogCategory category, LogLevel level) const noexcept
{
    const auto index = static_cast<std::size_t>(category);
    return index < kLogCategoryCount && level < LogLevel::Off &&
           level >= minimums_[index].load(std::memory_order_relaxed);
}

void LogLevels::SetMinimum(LogCategory category, LogLevel level) noexcept
{
    const auto index = static_cast<std::size_t>(category);
    if (index < kLogCategoryCount)
    {
        minimums_[index].store(level, std::memory_order_relaxed);
    }
}

void LogLevels::SetMinimumForAll(LogLevel level) noexcept
{
    for (std::atomic<LogLevel>& minimum : minimums_)
    {
        minimum.store(level, std::memory_order_relaxed);
    }
}

bool LogLevels::ApplySpec(std::string_view text) noexcept
{
    bool valid = true;
    while (!text.empty())
    {
        const std::size_t end = std::min(text.find_first_of(",;"), text.size());
        const std::string_view entry = Trim(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!entry.empty() && !ApplyEntry(entry))
        {
            valid = false;
        }
    }
    return valid;
}

bool LogLevels::ApplyEntry(std::string_view entry) noexcept
{
    const std::size_t sign = entry.find('=');
    const bool hasSign = sign != std::string_view::npos;
    const std::string_view name = hasSign ? Trim(entry.substr(0, sign)) : "*";
    const std::optional<LogLevel> level = ParseLevel(hasSign ? Trim(entry.substr(sign + 1)) : entry);
    if (!level)
    {
        return false;
    }
    if (name == "*")
    {
        SetMinimumForAll(*level);
        return true;
    }
    const std::optional<LogCategory> category = ParseCategory(name);
    if (category)
    {
        SetMinimum(*category, *level);
    }
    return category.has_value();
}

} // namespace Vornu::Core
