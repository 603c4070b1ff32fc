#include "engine/core/text/TextWriter.h"

#include <algorithm>

namespace Vornu::Core
{

bool TextWriter::Flush()
{
    if (good_ && sink_ && size_ > 0)
    {
        good_ = sink_(Buffered());
    }
    if (sink_)
    {
        flushed_ += size_;
        size_ = 0;
    }
    return good_;
}

void TextWriter::Grow(std::size_t size)
{
    constexpr std::size_t kFirstCapacity = 4096;
    const std::size_t capacity = std::max({2 * capacity_, size_ + size, kFirstCapacity});
    auto larger = std::make_unique_for_overwrite<char[]>(capacity);
    if (size_ > 0)
    {
        std::memcpy(larger.get(), buffer_.get(), size_);
    }
    buffer_ = std::move(larger);
    capacity_ = capacity;
}

} // namespace Vornu::Core
