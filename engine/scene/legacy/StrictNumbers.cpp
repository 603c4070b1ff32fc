#include "engine/scene/legacy/StrictNumbers.h"

#include "engine/core/NumberText.h"
#include "engine/core/TokenReader.h"

#include <cerrno>
#include <cfloat>
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
    std::uint64_t magnitude = 0; // stays above every 32-bit limit once it has passed it
    bool negative = false;
};

std::optional<Digits> ScanDigits(std::string_view word)
{
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
        if (digits.magnitude <= std::numeric_limits<std::uint32_t>::max())
        {
            digits.magnitude = digits.magnitude * 10 + static_cast<std::uint64_t>(word[at] - '0');
        }
    }
    return at > begin ? std::optional(digits) : std::nullopt;
}

} // namespace

std::int32_t StrictInt(std::string_view word)
{
    const std::optional<Digits> digits = ScanDigits(word);
    if (!digits)
    {
        throw std::runtime_error("invalid stoi argument");
    }
    const std::uint64_t limit = digits->negative ? 0x80000000u : 0x7FFFFFFFu;
    if (digits->magnitude > limit)
    {
        throw std::runtime_error("stoi argument out of range");
    }
    const auto magnitude = static_cast<std::int64_t>(digits->magnitude);
    return static_cast<std::int32_t>(digits->negative ? -magnitude : magnitude);
}

std::uint32_t StrictUnsigned(std::string_view word)
{
    const std::optional<Digits> digits = ScanDigits(word);
    if (!digits)
    {
        throw std::runtime_error("invalid stoul argument");
    }
    if (digits->magnitude > std::numeric_limits<std::uint32_t>::max())
    {
        throw std::runtime_error("stoul argument out of range");
    }
    const auto magnitude = static_cast<std::uint32_t>(digits->magnitude);
    return digits->negative ? 0u - magnitude : magnitude;
}

float StrictFloat(std::string_view word)
{
    const std::optional<float> plain = Core::ParseFloatText(word);
    if (plain && std::isnormal(*plain))
    {
        return *plain;
    }
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    const std::string text(word); // terminated
    char* end = nullptr;
    errno = 0;
    const float value = strtof_l(text.c_str(), &end, classic);
    if (end == text.c_str())
    {
        throw std::runtime_error("invalid stof argument");
    }
    if (errno == ERANGE)
    {
        throw std::runtime_error("stof argument out of range");
    }
    return value;
}

} // namespace Vornu::Scene::Legacy
