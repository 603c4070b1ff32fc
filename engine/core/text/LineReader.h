#pragma once

#include "engine/core/files/InputFile.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace Vornu::Core
{

/// Hands out the lines of a text. A line ends at a line feed or at the end of the text; one carriage return
/// directly before either is dropped. A text that ends with a line feed has no empty line behind it.
class LineReader
{
public:
    /// Lines are views into `text`, which outlives them. `incomplete` tells that `text` ends where a read
    /// failed and not at the end of its file.
    explicit LineReader(std::string_view text, bool incomplete = false) noexcept;

    /// How long the lines of a file are valid.
    enum class Lines
    {
        UntilNext,    // until the next is asked for
        UntilRelease, // until `ReleaseLines`
    };

    /// Reads through a buffer that holds one line at least. `file` outlives the reader.
    explicit LineReader(InputFile& file, Lines lines = Lines::UntilNext);

    /// The next line. False at the end and when a read fails.
    bool ReadLine(std::string_view& line)
    {
        const auto available = static_cast<std::size_t>(end_ - at_);
        const void* const feed = available > 0 ? std::memchr(at_, '\n', available) : nullptr;
        return feed != nullptr ? TakeLine(static_cast<const char*>(feed), 1, line) : ReadBeyondBuffer(line);
    }

    /// The next line or, where the buffer can't hold it, its beginning: memory stays bounded whatever the
    /// line. Not for a reader that keeps lines.
    bool ReadLineHead(std::string_view& head)
    {
        if (!inLine_)
        {
            const auto available = static_cast<std::size_t>(end_ - at_);
            const void* const feed = available > 0 ? std::memchr(at_, '\n', available) : nullptr;
            if (feed != nullptr)
            {
                return TakeLine(static_cast<const char*>(feed), 1, head);
            }
        }
        return ReadHeadBeyondBuffer(head);
    }

    /// True while more may stand behind what `ReadLineHead` and `ReadLineRest` have given of the line.
    bool IsInLine() const noexcept { return inLine_; }

    /// The next bytes of such a line, a carriage return at its end among them. False behind the last; the
    /// next line can be read without asking for the rest.
    bool ReadLineRest(std::string_view& part);

    /// What stands ahead, up to `size` bytes (64 KiB at most), without going on; shorter at the end of the
    /// text.
    std::string_view Peek(std::size_t size);

    /// What the buffer holds behind the last line, whole lines or not.
    std::string_view Buffered() const noexcept { return {at_, static_cast<std::size_t>(end_ - at_)}; }
    /// Goes on behind the first `size` bytes of that.
    void SkipBuffered(std::size_t size) noexcept { at_ += size; }

    /// Gives up the lines that were handed out so far, for a reader that keeps them.
    void ReleaseLines() noexcept { retired_.clear(); }

    /// True once a read has failed.
    bool Failed() const noexcept { return incomplete_ || (file_ != nullptr && file_->Failed()); }

    /// Bytes from the start of the text to behind the last line, line end included.
    std::uint64_t Position() const noexcept { return base_ + static_cast<std::uint64_t>(at_ - begin_); }

private:
    /// Gives the line up to `end`, where `feeds` line feeds stand: one, or none at the end of the text.
    bool TakeLine(const char* end, int feeds, std::string_view& line) noexcept
    {
        const bool carriageReturn = end != at_ && end[-1] == '\r';
        line = {at_, static_cast<std::size_t>(end - at_) - (carriageReturn ? 1 : 0)};
        at_ = end + feeds;
        return true;
    }

    bool ReadBeyondBuffer(std::string_view& line);
    bool ReadHeadBeyondBuffer(std::string_view& head);
    bool FillBuffer();

    const char* begin_;
    const char* at_;
    const char* end_;
    std::uint64_t base_ = 0; // position of `begin_`
    bool incomplete_ = false;
    InputFile* file_ = nullptr;
    std::unique_ptr<char[]> buffer_;
    std::size_t capacity_ = 0;
    bool keepsLines_ = false;
    bool inLine_ = false;
    std::vector<std::unique_ptr<char[]>> retired_; // earlier buffers that lines still refer to
};

} // namespace Vornu::Core
