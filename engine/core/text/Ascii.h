#pragma once

namespace Vornu::Core
{

/// Letters and digits in the sense of the classic locale.
constexpr bool IsAsciiLetter(char c) noexcept
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr bool IsAsciiDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

} // namespace Vornu::Core
