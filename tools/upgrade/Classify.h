#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace Vornu::Upgrade
{

/// Why a file is legacy, by its header and the keywords of its records alone; nothing when it isn't, whether
/// it is current, of another version or no scene file.
std::optional<std::string> ClassifyFile(const std::filesystem::path& path);

} // namespace Vornu::Upgrade
