#include "engine/core/files/Files.h"

#include "engine/core/files/FileAccess.h"
#include "engine/core/files/FileDescriptor.h"
#include "engine/core/files/FileSystemCalls.h"
#include "engine/core/files/ReadFaults.h"
#include "engine/core/system/System.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <new>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace Vornu::Platform
{
namespace
{

constexpr std::size_t kReadBlock = 65'536;

FileResult InvalidArgument(const char* message)
{
    return {FileResult::kInvalidArgument, message};
}

/// Absolute; `what` starts the message of a failure. What ".." means behind a link is the system's to say.
FileResult MakeAbsolute(const fs::path& path, const char* what, fs::path& out)
{
    std::error_code error;
    out = fs::absolute(path, error);
    return error ? FileResult::SystemFailure(what, error.value()) : FileResult{};
}

/// Makes the new file ready to take the target's place.
int PrepareReplacement(const fs::path& source, const fs::path& destination, bool writeThrough, bool& narrowed)
{
    struct stat sourceStatus = {};
    struct stat targetStatus = {};
    if (::lstat(source.c_str(), &sourceStatus) != 0)
    {
        return errno;
    }
    const bool isTaken = ::stat(destination.c_str(), &targetStatus) == 0;
    if (!isTaken && !TellsOfAbsence(errno))
    {
        return errno;
    }
    const bool hasTarget = isTaken && S_ISREG(targetStatus.st_mode);
    if (!S_ISREG(sourceStatus.st_mode) || (!hasTarget && !writeThrough))
    {
        return 0;
    }
    FileDescriptor file;
    int error = OpenDescriptor(source, O_RDONLY | O_NOFOLLOW, 0, file);
    FileAccess access;
    if (error == 0 && hasTarget)
    {
        error = ReadFileAccess(destination, access);
    }
    if (error == 0 && hasTarget)
    {
        error = ApplyFileAccess(file, access, narrowed);
    }
    if (error == 0 && writeThrough)
    {
        error = Flush(file);
    }
    const int closeError = file.Close();
    return error != 0 ? error : closeError;
}

/// Two names of one file, by hard links or linked folders; rename(2) would leave both and report success.
bool IsSameFile(const fs::path& source, const fs::path& destination)
{
    struct stat sourceStatus = {};
    struct stat targetStatus = {};
    return ::lstat(source.c_str(), &sourceStatus) == 0 && ::lstat(destination.c_str(), &targetStatus) == 0 &&
           sourceStatus.st_dev == targetStatus.st_dev && sourceStatus.st_ino == targetStatus.st_ino;
}

int MoveOver(const fs::path& source, const fs::path& destination, bool writeThrough,
             const std::function<bool()>& mayReplace, bool& narrowed)
{
    if (const int error = PrepareReplacement(source, destination, writeThrough, narrowed))
    {
        return error;
    }
    // Opened in front of the step, so that a failure to open leaves the target as it was.
    FileDescriptor folder;
    if (writeThrough)
    {
        if (const int error = OpenFolder(FolderOf(destination), folder))
        {
            return error;
        }
    }
    if (mayReplace && !mayReplace())
    {
        return ECANCELED;
    }
    if (ActiveFileSystemCalls().rename(source.c_str(), destination.c_str()) != 0)
    {
        return errno;
    }
    return FlushFolder(folder);
}

int ReadToEnd(const FileDescriptor& file, std::string& out)
{
    std::size_t length = 0;
    while (true)
    {
        if (out.size() - length < kReadBlock)
        {
            out.resize(length + std::max(length, kReadBlock));
        }
        const ssize_t count =
            ActiveFileSystemCalls().read(file.Get(), out.data() + length, out.size() - length);
        if (count == 0)
        {
            out.resize(length);
            return 0;
        }
        if (count > 0)
        {
            length += static_cast<std::size_t>(count);
        }
        else if (errno != EINTR)
        {
            return errno;
        }
    }
}

int ReadInto(std::string& out, const FileDescriptor& file, std::size_t expectedSize)
{
    constexpr std::size_t kMaxFirstReserve = std::size_t{64} * 1024 * 1024;
    try
    {
        out.resize(std::min(expectedSize, kMaxFirstReserve) + kReadBlock);
        return ReadToEnd(file, out);
    }
    catch (const std::bad_alloc&)
    {
        return ENOMEM;
    }
    catch (const std::length_error&)
    {
        return ENOMEM;
    }
}

} // namespace

FileResult FileResult::SystemFailure(const std::string& what, int errorNumber)
{
    return {kSystemFailure, what + ": " + SystemErrorText(errorNumber)};
}

FileResult ValidateExistingPath(const fs::path& path)
{
    if (path.empty())
    {
        return InvalidArgument("Path is empty.");
    }
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::none)
    {
        return FileResult::SystemFailure("Failed to inspect path '" + path.string() + "'", error.value());
    }
    if (!fs::exists(status))
    {
        return {FileResult::kNotFound, "Path does not exist: " + path.string()};
    }
    return {};
}

