#include "engine/core/text/Windows1252.h"

#include <gtest/gtest.h>

#include <string>

namespace Vornu::Core
{
namespace
{

TEST(Windows1252, EveryByteHasOneReadingAndComesBack)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
    {
        all.push_back(static_cast<char>(byte));
    }
    EXPECT_EQ(EncodeWindows1252(DecodeWindows1252(all)), all);
    EXPECT_EQ(DecodeWindows1252("Caf\xe9 \x80\x81\x9f\xff"), "Caf\u00e9 \u20ac\u0081\u0178\u00ff");
}

TEST(Windows1252, RefusesWhatHasNoByte)
{
    for (const std::string text :
         {"\u0100", "\u0080", "\u65e5", "\U0001f600", "\xe9", "\xc3", "\xc1\x81", "\xe0\x80\x80", "\xc3x"})
    {
        EXPECT_EQ(EncodeWindows1252("a" + text), std::nullopt) << text;
    }
}

} // namespace
} // namespace Vornu::Core
