#include "engine/core/files/InputFile.h"

#include "engine/core/files/ReadFaults.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Vornu::Core
{

InputFile::InputFile(const std::filesystem::path& path) : path_(path.native())
{
    do
    {
        descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    } while (descriptor_ < 0 && errno == EINTR);
    if (descriptor_ < 0)
    {
        error_ = errno;
        Platform::NoteReadFault(path_, error_);
    }
}

InputFile::InputFile(InputFile&& other) noexcept
    : path_(std::move(other.path_)), descriptor_(std::exchange(other.descriptor_, -1)), error_(other.error_)
{
}

InputFile& InputFile::operator=(InputFile&& other) noexcept
{
    std::swap(descriptor_, other.descriptor_);
    std::swap(path_, other.path_);
    std::swap(error_, other.error_);
    return *this;
}

InputFile::~InputFile()
{
    if (descriptor_ >= 0)
    {
        ::close(descriptor_);
    }
}

std::size_t InputFile::Read(char* out, std::size_t size)
{
    std::size_t done = 0;
    while (done < size && error_ == 0)
    {
        const ssize_t count = ::read(descriptor_, out + done, size - done);
        if (count == 0)
        {
            break;
        }
        if (count > 0)
        {
            done += static_cast<std::size_t>(count);
        }
        else if (errno != EINTR)
        {
            error_ = errno;
            Platform::NoteReadFault(path_, error_);
        }
    }
    return done;
}

bool InputFile::ReadAll(FileBytes& out, std::uint64_t limit)
{
    // One byte more than the file's size lets the first read find the end.
    constexpr std::size_t kUnknownSize = 65536;
    const std::optional<std::uint64_t> size = RegularSize();
    if (size > limit)
    {
        return false;
    }
    std::size_t capacity = size ? static_cast<std::size_t>(*size) + 1 : kUnknownSize;
    out.data = std::make_unique_for_overwrite<char[]>(capacity);
    out.size = Read(out.data.get(), capacity);
    while (out.size == capacity && out.size <= limit && !Failed())
    {
        capacity *= 2;
        auto larger = std::make_unique_for_overwrite<char[]>(capacity);
        std::memcpy(larger.get(), out.data.get(), out.size);
        out.data = std::move(larger);
        out.size += Read(out.data.get() + out.size, capacity - out.size);
    }
    return out.size <= limit && !Failed();
}

std::optional<std::uint64_t> InputFile::RegularSize()
{
    struct stat status = {};
    while (::fstat(descriptor_, &status) != 0)
    {
        if (errno != EINTR)
        {
            error_ = error_ != 0 ? error_ : errno;
            Platform::NoteReadFault(path_, errno);
            return std::nullopt;
        }
    }
    return S_ISREG(status.st_mode) ? std::optional(static_cast<std::uint64_t>(status.st_size)) : std::nullopt;
}

void InputFile::Rewind()
{
    if (::lseek(descriptor_, 0, SEEK_SET) != 0 && error_ == 0)
    {
        error_ = errno;
        Platform::NoteReadFault(path_, error_);
    }
}

} // namespace Vornu::Core
