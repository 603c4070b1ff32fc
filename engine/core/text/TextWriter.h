#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string_view>

namespace Vornu::Core
{

/// Collects text in one growing buffer. With a sink, the buffer is handed over in large pieces; without one
/// it holds everything until `Clear`.
class TextWriter
{
public:
    /// Takes a piece of text; gives false when it can't be written.
    using Sink = std::function<bool(std::string_view)>;

    TextWriter() = default;
    explicit TextWriter(Sink sink) : sink_(std::move(sink)) {}

    /// False once the sink has failed; what is written afterwards is dropped.
    bool Good() const noexcept { return good_; }

    /// Bytes written since construction or `Clear`, those handed to the sink included.
    std::uint64_t Position() const noexcept { return flushed_ + size_; }

    /// What stands in the buffer.
    std::string_view Buffered() const noexcept { return {buffer_.get(), size_}; }

    void Append(std::string_view text)
    {
        char* const out = Reserve(text.size());
        std::memcpy(out, text.data(), text.size());
        size_ += text.size();
    }

    void Append(char c)
    {
        *Reserve(1) = c;
        ++size_;
    }

    /// Room for `size` further bytes at the end; `Commit` tells how many of them were filled.
    char* Reserve(std::size_t size)
    {
        if (size > capacity_ - size_)
        {
            Grow(size);
        }
        return buffer_.get() + size_;
    }
    void Commit(std::size_t size) noexcept { size_ += size; }

    /// Hands over the buffer when it has reached the size of a large write. Called between lines, so that a
    /// line under construction stays in one piece.
    void FlushIfLarge()
    {
        if (size_ >= kLargeWrite && sink_)
        {
            Flush();
        }
    }

    /// Hands over all that is buffered. Gives `Good()`.
    bool Flush();

    /// Drops what was written behind a position. False if some of it has been handed over.
    bool Rewind(std::uint64_t position) noexcept
    {
        const bool isBuffered = position >= flushed_ && position <= Position();
        size_ = isBuffered ? static_cast<std::size_t>(position - flushed_) : size_;
        return isBuffered;
    }

    /// Drops what is buffered and starts from position 0; keeps the memory.
    void Clear() noexcept
    {
        size_ = 0;
        flushed_ = 0;
    }

private:
    static constexpr std::size_t kLargeWrite = std::size_t{256} * 1024;

    void Grow(std::size_t size);

    Sink sink_;
    std::unique_ptr<char[]> buffer_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
    std::uint64_t flushed_ = 0;
    bool good_ = true;
};

} // namespace Vornu::Core
