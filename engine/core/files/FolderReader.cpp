#include "engine/core/files/FolderReader.h"

#include "engine/core/files/FileDescriptor.h"

#include <cerrno>

#include <dirent.h>
#include <fcntl.h>

namespace fs = std::filesystem;

namespace Vornu::Platform
{
namespace
{

fs::file_type TypeOf(unsigned char type) noexcept
{
    switch (type)
    {
    case DT_UNKNOWN:
        return fs::file_type::none;
    case DT_REG:
        return fs::file_type::regular;
    case DT_DIR:
        return fs::file_type::directory;
    case DT_LNK:
        return fs::file_type::symlink;
    default:
        return fs::file_type::unknown;
    }
}

} // namespace

void FolderReader::Closer::operator()(__dirstream* stream) const noexcept
{
    ::closedir(stream);
}

int FolderReader::Open(const fs::path& folder) noexcept
{
    FileDescriptor descriptor;
    if (const int error = OpenDescriptor(folder, O_RDONLY | O_DIRECTORY, 0, descriptor))
    {
        return error;
    }
    stream_.reset(::fdopendir(descriptor.Get()));
    if (!stream_)
    {
        return errno;
    }
    descriptor.Release();
    return 0;
}

bool FolderReader::Next(Entry& entry, int& error) noexcept
{
    for (;;)
    {
        errno = 0;
        const dirent* const found = ::readdir(stream_.get());
        if (found == nullptr)
        {
            error = errno;
            return false;
        }
        entry = {found->d_name, TypeOf(found->d_type)};
        if (entry.name != "." && entry.name != "..")
        {
            return true;
        }
    }
}

} // namespace Vornu::Platform
