#include "engine/core/files/Backup.h"

#include "engine/core/files/FileAccess.h"
#include "engine/core/files/FileDescriptor.h"
#include "engine/core/files/FileSystemCalls.h"
#include "engine/core/system/Signals.h"
#include "engine/core/system/System.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace Vornu::Platform
{
namespace
{

constexpr std::size_t kCopyBlock = 262'144;
constexpr int kNameAttempts = 16;

/// Errors by which file systems and restricted environments say that they have no unnamed files.
bool MeansUnsupported(int error)
{
    switch (error)
    {
    case EOPNOTSUPP:
    case EISDIR:
    case EINVAL:
    case ENOENT:
    case ENOSYS:
    case EPERM:
    case EACCES:
        return true;
    default:
        return false;
    }
}

/// A file to copy; where there is a stamp, it has to be the file of that.
struct Source
{
    FileDescriptor file;
    std::optional<FileStamp> stamp;
    FileAccess access;
    bool narrowed = false; // the copy has less of it

    /// For the copy, closed to others until it is complete.
    mode_t NewMode() const { return PrivateMode(access.mode); }
};

/// What the system tells of the source; ESTALE if it isn't the one meant, or has been written since.
int ReadStatus(const Source& from, struct stat& status)
{
    if (::fstat(from.file.Get(), &status) != 0)
    {
        return errno;
    }
    return !from.stamp || StampOf(status) == *from.stamp ? 0 : ESTALE;
}

int CopyBytes(const Source& from, const FileDescriptor& to)
{
    if (::lseek(from.file.Get(), 0, SEEK_SET) != 0)
    {
        return errno;
    }
    std::vector<char> block(kCopyBlock);
    while (true)
    {
        const ssize_t count = ActiveFileSystemCalls().read(from.file.Get(), block.data(), block.size());
        if (count == 0)
        {
            return 0;
        }
        if (count > 0)
        {
            if (const int error = WriteAll(to, {block.data(), static_cast<std::size_t>(count)}))
            {
                return error;
            }
        }
        else if (errno != EINTR)
        {
            return errno;
        }
    }
}

/// Bytes, attributes and a flush; `to` isn't visible under its final name yet.
int FillCopy(Source& from, const FileDescriptor& to)
{
    struct stat status = {};
    int error = ReadStatus(from, status);
    if (error == 0)
    {
        error = CopyBytes(from, to);
    }
    if (error == 0)
    {
        error = ReadStatus(from, status);
    }
    if (error == 0)
    {
        error = ApplyFileAccess(to, from.access, from.narrowed);
    }
    return error != 0 ? error : Flush(to);
}

int Link(const fs::path& from, const fs::path& to, int flags)
{
    return ActiveFileSystemCalls().link(from.c_str(), to.c_str(), flags) == 0 ? 0 : errno;
}

/// Copies through a file that has no name until it is complete. `unsupported` is set if this can't be done
/// here.
int CopyUnnamed(Source& from, const fs::path& destination, bool& unsupported)
{
    FileDescriptor to;
    int error = OpenDescriptor(FolderOf(destination), O_TMPFILE | O_WRONLY, from.NewMode(), to);
    if (error != 0)
    {
        unsupported = MeansUnsupported(error);
        return error;
    }
    if ((error = FillCopy(from, to)) != 0)
    {
        return error;
    }
    error = Link("/proc/self/fd/" + std::to_string(to.Get()), destination, AT_SYMLINK_FOLLOW);
    if (error != 0)
    {
        unsupported = MeansUnsupported(error);
        return error;
    }
    if ((error = to.Close()) != 0)
    {
        ::unlink(destination.c_str());
    }
    return error;
}

/// Creates a file of a random name in `folder`, which stands in `slot` of the register before it exists.
int CreateNamed(const fs::path& folder, mode_t mode, fs::path& path, int& slot, FileDescriptor& out)
{
    int error = EEXIST;
    for (int attempt = 0; attempt < kNameAttempts && error == EEXIST; ++attempt)
    {
        std::uint64_t number = 0;
        if (!RandomBytes(&number, sizeof number))
        {
            return EIO;
        }
        std::array<char, 40> name{};
        std::snprintf(name.data(), name.size(), ".vornu-%016llx.tmp",
                      static_cast<unsigned long long>(number));
        path = folder / name.data();
        slot = RegisterTemporaryPath(path.c_str());
        error = OpenDescriptor(path, O_WRONLY | O_CREAT | O_EXCL, mode, out);
        if (error != 0)
        {
            ReleaseTemporaryPath(slot);
        }
    }
    return error;
}

/// Creates the destination itself, for file systems that can neither link nor rename without overwriting.
int CopyInPlace(Source& from, const fs::path& destination)
{
    FileDescriptor to;
    int slot = kNoTemporarySlot;
    {
        // Registered before it is known to be this one's own, somebody else's file might be removed.
        const FatalSignalsHeld held;
        if (const int error = OpenDescriptor(destination, O_WRONLY | O_CREAT | O_EXCL, from.NewMode(), to))
        {
            return error;
        }
        slot = RegisterTemporaryPath(destination.c_str());
    }
    int error = FillCopy(from, to);
    const int closeError = to.Close();
    error = error != 0 ? error : closeError;
    if (error != 0)
    {
        ::unlink(destination.c_str());
    }
    ReleaseTemporaryPath(slot);
    return error;
}

/// Gives a complete file its final name, which must be free.
int Publish(Source& from, const fs::path& temporary, const fs::path& destination)
{
    int error = Link(temporary, destination, 0);
    if (error == 0 || !MeansUnsupported(error))
    {
        return error;
    }
    error = ::renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, destination.c_str(), RENAME_NOREPLACE) == 0
                ? 0
                : errno;
    return error == EINVAL || MeansUnsupported(error) ? CopyInPlace(from, destination) : error;
}

int CopyNamed(Source& from, const fs::path& destination)
{
    FileDescriptor to;
    fs::path temporary;
    int slot = kNoTemporarySlot;
    int error = CreateNamed(FolderOf(destination), from.NewMode(), temporary, slot, to);
    if (error != 0)
    {
        return error;
    }
    error = FillCopy(from, to);
    const int closeError = to.Close();
    error = error != 0 ? error : closeError;
    error = error != 0 ? error : Publish(from, temporary, destination);
    ::unlink(temporary.c_str());
    ReleaseTemporaryPath(slot);
    return error;
}

int CopyExclusive(const fs::path& source, const fs::path& destination, Source& from)
{
    int error = OpenDescriptor(source, O_RDONLY, 0, from.file);
    error = error != 0 ? error : ReadFileAccess(from.file, from.access);
    if (error != 0)
    {
        return error;
    }
    FileDescriptor folder;
    if ((error = OpenFolder(FolderOf(destination), folder)) != 0)
    {
        return error;
    }
    bool unsupported = false;
    error = CopyUnnamed(from, destination, unsupported);
    if (unsupported)
    {
        error = CopyNamed(from, destination);
    }
    if (error != 0)
    {
        return error;
    }
    if ((error = FlushFolder(folder)) != 0)
    {
        ::unlink(destination.c_str());
    }
    return error;
}

} // namespace

FileResult CopyFileExclusive(const fs::path& source, const fs::path& destination,
                             const std::optional<FileStamp>& stamp)
{
    Source from{{}, stamp, {}};
    const int error = CopyExclusive(source, destination, from);
    return error == 0 ? FileResult{FileResult::kSuccess, {}, from.narrowed}
                      : FileResult{FileResult::kSystemFailure, SystemErrorText(error)};
}

} // namespace Vornu::Platform
