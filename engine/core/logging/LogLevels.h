#pragma once

#include "engine/core/logging/LogRecord.h"

#include <array>
#include <atomic>
#include <string_view>

namespace Vornu::Core
{

/// The least level that each category lets through, `Info` at the start. Safe from any thread.
class LogLevels
{
public:
    LogLevels() noexcept { SetMinimumForAll(LogLevel::Info); }

    /// False for values outside the categories and the message levels.
    bool IsEnabled(LogCategory category, LogLevel level) const noexcept;

    /// An unknown category is ignored.
    void SetMinimum(LogCategory category, LogLevel level) noexcept;
    void SetMinimumForAll(LogLevel level) noexcept;

    /// Applies `<level>`, `*=<level>` and `<category>=<level>`, separated by `,` or `;`, in order. False if
    /// an entry wasn't understood; the others apply all the same.
    bool ApplySpec(std::string_view text) noexcept;

private:
    bool ApplyEntry(std::string_view entry) noexcept;

    std::array<std::atomic<LogLevel>, kLogCategoryCount> minimums_;
};

} // namespace Vornu::Core
