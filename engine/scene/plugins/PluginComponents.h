#pragma once

#include "engine/core/Guid.h"

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// Component types that a plugin describes as data when it is loaded. Each takes one compiled type out of a
/// pool of 64 and is from then on a component like any other, in the registries, in scenes and in files.
/// Records of plugins that aren't loaded are the matter of MissingComponents.h.
namespace Vornu::Scene
{

struct ComponentTypeEntry;

enum class PluginFieldKind : std::uint8_t
{
    Bool = 0,
    Int = 1,
    Float = 2,
    Vec2 = 3,
    Vec3 = 4,
    Vec4 = 5,
    String = 6,
    Guid = 7,
};

/// A value of each kind, in the order of the kinds.
using PluginFieldValue =
    std::variant<bool, std::int32_t, float, glm::vec2, glm::vec3, glm::vec4, std::string, Core::Guid>;

struct PluginFieldDefinition
{
    std::string name;
    std::string displayName; // the name when left empty
    std::string tooltip;
    PluginFieldKind kind = PluginFieldKind::Bool;
    PluginFieldValue defaultValue; // must be of the kind

    // The property flags of the same names. Nothing can save a read-only field that isn't run-time too.
    bool linkGuid = false;
    bool readOnly = false;
    bool color = false;
    bool degrees = false;
    bool runtime = false;
    bool entityGuid = false;

    bool hasRange = false; // counts for Int and Float only
    float rangeMin = 0.0f;
    float rangeMax = 0.0f;

    friend bool operator==(const PluginFieldDefinition&, const PluginFieldDefinition&) = default;
};

struct PluginComponentDefinition
{
    std::string name;        // `<plugin id>.<name>`; also the name of its scene records
    std::string displayName; // the name when left empty
    std::string category;    // "Plugins" when left empty
    std::string description; // a standard sentence when left empty
    std::string pluginId;
    std::uint32_t version = 1; // of the schema; 0 counts as 1
    bool userAddable = false;
    bool serialized = false; // without it the component isn't saved
    std::vector<PluginFieldDefinition> fields;

    friend bool operator==(const PluginComponentDefinition&, const PluginComponentDefinition&) = default;
};

/// Registers a component type for the rest of the process; the same definition again gives the same entry.
/// Null on failure, with the reason in `error` where given; unless memory ran out nothing has changed. A host
/// registers its plugins between loads; several of these calls may run at once.
const ComponentTypeEntry* RegisterPluginComponent(const PluginComponentDefinition& definition,
                                                  std::string* error);

/// Whether a plugin component of the name is registered. Safe from any thread.
bool IsPluginComponent(std::string_view name);

/// Whether a field may have the name: 1 to 64 bytes, the first a letter, the others letters, digits or `_`.
bool IsPluginFieldName(std::string_view name) noexcept;

} // namespace Vornu::Scene
