#pragma once

#include "engine/assets/manager/AssetManager.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

namespace Vornu::Upgrade
{

/// One manager for each content folder of a run, by the folder's canonical path.
using AssetManagers = std::map<std::filesystem::path, std::unique_ptr<Assets::AssetManager>>;

/// The folder that asset references of a file resolve against: its nearest ancestor named Content, else that
/// of the file that it leads to through links, else its own folder. A `..` leads where the system goes.
/// Throws `std::filesystem::filesystem_error` when the system can't tell.
std::filesystem::path FindContentFolder(const std::filesystem::path& file);

/// The manager for a file, made and mounted on first use. `contentFolder` overrides the search unless empty.
/// Throws what the mount throws.
Assets::AssetManager& AssetManagerFor(const std::filesystem::path& file,
                                      const std::filesystem::path& contentFolder,
                                      AssetManagers& assetManagers);

/// Runs the program with the arguments behind its name; prints to the standard streams. Gives the exit code.
int RunUpgradeTool(const std::vector<std::string_view>& arguments);

} // namespace Vornu::Upgrade
