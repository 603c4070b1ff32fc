#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Vornu::Core
{

/// Reads little-endian numbers and length-prefixed data from bytes that outlive it. Every read that the data
/// can't satisfy throws `std::runtime_error`.
class ByteReader
{
public:
    explicit ByteReader(std::span<const std::byte> bytes) noexcept : bytes_(bytes) {}

    std::uint8_t ReadU8() { return ReadNumber<std::uint8_t>(); }
    std::uint16_t ReadU16() { return ReadNumber<std::uint16_t>(); }
    std::uint32_t ReadU32() { return ReadNumber<std::uint32_t>(); }
    std::uint64_t ReadU64() { return ReadNumber<std::uint64_t>(); }

    /// The next `count` bytes, as a view into the data.
    std::span<const std::byte> ReadBytes(std::size_t count);

    /// A `u32` length of at most `limit` and that many bytes, as a view into the data.
    std::string_view ReadString(std::uint32_t limit);

    /// A `u32` count of at most `limit`. With `itemMinBytes` above 0 the remaining data must be able to hold
    /// that many items, so that a caller may reserve memory for them.
    std::uint32_t ReadCount(std::size_t itemMinBytes, std::uint32_t limit);

    std::size_t Position() const noexcept { return position_; }
    std::size_t Remaining() const noexcept { return bytes_.size() - position_; }

private:
    template<class Number>
    Number ReadNumber()
    {
        Number number = 0;
        const std::span<const std::byte> bytes = ReadBytes(sizeof(Number));
        for (std::size_t i = 0; i < sizeof(Number); ++i)
        {
            number = static_cast<Number>(
                number | static_cast<Number>(Number{std::to_integer<std::uint8_t>(bytes[i])} << (8 * i)));
        }
        return number;
    }

    std::span<const std::byte> bytes_;
    std::size_t position_ = 0;
};

/// Appends little-endian numbers and length-prefixed data to a byte vector.
class ByteWriter
{
public:
    void WriteU8(std::uint8_t number) { WriteNumber(number); }
    void WriteU16(std::uint16_t number) { WriteNumber(number); }
    void WriteU32(std::uint32_t number) { WriteNumber(number); }
    void WriteU64(std::uint64_t number) { WriteNumber(number); }

    void WriteBytes(std::span<const std::byte> bytes);

    /// A `u32` length and the bytes. Throws `std::length_error` when the length doesn't fit.
    void WriteString(std::string_view text);

    const std::vector<std::byte>& Bytes() const noexcept { return bytes_; }
    std::vector<std::byte> TakeBytes() noexcept { return std::move(bytes_); }

private:
    template<class Number>
    void WriteNumber(Number number)
    {
        for (std::size_t i = 0; i < sizeof(Number); ++i)
        {
            bytes_.push_back(static_cast<std::byte>(number >> (8 * i)));
        }
    }

    std::vector<std::byte> bytes_;
};

} // namespace Vornu::Core
