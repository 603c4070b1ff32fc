#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Vornu::Core
{

/// The bytes of a file.
struct FileBytes
{
    std::unique_ptr<char[]> data;
    std::size_t size = 0;

    std::string_view View() const noexcept { return {data.get(), size}; }
};

/// A file open for reading. Closes itself. A FIFO without a writer reads as empty and never blocks. What goes
/// wrong is noted by `NoteReadFault`.
class InputFile
{
public:
    static constexpr std::uint64_t kNoLimit = ~std::uint64_t{0};

    InputFile() = default;
    explicit InputFile(const std::filesystem::path& path);
    InputFile(InputFile&& other) noexcept;
    InputFile& operator=(InputFile&& other) noexcept;
    ~InputFile();

    bool IsOpen() const noexcept { return descriptor_ >= 0; }

    /// True once a read has failed; a failed read is never taken for the end of the file.
    bool Failed() const noexcept { return IsOpen() && error_ != 0; }

    /// The error number of what went wrong first, the opening included; 0 if nothing did.
    int Error() const noexcept { return error_; }

    /// Reads up to `size` bytes. Fewer come only at the end of the file or when a read fails.
    std::size_t Read(char* out, std::size_t size);

    /// Reads from the present position to the end. False when a read fails, and when more than `limit` bytes
    /// come or a regular file has more, for which no memory is taken.
    bool ReadAll(FileBytes& out, std::uint64_t limit = kNoLimit);

    /// The size of a regular file; nothing for anything else, and if the system can't tell, which is a failed
    /// read.
    std::optional<std::uint64_t> RegularSize();

    /// Goes back to the first byte. What has failed before stays so.
    void Rewind();

private:
    std::string path_;
    int descriptor_ = -1;
    int error_ = 0;
};

} // namespace Vornu::Core
