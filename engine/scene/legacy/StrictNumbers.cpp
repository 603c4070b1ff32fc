#include "engine/scene/legacy/StrictNumbers.h"

#include "engine/core/text/NumberText.h"
#include "engine/core/text/TokenReader.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>

#include <locale.h>

namespace Vornu::Scene::Legacy
{
namespace
{

struct Digits
{
    std::uint64_t magnitude = 0; // at its limit when the digits exceed that
    bool negative = false;
};

Digits ScanDigits(std::string_view word, const std::string& function)
{
    constexpr std::uint64_t kLimit = std::numeric_limits<std::uint64_t>::max();
    std::size_t at = 0;
    while (at < word.size() && Core::IsSpace(word[at]))
    {
        ++at;
    }
    Digits digits;
    if (at < word.size() && (word[at] == '-' || word[at] == '+'))
    {
        digits.negative = word[at++] == '-';
    }
    const std::size_t begin = at;
    for (; at < word.size() && word[at] >= '0' && word[at] <= '9'; ++at)
    {
        const auto digit = static_cast<std::uint64_t>(word[at] - '0');
        digits.magnitude = digits.magnitude > (kLimit - digit) / 10 ? kLimit : digits.magnitude * 10 + digit;
    }
    if (at == begin)
    {
        throw std::runtime_error("invalid " + function + " argument");
    }
    return digits;
}

template<class Integer>
Integer StrictSigned(std::string_view word, const std::string& function)
{
    const Digits digits = ScanDigits(word, function);
    const auto limit = static_cast<std::uint64_t>(std::numeric_limits<Integer>::max());
    if (digits.magnitude > limit + (digits.negative ? 1 : 0))
    {
        throw std::runtime_error(function + " argument out of range");
    }
    return static_cast<Integer>(digits.negative ? 0 - digits.magnitude : digits.magnitude);
}

template<class Float>
Float StrictFloating(std::string_view word, const std::string& function,
                     Float (*convert)(const char*, char**, locale_t))
{
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    const std::string text(word); // terminated
    char* end = nullptr;
    errno = 0;
    const Float value = convert(text.c_str(), &end, classic);
    if (end == text.c_str())
    {
        throw std::runtime_error("invalid " + function + " argument");
    }
    if (errno == ERANGE)
    {
        throw std::runtime_error(function + " argument out of range");
    }
    return value;
}

/// The smallest normal number may stand for a smaller one that was rounded up to it.
template<class Float>
bool IsSurelyInRange(std::optional<Float> number)
{
    return number && std::isfinite(*number) && std::abs(*number) > std::numeric_limits<Float>::min();
}

} // namespace

std::int32_t StrictInt(std::string_view word)
{
    return StrictSigned<std::int32_t>(word, "stoi");
}

std::int64_t StrictLong(std::string_view word)
{
    return StrictSigned<std::int64_t>(word, "stoll");
}

std::uint32_t StrictUnsigned(std::string_view word)
{
    const Digits digits = ScanDigits(word, "stoul");
    if (digits.magnitude > std::numeric_limits<std::uint32_t>::max())
    {
        throw std::runtime_error("stoul argument out of range");
    }
    const auto magnitude = static_cast<std::uint32_t>(digits.magnitude);
    return digits.negative ? 0u - magnitude : magnitude;
}

float StrictFloat(std::string_view word)
{
    const std::optional<float> plain = Core::ParseFloatText(word);
    return IsSurelyInRange(plain) ? *plain : StrictFloating<float>(word, "stof", &strtof_l);
}

double StrictDouble(std::string_view word)
{
    const std::optional<double> plain = Core::ParseDoubleText(word);
    return IsSurelyInRange(plain) ? *plain : StrictFloating<double>(word, "stod", &strtod_l);
}

} // namespace Vornu::Scene::Legacy
