#pragma once

#include "engine/assets/manager/AssetManager.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

namespace Vornu::Upgrade
{

/// One manager for each content folder of a run.
using AssetManagers = std::map<std::filesystem::path, std::unique_ptr<Assets::AssetManager>>;

/// The folder that asset references of a file resolve against: its nearest ancestor named Content, else the
/// file's own folder.
std::filesystem::path FindContentFolder(const std::filesystem::path& file);

/// The manager for a file, made and mounted on first use. `contentFolder` overrides the search unless empty.
/// Throws what the mount throws.
Assets::AssetManager& AssetManagerFor(const std::filesystem::path& file,
                                      const std::filesystem::path& contentFolder,
                                      AssetManagers& assetManagers);

/// Runs the program with the arguments behind its name; prints to the standard streams. Gives the exit code.
int RunUpgradeTool(const std::vector<std::string_view>& arguments);

} // namespace Vornu::Upgrade
