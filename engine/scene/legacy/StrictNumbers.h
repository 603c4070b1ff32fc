#pragma once

#include <cstdint>
#include <string_view>

/// Conversions of words that, unlike the fields of most records, must start with a number. Leading blanks and
/// trailing text pass, as in the C library's functions. Faults throw `std::runtime_error`.
namespace Vornu::Scene::Legacy
{

/// A signed 32-bit decimal number.
std::int32_t StrictInt(std::string_view word);

/// A signed 64-bit decimal number.
std::int64_t StrictLong(std::string_view word);

/// An unsigned 32-bit decimal number; a minus wraps.
std::uint32_t StrictUnsigned(std::string_view word);

/// A float in any notation of the C library: decimal, hexadecimal, infinity, NaN. Too large and too small
/// magnitudes are out of range, inexact denormals among them.
float StrictFloat(std::string_view word);
double StrictDouble(std::string_view word);

} // namespace Vornu::Scene::Legacy
