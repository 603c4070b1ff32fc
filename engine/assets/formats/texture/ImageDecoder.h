#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string_view>
#include <vector>

namespace Vornu::Assets
{

/// What a decoder makes of an image file: four channels a pixel, rows from the top.
struct ImportedTexture
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::byte> pixels; // bytes, or floats of the machine's byte order
    bool isFloat = false;
};

/// Reads the image at a path; throws `std::runtime_error` when it can't. Called from any thread.
using ImageDecoder = std::function<ImportedTexture(const std::filesystem::path&)>;

/// Sets the process's decoder for an extension, given in lower case with its dot; an empty one takes it out.
/// Safe from any thread.
void RegisterImageDecoder(std::string_view extension, ImageDecoder decoder);

/// Decodes an image by its extension, letters of either case. Throws `std::runtime_error` when it can't, or
/// when there is no decoder for the extension. Safe from any thread.
ImportedTexture DecodeImage(const std::filesystem::path& path);

} // namespace Vornu::Assets
