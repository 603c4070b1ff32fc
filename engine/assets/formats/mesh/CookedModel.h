#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Cooked imported models: a container of kind "MODL", format version 1, with the model's data and the
/// compiled shaders of its materials.
namespace Vornu::Assets
{

struct CookedModelShader
{
    std::string name; // a file name without a folder
    std::vector<std::byte> data;

    friend bool operator==(const CookedModelShader&, const CookedModelShader&) = default;
};

struct CookedModel
{
    std::vector<std::byte> modelData; // the stream of a derived scene cache
    std::vector<CookedModelShader> shaders;

    friend bool operator==(const CookedModel&, const CookedModel&) = default;
};

/// Parses a file's bytes. On false `model` is as it was and `error` tells why.
bool ParseCookedModel(std::span<const std::byte> bytes, std::string_view subject, CookedModel& model,
                      std::string& error);

/// The bytes of a file. Throws `std::length_error` for data that the format can't hold, and
/// `std::invalid_argument` for a shader name that no reader would take.
std::vector<std::byte> EncodeCookedModel(const CookedModel& model);

} // namespace Vornu::Assets
