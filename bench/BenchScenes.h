#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

/// Scenes to measure: each entity has a transform and a mesh renderer, every fifth a rigid body, every tenth
/// a point light. Those of a mixed scene have a positional record each, every kind in turn, and every ten
/// thousandth a terrain of 256 by 256 heights.
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
std::string LegacySceneText(std::size_t entityCount, Shape shape);

/// The same entities, of a scene that isn't mixed, as one JSON document, with the values under the names that
/// records give them.
std::string JsonSceneText(std::size_t entityCount, Shape shape);

/// A folder for the run's files, removed at the end of the scope. Keeps the program's own folders in there.
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

/// Converts the legacy text of a scene and gives the path of the current file.
std::filesystem::path MakeCurrentScene(const ScratchFolder& folder, std::size_t entityCount, Shape shape);

} // namespace Vornu::Bench
