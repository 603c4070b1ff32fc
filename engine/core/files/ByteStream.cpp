#include "engine/core/files/ByteStream.h"

#include <limits>
#include <stdexcept>

namespace Vornu::Core
{
namespace
{

constexpr char kEndsEarly[] = "Cooked data ends early.";

} // namespace

std::span<const std::byte> ByteReader::ReadBytes(std::size_t count)
{
    if (count > Remaining())
    {
        throw std::runtime_error(kEndsEarly);
    }
    const std::span<const std::byte> bytes = bytes_.subspan(position_, count);
    position_ += count;
    return bytes;
}

std::string_view ByteReader::ReadString(std::uint32_t limit)
{
    const std::uint32_t length = ReadU32();
    if (length > limit)
    {
        throw std::runtime_error("Cooked string exceeds its limit.");
    }
    const std::span<const std::byte> bytes = ReadBytes(length);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::uint32_t ByteReader::ReadCount(std::size_t itemMinBytes, std::uint32_t limit)
{
    const std::uint32_t count = ReadU32();
    if (count > limit)
    {
        throw std::runtime_error("Cooked item count exceeds its limit.");
    }
    if (itemMinBytes != 0 && count > Remaining() / itemMinBytes)
    {
        throw std::runtime_error("Cooked item count exceeds the data.");
    }
    return count;
}

void ByteWriter::WriteBytes(std::span<const std::byte> bytes)
{
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

void ByteWriter::WriteString(std::string_view text)
{
    if (text.size() > std::numeric_limits<std::uint32_t>::max())
    {
        throw std::length_error("String too long for a cooked file.");
    }
    WriteU32(static_cast<std::uint32_t>(text.size()));
    WriteBytes(std::as_bytes(std::span(text.data(), text.size())));
}

} // namespace Vornu::Core
