#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Vornu::Core
{

/// Room that every number writer below may use.
inline constexpr std::size_t kNumberTextCapacity = 64;

/// Writes `value` as printf's "%.9g" does in the classic locale. `value` is finite. `out` holds at least
/// `kNumberTextCapacity` characters. Returns the end of the text; nothing is terminated.
char* WriteFloatText(char* out, float value);

/// Writes `value` as printf's "%.17g" does in the classic locale. `value` is finite.
char* WriteDoubleText(char* out, double value);

/// Writes an integer in plain decimal.
template<class Integer>
char* WriteIntegerText(char* out, Integer value)
{
    return std::to_chars(out, out + kNumberTextCapacity, value).ptr;
}

/// Reads a whole text as a number, with the grammar and the correct rounding of `std::from_chars` in general
/// format: no leading plus or white space, nothing behind the number. Infinities and NaNs are given as such.
/// No value when the text isn't a number or its magnitude doesn't fit the type.
std::optional<float> ParseFloatText(std::string_view text);
std::optional<double> ParseDoubleText(std::string_view text);

/// Reads a whole text of decimal digits, with a leading minus for signed types.
template<class Integer>
std::optional<Integer> ParseIntegerText(std::string_view text)
{
    Integer value = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || rest != end)
    {
        return std::nullopt;
    }
    return value;
}

/// The decimal magnitude of a number's text with an optional sign, digits, point and exponent: the power of
/// ten just above its value. No value when all digits are zero. Tells overflow from underflow.
std::optional<std::int64_t> DecimalMagnitude(std::string_view number);

} // namespace Vornu::Core
