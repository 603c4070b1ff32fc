#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vornu::Assets
{

enum class TextureFormat : std::uint32_t
{
    Rgba8 = 0,
    Rgba32Float = 1, // of the machine's byte order
};

/// A texture in memory: rows from the top, without padding.
struct TextureAsset
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    TextureFormat format = TextureFormat::Rgba8;
    std::vector<std::byte> pixels;

    friend bool operator==(const TextureAsset&, const TextureAsset&) = default;
};

} // namespace Vornu::Assets
