#pragma once

#include "engine/scene/files/SceneStage.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

/// The binary form of a scene file for shipped content: the same stage, with lengths and tags in place of
/// text, in a cooked container of kind "SCNE". Field values keep their text, and records that this build
/// doesn't know pass through.
namespace Vornu::Scene
{

inline constexpr char kCookedSceneKind[] = "SCNE";
inline constexpr std::uint32_t kCookedSceneFormat = 1;

/// The cooked file of a text scene. On false `error` tells why.
bool CookScene(const std::filesystem::path& path, std::vector<std::byte>& bytes, std::string& error);

/// The cooked file of a stage. Throws `std::length_error` for text that no cooked file can hold.
std::vector<std::byte> EncodeCookedScene(const SceneStage& stage);

/// Reads a cooked file, which outlives the stage's records. `path` is for messages alone. On false `error`
/// tells why, and the stage is partly filled.
bool DecodeCookedScene(std::span<const std::byte> bytes, SceneStage& stage, const std::filesystem::path& path,
                       std::string& error);

} // namespace Vornu::Scene
