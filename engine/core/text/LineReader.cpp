#include "engine/core/text/LineReader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Vornu::Core
{
namespace
{

constexpr std::size_t kBufferSize = 65536;
constexpr std::size_t kKeptBufferSize = 4 * kBufferSize;

} // namespace

LineReader::LineReader(std::string_view text, bool incomplete) noexcept
    : begin_(text.data()), at_(begin_), end_(begin_ + text.size()), incomplete_(incomplete)
{
}

LineReader::LineReader(InputFile& file, Lines lines)
    : file_(&file), capacity_(lines == Lines::UntilNext ? kBufferSize : kKeptBufferSize),
      keepsLines_(lines == Lines::UntilRelease)
{
    buffer_ = std::make_unique_for_overwrite<char[]>(capacity_);
    begin_ = at_ = end_ = buffer_.get();
}

std::string_view LineReader::Peek(std::size_t size)
{
    while (static_cast<std::size_t>(end_ - at_) < size && FillBuffer())
    {
    }
    return {at_, std::min(size, static_cast<std::size_t>(end_ - at_))};
}

/// Goes on where the buffer holds no line end.
bool LineReader::ReadBeyondBuffer(std::string_view& line)
{
    for (;;)
    {
        const auto searched = static_cast<std::size_t>(end_ - at_);
        if (!FillBuffer())
        {
            break;
        }
        const void* const feed =
            std::memchr(at_ + searched, '\n', static_cast<std::size_t>(end_ - at_) - searched);
        if (feed != nullptr)
        {
            return TakeLine(static_cast<const char*>(feed), 1, line);
        }
    }
    if (at_ == end_ || (file_ != nullptr && file_->Failed()))
    {
        return false;
    }
    return TakeLine(end_, 0, line);
}

bool LineReader::ReadHeadBeyondBuffer(std::string_view& head)
{
    for (std::string_view passed; ReadLineRest(passed);)
    {
    }
    std::size_t searched = 0;
    for (;;)
    {
        const auto available = static_cast<std::size_t>(end_ - at_);
        const void* const feed =
            available > searched ? std::memchr(at_ + searched, '\n', available - searched) : nullptr;
        if (feed != nullptr)
        {
            return TakeLine(static_cast<const char*>(feed), 1, head);
        }
        if (file_ != nullptr && available == capacity_)
        {
            head = {at_, available};
            at_ = end_;
            inLine_ = true;
            return true;
        }
        searched = available;
        if (!FillBuffer())
        {
            break;
        }
    }
    return at_ != end_ && (file_ == nullptr || !file_->Failed()) && TakeLine(end_, 0, head);
}

bool LineReader::ReadLineRest(std::string_view& part)
{
    if (!inLine_ || (at_ == end_ && !FillBuffer()))
    {
        inLine_ = false;
        return false;
    }
    const auto available = static_cast<std::size_t>(end_ - at_);
    const auto* const feed = static_cast<const char*>(std::memchr(at_, '\n', available));
    part = {at_, feed != nullptr ? static_cast<std::size_t>(feed - at_) : available};
    at_ += part.size() + (feed != nullptr ? 1 : 0);
    inLine_ = feed == nullptr;
    return true;
}

/// Brings more bytes behind the present line's start. False at the end of the file.
bool LineReader::FillBuffer()
{
    if (file_ == nullptr || file_->Failed())
    {
        return false;
    }
    const auto kept = static_cast<std::size_t>(end_ - at_);
    base_ += static_cast<std::uint64_t>(at_ - begin_);
    const bool grows = kept == capacity_;
    if (grows || keepsLines_)
    {
        capacity_ *= grows ? 2 : 1;
        auto next = std::make_unique_for_overwrite<char[]>(capacity_);
        std::memcpy(next.get(), at_, kept);
        std::swap(buffer_, next);
        if (keepsLines_)
        {
            retired_.push_back(std::move(next));
        }
    }
    else
    {
        std::memmove(buffer_.get(), at_, kept);
    }
    begin_ = at_ = buffer_.get();
    const std::size_t count = file_->Read(buffer_.get() + kept, capacity_ - kept);
    end_ = begin_ + kept + count;
    return count > 0;
}

} // namespace Vornu::Core
