#include "engine/core/text/NumberText.h"

#include <array>
#include <bit>
#include <cstring>

namespace Vornu::Core
{
namespace
{

__extension__ using Wide = unsigned __int128;

// The nine significant digits of a float f = m * 2^e are round(f * 10^k) for one k. The powers stand here as
// `mantissa * 2^exponent` with 64 bits of mantissa, rounded down; from 10^0 to 10^27 they are exact. With 24
// bits of m, the product's error stays far below the fraction bits, so that rounding is certain but for a
// hair's breadth around one half, where the library's own routine decides.
constexpr int kMinPower = -54;
constexpr int kMaxPower = 54;
constexpr int kMaxExactPower = 27;
constexpr int kDigits = 9;
constexpr std::uint64_t kLowestNineDigits = 100'000'000;
constexpr std::uint64_t kTenDigits = 1'000'000'000;

struct PowerOfTen
{
    std::uint64_t mantissa = 0;
    int exponent = 0;
};

constexpr PowerOfTen MakePower(int power)
{
    const int count = power < 0 ? -power : power;
    Wide five = 1;
    for (int i = 0; i < count; ++i)
    {
        five *= 5;
    }
    if (power >= 0)
    {
        int shift = 0;
        while (five >> 64 != 0)
        {
            five >>= 1;
            ++shift;
        }
        auto mantissa = static_cast<std::uint64_t>(five);
        while (mantissa >> 63 == 0)
        {
            mantissa <<= 1;
            --shift;
        }
        return {mantissa, shift + power};
    }
    // 2^n / 5^count by long division, until the quotient has 64 bits.
    Wide remainder = 1;
    std::uint64_t quotient = 0;
    int bits = 0;
    while (quotient >> 63 == 0)
    {
        remainder <<= 1;
        ++bits;
        quotient <<= 1;
        if (remainder >= five)
        {
            remainder -= five;
            quotient |= 1;
        }
    }
    return {quotient, -bits + power};
}

constexpr auto MakePowers()
{
    std::array<PowerOfTen, kMaxPower - kMinPower + 1> powers{};
    for (int power = kMinPower; power <= kMaxPower; ++power)
    {
        powers[static_cast<std::size_t>(power - kMinPower)] = MakePower(power);
    }
    return powers;
}

constexpr auto kPowers = MakePowers();

struct NineDigits
{
    std::uint64_t digits = 0; // 100,000,000 to 999,999,999
    int exponent = 0;         // of the first digit
};

/// The nine digits of `mantissa * 2^exponent`, where bit 23 is the mantissa's highest. No value when the
/// rounding can't be told.
std::optional<NineDigits> RoundToNineDigits(std::uint32_t mantissa, int exponent)
{
    // floor(log10(2^n)), or one less than the first digit's exponent needs.
    int first = ((exponent + 23) * 1233) >> 12;
    for (;;)
    {
        const int power = kDigits - 1 - first;
        const PowerOfTen& scale = kPowers[static_cast<std::size_t>(power - kMinPower)];
        const Wide product = static_cast<Wide>(mantissa) * scale.mantissa;
        const int shift = -(exponent + scale.exponent);
        std::uint64_t digits = static_cast<std::uint64_t>(product >> shift);
        if (digits >= kTenDigits)
        {
            ++first;
            continue;
        }
        const std::uint64_t fraction =
            static_cast<std::uint64_t>(product) & ((std::uint64_t{1} << shift) - 1);
        const std::uint64_t half = std::uint64_t{1} << (shift - 1);
        const bool exact = power >= 0 && power <= kMaxExactPower;
        if (!exact && fraction < half && fraction + mantissa >= half)
        {
            return std::nullopt;
        }
        if (fraction > half || (fraction == half && (!exact || digits % 2 == 1)))
        {
            ++digits;
        }
        if (digits == kTenDigits)
        {
            return NineDigits{kLowestNineDigits, first + 1};
        }
        if (digits < kLowestNineDigits)
        {
            return std::nullopt;
        }
        return NineDigits{digits, first};
    }
}

char* WriteScientific(char* out, const char* digits, int count, int exponent)
{
    *out++ = digits[0];
    if (count > 1)
    {
        *out++ = '.';
        std::memcpy(out, digits + 1, static_cast<std::size_t>(count - 1));
        out += count - 1;
    }
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    const int magnitude = exponent < 0 ? -exponent : exponent;
    *out++ = static_cast<char>('0' + magnitude / 10);
    *out++ = static_cast<char>('0' + magnitude % 10);
    return out;
}

char* WriteFixed(char* out, const char* digits, int count, int exponent)
{
    if (exponent < 0)
    {
        *out++ = '0';
        *out++ = '.';
        for (int i = -1; i > exponent; --i)
        {
            *out++ = '0';
        }
        std::memcpy(out, digits, static_cast<std::size_t>(count));
        return out + count;
    }
    for (int i = 0; i <= exponent; ++i)
    {
        *out++ = i < count ? digits[i] : '0';
    }
    if (count > exponent + 1)
    {
        *out++ = '.';
        const int rest = count - exponent - 1;
        std::memcpy(out, digits + exponent + 1, static_cast<std::size_t>(rest));
        out += rest;
    }
    return out;
}

template<class Float>
std::optional<Float> ParseWhole(std::string_view text)
{
    Float value = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || rest != end)
    {
        return std::nullopt;
    }
    return value;
}

/// `digits * 10^exponent`, without its sign.
struct Decimal
{
    std::uint64_t digits = 0;
    int exponent = 0;
};

/// Reads "e[sign]digits" of one or two digits.
std::optional<int> ScanExponent(const char* at, const char* end)
{
    if ((*at != 'e' && *at != 'E') || ++at == end)
    {
        return std::nullopt;
    }
    const bool negative = *at == '-';
    at += negative || *at == '+' ? 1 : 0;
    if (at == end || end - at > 2)
    {
        return std::nullopt;
    }
    int value = 0;
    for (; at != end; ++at)
    {
        if (*at < '0' || *at > '9')
        {
            return std::nullopt;
        }
        value = value * 10 + (*at - '0');
    }
    return negative ? -value : value;
}

/// Takes decimal digits into `digits` and gives the end of them.
const char* ScanDigits(const char* at, const char* end, std::uint64_t& digits)
{
    for (; at != end; ++at)
    {
        const auto digit = static_cast<unsigned char>(*at - '0');
        if (digit > 9)
        {
            break;
        }
        digits = digits * 10 + digit;
    }
    return at;
}

/// The value of eight decimal digits, or no value. Two neighbours are joined at a time: eight digits to four
/// pairs, to two numbers of four digits, to one of eight.
std::optional<std::uint64_t> EightDigits(const char* at)
{
    std::uint64_t text = 0;
    std::memcpy(&text, at, sizeof(text));
    constexpr std::uint64_t kZeros = 0x3030303030303030;
    constexpr std::uint64_t kHighHalves = 0xF0F0F0F0F0F0F0F0;
    constexpr std::uint64_t kSix = 0x0606060606060606; // lifts what is above '9' out of the digits' half
    if ((text & kHighHalves) != kZeros || ((text + kSix) & kHighHalves) != kZeros)
    {
        return std::nullopt;
    }
    text -= kZeros;
    text = (text * 10 + (text >> 8)) & 0x00FF00FF00FF00FF;
    text = (text * 100 + (text >> 16)) & 0x0000FFFF0000FFFF;
    return (text * 10'000 + (text >> 32)) & 0xFFFFFFFF;
}

/// Takes the digits of a fraction, which are many as often as few.
const char* ScanFraction(const char* at, const char* end, std::uint64_t& digits)
{
    if (std::endian::native == std::endian::little && end - at >= 8)
    {
        if (const std::optional<std::uint64_t> eight = EightDigits(at))
        {
            digits = digits * kLowestNineDigits + *eight;
            at += 8;
        }
    }
    return ScanDigits(at, end, digits);
}

/// Reads "digits[.digits][e[sign]digits]" with up to 19 digits. False for any other text.
bool ScanDecimal(const char* const begin, const char* const end, Decimal& decimal)
{
    const char* at = ScanDigits(begin, end, decimal.digits);
    std::ptrdiff_t count = at - begin;
    if (at != end && *at == '.')
    {
        const char* const fraction = at + 1;
        at = ScanFraction(fraction, end, decimal.digits);
        decimal.exponent = static_cast<int>(fraction - at);
        count += at - fraction;
    }
    if (count < 1 || count > 19)
    {
        return false;
    }
    if (at != end)
    {
        const std::optional<int> exponent = ScanExponent(at, end);
        decimal.exponent += exponent.value_or(0);
        return exponent.has_value();
    }
    return true;
}

/// By the powers above. No value when the rounding can't be told, and for what is no normal float.
std::optional<float> RoundToFloat(const Decimal& decimal)
{
    if (decimal.digits == 0)
    {
        return 0.0f;
    }
    if (decimal.exponent < kMinPower || decimal.exponent > kMaxPower)
    {
        return std::nullopt;
    }
    const PowerOfTen& power = kPowers[static_cast<std::size_t>(decimal.exponent - kMinPower)];
    const int shift = std::countl_zero(decimal.digits);
    const Wide product = static_cast<Wide>(decimal.digits << shift) * power.mantissa;
    const auto upper = static_cast<std::uint64_t>(product >> 64);
    const int missing = 1 - static_cast<int>(upper >> 63);
    const std::uint64_t bits = upper << missing;
    // 24 bits of mantissa, then the tail. What the power and the upper word leave out is less than two units
    // of that word, and so less than four of the last bit here: rounding is certain but for a tail that close
    // to one half.
    constexpr int kTailBits = 40;
    constexpr std::uint64_t kHalf = std::uint64_t{1} << (kTailBits - 1);
    const std::uint64_t tail = bits & (2 * kHalf - 1);
    if (tail - (kHalf - 4) <= 4)
    {
        return std::nullopt;
    }
    const auto mantissa = static_cast<std::uint32_t>((bits >> kTailBits) + (tail >> (kTailBits - 1)));
    // The value is mantissa * 2^exponent, a normal float between these limits.
    const int exponent = power.exponent - shift + 64 + kTailBits - missing;
    if (exponent < -149 || exponent > 103)
    {
        return std::nullopt;
    }
    // The mantissa's highest bit, or the carry of its rounding, adds to the exponent's field.
    return std::bit_cast<float>((static_cast<std::uint32_t>(exponent + 149) << 23) + mantissa);
}

std::optional<float> ParseCommonFloat(std::string_view text)
{
    if (text.empty())
    {
        return std::nullopt;
    }
    // A sign is as likely as none: no branch depends on it.
    const bool negative = text.front() == '-';
    Decimal decimal;
    if (!ScanDecimal(text.data() + static_cast<int>(negative), text.data() + text.size(), decimal))
    {
        return std::nullopt;
    }
    std::optional<float> value = RoundToFloat(decimal);
    if (value)
    {
        const std::uint32_t sign = static_cast<std::uint32_t>(negative) << 31;
        value = std::bit_cast<float>(std::bit_cast<std::uint32_t>(*value) | sign);
    }
    return value;
}

} // namespace

char* WriteFloatText(char* out, float value)
{
    const auto bits = std::bit_cast<std::uint32_t>(value);
    if (bits >> 31 != 0)
    {
        *out++ = '-';
    }
    const float magnitude = std::bit_cast<float>(bits & 0x7FFFFFFFu);
    if (magnitude < 16777216.0f)
    {
        const auto whole = static_cast<std::uint32_t>(magnitude);
        if (static_cast<float>(whole) == magnitude)
        {
            return WriteIntegerText(out, whole);
        }
    }
    std::uint32_t mantissa = bits & 0x7FFFFFu;
    int exponent = static_cast<int>((bits >> 23) & 0xFF) - 150;
    if (exponent == -150)
    {
        const int shift = std::countl_zero(mantissa) - 8;
        mantissa <<= shift;
        exponent = -149 - shift;
    }
    else
    {
        mantissa |= 0x800000u;
    }
    const std::optional<NineDigits> rounded = RoundToNineDigits(mantissa, exponent);
    if (!rounded)
    {
        return std::to_chars(out, out + kNumberTextCapacity, magnitude, std::chars_format::general, kDigits)
            .ptr;
    }
    char digits[kDigits];
    std::uint64_t rest = rounded->digits;
    for (int i = kDigits - 1; i >= 0; --i)
    {
        digits[i] = static_cast<char>('0' + rest % 10);
        rest /= 10;
    }
    int count = kDigits;
    while (digits[count - 1] == '0')
    {
        --count;
    }
    if (rounded->exponent < -4 || rounded->exponent >= kDigits)
    {
        return WriteScientific(out, digits, count, rounded->exponent);
    }
    return WriteFixed(out, digits, count, rounded->exponent);
}

char* WriteDoubleText(char* out, double value)
{
    return std::to_chars(out, out + kNumberTextCapacity, value, std::chars_format::general, 17).ptr;
}

std::optional<float> ParseFloatText(std::string_view text)
{
    const std::optional<float> common = ParseCommonFloat(text);
    return common ? common : ParseWhole<float>(text);
}

std::optional<double> ParseDoubleText(std::string_view text)
{
    return ParseWhole<double>(text);
}

std::optional<std::int64_t> DecimalMagnitude(std::string_view number)
{
    std::int64_t magnitude = 0;
    bool found = false;
    bool fraction = false;
    std::size_t at = 0;
    for (; at < number.size() && number[at] != 'e' && number[at] != 'E'; ++at)
    {
        const char c = number[at];
        if (c == '.')
        {
            fraction = true;
        }
        else if (c >= '0' && c <= '9')
        {
            found = found || c != '0';
            if (found && !fraction)
            {
                ++magnitude;
            }
            else if (!found && fraction)
            {
                --magnitude;
            }
        }
    }
    if (!found)
    {
        return std::nullopt;
    }
    if (at + 1 < number.size())
    {
        const bool plus = number[at + 1] == '+';
        constexpr std::int64_t kFar = 1'000'000'000'000;
        std::int64_t exponent = 0;
        const char* const begin = number.data() + at + (plus ? 2 : 1);
        const auto result = std::from_chars(begin, number.data() + number.size(), exponent);
        if (result.ec == std::errc::result_out_of_range)
        {
            exponent = *begin == '-' ? -kFar : kFar;
        }
        magnitude += exponent < -kFar ? -kFar : exponent > kFar ? kFar : exponent;
    }
    return magnitude;
}

} // namespace Vornu::Core
