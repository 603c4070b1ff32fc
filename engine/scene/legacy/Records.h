#pragma once

#include "engine/scene/legacy/PendingEntity.h"
#include "engine/scene/legacy/RecordLine.h"

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace Vornu::Assets
{
class AssetManager;
}

namespace Vornu::Scene
{
struct EnvironmentSettings;
}

/// The grammars of the positional records, a file for each family.
namespace Vornu::Scene::Legacy
{

/// What a record of an entity is read with.
struct RecordContext
{
    std::uint32_t version = 0; // of the file
    PendingEntity& entity;
    Assets::AssetManager& assets;
};

/// One keyword inside an entity.
struct EntityRecord
{
    std::string_view keyword;
    void (*read)(RecordLine& line, RecordContext& context);
};

/// One keyword of the scene's environment, inside or outside an entity.
struct EnvironmentRecord
{
    std::string_view keyword;
    std::string_view key; // under which two keywords count as the same record
    void (*read)(RecordLine& line, EnvironmentSettings& environment);
};

std::span<const EnvironmentRecord> EnvironmentRecords() noexcept;
std::span<const EntityRecord> CoreRecords() noexcept;
std::span<const EntityRecord> RenderingRecords() noexcept;
std::span<const EntityRecord> LightRecords() noexcept;

/// The last steps of a renderer that came from positional records, when all of its entity has been read.
void CompleteMeshRenderer(MeshRendererComponent& renderer, Assets::AssetManager& assets);

/// A component with its defaults, for a main record that begins it. In version 6 a second one of an entity
/// throws `duplicateFault`; before, it replaces the first.
template<class Component>
Component BeginComponent(RecordContext& context, const char* duplicateFault)
{
    if (context.version == 6 && context.entity.components.Find<Component>() != nullptr)
    {
        throw std::runtime_error(duplicateFault);
    }
    return Component{};
}

} // namespace Vornu::Scene::Legacy
