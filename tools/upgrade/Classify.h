#pragma once

#include "engine/core/LineReader.h"

#include <filesystem>
#include <optional>
#include <string>

namespace Vornu::Upgrade
{

/// Why a file is legacy, by its header and the keywords of its records alone; nothing when it isn't, whether
/// it is current, of another version or no scene file. Throws `std::runtime_error` when a read fails before
/// the records of a file of the current version have shown anything.
std::optional<std::string> ClassifyFile(const std::filesystem::path& path);

/// The same over a source at its start.
std::optional<std::string> ClassifyText(Core::LineReader& source);

} // namespace Vornu::Upgrade
