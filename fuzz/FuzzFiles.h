#pragma once

#include "engine/assets/AssetManager.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace Vornu::Fuzz
{

/// A file in a scratch folder of the process.
std::filesystem::path ScratchFile(const std::string& name);

void WriteBytes(const std::filesystem::path& path, const std::uint8_t* data, std::size_t size);
std::string ReadBytes(const std::filesystem::path& path);

/// The asset manager of the process, mounted on an empty folder.
Assets::AssetManager& SharedAssets();

/// Ends the process with a message when a property doesn't hold.
void Require(bool holds, const std::string& what);

} // namespace Vornu::Fuzz
