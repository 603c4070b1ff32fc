#include "engine/assets/formats/mesh/BuiltinMeshes.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace Vornu::Assets
{
namespace
{

constexpr float kPi = std::numbers::pi_v<float>;

/// A point of the outline that is turned around the vertical axis; outlines run from top to bottom on the
/// outside of the shape.
struct OutlinePoint
{
    float radius = 0.0f;
    float height = 0.0f;
    glm::vec2 normal{0.0f}; // outwards and upwards
};

class MeshBuilder
{
public:
    std::uint32_t AddVertex(const glm::vec3& position, const glm::vec3& normal, const glm::vec3& tangent,
                            const glm::vec2& texCoord)
    {
        MeshVertex vertex;
        vertex.position = position;
        vertex.normal = normal;
        vertex.tangent = glm::vec4(tangent, 1.0f);
        vertex.texCoord = texCoord;
        mesh_.vertices.push_back(vertex);
        return static_cast<std::uint32_t>(mesh_.vertices.size() - 1);
    }

    void AddTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c)
    {
        mesh_.indices.insert(mesh_.indices.end(), {a, b, c});
    }

    /// A rectangle around `center`, seen from the side of cross(right, up); both are half its sides.
    void AddRectangle(const glm::vec3& center, const glm::vec3& right, const glm::vec3& up)
    {
        const glm::vec3 normal = glm::normalize(glm::cross(right, up));
        const glm::vec3 tangent = glm::normalize(right);
        const std::uint32_t first = AddVertex(center - right - up, normal, tangent, {0.0f, 0.0f});
        AddVertex(center + right - up, normal, tangent, {1.0f, 0.0f});
        AddVertex(center + right + up, normal, tangent, {1.0f, 1.0f});
        AddVertex(center - right + up, normal, tangent, {0.0f, 1.0f});
        AddTriangle(first, first + 1, first + 2);
        AddTriangle(first, first + 2, first + 3);
    }

    /// A triangle of its own three vertices, flat shaded.
    void AddFacet(const glm::vec3& a, const glm::vec3& b, const glm::vec3& c)
    {
        const glm::vec3 normal = glm::normalize(glm::cross(b - a, c - a));
        const glm::vec3 tangent = glm::normalize(b - a);
        const std::uint32_t first = AddVertex(a, normal, tangent, {0.0f, 0.0f});
        AddVertex(b, normal, tangent, {1.0f, 0.0f});
        AddVertex(c, normal, tangent, {0.5f, 1.0f});
        AddTriangle(first, first + 1, first + 2);
    }

    /// The surface that an outline makes around the vertical axis.
    void AddRevolution(const std::vector<OutlinePoint>& outline, std::uint32_t segments)
    {
        const auto first = static_cast<std::uint32_t>(mesh_.vertices.size());
        for (std::size_t i = 0; i < outline.size(); ++i)
        {
            const float v = static_cast<float>(i) / static_cast<float>(outline.size() - 1);
            AddRing(outline[i], segments, v);
        }
        const std::uint32_t ring = segments + 1;
        for (std::uint32_t i = 0; i + 1 < outline.size(); ++i)
        {
            for (std::uint32_t j = 0; j < segments; ++j)
            {
                const std::uint32_t upper = first + i * ring + j;
                const std::uint32_t lower = upper + ring;
                if (outline[i].radius > 0.0f)
                {
                    AddTriangle(upper, upper + 1, lower);
                }
                if (outline[i + 1].radius > 0.0f)
                {
                    AddTriangle(upper + 1, lower + 1, lower);
                }
            }
        }
    }

    MeshAsset Finish()
    {
        MeshBounds& bounds = mesh_.bounds;
        bounds.minimum = bounds.maximum = mesh_.vertices.front().position;
        for (const MeshVertex& vertex : mesh_.vertices)
        {
            bounds.minimum = glm::min(bounds.minimum, vertex.position);
            bounds.maximum = glm::max(bounds.maximum, vertex.position);
        }
        const glm::vec3 middle = (bounds.minimum + bounds.maximum) * 0.5f;
        for (const MeshVertex& vertex : mesh_.vertices)
        {
            bounds.radius = std::max(bounds.radius, glm::distance(middle, vertex.position));
        }
        mesh_.submeshes = {{0, static_cast<std::uint32_t>(mesh_.indices.size()), 0, ""}};
        return std::move(mesh_);
    }

private:
    void AddRing(const OutlinePoint& point, std::uint32_t segments, float v)
    {
        for (std::uint32_t j = 0; j <= segments; ++j)
        {
            const float u = static_cast<float>(j) / static_cast<float>(segments);
            // The last vertex stands exactly on the first, so that the seam is closed.
            const float angle = j == segments ? 0.0f : 2.0f * kPi * u;
            const float c = std::cos(angle);
            const float s = std::sin(angle);
            AddVertex({point.radius * c, point.height, point.radius * s},
                      {point.normal.x * c, point.normal.y, point.normal.x * s}, {-s, 0.0f, c}, {u, v});
        }
    }

    MeshAsset mesh_;
};

MeshAsset MakeCube()
{
    constexpr float kHalf = 0.5f;
    MeshBuilder builder;
    builder.AddRectangle({0, 0, kHalf}, {kHalf, 0, 0}, {0, kHalf, 0});
    builder.AddRectangle({0, 0, -kHalf}, {-kHalf, 0, 0}, {0, kHalf, 0});
    builder.AddRectangle({kHalf, 0, 0}, {0, 0, -kHalf}, {0, kHalf, 0});
    builder.AddRectangle({-kHalf, 0, 0}, {0, 0, kHalf}, {0, kHalf, 0});
    builder.AddRectangle({0, kHalf, 0}, {kHalf, 0, 0}, {0, 0, -kHalf});
    builder.AddRectangle({0, -kHalf, 0}, {kHalf, 0, 0}, {0, 0, kHalf});
    return builder.Finish();
}

/// One unit wide and high, seen from the front.
MeshAsset MakeQuad()
{
    MeshBuilder builder;
    builder.AddRectangle({0, 0, 0}, {0.5f, 0, 0}, {0, 0.5f, 0});
    return builder.Finish();
}

/// Ten units wide and deep, seen from above.
MeshAsset MakePlane()
{
    MeshBuilder builder;
    builder.AddRectangle({0, 0, 0}, {5.0f, 0, 0}, {0, 0, -5.0f});
    return builder.Finish();
}

/// Of diameter 1.
MeshAsset MakeSphereOf(std::uint32_t rings, std::uint32_t segments)
{
    constexpr float kRadius = 0.5f;
    std::vector<OutlinePoint> outline;
    for (std::uint32_t i = 0; i <= rings; ++i)
    {
        const bool pole = i == 0 || i == rings;
        const float angle = kPi * static_cast<float>(i) / static_cast<float>(rings);
        const glm::vec2 normal(pole ? 0.0f : std::sin(angle), std::cos(angle));
        outline.push_back({kRadius * normal.x, kRadius * normal.y, normal});
    }
    MeshBuilder builder;
    builder.AddRevolution(outline, segments);
    return builder.Finish();
}

MeshAsset MakeSphere()
{
    return MakeSphereOf(16, 32);
}

MeshAsset MakePreviewSphere()
{
    return MakeSphereOf(48, 96);
}

constexpr std::uint32_t kRoundSegments = 32;

/// Of diameter and height 1.
MeshAsset MakeCylinder()
{
    MeshBuilder builder;
    builder.AddRevolution({{0.0f, 0.5f, {0, 1}}, {0.5f, 0.5f, {0, 1}}}, kRoundSegments);
    builder.AddRevolution({{0.5f, 0.5f, {1, 0}}, {0.5f, -0.5f, {1, 0}}}, kRoundSegments);
    builder.AddRevolution({{0.5f, -0.5f, {0, -1}}, {0.0f, -0.5f, {0, -1}}}, kRoundSegments);
    return builder.Finish();
}

/// Of diameter and height 1, the tip above.
MeshAsset MakeCone()
{
    const glm::vec2 slope = glm::normalize(glm::vec2(1.0f, 0.5f));
    MeshBuilder builder;
    builder.AddRevolution({{0.0f, 0.5f, slope}, {0.5f, -0.5f, slope}}, kRoundSegments);
    builder.AddRevolution({{0.5f, -0.5f, {0, -1}}, {0.0f, -0.5f, {0, -1}}}, kRoundSegments);
    return builder.Finish();
}

/// Of outer diameter 1, lying flat.
MeshAsset MakeTorus()
{
    constexpr float kRingRadius = 0.35f;
    constexpr float kTubeRadius = 0.15f;
    constexpr std::uint32_t kTubeSegments = 16;
    std::vector<OutlinePoint> outline;
    for (std::uint32_t i = 0; i <= kTubeSegments; ++i)
    {
        const float turn = static_cast<float>(i % kTubeSegments) / static_cast<float>(kTubeSegments);
        const glm::vec2 normal(std::cos(2.0f * kPi * turn), -std::sin(2.0f * kPi * turn));
        outline.push_back({kRingRadius + kTubeRadius * normal.x, kTubeRadius * normal.y, normal});
    }
    MeshBuilder builder;
    builder.AddRevolution(outline, kRoundSegments);
    return builder.Finish();
}

/// An octahedron of width and height 1.
MeshAsset MakeDiamond()
{
    constexpr float kHalf = 0.5f;
    const std::array<glm::vec3, 4> belt = {{{kHalf, 0, 0}, {0, 0, -kHalf}, {-kHalf, 0, 0}, {0, 0, kHalf}}};
    MeshBuilder builder;
    for (std::size_t i = 0; i < belt.size(); ++i)
    {
        const glm::vec3& from = belt[i];
        const glm::vec3& to = belt[(i + 1) % belt.size()];
        builder.AddFacet(from, to, {0, kHalf, 0});
        builder.AddFacet(to, from, {0, -kHalf, 0});
    }
    return builder.Finish();
}

constexpr std::array kMeshes = {
    BuiltinMesh{"Cube", &MakeCube},
    BuiltinMesh{"Quad", &MakeQuad},
    BuiltinMesh{"Plane", &MakePlane},
    BuiltinMesh{"Sphere", &MakeSphere},
    BuiltinMesh{"Builtin/MaterialPreviewSphere", &MakePreviewSphere},
    BuiltinMesh{"Builtin/Cylinder", &MakeCylinder},
    BuiltinMesh{"Builtin/Cone", &MakeCone},
    BuiltinMesh{"Builtin/Torus", &MakeTorus},
    BuiltinMesh{"Builtin/Diamond", &MakeDiamond},
    BuiltinMesh{"Builtin/Cube_LOD1", &MakeCube}, // a cube has nothing to leave out
    BuiltinMesh{"Builtin/Cube_LOD2", &MakeCube},
};

} // namespace

std::span<const BuiltinMesh> BuiltinMeshes() noexcept
{
    return kMeshes;
}

} // namespace Vornu::Assets
