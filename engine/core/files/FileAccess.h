#pragma once

#include "engine/core/files/FileDescriptor.h"

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace Vornu::Platform
{

/// Who may do what with a file, and the attributes that users have given it.
struct FileAccess
{
    mode_t mode = 0; // permission bits
    uid_t owner = 0;
    gid_t group = 0;
    std::string acl;                                             // empty where the mode tells all
    std::vector<std::pair<std::string, std::string>> attributes; // "user.*"
    bool isPartial = false; // some of the attributes are closed to the user
};

/// Both report 0 or the error number. What a file system doesn't have is no error.
int ReadFileAccess(const FileDescriptor& file, FileAccess& out);
int ReadFileAccess(const std::filesystem::path& path, FileAccess& out);

/// Gives `file` what `model` has: attributes, ACL and permission bits, and where the user may, owner and
/// group. What can't be carried over makes the access narrower and never wider, and sets `narrowed`. Reports
/// 0 or the error number; then `file` has no more access than before and `model` together.
int ApplyFileAccess(const FileDescriptor& file, const FileAccess& model, bool& narrowed);

/// The mode for creating a file that is to hold what a file of `mode` holds: open to its owner alone.
mode_t PrivateMode(mode_t mode) noexcept;

/// The most that a new file may have, beside what the folder and the user's mask allow.
struct AccessLimit
{
    mode_t mode = 0666;
    /// The group that the bits for the group are meant for; none: any.
    std::optional<gid_t> group;
};

/// The limit for a file that holds the content of one with the access `model`.
AccessLimit LimitOf(const FileAccess& model);

/// Gives a private new file the bits of any new file in `folder` that the limit leaves.
int WidenNewFile(const FileDescriptor& file, const std::filesystem::path& folder, const AccessLimit& limit);

} // namespace Vornu::Platform
