#include "engine/core/files/TemporaryFile.h"

#include "engine/core/files/ReadFaults.h"
#include "engine/core/system/System.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Vornu::Platform
{
namespace
{

/// Absolute, so that a later change of the working folder can't point the removal at another file.
std::filesystem::path MakeAbsolute(const std::filesystem::path& path)
{
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    return error ? path : absolute;
}

} // namespace

TemporaryFile::TemporaryFile(std::filesystem::path path, std::filesystem::path target,
                             const AccessLimit& limit)
    : path_(std::move(path)), absolutePath_(MakeAbsolute(path_)), target_(std::move(target)), limit_(limit)
{
    struct stat status = {};
    const mode_t mode = PrivateMode(::stat(target_.c_str(), &status) == 0 ? status.st_mode : limit_.mode);
    slot_ = RegisterTemporaryPath(absolutePath_.c_str());
    error_ = OpenDescriptor(path_, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, mode, file_);
    if (error_ != 0)
    {
        ReleaseTemporaryPath(std::exchange(slot_, kNoTemporarySlot));
        return;
    }
    if (::fstat(file_.Get(), &status) == 0)
    {
        created_ = true;
        device_ = status.st_dev;
        inode_ = status.st_ino;
    }
    else
    {
        error_ = errno;
        ::unlink(absolutePath_.c_str()); // nothing could tell it from another's file later
    }
}

TemporaryFile::~TemporaryFile()
{
    file_.Close();
    // After a move the name is free, and another writer may have taken it already.
    struct stat status = {};
    if (created_ && ::lstat(absolutePath_.c_str(), &status) == 0 && status.st_dev == device_ &&
        status.st_ino == inode_)
    {
        ::unlink(absolutePath_.c_str());
    }
    ReleaseTemporaryPath(slot_);
}

bool TemporaryFile::Write(std::string_view bytes) noexcept
{
    if (Good())
    {
        Record(file_.IsOpen() ? WriteAll(file_, bytes) : EBADF);
    }
    return Good();
}

bool TemporaryFile::Close()
{
    struct stat status = {};
    if (Good() && file_.IsOpen() && ::stat(target_.c_str(), &status) != 0 && TellsOfAbsence(errno))
    {
        Record(WidenNewFile(file_, FolderOf(absolutePath_), limit_));
    }
    return Record(file_.Close());
}

std::string TemporaryFile::ErrorText() const
{
    return Good() ? std::string() : SystemErrorText(error_);
}

bool TemporaryFile::Record(int error) noexcept
{
    if (Good())
    {
        error_ = error;
    }
    return Good();
}

} // namespace Vornu::Platform
