#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace Vornu::Platform
{

/// Absolute, without links in the part that exists, without "." and "..", and without a trailing separator.
/// Never fails: what the system can't resolve stays as it stands. An empty path stays empty.
std::filesystem::path CanonicalPath(const std::filesystem::path& path);
/// The same. `error` tells whether the system failed to say where the path leads, so that another form of it
/// may stand for the same place.
std::filesystem::path CanonicalPath(const std::filesystem::path& path, std::error_code& error);

/// Text that paths are compared by: native bytes with every `\` turned into `/`. Case is kept, as two names
/// that differ in case are two files.
std::string NormalizedCaseKey(const std::filesystem::path& path);

/// Both lead to one canonical path. Two empty paths are the same.
bool IsSamePath(const std::filesystem::path& a, const std::filesystem::path& b);

/// The part of `path` below `root`, "." for the root itself; nothing if it isn't below or either is empty.
std::optional<std::filesystem::path> RelativeToRoot(const std::filesystem::path& root,
                                                    const std::filesystem::path& path);

/// Both are results of `NormalizedCaseKey`. A path is under itself; nothing is under an empty root.
bool IsPathUnder(std::string_view rootKey, std::string_view key);

/// Names have one form only on this system, so there is never a result.
std::optional<std::filesystem::path> LongPathName(const std::filesystem::path& path);
std::optional<std::filesystem::path> ShortPathName(const std::filesystem::path& path);

/// The file that a symbolic link names at the end of its chain, whether it exists or not; a path that is no
/// link itself. Nothing for a chain that doesn't end or that the system can't tell.
std::optional<std::filesystem::path> FollowLinks(const std::filesystem::path& path);

} // namespace Vornu::Platform
