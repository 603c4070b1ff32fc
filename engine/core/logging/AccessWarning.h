#pragma once

#include "engine/core/files/Files.h"

#include <filesystem>

namespace Vornu::Core
{

/// Logs a warning if `result`, of writing `path`, had to leave out access rights or attributes.
void WarnIfNarrowed(const Platform::FileResult& result, const std::filesystem::path& path);

} // namespace Vornu::Core
