#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The container of every cooked file: a header of 40 bytes, then a payload under a checksum.
///
///     offset  size  field
///     0       4     the bytes "VCKD"
///     4       2     container version, 1
///     6       2     header size, 40
///     8       4     kind, four ASCII bytes
///     12      4     format version of the payload
///     16      8     payload size
///     24      8     XXH64 of the payload, seed 0
///     32      8     zero
///
/// All numbers are little-endian.
namespace Vornu::Assets
{

inline constexpr std::string_view kContainerMagic = "VCKD";
inline constexpr std::size_t kContainerHeaderSize = 40;

/// Four ASCII bytes as the number that they make in a file.
constexpr std::uint32_t ContainerKind(std::string_view text) noexcept
{
    std::uint32_t kind = 0;
    for (std::size_t i = 0; i < 4; ++i)
    {
        kind |= static_cast<std::uint32_t>(static_cast<unsigned char>(text[i])) << (8 * i);
    }
    return kind;
}

struct ContainerHeader
{
    std::uint32_t kind = 0;
    std::uint32_t formatVersion = 0;
    std::uint64_t payloadSize = 0;
    std::uint64_t checksum = 0;
};

/// The bytes of a whole cooked file.
std::vector<std::byte> WrapContainer(std::uint32_t kind, std::uint32_t formatVersion,
                                     std::span<const std::byte> payload);

/// The header at the start of the bytes; nothing when it is cut or none of ours.
std::optional<ContainerHeader> ReadContainerHeader(std::span<const std::byte> bytes) noexcept;

/// The payload as a view into `bytes`. Nothing when a check fails; `error`, where given, then says
/// "Invalid cooked file <subject>: <reason>".
std::optional<std::span<const std::byte>> OpenContainer(std::span<const std::byte> bytes, std::uint32_t kind,
                                                        std::uint32_t formatVersion, std::string_view subject,
                                                        std::string* error);

/// The same, but bytes that don't begin like a container are all payload.
std::optional<std::span<const std::byte>> OpenContainerOrRaw(std::span<const std::byte> bytes,
                                                             std::uint32_t kind, std::uint32_t formatVersion,
                                                             std::string_view subject, std::string* error);

/// The bytes of a file of at most `limit` bytes; nothing when it can't be read, `error`, where given, tells
/// why.
std::optional<std::vector<std::byte>> ReadWholeFile(const std::filesystem::path& path, std::string* error,
                                                    std::uint64_t limit = ~std::uint64_t{0});

/// Writes a file whole or not at all, and the folders above it. On false `error`, where given, tells why.
bool WriteFileAtomically(const std::filesystem::path& path, std::span<const std::byte> bytes,
                         std::string* error);

} // namespace Vornu::Assets
