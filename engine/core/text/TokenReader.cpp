#include "engine/core/text/TokenReader.h"

#include "engine/core/text/ByteScan.h"
#include "engine/core/text/NumberText.h"

#include <charconv>
#include <limits>
#include <type_traits>

namespace Vornu::Core
{
namespace
{

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Value of a text that stands for "[sign]digits[.digits][e[sign]digits]", with at least one digit before the
/// exponent. Gives false when the exponent lacks its digits or the value is too large.
template<class Float>
bool ConvertDecimal(std::string_view text, Float& value)
{
    const char* begin = text.data();
    const char* const end = begin + text.size();
    if (begin != end && *begin == '+')
    {
        ++begin;
    }
    const auto [rest, error] = std::from_chars(begin, end, value);
    if (error == std::errc::invalid_argument || rest != end)
    {
        value = 0;
        return false;
    }
    if (error == std::errc())
    {
        return true;
    }
    const bool negative = *begin == '-';
    if (DecimalMagnitude(text).value_or(0) > 0)
    {
        value = negative ? std::numeric_limits<Float>::lowest() : std::numeric_limits<Float>::max();
        return false;
    }
    value = negative ? Float{-0.0} : Float{0};
    return true;
}

} // namespace

bool TokenReader::BeginToken() noexcept
{
    if (failed_ || eof_)
    {
        failed_ = true;
        return false;
    }
    while (at_ != end_ && IsSpace(*at_))
    {
        ++at_;
    }
    if (at_ == end_)
    {
        eof_ = true;
        failed_ = true;
        return false;
    }
    return true;
}

std::string_view TokenReader::ReadWord() noexcept
{
    if (!BeginToken())
    {
        return {};
    }
    const char* const begin = at_;
    while (at_ != end_ && !IsSpace(*at_))
    {
        ++at_;
    }
    eof_ = at_ == end_;
    return {begin, static_cast<std::size_t>(at_ - begin)};
}

template<class Integer>
void TokenReader::ExtractInteger(Integer& value) noexcept
{
    using Unsigned = std::make_unsigned_t<Integer>;
    using Limits = std::numeric_limits<Integer>;
    if (!BeginToken())
    {
        return;
    }
    const bool negative = *at_ == '-';
    if (negative || *at_ == '+')
    {
        ++at_;
    }
    const bool toMinimum = negative && Limits::is_signed;
    const Unsigned limit = toMinimum
                               ? static_cast<Unsigned>(Unsigned{0} - static_cast<Unsigned>(Limits::min()))
                               : static_cast<Unsigned>(Limits::max());
    const char* const begin = at_;
    Unsigned result = 0;
    bool overflow = false;
    for (; at_ != end_ && IsDigit(*at_); ++at_)
    {
        const auto digit = static_cast<Unsigned>(*at_ - '0');
        if (result > limit / 10 || result * 10 > limit - digit)
        {
            overflow = true;
        }
        else
        {
            result = static_cast<Unsigned>(result * 10 + digit);
        }
    }
    eof_ = at_ == end_;
    if (at_ == begin)
    {
        value = 0;
        failed_ = true;
    }
    else if (overflow)
    {
        value = toMinimum ? Limits::min() : Limits::max();
        failed_ = true;
    }
    else
    {
        value = static_cast<Integer>(negative ? Unsigned{0} - result : result);
    }
}

template<class Float>
void TokenReader::ExtractFloat(Float& value)
{
    if (!BeginToken())
    {
        return;
    }
    const char* const begin = at_;
    if (*at_ == '-' || *at_ == '+')
    {
        ++at_;
    }
    bool digits = false;
    bool point = false;
    bool exponent = false;
    for (; at_ != end_; ++at_)
    {
        if (IsDigit(*at_))
        {
            digits = true;
        }
        else if (*at_ == '.' && !point && !exponent)
        {
            point = true;
        }
        else if ((*at_ == 'e' || *at_ == 'E') && digits && !exponent)
        {
            exponent = true;
            if (at_ + 1 != end_ && (at_[1] == '+' || at_[1] == '-'))
            {
                ++at_;
            }
        }
        else
        {
            break;
        }
    }
    eof_ = at_ == end_;
    const std::string_view text(begin, static_cast<std::size_t>(at_ - begin));
    if (!digits || !ConvertDecimal(text, value))
    {
        if (!digits)
        {
            value = 0;
        }
        failed_ = true;
    }
}

TokenReader& TokenReader::Read(std::int32_t& value) noexcept
{
    ExtractInteger(value);
    return *this;
}

TokenReader& TokenReader::Read(std::int64_t& value) noexcept
{
    ExtractInteger(value);
    return *this;
}

TokenReader& TokenReader::Read(std::uint32_t& value) noexcept
{
    ExtractInteger(value);
    return *this;
}

TokenReader& TokenReader::Read(std::uint64_t& value) noexcept
{
    ExtractInteger(value);
    return *this;
}

TokenReader& TokenReader::Read(float& value)
{
    ExtractFloat(value);
    return *this;
}

TokenReader& TokenReader::Read(double& value)
{
    ExtractFloat(value);
    return *this;
}

TokenReader& TokenReader::Read(bool& value) noexcept
{
    std::int32_t number = value ? 1 : 0;
    ExtractInteger(number);
    value = number != 0;
    return *this;
}

TokenReader& TokenReader::Read(std::string& text)
{
    if (!BeginToken())
    {
        return *this;
    }
    if (*at_ != '"')
    {
        text = ReadWord();
        return *this;
    }
    ++at_;
    text.clear();
    for (;;)
    {
        const char* const plain = at_;
        while (at_ != end_ && *at_ != '"' && *at_ != '\\')
        {
            at_ = SkipPlainBytes(begin_, at_ + 1, end_);
        }
        text.append(plain, at_);
        if (at_ == end_ || *at_ == '"' || ++at_ == end_)
        {
            break;
        }
        text.push_back(*at_++);
    }
    if (at_ == end_)
    {
        eof_ = true;
        failed_ = true;
        return *this;
    }
    ++at_;
    return *this;
}

std::string_view TokenReader::Rest() const noexcept
{
    const char* at = at_;
    while (at != end_ && IsSpace(*at))
    {
        ++at;
    }
    return {at, static_cast<std::size_t>(end_ - at)};
}

} // namespace Vornu::Core