FileResult ReplaceFileAtomically(const fs::path& source, const fs::path& destination, bool writeThrough,
                                 const std::function<bool()>& mayReplace)
{
    if (FileResult result = ValidateExistingPath(source); !result.Succeeded())
    {
        return result;
    }
    if (destination.empty())
    {
        return InvalidArgument("Destination path is empty.");
    }
    fs::path from;
    fs::path to;
    if (FileResult result = MakeAbsolute(source, "Failed to resolve source path", from); !result.Succeeded())
    {
        return result;
    }
    if (FileResult result = MakeAbsolute(destination, "Failed to resolve destination path", to);
        !result.Succeeded())
    {
        return result;
    }
    if (from == to || IsSameFile(from, to))
    {
        return InvalidArgument("Source and destination identify the same file.");
    }
    FileResult result;
    if (const int error = MoveOver(from, to, writeThrough, mayReplace, result.narrowed))
    {
        result = FileResult::SystemFailure("Failed to replace file", error);
    }
    return result;
}

bool PathExists(const fs::path& path) noexcept
{
    struct stat status = {};
    if (path.native().find('\0') != std::string::npos)
    {
        return false;
    }
    if (::stat(path.c_str(), &status) == 0)
    {
        return true;
    }
    NoteReadFault(path, errno);
    return errno != ENOENT && errno != ENOTDIR && errno != ENAMETOOLONG;
}

FileResult MoveToFreeName(const fs::path& source, const fs::path& destination)
{
    const char* const from = source.c_str();
    const char* const to = destination.c_str();
    int error = ::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0 ? 0 : errno;
    if (error == EINVAL || error == ENOSYS)
    {
        struct stat status = {};
        error = ::lstat(to, &status) == 0 ? EEXIST : 0;
        if (error == 0 && ActiveFileSystemCalls().rename(from, to) != 0)
        {
            error = errno;
        }
    }
    return error == 0 ? FileResult{} : FileResult{FileResult::kSystemFailure, SystemErrorText(error)};
}

FileResult SetFileHidden(const fs::path& path, bool hidden)
{
    if (FileResult result = ValidateExistingPath(path); !result.Succeeded())
    {
        return result;
    }
    fs::path name = path.has_filename() ? path.filename() : path.parent_path().filename();
    if (name == "." || name == "..")
    {
        std::error_code error;
        name = fs::canonical(path, error).filename();
        if (error)
        {
            return FileResult::SystemFailure("Failed to resolve path", error.value());
        }
    }
    if (name.native().starts_with('.') == hidden)
    {
        return {};
    }
    return FileResult::SystemFailure("Failed to update file attributes", ENOTSUP);
}

FileContents ReadFileBinary(const fs::path& path)
{
    FileContents contents;
    FileDescriptor file;
    int error = OpenDescriptor(path, O_RDONLY, 0, file);
    struct stat status = {};
    if (error == 0 && ::fstat(file.Get(), &status) != 0)
    {
        error = errno;
    }
    if (error == 0 && S_ISDIR(status.st_mode))
    {
        error = EISDIR;
    }
    contents.opened = error == 0;
    if (error == 0)
    {
        // One block more than the file, so that its end is seen without growing.
        // A sparse file may claim more than memory holds; what is there decides.
        error = ReadInto(contents.bytes, file, static_cast<std::size_t>(status.st_size));
    }
    if (error != 0)
    {
        contents.bytes.clear();
        contents.result = {FileResult::kSystemFailure, SystemErrorText(error)};
    }
    return contents;
}

FileHandle OpenFileShared(const fs::path& path, const char* mode)
{
    return FileHandle(std::fopen(path.c_str(), (std::string(mode) + "e").c_str()));
}

} // namespace Vornu::Platform
