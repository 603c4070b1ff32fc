#include "engine/core/text/NumberText.h"
#include "fuzz/FuzzFiles.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

namespace
{

using namespace Vornu;

template<class Float>
void CheckText(std::string_view text, std::optional<Float> (*parse)(std::string_view))
{
    Float expected = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), expected);
    const bool isNumber = error == std::errc() && rest == text.data() + text.size();
    const std::optional<Float> number = parse(text);
    Fuzz::Require(number.has_value() == isNumber, "a number for one alone: " + std::string(text));
    Fuzz::Require(!isNumber || std::memcmp(&*number, &expected, sizeof expected) == 0,
                  "two numbers: " + std::string(text));
}

template<class Float>
void CheckValue(Float value, char* (*write)(char*, Float), std::optional<Float> (*parse)(std::string_view),
                int digits)
{
    if (!std::isfinite(value))
    {
        return;
    }
    char mine[Core::kNumberTextCapacity];
    char theirs[Core::kNumberTextCapacity];
    const std::string_view text(mine, static_cast<std::size_t>(write(mine, value) - mine));
    std::snprintf(theirs, sizeof theirs, "%.*g", digits, static_cast<double>(value));
    Fuzz::Require(text == theirs, "two texts: " + std::string(text) + " and " + theirs);
    const std::optional<Float> back = parse(text);
    Fuzz::Require(back && std::memcmp(&*back, &value, sizeof value) == 0,
                  "a number changed over its text: " + std::string(text));
}

} // namespace

/// The input is a text, and the bits of numbers: texts read as `std::from_chars` does, and numbers are
/// written as by printf and come back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CheckText<float>(Fuzz::AsText(data, size), &Core::ParseFloatText);
    CheckText<double>(Fuzz::AsText(data, size), &Core::ParseDoubleText);
    for (std::size_t at = 0; at + sizeof(float) <= size; at += sizeof(float))
    {
        float value = 0;
        std::memcpy(&value, data + at, sizeof value);
        CheckValue<float>(value, &Core::WriteFloatText, &Core::ParseFloatText, 9);
    }
    for (std::size_t at = 0; at + sizeof(double) <= size; at += sizeof(double))
    {
        double value = 0;
        std::memcpy(&value, data + at, sizeof value);
        CheckValue<double>(value, &Core::WriteDoubleText, &Core::ParseDoubleText, 17);
    }
    return 0;
}
