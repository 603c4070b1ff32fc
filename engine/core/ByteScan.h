#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Vornu::Core
{

/// Bytes that a look at eight at once covers.
inline constexpr std::size_t kScanWidth = sizeof(std::uint64_t);

/// Looks at eight bytes at once for control characters (below a blank), double quotes and backslashes. Gives
/// the number of bytes in front of the first, 8 when there is none.
inline std::size_t PlainBytes(std::uint64_t bytes) noexcept
{
    static_assert(std::endian::native == std::endian::little);
    constexpr std::uint64_t kOnes = 0x0101010101010101ull;
    constexpr std::uint64_t kHighBits = 0x8080808080808080ull;
    const auto below = [](std::uint64_t value, std::uint64_t limit)
    { return (value - kOnes * limit) & ~value; };
    const std::uint64_t special =
        (below(bytes, ' ') | below(bytes ^ (kOnes * '"'), 1) | below(bytes ^ (kOnes * '\\'), 1)) & kHighBits;
    return static_cast<std::size_t>(std::countr_zero(special)) / 8;
}

inline std::uint64_t LoadBytes(const char* at) noexcept
{
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, at, sizeof bytes);
    return bytes;
}

/// The first control character, double quote or backslash from `at` on; `end` when there is none. `begin` is
/// the start of the memory that `at` and `end` lie in, which may be read as well.
inline const char* SkipPlainBytes(const char* begin, const char* at, const char* end) noexcept
{
    while (static_cast<std::size_t>(end - at) >= kScanWidth)
    {
        const std::size_t plain = PlainBytes(LoadBytes(at));
        at += plain;
        if (plain < kScanWidth)
        {
            return at;
        }
    }
    if (static_cast<std::size_t>(end - begin) >= kScanWidth && at != end)
    {
        // The last eight bytes with the ones in front of `at` shifted out; zeros come in behind and stop the
        // scan.
        const auto rest = static_cast<std::size_t>(end - at);
        return at + PlainBytes(LoadBytes(end - kScanWidth) >> (8 * (kScanWidth - rest)));
    }
    while (at != end && static_cast<unsigned char>(*at) >= ' ' && *at != '"' && *at != '\\')
    {
        ++at;
    }
    return at;
}

} // namespace Vornu::Core
