#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Vornu::Upgrade
{

/// Whether a file found in a directory is a scene or prefab file, by its extension, which minds case.
bool IsSceneFile(const std::filesystem::path& path);

/// The inputs of a run with directories searched.
struct InputFiles
{
    std::vector<std::filesystem::path> files; // in order of the inputs and of the walk
    /// The first input that is neither file nor directory, an empty one included; ends the search.
    std::optional<std::filesystem::path> missing;
    std::vector<std::string> faults; // what the walk couldn't read
};

InputFiles ExpandInputs(const std::vector<std::filesystem::path>& inputs);

} // namespace Vornu::Upgrade
