#pragma once

#include "engine/assets/identity/AssetId.h"

#include <glm/vec2.hpp>

#include <cstdint>
#include <vector>

namespace Vornu::Scene
{

enum class BillboardFacingMode : std::uint8_t
{
    ScreenAligned = 0,
    WorldUp = 1,
};

struct MeshRendererComponent
{
    Assets::AssetId mesh = 0;
    Assets::AssetId material = 0;
    std::vector<Assets::AssetId> materialSlots;
    Assets::AssetId skeleton = 0;
    bool skinningEnabled = true;
    bool visible = true;
    bool occluder = true;
    bool allowOcclusion = true;
    bool enableLod = false;
    bool forceLodLevel = false;
    std::uint32_t forcedLodLevel = 0u;
    float lodDistanceScale = 1.0f;
    float maxDrawDistance = 250.0f;
};

struct BillboardComponent
{
    Assets::AssetId material = 0;
    glm::vec2 size{1.0f, 1.0f};
    glm::vec2 pivot{0.5f, 0.5f};
    BillboardFacingMode facingMode = BillboardFacingMode::ScreenAligned;
    bool visible = true;
    float rotationDegrees = 0.0f;
    bool allowOcclusion = true;
    float maxDrawDistance = 250.0f;
    float sortBias = 0.0f;
};

struct CameraComponent
{
    float verticalFovDegrees = 45.0f;
    float nearClip = 0.1f;
    float farClip = 500.0f;
    bool primary = false;
};

} // namespace Vornu::Scene
