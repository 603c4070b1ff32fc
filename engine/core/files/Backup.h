#pragma once

#include "engine/core/files/FileStamp.h"
#include "engine/core/files/Files.h"

#include <filesystem>

namespace Vornu::Platform
{

/// Copies a file to a name that is free, and brings the copy to the disk before the name appears:
/// `destination` is either absent or complete, and never overwritten. The copy gets what
/// `ApplyFileAccess` carries over. A failure has code 4 and the system's text alone as its message, for
/// a taken name that of EEXIST, and leaves nothing behind. So does a source that hasn't the stamp, where one
/// is given, from the first byte to the last; its text is that of ESTALE.
FileResult CopyFileExclusive(const std::filesystem::path& source, const std::filesystem::path& destination,
                             const std::optional<FileStamp>& stamp = std::nullopt);

} // namespace Vornu::Platform
