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

/// Some file systems don't tell the type with the name. Gives the error of asking for it, else 0.
int ReadType(int folder, const dirent& entry, unsigned char& type)
{
    struct stat status = {};
    type = entry.d_type;
    if (type != DT_UNKNOWN)
    {
        return 0;
    }
    if (::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
    {
        return errno;
    }
    type = static_cast<unsigned char>(IFTODT(status.st_mode));
    return 0;
}

/// What was found is no longer there, or no folder any more.
bool HasGone(int error)
{
    return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

/// Gives the error that ended the list before its end.
int ForEachEntry(DIR* stream, Core::FunctionRef<void(const dirent&)> visit)
{
    errno = 0;
    while (const dirent* const found = ::readdir(stream))
    {
        const std::string_view name = found->d_name;
        if (name != "." && name != "..")
        {
            visit(*found);
        }
        errno = 0;
    }
    return errno;
}

class Walk
{
public:
    Walk(Core::FunctionRef<void(const FolderEntry&)> visit,
         Core::FunctionRef<void(const std::string&, int)> fault)
        : visit_(visit), fault_(fault)
    {
    }

    void Run(const std::string& root)
    {
        // One folder is open at a time, however deep they lie.
        waiting_.push_back(root);
        for (bool isRoot = true; !waiting_.empty(); isRoot = false)
        {
            std::string path = std::move(waiting_.back());
            waiting_.pop_back();
            // A folder below may have become a link since it was found.
            const FolderStream stream = OpenStream(path, isRoot ? 0 : O_NOFOLLOW);
            const int error = stream ? List(stream.get(), path) : errno;
            if (error != 0 && (isRoot || !HasGone(error)))
            {
                Report(path, error);
            }
        }
    }

private:
    int List(DIR* stream, std::string& path)
    {
        const std::size_t length = path.size();
        const int descriptor = ::dirfd(stream);
        return ForEachEntry(stream,
                            [&](const dirent& found)
                            {
                                path.append("/").append(found.d_name);
                                Visit(descriptor, found, path, length + 1);
                                path.resize(length);
                            });
    }

    void Visit(int folder, const dirent& found, const std::string& path, std::size_t nameStart)
    {
        unsigned char type = DT_UNKNOWN;
        if (const int error = ReadType(folder, found, type))
        {
            if (!HasGone(error))
            {
                Report(path, error);
            }
            return;
        }
        const FolderEntry entry(folder, path, std::string_view(path).substr(nameStart), type);
        if (entry.IsFolder())
        {
            waiting_.push_back(path);
        }
        visit_(entry);
    }

    void Report(const std::string& path, int error)
    {
        NoteReadFault(path, error);
        fault_(path, error);
    }

    Core::FunctionRef<void(const FolderEntry&)> visit_;
    Core::FunctionRef<void(const std::string&, int)> fault_;
    std::vector<std::string> waiting_;
};

} // namespace

bool FolderEntry::IsFolder() const noexcept
{
    return type_ == DT_DIR;
}

bool FolderEntry::IsLink() const noexcept
{
    return type_ == DT_LNK;
}

bool FolderEntry::IsRegularFile(int& error) const noexcept
{
    struct stat status = {};
    error = 0;
    if (!IsLink())
    {
        return type_ == DT_REG;
    }
    if (::fstatat(folder_, name_.data(), &status, 0) != 0)
    {
        error = errno;
        NoteReadFault(path_, error);
        return false;
    }
    return S_ISREG(status.st_mode);
}

std::optional<FileStamp> FolderEntry::ReadStamp() const noexcept
{
    return ReadFileStampAt(folder_, name_.data());
}

void WalkFolder(const std::filesystem::path& folder, Core::FunctionRef<void(const FolderEntry&)> visit,
                Core::FunctionRef<void(const std::string& path, int error)> fault)
{
    Walk(visit, fault).Run(folder.native());
}

int ListFolder(const std::filesystem::path& folder, Core::FunctionRef<void(std::string_view name)> visit)
{
    const FolderStream stream = OpenStream(folder.native(), 0);
    const int error =
        stream ? ForEachEntry(stream.get(), [&](const dirent& found) { visit(found.d_name); }) : errno;
    NoteReadFault(folder, error);
    return error;
}

} // namespace Vornu::Platform
