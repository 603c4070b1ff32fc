#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// Looks for the bytes that end plain text: control characters (below a blank), double quotes and
/// backslashes.
namespace Vornu::Core
{

/// The number of plain bytes in front of the first other one among the eight of `bytes`; 8 when all are
/// plain.
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

/// The `size` bytes at `at`, one to seven, with zeros behind them.
inline std::uint64_t LoadFewBytes(const char* at, std::size_t size) noexcept
{
    const auto byte = [at](std::size_t index)
    { return std::uint64_t{static_cast<unsigned char>(at[index])}; };
    if (size < 4)
    {
        return byte(0) | byte(size / 2) << (8 * (size / 2)) | byte(size - 1) << (8 * (size - 1));
    }
    std::uint32_t front = 0;
    std::uint32_t back = 0;
    std::memcpy(&front, at, sizeof front);
    std::memcpy(&back, at + size - 4, sizeof back);
    return front | std::uint64_t{back} << (8 * (size - 4));
}

inline constexpr std::size_t kScanWidth = 16;

/// A bit for each of the 16 bytes at `at` that isn't plain.
inline std::uint32_t SpecialBytes(const char* at) noexcept
{
#if defined(__SSE2__)
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    const __m128i lastControl = _mm_set1_epi8(' ' - 1);
    const __m128i isControl = _mm_cmpeq_epi8(_mm_min_epu8(bytes, lastControl), bytes);
    const __m128i isQuote = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"'));
    const __m128i isBackslash = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'));
    return static_cast<std::uint32_t>(
        _mm_movemask_epi8(_mm_or_si128(isControl, _mm_or_si128(isQuote, isBackslash))));
#else
    std::uint32_t mask = 0;
    for (std::size_t i = 0; i < kScanWidth; ++i)
    {
        const bool special = static_cast<unsigned char>(at[i]) < ' ' || at[i] == '"' || at[i] == '\\';
        mask |= std::uint32_t{special} << i;
    }
    return mask;
#endif
}

/// The first byte from `at` on that isn't plain; `end` when there is none. `begin` is the start of the memory
/// that `at` and `end` lie in, which may be read as well.
inline const char* SkipPlainBytes(const char* begin, const char* at, const char* end) noexcept
{
    for (; static_cast<std::size_t>(end - at) >= kScanWidth; at += kScanWidth)
    {
        const std::uint32_t special = SpecialBytes(at);
        if (special != 0)
        {
            return at + std::countr_zero(special);
        }
    }
    if (static_cast<std::size_t>(end - begin) >= kScanWidth)
    {
        // The last bytes with the ones in front of `at` left out.
        const auto rest = static_cast<std::size_t>(end - at);
        const std::uint32_t special = SpecialBytes(end - kScanWidth) >> (kScanWidth - rest);
        return special != 0 ? at + std::countr_zero(special) : end;
    }
    while (at != end && static_cast<unsigned char>(*at) >= ' ' && *at != '"' && *at != '\\')
    {
        ++at;
    }
    return at;
}

} // namespace Vornu::Core
