#pragma once

#include "engine/core/text/LineReader.h"
#include "engine/scene/files/SceneVersionProbe.h"

#include <filesystem>
#include <optional>
#include <string>

namespace Vornu::Upgrade
{

/// What a file is, by its header and the keywords of its records alone.
struct Classification
{
    Scene::SceneVersionProbe probe;
    /// Why it is legacy; nothing when it isn't, whether it is current, of another version or no scene file.
    std::optional<std::string> reason;
};

/// A file that isn't there or that the user may not open counts as none. Throws `std::runtime_error` when it
/// can't be opened or read for another reason, with the system's text.
Classification Classify(const std::filesystem::path& path);

/// The reason alone.
std::optional<std::string> ClassifyFile(const std::filesystem::path& path);

/// The same over a source at its start. Throws `std::runtime_error` when a read fails.
Classification ClassifyText(Core::LineReader& source);

} // namespace Vornu::Upgrade
