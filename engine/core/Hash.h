#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Vornu::Core
{

/// Parameters of the 64-bit FNV-1a hash (Fowler, Noll, Vo; draft-eastlake-fnv).
inline constexpr std::uint64_t kFnvOffsetBasis = 0xCBF29CE484222325ull;
inline constexpr std::uint64_t kFnvPrime = 0x100000001B3ull;

/// 64-bit FNV-1a of `bytes`, continued from `start`.
constexpr std::uint64_t Fnv1a(std::string_view bytes, std::uint64_t start = kFnvOffsetBasis) noexcept
{
    std::uint64_t hash = start;
    for (const char byte : bytes)
    {
        hash = (hash ^ static_cast<unsigned char>(byte)) * kFnvPrime;
    }
    return hash;
}

/// 64-bit FNV-1a over the little-endian bytes of an unsigned number.
template<class Unsigned>
constexpr std::uint64_t Fnv1aOfNumber(Unsigned number) noexcept
{
    std::uint64_t hash = kFnvOffsetBasis;
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i)
    {
        hash = (hash ^ static_cast<std::uint8_t>(number >> (8 * i))) * kFnvPrime;
    }
    return hash;
}

namespace Detail
{

struct HashKey
{
    std::uint64_t first;
    std::uint64_t second;
};

HashKey DrawHashKey();

/// Drawn once in each process.
inline const HashKey& ProcessHashKey() noexcept
{
    static const HashKey key = DrawHashKey();
    return key;
}

} // namespace Detail

/// Hash of two words that nobody outside the process can foretell: one round of the folded multiplication by
/// which wyhash mixes (Wang Yi, wyhash, final version 4).
inline std::uint64_t KeyedHash(std::uint64_t first, std::uint64_t second) noexcept
{
    const Detail::HashKey& key = Detail::ProcessHashKey();
    __extension__ typedef unsigned __int128 Wide;
    const Wide product = static_cast<Wide>(first ^ key.first) * (second ^ key.second);
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

/// The same of a text.
inline std::uint64_t KeyedHash(std::string_view text) noexcept
{
    std::uint64_t words[2] = {text.size(), 0};
    std::uint64_t hash = KeyedHash(words[0], words[1]);
    while (text.size() > sizeof(words))
    {
        std::memcpy(words, text.data(), sizeof(words));
        hash = KeyedHash(hash ^ words[0], words[1]);
        text.remove_prefix(sizeof(words));
    }
    words[0] = 0;
    words[1] = 0;
    if (!text.empty())
    {
        std::memcpy(words, text.data(), text.size());
    }
    return KeyedHash(hash ^ words[0], words[1]);
}

/// Hash of texts for containers, keyed as that of GUIDs is; finds `std::string` keys by `std::string_view`.
struct TextHash
{
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept { return KeyedHash(text); }
};

} // namespace Vornu::Core
