#pragma once

#include "bench/BenchContent.h"

#include <cstddef>
#include <filesystem>
#include <string>

/// Scenes to measure: each entity has a transform and a mesh renderer with a mesh and a material, every
/// fourth a second material, every fifth a rigid body, every tenth a point light. Those of a mixed scene have
/// a positional record each, every kind in turn, and every ten thousandth a terrain of 256 by 256 heights.
namespace Vornu::Bench
{

enum class Shape
{
    Tree, // eight children each
    Flat, // all under one root
    Deep, // one chain
    Mixed,
};

/// A positional scene of format version 3, a mixed one of version 5.
std::string LegacySceneText(std::size_t entityCount, Shape shape, References references = References::Usual);

/// A positional scene of format version 3 with one terrain of 2,000 by 2,000 heights.
std::string TerrainSceneText();

/// The same entities, of a scene that isn't mixed, as one JSON document, with the values under the names that
/// records give them.
std::string JsonSceneText(std::size_t entityCount, Shape shape);

/// A folder for the run's files, removed at the end of the scope. Keeps the program's own folders in there,
/// and is quiet about what is only worth a warning.
class ScratchFolder
{
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::filesystem::path File(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

void WriteText(const std::filesystem::path& path, const std::string& text);

/// Writes the legacy text of a scene and converts it. The content is that above the path.
void MakeCurrentScene(const std::filesystem::path& path, std::size_t entityCount, Shape shape);

} // namespace Vornu::Bench
