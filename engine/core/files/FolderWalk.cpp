#include "engine/core/files/FolderWalk.h"

#include "engine/core/files/FileDescriptor.h"
#include "engine/core/files/ReadFaults.h"

#include <cerrno>
#include <memory>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace Vornu::Platform
{
namespace
{

struct StreamCloser
{
    void operator()(DIR* stream) const noexcept { ::closedir(stream); }
};
using FolderStream = std::unique_ptr<DIR, StreamCloser>;

FolderStream OpenStream(const std::string& folder, int flags)
{
    FileDescriptor descriptor;
    errno = OpenDescriptor(folder, O_RDONLY | O_DIRECTORY | flags, 0, descriptor);
    FolderStream stream(descriptor.IsOpen() ? ::fdopendir(descriptor.Get()) : nullptr);
    if (stream)
    {
        descriptor.Release();
    }
    return stream;
}

/// Some file systems don't tell the type with the name.
unsigned char TypeOf(int folder, const dirent& entry, const std::string& path)
{
    struct stat status = {};
    if (entry.d_type != DT_UNKNOWN)
    {
        return entry.d_type;
    }
    if (::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
    {
        NoteReadFault(path, errno);
        return DT_UNKNOWN;
    }
    return static_cast<unsigned char>(IFTODT(status.st_mode));
}

FileResult EndEarly(const std::string& path, int error)
{
    NoteReadFault(path, error);
    return FileResult::SystemFailure(path, error);
}

} // namespace

bool FolderEntry::IsFolder() const noexcept
{
    return type_ == DT_DIR;
}

bool FolderEntry::IsLink() const noexcept
{
    return type_ == DT_LNK;
}

bool FolderEntry::IsRegularFile() const noexcept
{
    struct stat status = {};
    if (!IsLink())
    {
        return type_ == DT_REG;
    }
    if (::fstatat(folder_, name_.data(), &status, 0) != 0)
    {
        NoteReadFault(path_, errno);
        return false;
    }
    return S_ISREG(status.st_mode);
}

std::optional<FileStamp> FolderEntry::ReadStamp() const noexcept
{
    return ReadFileStampAt(folder_, name_.data());
}

FileResult WalkFolder(const std::filesystem::path& folder, Core::FunctionRef<void(const FolderEntry&)> visit)
{
    // One folder is open at a time, however deep they lie.
    std::vector<std::string> waiting = {folder.native()};
    int flags = 0;
    while (!waiting.empty())
    {
        std::string path = std::move(waiting.back());
        waiting.pop_back();
        const FolderStream stream = OpenStream(path, flags);
        flags = O_NOFOLLOW; // a folder may have become a link since it was found
        if (!stream)
        {
            return EndEarly(path, errno);
        }
        const std::size_t length = path.size();
        errno = 0;
        while (const dirent* const found = ::readdir(stream.get()))
        {
            const std::string_view name = found->d_name;
            if (name != "." && name != "..")
            {
                path.append("/").append(name);
                const int descriptor = ::dirfd(stream.get());
                const FolderEntry entry(descriptor, path, std::string_view(path).substr(length + 1),
                                        TypeOf(descriptor, *found, path));
                if (entry.IsFolder())
                {
                    waiting.push_back(path);
                }
                visit(entry);
                path.resize(length);
            }
            errno = 0;
        }
        if (errno != 0)
        {
            return EndEarly(path, errno);
        }
    }
    return {};
}

} // namespace Vornu::Platform
