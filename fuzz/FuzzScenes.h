#pragma once

#include "engine/assets/manager/AssetManager.h"
#include "engine/scene/Scene.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Vornu::Fuzz
{

/// The asset manager of the process, mounted on the content of the examples, read-only.
Assets::AssetManager& SharedAssets();

const std::filesystem::path& SavedScene();

/// Parts of the saver's messages for what a scene in memory may hold and a text scene can't.
using Refusals = std::span<const std::string_view>;

/// Saves a scene as `SavedScene()` and gives the bytes. Nothing when the saver refuses a record that is too
/// large, or for one of the reasons given; any other failure ends the process.
std::optional<std::string> Save(const Scene::Scene& scene, Refusals refusals = {});

/// The same, and requires that what was saved loads and saves again to the same bytes.
std::optional<std::string> SaveStably(const Scene::Scene& scene, Refusals refusals = {});

} // namespace Vornu::Fuzz
