#pragma once

#include "engine/assets/identity/AssetId.h"

#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Vornu::Assets
{

struct MeshVertex
{
    glm::vec3 position{0.0f};
    glm::vec4 color{1.0f};
    glm::vec3 normal{0.0f, 1.0f, 0.0f};
    glm::vec2 texCoord{0.0f};
    glm::vec4 tangent{1.0f, 0.0f, 0.0f, 1.0f}; // w: the sign of the bitangent, cross(normal, tangent) * w
    std::array<std::byte, 32> skinning{};      // zero in a static mesh

    friend bool operator==(const MeshVertex&, const MeshVertex&) = default;
};

struct MeshBounds
{
    glm::vec3 minimum{0.0f};
    glm::vec3 maximum{0.0f};
    float radius = 0.0f; // around the middle of the box

    friend bool operator==(const MeshBounds&, const MeshBounds&) = default;
};

struct MeshSubmesh
{
    std::uint32_t firstIndex = 0;
    std::uint32_t indexCount = 0;
    std::uint32_t materialSlot = 0;
    std::string name;

    friend bool operator==(const MeshSubmesh&, const MeshSubmesh&) = default;
};

struct MeshLod
{
    AssetId mesh = 0;
    float distance = 1'000'000.0f; // up to which the mesh is drawn

    friend bool operator==(const MeshLod&, const MeshLod&) = default;
};

/// A triangle mesh in memory: counter-clockwise front faces, three indices each.
struct MeshAsset
{
    std::uint64_t stamp = 0;
    MeshBounds bounds;
    std::vector<MeshVertex> vertices;
    std::vector<std::uint32_t> indices;
    std::vector<MeshSubmesh> submeshes;
    std::vector<MeshLod> lods;
    bool skinned = false;
    std::uint32_t rootBone = 0;
    glm::mat4 rootTransform{1.0f};
    std::vector<glm::mat4> inverseBindMatrices;
    std::vector<std::uint32_t> joints;

    /// Set where an imported scene linked one; no file holds it.
    AssetId skeleton = 0;

    friend bool operator==(const MeshAsset&, const MeshAsset&) = default;
};

} // namespace Vornu::Assets
