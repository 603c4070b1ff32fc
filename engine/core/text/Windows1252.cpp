#include "engine/core/text/Windows1252.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace Vornu::Core
{
namespace
{

/// Bytes 0x80 to 0x9F; all others stand for the code point of the same number.
constexpr std::array<std::uint16_t, 32> kMiddle = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

void AppendUtf8(std::uint32_t point, std::string& out)
{
    if (point < 0x80)
    {
        out.push_back(static_cast<char>(point));
        return;
    }
    if (point < 0x800)
    {
        out.push_back(static_cast<char>(0xC0 | (point >> 6)));
    }
    else
    {
        out.push_back(static_cast<char>(0xE0 | (point >> 12)));
        out.push_back(static_cast<char>(0x80 | ((point >> 6) & 0x3F)));
    }
    out.push_back(static_cast<char>(0x80 | (point & 0x3F)));
}

std::optional<char> ByteOf(std::uint32_t point)
{
    if (point < 0x80 || (point >= 0xA0 && point <= 0xFF))
    {
        return static_cast<char>(point);
    }
    const auto found = std::find(kMiddle.begin(), kMiddle.end(), point);
    return found == kMiddle.end() ? std::nullopt
                                  : std::optional(static_cast<char>(0x80 + (found - kMiddle.begin())));
}

/// The code point at `at`, which moves behind it. All characters of the encoding take three bytes at most.
std::optional<std::uint32_t> ReadUtf8(std::string_view text, std::size_t& at)
{
    const auto first = static_cast<unsigned char>(text[at++]);
    if (first < 0x80)
    {
        return first;
    }
    const std::size_t more = first >= 0xC2 && first < 0xE0 ? 1 : first >= 0xE0 && first < 0xF0 ? 2 : 0;
    if (more == 0 || text.size() - at < more)
    {
        return std::nullopt;
    }
    std::uint32_t point = first & (more == 1 ? 0x1Fu : 0x0Fu);
    for (std::size_t i = 0; i < more; ++i)
    {
        const auto next = static_cast<unsigned char>(text[at++]);
        if ((next & 0xC0u) != 0x80u)
        {
            return std::nullopt;
        }
        point = (point << 6) | (next & 0x3Fu);
    }
    return more == 2 && point < 0x800 ? std::nullopt : std::optional(point);
}

} // namespace

std::string DecodeWindows1252(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    for (const char c : bytes)
    {
        const auto byte = static_cast<unsigned char>(c);
        AppendUtf8(byte >= 0x80 && byte < 0xA0 ? kMiddle[byte - 0x80u] : byte, text);
    }
    return text;
}

std::optional<std::string> EncodeWindows1252(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t at = 0; at < text.size();)
    {
        const std::optional<std::uint32_t> point = ReadUtf8(text, at);
        const std::optional<char> byte = point ? ByteOf(*point) : std::nullopt;
        if (!byte)
        {
            return std::nullopt;
        }
        bytes.push_back(*byte);
    }
    return bytes;
}

} // namespace Vornu::Core
