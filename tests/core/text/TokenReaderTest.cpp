#include "engine/core/text/TokenReader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iomanip>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>

namespace Vornu::Core
{
namespace
{

std::string RandomLine(std::mt19937& random)
{
    static const std::string kAlphabet = "0123456789001199..--++eE\"\"\\ \t\v\rxXnaif,_#\xC3\xA9";
    static const char* const kPieces[] = {"0",
                                          "-1",
                                          "2147483647",
                                          "2147483648",
                                          "-2147483648",
                                          "-2147483649",
                                          "4294967295",
                                          "4294967296",
                                          "-4294967295",
                                          "1e5",
                                          "1e",
                                          "1e+",
                                          "1e39",
                                          "-1e39",
                                          "1e-46",
                                          "1e-40",
                                          "3.4028236e38",
                                          "1.5.3",
                                          "nan",
                                          "inf",
                                          "0x10",
                                          "1_000",
                                          "18446744073709551615",
                                          "18446744073709551616",
                                          "-18446744073709551616",
                                          "\"a b\"",
                                          "\"a\\\"b\"",
                                          "\"open",
                                          "\"\\",
                                          "word",
                                          "\"\"",
                                          "9223372036854775808",
                                          "1e400",
                                          "1e-400",
                                          "-.",
                                          "+.5"};
    std::string line;
    const int count = static_cast<int>(random() % 8);
    for (int i = 0; i < count; ++i)
    {
        if (random() % 2 == 0)
        {
            line += kPieces[random() % std::size(kPieces)];
        }
        else
        {
            for (int length = static_cast<int>(random() % 7); length > 0; --length)
            {
                line += kAlphabet[random() % kAlphabet.size()];
            }
        }
        line += random() % 4 == 0 ? "  " : random() % 6 == 0 ? "" : " ";
    }
    return line;
}

template<class Number>
void ReadBoth(TokenReader& reader, std::istringstream& stream, Number start, const std::string& line)
{
    Number mine = start;
    Number theirs = start;
    reader.Read(mine);
    stream >> theirs;
    if constexpr (std::is_floating_point_v<Number>)
    {
        ASSERT_EQ(std::memcmp(&mine, &theirs, sizeof mine), 0) << line << ": " << mine << " and " << theirs;
    }
    else
    {
        ASSERT_EQ(mine, theirs) << line;
    }
}

TEST(TokenReader, EqualsFormattedExtractionOnRandomLines)
{
    std::mt19937 random(42);
    for (int round = 0; round < 200'000; ++round)
    {
        const std::string line = RandomLine(random);
        TokenReader reader(line);
        std::istringstream stream(line);
        stream.imbue(std::locale::classic());
        for (int field = 0; field < 6; ++field)
        {
            switch (random() % 8)
            {
            case 0:
                ReadBoth<std::int32_t>(reader, stream, 77, line);
                break;
            case 1:
                ReadBoth<std::uint32_t>(reader, stream, 77, line);
                break;
            case 2:
                ReadBoth<std::int64_t>(reader, stream, 77, line);
                break;
            case 3:
                ReadBoth<std::uint64_t>(reader, stream, 77, line);
                break;
            case 4:
                ReadBoth<float>(reader, stream, 77.0f, line);
                break;
            case 5:
                ReadBoth<double>(reader, stream, 77.0, line);
                break;
            case 6:
            {
                std::string mine = "before";
                std::string theirs = "before";
                reader.Read(mine);
                stream >> std::quoted(theirs);
                ASSERT_EQ(mine, theirs) << line;
                break;
            }
            default:
            {
                std::string theirs;
                const std::string mine(reader.ReadWord());
                stream >> theirs;
                ASSERT_EQ(mine, theirs) << line;
                break;
            }
            }
            ASSERT_EQ(static_cast<bool>(reader), !stream.fail()) << line;
            ASSERT_EQ(reader.Eof(), stream.eof()) << line;
        }
    }
}

TEST(TokenReader, ShortAndBrokenLinesLeaveTheRestAlone)
{
    float x = 1, y = 2, z = 3;
    TokenReader missing("7.5");
    missing.Read(x).Read(y);
    EXPECT_FALSE(missing);
    EXPECT_EQ(x, 7.5f);
    EXPECT_EQ(y, 2.0f);

    TokenReader broken("1 word 3");
    broken.Read(x).Read(y).Read(z);
    EXPECT_EQ(y, 0.0f);
    EXPECT_EQ(z, 3.0f);

    bool flag = true;
    std::int32_t number = 9;
    TokenReader glued("0.5 4");
    glued.Read(flag).Read(x).Read(number);
    EXPECT_FALSE(flag);
    EXPECT_EQ(x, 0.5f);
    EXPECT_EQ(number, 4);
    EXPECT_EQ(glued.Rest(), "");
}

} // namespace
} // namespace Vornu::Core
