#pragma once

#include "engine/core/text/LineReader.h"

#include <cstdint>
#include <filesystem>

namespace Vornu::Scene
{

struct SceneVersionProbe
{
    std::uint32_t version = 0;
    bool found = false;
};

/// The scene format version that a file, text or cooked, claims in its head. Nothing found where there is no
/// header, or no file.
SceneVersionProbe ProbeSceneVersion(const std::filesystem::path& path);

/// The same over a source at its start. It is left behind the header line of a text and at the start of a
/// cooked file. `lineNumber` goes up by one for every line read.
SceneVersionProbe ProbeSceneVersion(Core::LineReader& source, std::uint64_t& lineNumber);

} // namespace Vornu::Scene
