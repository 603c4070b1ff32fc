#include "engine/assets/cooked/CookedContainer.h"
#include "engine/assets/formats/mesh/BuiltinMeshes.h"
#include "engine/assets/formats/mesh/NativeMesh.h"
#include "engine/core/files/Files.h"

#include <glm/geometric.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <numbers>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace Vornu::Assets
{
namespace
{

constexpr double kPi = std::numbers::pi;

struct ShapeRow
{
    std::string_view name;
    double area;
    double volume; // 0 for an open shape
    double tolerance;
};

/// Polyhedra come exactly, round shapes within what their segments leave out.
const ShapeRow kShapes[] = {
    {"Cube", 6.0, 1.0, 1e-5},
    {"Quad", 1.0, 0.0, 1e-5},
    {"Plane", 100.0, 0.0, 1e-5},
    {"Sphere", kPi, kPi / 6, 0.03},
    {"Builtin/MaterialPreviewSphere", kPi, kPi / 6, 0.004},
    {"Builtin/Cylinder", kPi * 1.5, kPi / 4, 0.015},
    {"Builtin/Cone", kPi * 0.5 * (0.5 + std::sqrt(1.25)), kPi / 12, 0.015},
    {"Builtin/Torus", 4 * kPi* kPi * 0.35 * 0.15, 2 * kPi* kPi * 0.35 * 0.15 * 0.15, 0.04},
    {"Builtin/Diamond", 8 * std::sqrt(3.0) / 8, 1.0 / 6, 1e-5},
    {"Builtin/Cube_LOD1", 6.0, 1.0, 1e-5},
    {"Builtin/Cube_LOD2", 6.0, 1.0, 1e-5},
};

std::array<int, 3> PlaceOf(const glm::vec3& position)
{
    const auto round = [](float value) { return static_cast<int>(std::lround(value * 1e5f)); };
    return {round(position.x), round(position.y), round(position.z)};
}

/// Every edge of a closed shape that is wound consistently is passed once in each direction.
bool IsClosed(const MeshAsset& mesh)
{
    std::map<std::pair<std::array<int, 3>, std::array<int, 3>>, int> edges;
    for (std::size_t i = 0; i < mesh.indices.size(); ++i)
    {
        const std::size_t next = i % 3 == 2 ? i - 2 : i + 1;
        const auto from = PlaceOf(mesh.vertices[mesh.indices[i]].position);
        const auto to = PlaceOf(mesh.vertices[mesh.indices[next]].position);
        ++edges[{from, to}];
        --edges[{to, from}];
    }
    return std::all_of(edges.begin(), edges.end(), [](const auto& edge) { return edge.second == 0; });
}

TEST(BuiltinMeshes, AreTheShapesThatTheirNamesSay)
{
    ASSERT_EQ(BuiltinMeshes().size(), std::size(kShapes));
    for (std::size_t row = 0; row < std::size(kShapes); ++row)
    {
        const ShapeRow& shape = kShapes[row];
        ASSERT_EQ(BuiltinMeshes()[row].name, shape.name);
        const MeshAsset mesh = BuiltinMeshes()[row].make();
        double area = 0;
        double volume = 0;
        for (std::size_t i = 0; i < mesh.indices.size(); i += 3)
        {
            const MeshVertex* const corners[] = {&mesh.vertices[mesh.indices[i]],
                                                 &mesh.vertices[mesh.indices[i + 1]],
                                                 &mesh.vertices[mesh.indices[i + 2]]};
            const glm::vec3 normal = glm::cross(corners[1]->position - corners[0]->position,
                                                corners[2]->position - corners[0]->position);
            EXPECT_GT(glm::length(normal), 0.0f) << shape.name;
            area += glm::length(normal) / 2;
            volume += glm::dot(corners[0]->position, normal) / 6;
            for (const MeshVertex* const corner : corners)
            {
                EXPECT_GT(glm::dot(corner->normal, normal), 0.0f)
                    << shape.name << ": the normal looks inwards";
            }
        }
        EXPECT_NEAR(area, shape.area, shape.area * shape.tolerance) << shape.name;
        EXPECT_NEAR(volume, shape.volume, shape.volume * shape.tolerance + 1e-5) << shape.name;
        EXPECT_EQ(IsClosed(mesh), shape.volume > 0) << shape.name;
    }
}

void ExpectUsable(const MeshAsset& mesh, std::string_view name)
{
    SCOPED_TRACE(name);
    for (const MeshVertex& vertex : mesh.vertices)
    {
        const glm::vec3 tangent(vertex.tangent);
        EXPECT_NEAR(glm::length(vertex.normal), 1.0f, 1e-5f);
        EXPECT_NEAR(glm::length(tangent), 1.0f, 1e-5f);
        EXPECT_NEAR(glm::dot(vertex.normal, tangent), 0.0f, 1e-5f);
        EXPECT_TRUE(vertex.texCoord.x >= 0 && vertex.texCoord.x <= 1 && vertex.texCoord.y >= 0 &&
                    vertex.texCoord.y <= 1);
        EXPECT_EQ(glm::min(mesh.bounds.minimum, vertex.position), mesh.bounds.minimum);
        EXPECT_EQ(glm::max(mesh.bounds.maximum, vertex.position), mesh.bounds.maximum);
    }
    // Texture coordinates grow along the tangent and along cross(normal, tangent) * w.
    for (std::size_t i = 0; i < mesh.indices.size(); i += 3)
    {
        const MeshVertex& a = mesh.vertices[mesh.indices[i]];
        const MeshVertex& b = mesh.vertices[mesh.indices[i + 1]];
        const MeshVertex& c = mesh.vertices[mesh.indices[i + 2]];
        const glm::vec2 u = b.texCoord - a.texCoord;
        const glm::vec2 v = c.texCoord - a.texCoord;
        const float facing = u.x * v.y - u.y * v.x;
        EXPECT_NE(facing, 0.0f);
        const glm::vec3 along = ((b.position - a.position) * v.y - (c.position - a.position) * u.y) / facing;
        EXPECT_GT(glm::dot(along, glm::vec3(a.tangent) + glm::vec3(b.tangent) + glm::vec3(c.tangent)), 0.0f);
        EXPECT_EQ(facing > 0, a.tangent.w > 0);
        EXPECT_GT(glm::dot(a.normal, glm::cross(b.position - a.position, c.position - a.position)), 0.0f);
    }
}

TEST(BuiltinMeshes, HaveUsableVerticesBoundsAndOneSubmesh)
{
    for (const BuiltinMesh& builtin : BuiltinMeshes())
    {
        const MeshAsset mesh = builtin.make();
        ASSERT_EQ(mesh.submeshes.size(), 1u);
        EXPECT_EQ(mesh.submeshes[0].indexCount, mesh.indices.size());
        ExpectUsable(mesh, builtin.name);
    }
}

/// The files were not made by this program's writer.
TEST(NativeMesh, TheExamplesAreWholeMeshes)
{
    const std::map<std::string, std::vector<std::string>> expected = {
        {"lamp_post.vmesh", {"Post", "Lantern"}},
        {"well.vmesh", {"Ring", "Water", "Windlass"}},
    };
    for (const auto& [name, submeshes] : expected)
    {
        const std::string bytes =
            Platform::ReadFileBinary(std::string(VORNU_EXAMPLES "/Content/Models/") + name).bytes;
        MeshAsset mesh;
        std::string error;
        ASSERT_TRUE(ParseNativeMesh(std::as_bytes(std::span(bytes)), name, mesh, error)) << error;
        ExpectUsable(mesh, name);
        std::vector<std::string> names;
        std::uint32_t next = 0;
        for (const MeshSubmesh& submesh : mesh.submeshes)
        {
            EXPECT_EQ(submesh.firstIndex, next);
            EXPECT_EQ(submesh.materialSlot, names.size());
            next += submesh.indexCount;
            names.push_back(submesh.name);
        }
        EXPECT_EQ(next, mesh.indices.size());
        EXPECT_EQ(names, submeshes);
    }
}

MeshAsset FullMesh()
{
    MeshAsset mesh = BuiltinMeshes()[0].make();
    mesh.stamp = 0x0102030405060708;
    mesh.submeshes = {{0, 12, 0, "a"}, {12, 12, 2, "b \xC3\xA9"}, {24, 12, 1, ""}};
    mesh.lods = {{7, 10.0f}, {8, 1'000'000.0f}};
    mesh.skinned = true;
    mesh.rootBone = 3;
    mesh.rootTransform[3] = {1, 2, 3, 1};
    mesh.inverseBindMatrices.resize(2, glm::mat4(2.0f));
    mesh.joints = {4, 5};
    mesh.vertices[0].skinning[31] = std::byte{9};
    return mesh;
}

TEST(NativeMesh, RoundTripBareWithTrailerAndCooked)
{
    const MeshAsset mesh = FullMesh();
    const std::vector<std::byte> bare = EncodeNativeMesh(mesh);
    const std::vector<std::byte> withSource = EncodeNativeMesh(mesh, NativeMeshSource{1, 2, 3});
    EXPECT_EQ(withSource.size(), bare.size() + 24);
    for (const auto& bytes : {bare, withSource, WrapContainer(ContainerKind("MESH"), 1, bare)})
    {
        MeshAsset read;
        std::string error;
        ASSERT_TRUE(ParseNativeMesh(bytes, "m", read, error)) << error;
        EXPECT_EQ(read, mesh);
    }
}

TEST(NativeMesh, BrokenFilesLeaveTheMeshAlone)
{
    const std::vector<std::byte> whole = EncodeNativeMesh(FullMesh(), NativeMeshSource{});
    const std::size_t bare = whole.size() - 24;
    MeshAsset mesh;
    std::string error;
    for (std::size_t size = 0; size < whole.size(); ++size)
    {
        const std::span<const std::byte> cut = std::span(whole).first(size);
        EXPECT_EQ(ParseNativeMesh(cut, "m", mesh, error), size == bare) << size;
    }
    mesh = {};
    std::vector<std::byte> hostile = whole;
    hostile[36] = hostile[37] = hostile[38] = hostile[39] = std::byte{0xFF}; // the vertex count
    EXPECT_FALSE(ParseNativeMesh(hostile, "m", mesh, error));
    EXPECT_EQ(error, "Cooked item count exceeds the data.");
    EXPECT_EQ(mesh, MeshAsset());

    MeshAsset outside = FullMesh();
    outside.indices[5] = static_cast<std::uint32_t>(outside.vertices.size());
    EXPECT_FALSE(ParseNativeMesh(EncodeNativeMesh(outside), "m", mesh, error));
    outside = FullMesh();
    outside.submeshes[2].indexCount = 13;
    EXPECT_FALSE(ParseNativeMesh(EncodeNativeMesh(outside), "m", mesh, error));
    EXPECT_FALSE(ParseNativeMesh(WrapContainer(ContainerKind("CLIP"), 1, whole), "a.vmesh", mesh, error));
    EXPECT_EQ(error, "Invalid cooked file a.vmesh: it holds a different kind of asset.");
}

} // namespace
} // namespace Vornu::Assets
