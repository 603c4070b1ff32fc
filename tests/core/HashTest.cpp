#include "engine/core/Hash.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Vornu::Core
{
namespace
{

TEST(Hash, TextsAreToldApartByEveryByteAndTheirLength)
{
    std::set<std::uint64_t> hashes;
    std::size_t count = 0;
    for (std::size_t length = 0; length <= 50; ++length)
    {
        std::string text(length, '\0');
        hashes.insert(KeyedHash(text));
        ++count;
        for (char& c : text)
        {
            c = 'x';
            hashes.insert(KeyedHash(text));
            c = '\0';
            ++count;
        }
        EXPECT_EQ(KeyedHash(text), KeyedHash(std::string(length, '\0')));
    }
    EXPECT_EQ(hashes.size(), count);
}

/// Texts of 16 bytes whose FNV-1a hashes agree in the low bits: what a file could hold if tables used those.
TEST(Hash, TextsThatWereMadeToFallTogetherDont)
{
    constexpr std::uint64_t kMask = 0xFFFF;
    std::vector<std::string> texts;
    for (std::uint64_t i = 0; texts.size() < 2000; ++i)
    {
        std::string text = "content:" + std::to_string(i);
        if ((Fnv1a(text) & kMask) == 0)
        {
            texts.push_back(std::move(text));
        }
    }
    std::set<std::uint64_t> places;
    for (const std::string& text : texts)
    {
        places.insert(TextHash{}(text)&kMask);
    }
    EXPECT_GT(places.size(), 1900u); // of 65,536
}

} // namespace
} // namespace Vornu::Core
