#pragma once

#include "engine/reflection/ObjectView.h"
#include "engine/reflection/SchemaRecordList.h"
#include "engine/reflection/TypeId.h"
#include "engine/scene/entities/Entity.h"
#include "engine/scene/registration/SaveGameFields.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace Vornu::Assets
{
class AssetRegistry;
}

namespace Vornu::Reflection
{
struct SchemaCodecContext;
struct TypeInfo;
} // namespace Vornu::Reflection

namespace Vornu::Scene
{

class ComponentRecordTable;
class EntityReferenceRemapper;
class MissingComponentReport;
class IStorage;
class Registry;

enum class ComponentFlags : std::uint32_t
{
    None = 0,
    UserAddable = 1,   // tools offer the component to users
    Serialized = 2,    // saved with the scene
    EditorVisible = 4, // for tools
    EntityFrame = 16,  // every entity has it; an entity whose file lacks the record fails to load
    RuntimeOnly = 32,  // never saved, copied or listed
    FrameRecord = 64,  // stored by the entity frame of the scene file, not in a record of its own
};

constexpr ComponentFlags operator|(ComponentFlags a, ComponentFlags b) noexcept
{
    return static_cast<ComponentFlags>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}

constexpr bool HasFlag(ComponentFlags flags, ComponentFlags flag) noexcept
{
    return (static_cast<std::uint32_t>(flags) & static_cast<std::uint32_t>(flag)) != 0;
}

/// What a copy of components is for.
enum class ComponentCopyKind : std::uint8_t
{
    Duplicate = 0,  // a live tree copied inside its scene
    Persistent = 1, // an entity copied into a scene that is going to be saved or compared
};

/// What a record load may ask of its surroundings. All outlive the load.
struct ComponentLoadContext
{
    const Reflection::SchemaCodecContext* codec = nullptr;
    const Assets::AssetRegistry* assets = nullptr;
    /// Where names of components that this build doesn't have are noted; without it they are reported at
    /// once.
    MissingComponentReport* missing = nullptr;
};

/// What a component save may ask of its surroundings. All outlive the save.
struct ComponentSaveContext
{
    const Registry* registry = nullptr;
    Entity entity = kNullEntity;
    const Reflection::SchemaCodecContext* codec = nullptr;
    const Assets::AssetRegistry* assets = nullptr;
    /// The record names of all components; without it the save of an entity with preserved records makes one.
    const ComponentRecordTable* table = nullptr;
    /// Where names of components are noted whose preserved records give way to the component itself; without
    /// it each is reported at once.
    std::set<std::string, std::less<>>* superseded = nullptr;
};

/// A component under construction by a load.
class ComponentLoadState
{
public:
    virtual ~ComponentLoadState() = default;
};

/// The component value and the loader's own scratch.
template<class Component, class Extra = std::monostate>
class ComponentLoadValue : public ComponentLoadState
{
public:
    Component value{};
    Extra extra{};
};

/// One member of a component's layout.
struct ComponentLayoutRow
{
    enum class Role : std::uint8_t
    {
        Reflected = 0,
        Custom = 1,
        Transient = 2,
    };

    std::string name;
    std::size_t offset = 0; // bytes
    std::size_t size = 0;
    std::size_t alignment = 0;
    Role role = Role::Reflected;
};

struct ComponentRecordRow
{
    std::string name;
    bool repeatable = false;
};

struct ComponentRecordAlias
{
    std::string name;
    /// Turns a record of the alias name into the main record.
    std::function<void(Reflection::SchemaRecord&)> rewrite;
};

/// One registered component: how to reach it on an entity, and what it means for files.
struct ComponentTypeEntry
{
    using RecordList = Reflection::SchemaRecordList;

    std::string typeName; // also the name of its `TypeInfo` and, unless replaced, of its record
    std::string displayName;
    std::string category;
    std::string description;
    ComponentFlags flags = ComponentFlags::None;
    bool addable = false;    // UserAddable as given at registration
    bool persistent = false; // Serialized as given at registration
    Reflection::TypeId type;
    std::size_t size = 0;
    std::size_t alignment = 0;
    std::uint64_t serial = 0; // position in order of registration
    std::vector<ComponentLayoutRow> fields;
    std::vector<ComponentRecordRow> records; // the first is the main record
    std::vector<ComponentRecordAlias> aliases;
    /// Rewrites a record of an older version in place; may be empty.
    std::function<void(Reflection::SchemaRecord& record, std::uint32_t fromVersion)> migrate;

    std::function<void(const void* component, const ComponentSaveContext& context, RecordList& out)> saver;
    std::function<std::unique_ptr<ComponentLoadState>()> makeLoadState;
    std::function<void(ComponentLoadState& state, const Reflection::SchemaRecord& record,
                       std::uint64_t encodedBytes, const ComponentLoadContext& context)>
        loadRecord;
    /// The component under construction; null unless `loadRecord` applies the main record to it as it stands.
    Reflection::ObjectView (*stateView)(ComponentLoadState& state) = nullptr;
    std::function<void(ComponentLoadState& state, const ComponentLoadContext& context)> finishLoad;
    std::function<void(ComponentLoadState& state, Registry& registry, Entity entity)> commitLoad;

    // Hooks; each receives the component.
    std::vector<std::function<void(void* component, Registry& registry, Entity entity)>> resolveHooks;
    std::vector<std::function<void(void* component, const ComponentSaveContext& context)>> saveHooks;
    std::vector<std::function<void(void* component, const ComponentLoadContext& context)>> loadHooks;
    std::vector<std::function<void(void* component, const EntityReferenceRemapper& remapper)>> remapHooks;
    std::vector<std::function<void(void* component)>> transientResets;
    std::vector<std::function<void(void* component, ComponentCopyKind kind)>> copyHooks;

    ComponentSaveGameFields saveGame;
    std::vector<ReplicatedField> replicatedFields;

    bool multiRecord = false; // the record list was replaced

    bool (*has)(const Registry& registry, Entity entity) = nullptr;
    void (*add)(Registry& registry, Entity entity) = nullptr;
    void (*remove)(Registry& registry, Entity entity) = nullptr;
    std::function<void(Registry& registry, Entity from, Entity to, ComponentCopyKind kind)> copy;
    std::function<void(const Registry& source, Registry& target, Entity from, Entity to,
                       ComponentCopyKind kind)>
        copyToOtherRegistry;
    const IStorage* (*storage)(const Registry& registry) = nullptr; // null when there is none yet
    void* (*get)(Registry& registry, Entity entity) = nullptr;      // null when the entity has none
    const void* (*getConst)(const Registry& registry, Entity entity) = nullptr;
    Reflection::ObjectView (*view)(Registry& registry, Entity entity) = nullptr;
    Reflection::ObjectView (*viewConst)(const Registry& registry, Entity entity) = nullptr;

    void AddRemap(std::function<void(void* component, const EntityReferenceRemapper& remapper)> hook)
    {
        remapHooks.push_back(std::move(hook));
    }

    /// Whether scene files hold records of the component.
    bool HasSceneRecords() const noexcept
    {
        return HasFlag(flags, ComponentFlags::Serialized) && !HasFlag(flags, ComponentFlags::FrameRecord);
    }
};

} // namespace Vornu::Scene
