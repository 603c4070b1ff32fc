#include "engine/core/system/System.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <malloc.h>
#include <pthread.h>
#include <sys/random.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace Vornu::Platform
{
namespace
{

constexpr std::size_t kThreadNameBytes = 15;
constexpr std::size_t kRandomBytesPerCall = 268'435'456;

/// The library's own text starts with words of its own; this one starts with the operation's name.
class OperationError : public fs::filesystem_error
{
public:
    OperationError(const char* operation, const fs::path& path, const std::error_code& error)
        : fs::filesystem_error(operation, path, error),
          text_(std::make_shared<const std::string>(std::string(operation) + ": " + SystemErrorText(error) +
                                                    (path.empty() ? "" : ": \"" + path.string() + "\"")))
    {
    }

    const char* what() const noexcept override { return text_->c_str(); }

private:
    // Shared, as copying an exception must not throw.
    std::shared_ptr<const std::string> text_;
};

void ThrowOn(const std::error_code& error, const char* operation, const fs::path& path)
{
    if (error)
    {
        throw OperationError(operation, path, error);
    }
}

/// Absence shows in the type and leaves an error code too, so the type decides.
fs::file_status CheckedStatus(fs::file_status status, const std::error_code& error, const char* operation,
                              const fs::path& path)
{
    if (status.type() == fs::file_type::none)
    {
        throw OperationError(operation, path, error);
    }
    return status;
}

bool IsContinuationByte(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u;
}

} // namespace

std::optional<std::string> GetEnvironmentValue(std::string_view name)
{
    const char* value = std::getenv(std::string(name).c_str());
    if (value == nullptr || *value == '\0')
    {
        return std::nullopt;
    }
    return std::string(value);
}

std::optional<fs::path> ExecutablePath()
{
    std::error_code error;
    fs::path path = fs::read_symlink("/proc/self/exe", error);
    if (error || path.empty())
    {
        return std::nullopt;
    }
    return path;
}

void SetCurrentThreadName(std::string_view name) noexcept
{
    char text[kThreadNameBytes + 1] = {};
    std::size_t length = std::min(name.size(), kThreadNameBytes);
    while (length > 0 && length < name.size() && IsContinuationByte(name[length]))
    {
        --length;
    }
    name.copy(text, length);
    pthread_setname_np(pthread_self(), text);
}

bool RandomBytes(void* buffer, std::size_t length) noexcept
{
    auto* bytes = static_cast<unsigned char*>(buffer);
    while (length > 0)
    {
        const ssize_t count = ::getrandom(bytes, std::min(length, kRandomBytesPerCall), 0);
        if (count < 0)
        {
            if (errno == EINTR)
            {
                continue;
            }
            return false;
        }
        bytes += count;
        length -= static_cast<std::size_t>(count);
    }
    return true;
}

void KeepFreedMemory() noexcept
{
#if defined(__GLIBC__)
    constexpr int kKept = 1 << 30;
    constexpr int kLargestHeapBlock = 1 << 25; // as large as the library allows
    constexpr int kGrowth = 1 << 20;
    ::mallopt(M_TRIM_THRESHOLD, kKept);
    ::mallopt(M_MMAP_THRESHOLD, kLargestHeapBlock);
    ::mallopt(M_TOP_PAD, kGrowth);
#endif
}

std::string SystemErrorText(int errorNumber)
{
    const char* text = strerrordesc_np(errorNumber);
    return text != nullptr ? text : "Unknown Win32 error";
}

std::string SystemErrorText(const std::error_code& error)
{
    const bool isErrorNumber =
        error.category() == std::system_category() || error.category() == std::generic_category();
    return isErrorNumber ? SystemErrorText(error.value()) : error.message();
}

bool CreateDirectories(const fs::path& path)
{
    std::error_code error;
    const bool created = fs::create_directories(path, error);
    ThrowOn(error, "create_directories", path);
    return created;
}

void CreatePrivateDirectory(const fs::path& path)
{
    const int error = ::mkdir(path.c_str(), S_IRWXU) == 0 ? 0 : errno;
    ThrowOn(std::error_code(error, std::generic_category()), "create_directories", path);
}

bool Exists(const fs::path& path)
{
    std::error_code error;
    return fs::exists(CheckedStatus(fs::status(path, error), error, "exists", path));
}

fs::file_status Status(const fs::path& path)
{
    std::error_code error;
    return CheckedStatus(fs::status(path, error), error, "status", path);
}

fs::file_status EntryStatus(const fs::path& entry)
{
    std::error_code error;
    return CheckedStatus(fs::status(entry, error), error, "directory_entry::status", entry);
}

fs::path WeaklyCanonical(const fs::path& path)
{
    std::error_code error;
    fs::path result = fs::weakly_canonical(path, error);
    ThrowOn(error, "weakly_canonical", path);
    return result;
}

fs::path TempDirectoryPath()
{
    std::error_code error;
    fs::path result = fs::temp_directory_path(error);
    ThrowOn(error, "temp_directory_path", {});
    return result;
}

bool CopyFile(const fs::path& from, const fs::path& to, fs::copy_options options)
{
    std::error_code error;
    const bool copied = fs::copy_file(from, to, options, error);
    ThrowOn(error, "copy_file", from);
    return copied;
}

fs::file_time_type LastWriteTime(const fs::path& path)
{
    std::error_code error;
    const fs::file_time_type time = fs::last_write_time(path, error);
    ThrowOn(error, "last_write_time", path);
    return time;
}

} // namespace Vornu::Platform
