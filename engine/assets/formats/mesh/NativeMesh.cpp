#include "engine/assets/formats/mesh/NativeMesh.h"

#include "engine/assets/cooked/CookedContainer.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <new>
#include <stdexcept>

namespace Vornu::Assets
{
namespace
{

constexpr std::uint32_t kNoLimit = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kVertexSize = 96;
constexpr std::size_t kIndexSize = 4;
constexpr std::size_t kMinSubmeshSize = 16;
constexpr std::size_t kLodSize = 16;
constexpr std::size_t kMatrixSize = 64;
constexpr std::string_view kTrailerMagic = "VSMG";
constexpr std::uint32_t kContainerFormat = 1;

float ReadFloat(Core::ByteReader& reader)
{
    return std::bit_cast<float>(reader.ReadU32());
}

void WriteFloat(Core::ByteWriter& writer, float value)
{
    writer.WriteU32(std::bit_cast<std::uint32_t>(value));
}

template<class Vector>
void ReadVector(Core::ByteReader& reader, Vector& vector)
{
    for (typename Vector::length_type i = 0; i < Vector::length(); ++i)
    {
        vector[i] = ReadFloat(reader);
    }
}

template<class Vector>
void WriteVector(Core::ByteWriter& writer, const Vector& vector)
{
    for (typename Vector::length_type i = 0; i < Vector::length(); ++i)
    {
        WriteFloat(writer, vector[i]);
    }
}

void ReadMatrix(Core::ByteReader& reader, glm::mat4& matrix)
{
    for (glm::mat4::length_type column = 0; column < 4; ++column)
    {
        ReadVector(reader, matrix[column]);
    }
}

void WriteMatrix(Core::ByteWriter& writer, const glm::mat4& matrix)
{
    for (glm::mat4::length_type column = 0; column < 4; ++column)
    {
        WriteVector(writer, matrix[column]);
    }
}

/// Reads a counted list; `itemSize` is the least that one item takes.
template<class Item, class Read>
void ReadList(Core::ByteReader& reader, std::size_t itemSize, std::vector<Item>& items, Read read)
{
    items.resize(reader.ReadCount(itemSize, kNoLimit));
    for (Item& item : items)
    {
        read(item);
    }
}

std::uint32_t CountOf(std::size_t size)
{
    if (size > kNoLimit)
    {
        throw std::length_error("A mesh list is too long.");
    }
    return static_cast<std::uint32_t>(size);
}

template<class Item, class Write>
void WriteList(Core::ByteWriter& writer, const std::vector<Item>& items, Write write)
{
    writer.WriteU32(CountOf(items.size()));
    for (const Item& item : items)
    {
        write(item);
    }
}

void ReadVertex(Core::ByteReader& reader, MeshVertex& vertex)
{
    ReadVector(reader, vertex.position);
    ReadVector(reader, vertex.color);
    ReadVector(reader, vertex.normal);
    ReadVector(reader, vertex.texCoord);
    ReadVector(reader, vertex.tangent);
    const std::span<const std::byte> skinning = reader.ReadBytes(vertex.skinning.size());
    std::copy(skinning.begin(), skinning.end(), vertex.skinning.begin());
}

void WriteVertex(Core::ByteWriter& writer, const MeshVertex& vertex)
{
    WriteVector(writer, vertex.position);
    WriteVector(writer, vertex.color);
    WriteVector(writer, vertex.normal);
    WriteVector(writer, vertex.texCoord);
    WriteVector(writer, vertex.tangent);
    writer.WriteBytes(vertex.skinning);
}

void RequireInside(const MeshAsset& mesh)
{
    const auto outside = [&](std::uint32_t index) { return index >= mesh.vertices.size(); };
    if (std::any_of(mesh.indices.begin(), mesh.indices.end(), outside))
    {
        throw std::runtime_error("A mesh index has no vertex.");
    }
    for (const MeshSubmesh& submesh : mesh.submeshes)
    {
        if (submesh.firstIndex > mesh.indices.size() ||
            submesh.indexCount > mesh.indices.size() - submesh.firstIndex)
        {
            throw std::runtime_error("A submesh exceeds the mesh's indices.");
        }
    }
}

/// Nothing, or the mark of a source, may follow the record.
void ReadTrailer(Core::ByteReader& reader)
{
    if (reader.Remaining() == 0)
    {
        return;
    }
    const std::span<const std::byte> magic = reader.ReadBytes(kTrailerMagic.size());
    if (!std::ranges::equal(magic, std::as_bytes(std::span(kTrailerMagic))) || reader.ReadU32() == 0)
    {
        throw std::runtime_error("Unknown data behind the mesh.");
    }
    reader.ReadU64();
    reader.ReadU64();
    if (reader.Remaining() != 0)
    {
        throw std::runtime_error("Unknown data behind the mesh.");
    }
}

} // namespace

MeshAsset ReadMeshRecord(Core::ByteReader& reader)
{
    MeshAsset mesh;
    mesh.stamp = reader.ReadU64();
    ReadVector(reader, mesh.bounds.minimum);
    ReadVector(reader, mesh.bounds.maximum);
    mesh.bounds.radius = ReadFloat(reader);
    ReadList(reader, kVertexSize, mesh.vertices, [&](MeshVertex& vertex) { ReadVertex(reader, vertex); });
    ReadList(reader, kIndexSize, mesh.indices, [&](std::uint32_t& index) { index = reader.ReadU32(); });
    ReadList(reader, kMinSubmeshSize, mesh.submeshes,
             [&](MeshSubmesh& submesh)
             {
                 submesh.firstIndex = reader.ReadU32();
                 submesh.indexCount = reader.ReadU32();
                 submesh.materialSlot = reader.ReadU32();
                 submesh.name = reader.ReadString(kNoLimit);
             });
    ReadList(reader, kLodSize, mesh.lods,
             [&](MeshLod& lod)
             {
                 lod.mesh = reader.ReadU64();
                 lod.distance = ReadFloat(reader);
                 reader.ReadU32();
             });
    mesh.skinned = reader.ReadU8() != 0;
    mesh.rootBone = reader.ReadU32();
    ReadMatrix(reader, mesh.rootTransform);
    ReadList(reader, kMatrixSize, mesh.inverseBindMatrices,
             [&](glm::mat4& matrix) { ReadMatrix(reader, matrix); });
    ReadList(reader, kIndexSize, mesh.joints, [&](std::uint32_t& joint) { joint = reader.ReadU32(); });
    RequireInside(mesh);
    return mesh;
}

void WriteMeshRecord(Core::ByteWriter& writer, const MeshAsset& mesh)
{
    writer.WriteU64(mesh.stamp);
    WriteVector(writer, mesh.bounds.minimum);
    WriteVector(writer, mesh.bounds.maximum);
    WriteFloat(writer, mesh.bounds.radius);
    WriteList(writer, mesh.vertices, [&](const MeshVertex& vertex) { WriteVertex(writer, vertex); });
    WriteList(writer, mesh.indices, [&](std::uint32_t index) { writer.WriteU32(index); });
    WriteList(writer, mesh.submeshes,
              [&](const MeshSubmesh& submesh)
              {
                  writer.WriteU32(submesh.firstIndex);
                  writer.WriteU32(submesh.indexCount);
                  writer.WriteU32(submesh.materialSlot);
                  writer.WriteString(submesh.name);
              });
    WriteList(writer, mesh.lods,
              [&](const MeshLod& lod)
              {
                  writer.WriteU64(lod.mesh);
                  WriteFloat(writer, lod.distance);
                  writer.WriteU32(0);
              });
    writer.WriteU8(mesh.skinned ? 1 : 0);
    writer.WriteU32(mesh.rootBone);
    WriteMatrix(writer, mesh.rootTransform);
    WriteList(writer, mesh.inverseBindMatrices,
              [&](const glm::mat4& matrix) { WriteMatrix(writer, matrix); });
    WriteList(writer, mesh.joints, [&](std::uint32_t joint) { writer.WriteU32(joint); });
}

bool ParseNativeMesh(std::span<const std::byte> bytes, std::string_view subject, MeshAsset& mesh,
                     std::string& error)
{
    const auto payload = OpenContainerOrRaw(bytes, ContainerKind("MESH"), kContainerFormat, subject, &error);
    if (!payload)
    {
        return false;
    }
    try
    {
        Core::ByteReader reader(*payload);
        MeshAsset parsed = ReadMeshRecord(reader);
        ReadTrailer(reader);
        mesh = std::move(parsed);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        throw; // says nothing of the mesh
    }
    catch (const std::exception& fault)
    {
        error = fault.what();
        return false;
    }
}

std::vector<std::byte> EncodeNativeMesh(const MeshAsset& mesh, const std::optional<NativeMeshSource>& source)
{
    Core::ByteWriter writer;
    WriteMeshRecord(writer, mesh);
    if (source)
    {
        writer.WriteBytes(std::as_bytes(std::span(kTrailerMagic)));
        writer.WriteU32(source->version);
        writer.WriteU64(source->firstStamp);
        writer.WriteU64(source->secondStamp);
    }
    return writer.TakeBytes();
}

} // namespace Vornu::Assets
