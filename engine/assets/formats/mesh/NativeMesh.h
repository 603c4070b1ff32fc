#pragma once

#include "engine/assets/formats/mesh/MeshAsset.h"
#include "engine/core/files/ByteStream.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The `.vmesh` format: a mesh record, bare or in a cooked container of kind "MESH", and an optional trailer
/// that ties the file to the source that it was made from.
namespace Vornu::Assets
{

/// Marks a native file as the payload of a source.
struct NativeMeshSource
{
    std::uint32_t version = 1; // not 0
    std::uint64_t firstStamp = 0;
    std::uint64_t secondStamp = 0;
};

/// The record that `.vmesh` files and scene caches share. Throws `std::runtime_error` when the data ends
/// early or points out of itself.
MeshAsset ReadMeshRecord(Core::ByteReader& reader);
void WriteMeshRecord(Core::ByteWriter& writer, const MeshAsset& mesh);

/// Parses a file's bytes. On false `mesh` is as it was and `error` tells why.
bool ParseNativeMesh(std::span<const std::byte> bytes, std::string_view subject, MeshAsset& mesh,
                     std::string& error);

/// The bytes of a bare file.
std::vector<std::byte> EncodeNativeMesh(const MeshAsset& mesh,
                                        const std::optional<NativeMeshSource>& source = std::nullopt);

} // namespace Vornu::Assets
