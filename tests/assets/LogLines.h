#pragma once

#include "engine/core/logging/Logger.h"

#include <string>

namespace Vornu::Test
{

/// What the process logs about assets from here on.
class LogLines
{
public:
    LogLines() : first_(Core::GetLogger().HistorySince(0, records_)) {}

    /// Since the last call, "<tag> <message>\n" each.
    std::string Take()
    {
        records_.clear();
        first_ = Core::GetLogger().HistorySince(first_, records_);
        std::string lines;
        for (const Core::LogRecord& record : records_)
        {
            lines += std::string(Core::LogLevelTag(record.level)) + " " + record.message + "\n";
        }
        return lines;
    }

private:
    std::vector<Core::LogRecord> records_;
    std::uint64_t first_;
};

} // namespace Vornu::Test
