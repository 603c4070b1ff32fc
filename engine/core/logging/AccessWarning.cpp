#include "engine/core/logging/AccessWarning.h"

#include "engine/core/logging/Logger.h"

namespace Vornu::Core
{

void WarnIfNarrowed(const Platform::FileResult& result, const std::filesystem::path& path)
{
    if (result.narrowed)
    {
        Log(LogCategory::Core, LogLevel::Warning,
            "Some access rights or attributes could not be given to " + path.native());
    }
}

} // namespace Vornu::Core
