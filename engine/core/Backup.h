#pragma once

#include "engine/core/Files.h"

#include <filesystem>

namespace Vornu::Platform
{

/// Copies a file to a name that is free, and brings the copy to the disk before the name appears:
/// `destination` is either absent or complete, and never overwritten. The copy keeps the permission bits and,
/// where the user may, owner and group. A failure has code 4 and the system's text alone as its message, for
/// a taken name that of EEXIST, and leaves nothing behind.
FileResult CopyFileExclusive(const std::filesystem::path& source, const std::filesystem::path& destination);

} // namespace Vornu::Platform
