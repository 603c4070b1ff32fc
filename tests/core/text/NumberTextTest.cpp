#include "engine/core/text/NumberText.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

namespace Vornu::Core
{
namespace
{

std::string FloatText(float value)
{
    char buffer[kNumberTextCapacity];
    return {buffer, WriteFloatText(buffer, value)};
}

void ExpectSameAsPrintf(float value)
{
    char expected[kNumberTextCapacity];
    std::snprintf(expected, sizeof expected, "%.9g", static_cast<double>(value));
    const std::string text = FloatText(value);
    ASSERT_EQ(text, expected);
    const std::optional<float> back = ParseFloatText(text);
    ASSERT_TRUE(back.has_value()) << text;
    ASSERT_EQ(std::bit_cast<std::uint32_t>(*back), std::bit_cast<std::uint32_t>(value)) << text;
}

TEST(NumberText, FloatsArePrintfsNineDigitsAndComeBack)
{
    std::mt19937 random(20261122);
    for (int i = 0; i < 2'000'000; ++i)
    {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isfinite(value))
        {
            ExpectSameAsPrintf(value);
        }
    }
    // Short decimals, and every power of two and of ten with its neighbours.
    for (int i = 0; i < 200'000; ++i)
    {
        ExpectSameAsPrintf(static_cast<float>(random() % 2'000'000) / 1000.0f);
    }
    for (int exponent = -149; exponent < 128; ++exponent)
    {
        const float power = std::ldexp(1.0f, exponent);
        ExpectSameAsPrintf(power);
        ExpectSameAsPrintf(std::nextafter(power, 0.0f));
        ExpectSameAsPrintf(-std::nextafter(power, 1e38f));
    }
    for (int exponent = -45; exponent < 39; ++exponent)
    {
        const float power = std::strtof(("1e" + std::to_string(exponent)).c_str(), nullptr);
        ExpectSameAsPrintf(power);
        ExpectSameAsPrintf(std::nextafter(power, 0.0f));
        ExpectSameAsPrintf(std::nextafter(power, 1e38f));
    }
    ExpectSameAsPrintf(0.0f);
    ExpectSameAsPrintf(-0.0f);
    ExpectSameAsPrintf(std::numeric_limits<float>::max());
}

TEST(NumberText, ParsedFloatsAreCorrectlyRounded)
{
    // Texts of every shape, among them such as lie beside the middle of two floats.
    std::mt19937_64 random(7);
    for (int i = 0; i < 300'000; ++i)
    {
        char text[96];
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random() % 0x7F000000u));
        const double middle =
            (static_cast<double>(value) +
             static_cast<double>(std::nextafter(value, std::numeric_limits<float>::infinity()))) /
            2;
        std::snprintf(text, sizeof text, i % 2 == 0 ? "%.*g" : "%.*f", static_cast<int>(random() % 22),
                      middle);
        const float expected = std::strtof(text, nullptr);
        const std::optional<float> parsed = ParseFloatText(text);
        if (parsed.has_value())
        {
            ASSERT_EQ(std::bit_cast<std::uint32_t>(*parsed), std::bit_cast<std::uint32_t>(expected)) << text;
        }
        else
        {
            ASSERT_TRUE(expected == 0.0f || std::isinf(expected)) << text;
        }
    }
}

TEST(NumberText, StrictGrammar)
{
    for (const char* good : {"1.", ".5", "1E3", "1.e+05", "-0", "0000000000000000000000001", "1e-45",
                             "1e-0000000001", "3.4028235e38", "inf", "-nan"})
    {
        EXPECT_TRUE(ParseFloatText(good).has_value()) << good;
    }
    for (const char* bad : {"", "-", ".", "+1", " 1", "1 ", "1e", "1e+", "1.e-", "e5", "1e5.", "1e+-5",
                            "1e39", "1e-50", "0x10", "1.2.3", "--1", "1,5", "-."})
    {
        EXPECT_FALSE(ParseFloatText(bad).has_value()) << bad;
    }
    EXPECT_EQ(ParseIntegerText<std::int32_t>("-2147483648"), std::numeric_limits<std::int32_t>::min());
    for (const char* bad : {"", "-", "2147483648", "+1", " 1", "1 ", "1.0", "0x1"})
    {
        EXPECT_EQ(ParseIntegerText<std::int32_t>(bad), std::nullopt) << bad;
    }
    EXPECT_EQ(ParseIntegerText<std::uint32_t>("-1"), std::nullopt);
    EXPECT_EQ(ParseIntegerText<std::uint32_t>("0004294967295"), 4294967295u);
    EXPECT_EQ(ParseIntegerText<std::uint64_t>("18446744073709551616"), std::nullopt);
}

} // namespace
} // namespace Vornu::Core
