#include "engine/scene/plugins/PluginComponents.h"

#include "engine/core/text/Ascii.h"
#include "engine/reflection/ReflectionRegistry.h"
#include "engine/scene/components/SceneSchema.h"
#include "engine/scene/entities/EntityReferenceRemapper.h"
#include "engine/scene/plugins/DynamicComponentSlot.h"
#include "engine/scene/registration/ComponentRegistry.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <mutex>
#include <set>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace Vornu::Scene
{
namespace
{

using Reflection::PropertyAttributes;
using Reflection::PropertyFlags;
using Reflection::ReflectionRegistry;

constexpr std::size_t kMaxNameBytes = 128;
constexpr std::size_t kMaxFieldNameBytes = 64;
constexpr std::size_t kStringsOffset = offsetof(DynamicComponentData, strings);
static_assert(offsetof(DynamicComponentData, data) == 0, "the offset of a field is one in the component");
static_assert(kStringsOffset == kPluginDataBytes);
static_assert(sizeof(glm::vec2) == 8 && sizeof(glm::vec3) == 12 && sizeof(glm::vec4) == 16 &&
                  alignof(glm::vec4) == 4 && alignof(Core::Guid) == 8,
              "plugins count on where their fields lie");

struct SlotState
{
    bool used = false;
    PluginComponentDefinition definition;
    const ComponentTypeEntry* entry = nullptr;
};

struct SlotPool
{
    std::recursive_mutex mutex; // guards the slots
    std::array<SlotState, kPluginComponentLimit> slots;

    static SlotPool& Instance()
    {
        static auto* const pool = new SlotPool; // stays until the process ends
        return *pool;
    }

    const SlotState* FindUsed(std::string_view name) const
    {
        const auto found =
            std::find_if(slots.begin(), slots.end(),
                         [&](const SlotState& slot) { return slot.used && slot.definition.name == name; });
        return found == slots.end() ? nullptr : &*found;
    }
};

/// Offsets in the component, one a field.
using FieldOffsets = std::vector<std::size_t>;

[[noreturn]] void Fail(const std::string& message)
{
    throw std::runtime_error(message);
}

/// Calls `function(default, field, offset)` for every field, the default with its own type.
template<class Function>
void ForEachField(const PluginComponentDefinition& definition, const FieldOffsets& offsets, Function function)
{
    for (std::size_t i = 0; i < offsets.size(); ++i)
    {
        const PluginFieldDefinition& field = definition.fields[i];
        std::visit([&](const auto& value) { function(value, field, offsets[i]); }, field.defaultValue);
    }
}

/// Fields stand in the order of their declaration; only alignment leaves room between them.
FieldOffsets PlaceFields(const PluginComponentDefinition& definition)
{
    FieldOffsets offsets;
    std::set<std::string_view> names;
    std::size_t dataEnd = 0;
    std::size_t strings = 0;
    for (const PluginFieldDefinition& field : definition.fields)
    {
        if (!IsPluginFieldName(field.name))
        {
            Fail("Invalid field name '" + field.name +
                 "' (letters, digits and '_', starting with a letter).");
        }
        if (!names.insert(field.name).second)
        {
            Fail("Duplicate field '" + field.name + "'.");
        }
        if (field.defaultValue.index() != static_cast<std::size_t>(field.kind))
        {
            Fail("The default of field '" + field.name + "' does not match its type.");
        }
        if (field.kind == PluginFieldKind::String)
        {
            if (strings == kPluginStringCount)
            {
                Fail("Too many string fields (limit 8).");
            }
            offsets.push_back(kStringsOffset + strings++ * sizeof(std::string));
            continue;
        }
        const auto [size, alignment] =
            std::visit([](const auto& value)
                       { return std::pair(sizeof(value), alignof(std::decay_t<decltype(value)>)); },
                       field.defaultValue);
        const std::size_t offset = (dataEnd + alignment - 1) / alignment * alignment;
        if (offset + size > kPluginDataBytes)
        {
            Fail("The fields need more than 256 bytes.");
        }
        offsets.push_back(offset);
        dataEnd = offset + size;
    }
    return offsets;
}

DynamicComponentData MakeDefaults(const PluginComponentDefinition& definition, const FieldOffsets& offsets)
{
    DynamicComponentData defaults;
    ForEachField(definition, offsets,
                 [&]<class Value>(const Value& value, const PluginFieldDefinition&, std::size_t offset)
                 { *reinterpret_cast<Value*>(reinterpret_cast<std::byte*>(&defaults) + offset) = value; });
    return defaults;
}

PropertyAttributes AttributesOf(const PluginFieldDefinition& field)
{
    PropertyAttributes attributes;
    attributes.displayName = field.displayName.empty() ? field.name : field.displayName;
    attributes.tooltip = field.tooltip;
    const std::pair<bool, PropertyFlags> flags[] = {
        {field.linkGuid, PropertyFlags::LinkGuid}, {field.readOnly, PropertyFlags::ReadOnly},
        {field.color, PropertyFlags::Color},       {field.degrees, PropertyFlags::Degrees},
        {field.runtime, PropertyFlags::Runtime},   {field.entityGuid, PropertyFlags::EntityGuid},
    };
    for (const auto& [set, flag] : flags)
    {
        attributes.flags = set ? attributes.flags | flag : attributes.flags;
    }
    if (field.hasRange && (field.kind == PluginFieldKind::Int || field.kind == PluginFieldKind::Float))
    {
        attributes.hasRange = true;
        attributes.rangeMin = field.rangeMin;
        attributes.rangeMax = field.rangeMax;
    }
    return attributes;
}

/// Finds what the reflection would refuse before anything is registered, since nothing can be taken back.
void CheckFields(const PluginComponentDefinition& definition, const FieldOffsets& offsets)
{
    ForEachField(definition, offsets,
                 []<class Value>(const Value&, const PluginFieldDefinition& field, std::size_t)
                 {
                     const auto schema = Reflection::MakeValueSchema<Value>(Reflection::NaturalKind<Value>());
                     Reflection::CheckAttributes(field.name, schema, AttributesOf(field));
                 });
}

void AddFields(ComponentTypeEntry& entry, const PluginComponentDefinition& definition,
               const FieldOffsets& offsets)
{
    ForEachField(definition, offsets,
                 [&]<class Value>(const Value& value, const PluginFieldDefinition& field, std::size_t offset)
                 {
                     ReflectionRegistry::Instance().AddOffsetProperty<Value>(
                         entry.typeName, field.name, offset, Reflection::NaturalKind<Value>(),
                         AttributesOf(field), value);
                     entry.fields.push_back({field.name, offset, sizeof(Value), alignof(Value),
                                             ComponentLayoutRow::Role::Reflected});
                     if (std::is_same_v<Value, Core::Guid> && field.entityGuid)
                     {
                         entry.remapHooks.push_back(
                             [offset](void* component, const EntityReferenceRemapper& remapper)
                             {
                                 auto* const guid = static_cast<std::byte*>(component) + offset;
                                 remapper.RemapGuid(*reinterpret_cast<Core::Guid*>(guid));
                             });
                     }
                 });
}

/// Layout rows for the bytes and the strings that no field took.
void AddUnusedRows(ComponentTypeEntry& entry)
{
    std::vector<ComponentLayoutRow> unused;
    std::size_t dataEnd = 0;
    std::size_t strings = 0;
    const auto addGap = [&](std::size_t end)
    {
        if (dataEnd < end)
        {
            unused.push_back({"unused" + std::to_string(unused.size()), dataEnd, end - dataEnd, 1,
                              ComponentLayoutRow::Role::Transient});
        }
    };
    for (const ComponentLayoutRow& field : entry.fields)
    {
        if (field.offset >= kStringsOffset)
        {
            ++strings;
            continue;
        }
        addGap(field.offset);
        dataEnd = field.offset + field.size;
    }
    addGap(kPluginDataBytes);
    entry.fields.insert(entry.fields.end(), unused.begin(), unused.end());
    for (; strings < kPluginStringCount; ++strings)
    {
        entry.fields.push_back({"unusedString" + std::to_string(strings),
                                kStringsOffset + strings * sizeof(std::string), sizeof(std::string),
                                alignof(std::string), ComponentLayoutRow::Role::Transient});
    }
}

ComponentTypeEntry& RegisterSlot(std::size_t slot, const PluginComponentDefinition& definition,
                                 const FieldOffsets& offsets)
{
    CheckFields(definition, offsets);
    const ComponentFlags flags =
        (definition.userAddable ? ComponentFlags::UserAddable : ComponentFlags::None) |
        (definition.serialized ? ComponentFlags::Serialized : ComponentFlags::None);
    ComponentTypeEntry& entry = RegisterSlotType(
        slot, definition.name, definition.displayName.empty() ? definition.name : definition.displayName,
        definition.category.empty() ? "Plugins" : definition.category, flags);
    entry.description = definition.description.empty() ? "Plugin component of " + definition.pluginId + "."
                                                       : definition.description;
    Reflection::TypeInfo& type = *ReflectionRegistry::Instance().FindType(entry.type);
    type.version = std::max(definition.version, 1u);
    type.properties.clear(); // an attempt that ran out of memory may have left some
    AddFields(entry, definition, offsets);
    AddUnusedRows(entry);
    return entry;
}

const ComponentTypeEntry& Register(const PluginComponentDefinition& definition)
{
    const std::string& name = definition.name;
    if (name.size() > kMaxNameBytes || name.find('.') == std::string::npos)
    {
        Fail("A plugin component name must be '<plugin id>.<name>'.");
    }
    SlotPool& pool = SlotPool::Instance();
    const std::lock_guard lock(pool.mutex);
    EnsureSceneSchema();
    if (const SlotState* const known = pool.FindUsed(name))
    {
        if (known->definition == definition)
        {
            return *known->entry;
        }
        Fail("The component '" + name +
             "' is already registered with a different definition in this session (restart to change its "
             "fields).");
    }
    if (ComponentRegistry::Instance().Find(name) != nullptr ||
        ReflectionRegistry::Instance().FindType(name) != nullptr)
    {
        Fail("The name '" + name + "' is taken by another type.");
    }
    const auto slot = std::find_if(pool.slots.begin(), pool.slots.end(),
                                   [](const SlotState& candidate) { return !candidate.used; });
    if (slot == pool.slots.end())
    {
        Fail("No more plugin component types can be registered (limit 64).");
    }
    const FieldOffsets offsets = PlaceFields(definition);
    const auto index = static_cast<std::size_t>(slot - pool.slots.begin());
    slot->definition = definition;
    SlotDefaults(index) = MakeDefaults(definition, offsets);
    try
    {
        slot->entry = &RegisterSlot(index, definition, offsets);
    }
    catch (const std::exception& fault)
    {
        Fail("The component '" + name + "' could not be registered: " + fault.what());
    }
    slot->used = true;
    return *slot->entry;
}

} // namespace

const ComponentTypeEntry* RegisterPluginComponent(const PluginComponentDefinition& definition,
                                                  std::string* error)
{
    try
    {
        return &Register(definition);
    }
    catch (const std::exception& fault)
    {
        if (error != nullptr)
        {
            *error = fault.what();
        }
        return nullptr;
    }
}

bool IsPluginComponent(std::string_view name)
{
    SlotPool& pool = SlotPool::Instance();
    const std::lock_guard lock(pool.mutex);
    return pool.FindUsed(name) != nullptr;
}

bool IsPluginFieldName(std::string_view name) noexcept
{
    return !name.empty() && name.size() <= kMaxFieldNameBytes && Core::IsAsciiLetter(name.front()) &&
           std::all_of(name.begin(), name.end(),
                       [](char c) { return Core::IsAsciiLetter(c) || Core::IsAsciiDigit(c) || c == '_'; });
}

} // namespace Vornu::Scene
