#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Vornu::Assets
{

/// XXH64 (Yann Collet's xxHash, 64-bit form) with seed 0.
std::uint64_t Xxh64(std::span<const std::byte> bytes) noexcept;

/// The hash of a file, read in blocks. Nothing when it can't be read; `error`, where given, tells why.
std::optional<std::uint64_t> HashFile(const std::filesystem::path& path, std::string* error);

/// Exactly 16 lower-case hexadecimal digits, most significant first.
std::string HashText(std::uint64_t hash);

/// Reads 1 to 16 hexadecimal digits.
std::optional<std::uint64_t> ParseHashText(std::string_view text) noexcept;

} // namespace Vornu::Assets
