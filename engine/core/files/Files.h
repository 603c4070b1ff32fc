#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace Vornu::Platform
{

/// How a file operation went. No operation of this header throws for what the system reports.
struct FileResult
{
    static constexpr std::int32_t kSuccess = 0;
    static constexpr std::int32_t kInvalidArgument = 1;
    static constexpr std::int32_t kNotFound = 2;
    /// The message ends with the system's text.
    static constexpr std::int32_t kSystemFailure = 4;

    std::int32_t code = kSuccess;
    std::string message;
    /// Set by a success that had to leave out some access rights or attributes that a file ought to have got.
    bool narrowed = false;

    bool Succeeded() const noexcept { return code == kSuccess; }

    /// Code 4 with `"<what>: <system text>"`.
    static FileResult SystemFailure(const std::string& what, int errorNumber);

    friend bool operator==(const FileResult&, const FileResult&) = default;
};

/// Fails for an empty path, for one that leads nowhere (links followed) and for one that can't be inspected.
FileResult ValidateExistingPath(const std::filesystem::path& path);

/// Moves `source` over `destination` in one step, so that readers see either the old or the new file. Both
/// stand in the same file system. An existing target passes on what `ApplyFileAccess` carries over. With
/// `writeThrough` the file's bytes are on the disk before the step and the folder's
/// entry after it. After a failure the target is as it was, with one exception: if only the last flush of the
/// folder fails, the new file is in place, but may not survive a power cut. `mayReplace`, where given, is
/// asked directly before the step; if it says no, the text of the failure is that of ECANCELED.
FileResult ReplaceFileAtomically(const std::filesystem::path& source,
                                 const std::filesystem::path& destination, bool writeThrough,
                                 const std::function<bool()>& mayReplace = nullptr);

/// False only if the system says that nothing is there or that there can be no such name; a path that can't
/// be inspected counts as existing. Links are followed.
bool PathExists(const std::filesystem::path& path) noexcept;

/// Renames a file or folder to a name that nothing has. The message of a failure is the system's text alone.
/// A file system that can't do both at once has the name looked up first.
FileResult MoveToFreeName(const std::filesystem::path& source, const std::filesystem::path& destination);

/// Here a file is hidden by a leading dot of its name; asking for what only another name could give fails.
FileResult SetFileHidden(const std::filesystem::path& path, bool hidden);

/// The bytes of a file, or what went wrong.
struct FileContents
{
    /// Code 4 on failure; the message is the system's text alone.
    FileResult result;
    /// False if the file couldn't be opened; true with a failed result if it couldn't be read to its end.
    bool opened = false;
    /// Empty on failure.
    std::string bytes;
};

FileContents ReadFileBinary(const std::filesystem::path& path);

struct FileCloser
{
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

/// A stream that is closed with its owner.
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file with a mode of `fopen`, such as "ab" or "wb", so that other processes can read and write it
/// meanwhile and child processes don't inherit it. Null on failure, with `errno` set.
FileHandle OpenFileShared(const std::filesystem::path& path, const char* mode);

} // namespace Vornu::Platform
