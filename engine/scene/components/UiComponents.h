#pragma once

#include "engine/assets/identity/AssetId.h"

#include <glm/vec2.hpp>

#include <cstdint>

namespace Vornu::Scene
{

enum class UICanvasSpace : std::uint8_t
{
    Screen = 0,
    WorldBillboard = 1,
};

struct UICanvasComponent
{
    Assets::AssetId document = 0;
    UICanvasSpace space = UICanvasSpace::Screen;
    bool visible = true;
    bool receiveInput = true;
    std::int32_t sortOrder = 0;
    glm::vec2 screenOffset{0.0f};
    glm::vec2 worldSize{1.6f, 0.9f};
    glm::vec2 pivot{0.5f};
    float maxDistance = 60.0f;
};

} // namespace Vornu::Scene
