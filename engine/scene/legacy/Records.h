#pragma once

#include "engine/scene/legacy/PendingEntity.h"
#include "engine/scene/legacy/RecordLine.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Vornu::Assets
{
class AssetManager;
class AssetRegistry;
} // namespace Vornu::Assets

namespace Vornu::Scene
{
struct EnvironmentSettings;
}

/// The grammars of the positional records, a file for each family.
namespace Vornu::Scene::Legacy
{

/// The version whose components may also be schema records, and in which entities are strict.
inline constexpr std::uint32_t kNamedRecordsVersion = 6;

/// Room that the lines of a file may ask for beyond what they hold: in memory for elements in front of a far
/// index, in the saved scene for samples that were only announced.
struct FillBudget
{
    std::uint64_t bytesLeft = 0x4000000; // 64 MiB
};

/// What a record of an entity is read with.
struct RecordContext
{
    std::uint32_t version = 0; // of the file
    PendingEntity& entity;
    Assets::AssetManager& assets;
    std::string_view keyword;
    FillBudget& fill;
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
std::span<const EntityRecord> AnimatorRecords() noexcept;
std::span<const EntityRecord> PhysicsRecords() noexcept;
std::span<const EntityRecord> BuoyancyRecords() noexcept;
std::span<const EntityRecord> ClothRecords() noexcept;
std::span<const EntityRecord> TerrainRecords() noexcept;
std::span<const EntityRecord> OceanRecords() noexcept;
std::span<const EntityRecord> GameplayRecords() noexcept;
std::span<const EntityRecord> NavigationRecords() noexcept;
std::span<const EntityRecord> SplineRecords() noexcept;
std::span<const EntityRecord> EffectRecords() noexcept;
std::span<const EntityRecord> ScriptRecords() noexcept;

// The last steps of components that came from positional records, when all of their entity has been read.
void CompleteMeshRenderer(MeshRendererComponent& renderer, Assets::AssetManager& assets);
void CompleteAnimator(AnimatorComponent& animator);
void CompleteScripts(std::vector<ScriptAttachment>& scripts, const Assets::AssetRegistry& assets);

/// A detail record can't change a component that stands in the file as a schema record.
inline void RefuseNamedRecord(const RecordContext& context, std::string_view recordName, const char* fault)
{
    if (context.entity.HasNamedRecord(recordName))
    {
        throw std::runtime_error(fault);
    }
}

inline constexpr char kMixedScripts[] = "Mixed named and legacy script records.";

inline constexpr std::uint64_t kMaxListSize = 65536;        // of a list that a line's index lets grow
inline constexpr std::uint64_t kMaxSampleCount = 0x1000000; // that a line may announce

/// Throws when a file asks for too much room.
void ChargeFill(const RecordContext& context, std::uint64_t count, std::size_t elementSize);

/// The element of a list that a line addresses; the list grows to hold it, filled with `fill`.
template<class Element>
Element& ElementAt(const RecordContext& context, std::vector<Element>& list, std::uint64_t index,
                   const Element& fill = {})
{
    if (index >= kMaxListSize)
    {
        throw std::runtime_error(std::string(context.keyword) + " index exceeds the limit of " +
                                 std::to_string(kMaxListSize) + " elements.");
    }
    if (index >= list.size())
    {
        ChargeFill(context, index - list.size(), sizeof(Element));
        list.resize(static_cast<std::size_t>(index) + 1, Element(fill));
    }
    return list[static_cast<std::size_t>(index)];
}

/// Reads a count and that many samples; those behind the first that can't be read are 0.
void ReadSamples(RecordLine& line, const RecordContext& context, std::vector<float>& samples);

/// For the records whose fields must all be there: throws `LoadFault` "Malformed <keyword> <what>." when one
/// could not be read.
void RequireFields(const RecordLine& line, const RecordContext& context, const char* what);

/// A component with its defaults, for a main record that begins it. In version 6 a second one of an entity
/// throws `duplicateFault`; before, it replaces the first.
template<class Component>
Component BeginComponent(RecordContext& context, const char* duplicateFault)
{
    if (context.version == kNamedRecordsVersion && context.entity.components.Find<Component>() != nullptr)
    {
        throw std::runtime_error(duplicateFault);
    }
    return Component{};
}

} // namespace Vornu::Scene::Legacy
