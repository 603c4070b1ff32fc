#pragma once

#include "engine/assets/formats/mesh/MeshAsset.h"

#include <span>
#include <string_view>

namespace Vornu::Assets
{

/// One mesh that needs no file. Lengths are in scene units.
struct BuiltinMesh
{
    std::string_view name;
    MeshAsset (*make)();
};

/// The built-in meshes in the order of their registration. Each has one submesh, normals, tangents, texture
/// coordinates and bounds; closed shapes are closed and wound outwards.
std::span<const BuiltinMesh> BuiltinMeshes() noexcept;

} // namespace Vornu::Assets
