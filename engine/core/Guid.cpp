#include "engine/core/Guid.h"

#include "engine/core/Hash.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <random>
#include <stdexcept>

namespace Vornu::Core
{
namespace
{

constexpr std::uint64_t kVersionMask = 0xF000ull;
constexpr std::uint64_t kVariantMask = 0xC000000000000000ull;
constexpr std::uint64_t kRfc4122Variant = 0x8000000000000000ull;

Guid WithVersion(std::uint64_t high, std::uint64_t low, std::uint64_t version)
{
    return {(high & ~kVersionMask) | (version << 12), (low & ~kVariantMask) | kRfc4122Variant};
}

constexpr std::array<std::int8_t, 256> MakeDigitTable()
{
    std::array<std::int8_t, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i)
    {
        const auto c = static_cast<int>(i);
        table[i] = static_cast<std::int8_t>(c >= '0' && c <= '9'   ? c - '0'
                                            : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                            : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                                   : -1);
    }
    return table;
}

constexpr std::array<std::int8_t, 256> kDigitValues = MakeDigitTable();

/// The two digits of every byte.
constexpr auto kByteTexts = []
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::array<char, 512> texts{};
    for (std::size_t byte = 0; byte < 256; ++byte)
    {
        texts[2 * byte] = kDigits[byte >> 4];
        texts[2 * byte + 1] = kDigits[byte & 0xF];
    }
    return texts;
}();

int DigitValue(char c)
{
    return kDigitValues[static_cast<unsigned char>(c)];
}

bool IsHyphenPosition(std::size_t position)
{
    return position == 8 || position == 13 || position == 18 || position == 23;
}

} // namespace

Guid Guid::Generate()
{
    static std::mutex mutex;
    static std::mt19937_64 engine = []
    {
        std::random_device device;
        std::seed_seq seed{device(), device(), device(), device()};
        return std::mt19937_64(seed);
    }();
    const std::lock_guard lock(mutex);
    const std::uint64_t high = engine();
    const std::uint64_t low = engine();
    return WithVersion(high, low, 4);
}

std::optional<Guid> Guid::TryParse(std::string_view text)
{
    constexpr int kWordDigits = 16;
    const char* at = text.data();
    const char* const end = at + text.size();
    std::array<std::uint64_t, 2> words{};
    for (std::uint64_t& word : words)
    {
        std::uint64_t digits = 0;
        for (int count = 0; count < kWordDigits; ++at)
        {
            const int value = at != end ? DigitValue(*at) : -1;
            if (value >= 0)
            {
                digits = (digits << 4) | static_cast<std::uint64_t>(value);
                ++count;
            }
            else if (at == end || *at != '-')
            {
                return std::nullopt;
            }
        }
        word = digits;
    }
    if (std::any_of(at, end, [](char c) { return c != '-'; }))
    {
        return std::nullopt;
    }
    return Guid{words[0], words[1]};
}

void Guid::WriteText(char* out) const noexcept
{
    for (int byte = 0; byte < 16; ++byte)
    {
        if (byte == 4 || byte == 6 || byte == 8 || byte == 10)
        {
            *out++ = '-';
        }
        const std::uint64_t word = byte < 8 ? high : low;
        const std::size_t value = (word >> (56 - 8 * (byte % 8))) & 0xFF;
        std::memcpy(out, &kByteTexts[2 * value], 2);
        out += 2;
    }
}

std::string Guid::ToString() const
{
    std::string text(kTextLength, '\0');
    WriteText(text.data());
    return text;
}

std::uint64_t Guid::Hash() const noexcept
{
    const std::uint64_t h1 = Fnv1aOfNumber(high);
    const std::uint64_t h2 = Fnv1aOfNumber(low);
    return (0x9E3779B9ull + (h1 >> 2) + h2 + (h1 << 6)) ^ h1;
}

Guid GuidFromName(std::string_view bytes)
{
    const std::uint64_t forward = Fnv1a(bytes);
    std::uint64_t backward = kFnvPrime;
    for (std::size_t i = bytes.size(); i > 0; --i)
    {
        backward = (backward ^ static_cast<unsigned char>(bytes[i - 1])) * kFnvPrime;
    }
    return WithVersion(forward, backward, 5);
}

Guid ParseStableGuid(std::string_view text)
{
    if (text.empty())
    {
        return {};
    }
    if (text.size() != 32 && text.size() != Guid::kTextLength)
    {
        throw std::runtime_error("Invalid stable GUID length.");
    }
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (text.size() == Guid::kTextLength && IsHyphenPosition(i))
        {
            if (text[i] != '-')
            {
                throw std::runtime_error("Invalid stable GUID separator.");
            }
        }
        else if (DigitValue(text[i]) < 0)
        {
            throw std::runtime_error("Invalid stable GUID digit.");
        }
    }
    const std::optional<Guid> guid = Guid::TryParse(text);
    if (!guid)
    {
        throw std::runtime_error("Invalid stable GUID.");
    }
    return *guid;
}

} // namespace Vornu::Core
