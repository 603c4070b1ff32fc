#pragma once

#include <glm/vec3.hpp>

#include <cstdint>

namespace Vornu::Scene
{

enum class CurveInterpolation : std::uint8_t
{
    Smooth = 0,
    Linear = 1,
    Constant = 2,
};

struct CurveKey
{
    float time = 0.0f;
    float value = 1.0f;
    float inSlope = 0.0f;
    float outSlope = 0.0f;
    CurveInterpolation interpolation = CurveInterpolation::Smooth;

    friend bool operator==(const CurveKey&, const CurveKey&) = default;
};

struct GradientKey
{
    float time = 0.0f;
    glm::vec3 color{1.0f, 1.0f, 1.0f};

    friend bool operator==(const GradientKey&, const GradientKey&) = default;
};

} // namespace Vornu::Scene
