#include "engine/assets/cooked/CookedContainer.h"

#include "engine/assets/identity/ContentHash.h"
#include "engine/core/Guid.h"
#include "engine/core/files/ByteStream.h"
#include "engine/core/files/Files.h"
#include "engine/core/files/InputFile.h"
#include "engine/core/files/TemporaryFile.h"
#include "engine/core/logging/AccessWarning.h"
#include "engine/core/system/System.h"

#include <cstring>
#include <system_error>

namespace Vornu::Assets
{
namespace
{

constexpr std::uint16_t kContainerVersion = 1;

bool Fail(std::string* error, std::string message)
{
    if (error != nullptr)
    {
        *error = std::move(message);
    }
    return false;
}

bool HasMagic(std::span<const std::byte> bytes)
{
    return bytes.size() >= kContainerMagic.size() &&
           std::memcmp(bytes.data(), kContainerMagic.data(), kContainerMagic.size()) == 0;
}

/// What is wrong with a container; empty when nothing is.
std::string FindFault(std::span<const std::byte> bytes, std::uint32_t kind, std::uint32_t formatVersion)
{
    const std::optional<ContainerHeader> header = ReadContainerHeader(bytes);
    if (!header)
    {
        return "unknown header or container version.";
    }
    if (header->kind != kind)
    {
        return "it holds a different kind of asset.";
    }
    if (header->formatVersion != formatVersion)
    {
        return "format version " + std::to_string(header->formatVersion) + ", expected " +
               std::to_string(formatVersion) + "; recook the content.";
    }
    if (header->payloadSize != bytes.size() - kContainerHeaderSize)
    {
        return "truncated or oversized payload.";
    }
    if (header->checksum != Xxh64(bytes.subspan(kContainerHeaderSize)))
    {
        return "checksum mismatch (corrupt file).";
    }
    return {};
}

} // namespace

std::vector<std::byte> WrapContainer(std::uint32_t kind, std::uint32_t formatVersion,
                                     std::span<const std::byte> payload)
{
    Core::ByteWriter writer;
    writer.WriteBytes(std::as_bytes(std::span(kContainerMagic)));
    writer.WriteU16(kContainerVersion);
    writer.WriteU16(static_cast<std::uint16_t>(kContainerHeaderSize));
    writer.WriteU32(kind);
    writer.WriteU32(formatVersion);
    writer.WriteU64(payload.size());
    writer.WriteU64(Xxh64(payload));
    writer.WriteU64(0);
    writer.WriteBytes(payload);
    return writer.TakeBytes();
}

std::optional<ContainerHeader> ReadContainerHeader(std::span<const std::byte> bytes) noexcept
{
    if (bytes.size() < kContainerHeaderSize || !HasMagic(bytes))
    {
        return std::nullopt;
    }
    Core::ByteReader reader(bytes);
    reader.ReadU32();
    if (reader.ReadU16() != kContainerVersion || reader.ReadU16() != kContainerHeaderSize)
    {
        return std::nullopt;
    }
    ContainerHeader header;
    header.kind = reader.ReadU32();
    header.formatVersion = reader.ReadU32();
    header.payloadSize = reader.ReadU64();
    header.checksum = reader.ReadU64();
    return header;
}

std::optional<std::span<const std::byte>> OpenContainer(std::span<const std::byte> bytes, std::uint32_t kind,
                                                        std::uint32_t formatVersion, std::string_view subject,
                                                        std::string* error)
{
    const std::string fault = FindFault(bytes, kind, formatVersion);
    if (!fault.empty())
    {
        Fail(error, "Invalid cooked file " + std::string(subject) + ": " + fault);
        return std::nullopt;
    }
    return bytes.subspan(kContainerHeaderSize);
}

std::optional<std::span<const std::byte>> OpenContainerOrRaw(std::span<const std::byte> bytes,
                                                             std::uint32_t kind, std::uint32_t formatVersion,
                                                             std::string_view subject, std::string* error)
{
    return HasMagic(bytes) ? OpenContainer(bytes, kind, formatVersion, subject, error) : std::optional(bytes);
}

std::optional<std::vector<std::byte>> ReadWholeFile(const std::filesystem::path& path, std::string* error,
                                                    std::uint64_t limit)
{
    Core::InputFile file(path);
    if (!file.IsOpen())
    {
        Fail(error, "Failed to open " + path.native());
        return std::nullopt;
    }
    Core::FileBytes bytes;
    if (!file.ReadAll(bytes, limit))
    {
        Fail(error, "Failed to read " + path.native() +
                        (file.Failed() ? "" : ": it is larger than " + std::to_string(limit) + " bytes."));
        return std::nullopt;
    }
    const auto view = std::as_bytes(std::span(bytes.View()));
    return std::vector<std::byte>(view.begin(), view.end());
}

bool WriteFileAtomically(const std::filesystem::path& path, std::span<const std::byte> bytes,
                         std::string* error)
{
    const std::filesystem::path parent = path.parent_path();
    std::error_code failure;
    if (!parent.empty() && (std::filesystem::create_directories(parent, failure), failure))
    {
        return Fail(error, "Failed to create " + parent.native() + ": " + Platform::SystemErrorText(failure));
    }
    std::filesystem::path temporary = path;
    temporary += ".cook-" + Core::Guid::Generate().ToString() + ".tmp";
    Platform::TemporaryFile file(temporary, path);
    if (!file.IsOpen())
    {
        return Fail(error, "Failed to open " + temporary.native() + " for writing.");
    }
    file.Write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    if (!file.Close())
    {
        return Fail(error, "Failed to write " + path.native());
    }
    const Platform::FileResult replaced = Platform::ReplaceFileAtomically(temporary, path, true);
    Core::WarnIfNarrowed(replaced, path);
    return replaced.Succeeded() ||
           Fail(error, "Failed to replace " + path.native() + ": " + replaced.message);
}

} // namespace Vornu::Assets
