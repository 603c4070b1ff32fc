#pragma once

#include "engine/reflection/SchemaCodec.h"
#include "engine/reflection/ValueBuilder.h"
#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/entities/EntityReference.h"
#include "engine/scene/entities/EntityReferenceRemapper.h"
#include "engine/scene/entities/Registry.h"
#include "engine/scene/registration/ComponentRegistry.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// Registration of component types.
namespace Vornu::Scene
{

using Reflection::FieldAttr;
using Reflection::Label;
using Reflection::PropertyFlags;
using Reflection::PropertyKind;

/// Captures one reflected object as a record of a component.
template<class Type>
void CaptureInto(const Type& object, const ComponentSaveContext& context, ComponentTypeEntry::RecordList& out)
{
    out.Capture(Reflection::ViewOf(object), Reflection::ReflectionRegistry::Instance(), *context.codec);
}

/// Applies a record onto a fresh object of its type.
template<class Type>
Type ApplyFresh(const Reflection::SchemaRecord& record, const ComponentLoadContext& context)
{
    Type object{};
    Reflection::ApplyRecordToNew(record, Reflection::ViewOf(object),
                                 Reflection::ReflectionRegistry::Instance(), *context.codec);
    return object;
}

/// Installs the saver: `capture(const Component&, const ComponentSaveContext&, RecordList&)` runs on the live
/// component, or on a copy that the save hooks have changed when there are any.
template<class Component, class Capture>
void InstallComponentSaver(ComponentTypeEntry& entry, Capture capture)
{
    entry.saver = [&entry, capture](const void* component, const ComponentSaveContext& context,
                                    ComponentTypeEntry::RecordList& out)
    {
        const auto& live = *static_cast<const Component*>(component);
        if (entry.saveHooks.empty())
        {
            capture(live, context, out);
            return;
        }
        Component copy = live;
        for (const auto& hook : entry.saveHooks)
        {
            hook(&copy, context);
        }
        capture(std::as_const(copy), context, out);
    };
}

/// For components that are complete with their last record.
struct NoFinish
{
    void operator()(ComponentLoadState&) const noexcept {}
};

/// Installs the loader: `load(ComponentLoadValue<Component, Extra>&, record, encodedBytes, context)` for
/// every record, then `finish(ComponentLoadValue<Component, Extra>&)` and the load hooks.
template<class Component, class Extra = std::monostate, class Load, class Finish = NoFinish>
void InstallComponentLoader(ComponentTypeEntry& entry, Load load, Finish finish = {})
{
    using Value = ComponentLoadValue<Component, Extra>;
    entry.makeLoadState = [] { return std::unique_ptr<ComponentLoadState>(std::make_unique<Value>()); };
    entry.loadRecord = [load](ComponentLoadState& state, const Reflection::SchemaRecord& record,
                              std::uint64_t encodedBytes, const ComponentLoadContext& context)
    { load(static_cast<Value&>(state), record, encodedBytes, context); };
    entry.stateView = nullptr;
    entry.finishLoad = [&entry, finish](ComponentLoadState& state, const ComponentLoadContext& context)
    {
        auto& value = static_cast<Value&>(state);
        finish(value);
        for (const auto& hook : entry.loadHooks)
        {
            hook(&value.value, context);
        }
    };
    entry.commitLoad = [](ComponentLoadState& state, Registry& registry, Entity entity)
    { registry.Add<Component>(entity, std::move(static_cast<Value&>(state).value)); };
}

namespace Detail
{

/// Copies the component of `from`, when there is one, with transient members reset.
template<class Component>
void CopyComponent(const ComponentTypeEntry& entry, const Registry& source, Registry& target, Entity from,
                   Entity to, ComponentCopyKind kind)
{
    const Component* const original = source.TryGet<Component>(from);
    if (original == nullptr)
    {
        return;
    }
    Component copy = *original;
    for (const auto& reset : entry.transientResets)
    {
        reset(&copy);
    }
    for (const auto& hook : entry.copyHooks)
    {
        hook(&copy, kind);
    }
    target.Add<Component>(to, std::move(copy));
}

template<class Component>
void InstallEntityOperations(ComponentTypeEntry& entry)
{
    entry.has = [](const Registry& registry, Entity entity) { return registry.Has<Component>(entity); };
    entry.add = [](Registry& registry, Entity entity) { registry.Add<Component>(entity, Component{}); };
    entry.remove = [](Registry& registry, Entity entity) { registry.Remove<Component>(entity); };
    entry.storage = [](const Registry& registry) -> const IStorage*
    { return registry.StorageOf<Component>(); };
    entry.get = [](Registry& registry, Entity entity) -> void* { return registry.TryGet<Component>(entity); };
    entry.getConst = [](const Registry& registry, Entity entity) -> const void*
    { return registry.TryGet<Component>(entity); };
    entry.view = [](Registry& registry, Entity entity)
    {
        Component* const component = registry.TryGet<Component>(entity);
        return component != nullptr ? Reflection::ViewOf(*component) : Reflection::ObjectView();
    };
    entry.viewConst = [](const Registry& registry, Entity entity)
    {
        const Component* const component = registry.TryGet<Component>(entity);
        return component != nullptr ? Reflection::ViewOf(*component) : Reflection::ObjectView();
    };
    entry.copy = [&entry](Registry& registry, Entity from, Entity to, ComponentCopyKind kind)
    { CopyComponent<Component>(entry, registry, registry, from, to, kind); };
    entry.copyToOtherRegistry =
        [&entry](const Registry& source, Registry& target, Entity from, Entity to, ComponentCopyKind kind)
    { CopyComponent<Component>(entry, source, target, from, to, kind); };
}

/// Adds a type to both registries, as one plain record of version 1.
ComponentTypeEntry& AddPlainEntry(Reflection::TypeId type, const std::string& typeName,
                                  const std::string& displayName, const std::string& category,
                                  ComponentFlags flags);
/// Throws `std::invalid_argument` for a name that is there already.
void AddSaveGameField(ComponentTypeEntry& entry, SaveGameField field);
/// The same for a path, and for an empty one.
void AddReplicatedField(ComponentTypeEntry& entry, ReplicatedField field);

void AddLayoutRow(ComponentTypeEntry& entry, ComponentLayoutRow row);

template<class Owner, class Value>
std::size_t MemberOffset(Value Owner::*member)
{
    const Owner& object = Reflection::DefaultOf<Owner>();
    return Reflection::OffsetIn(&object, &(object.*member));
}

} // namespace Detail

/// Registers the component type in `ComponentRegistry` and `ReflectionRegistry`, as one plain record of
/// version 1 without properties.
template<class Component>
ComponentTypeEntry& MakeComponentEntry(const std::string& typeName, const std::string& displayName,
                                       const std::string& category, ComponentFlags flags)
{
    ComponentTypeEntry& entry =
        Detail::AddPlainEntry(Reflection::TypeIdOf<Component>(), typeName, displayName, category, flags);
    entry.size = sizeof(Component);
    entry.alignment = alignof(Component);
    Detail::InstallEntityOperations<Component>(entry);
    InstallComponentSaver<Component>(entry, &CaptureInto<Component>);
    using Value = ComponentLoadValue<Component>;
    InstallComponentLoader<Component>(entry, [](Value& state, const Reflection::SchemaRecord& record,
                                                std::uint64_t, const ComponentLoadContext& context)
                                      { state.value = ApplyFresh<Component>(record, context); });
    entry.stateView = [](ComponentLoadState& state)
    { return Reflection::ViewOf(static_cast<Value&>(state).value); };
    return entry;
}

/// Chained registration of one component type.
template<class Component>
class ComponentBuilder
{
public:
    explicit ComponentBuilder(ComponentTypeEntry& entry) : entry_(entry) {}

    operator ComponentTypeEntry&() const noexcept { return entry_; }

    ComponentBuilder& Description(std::string text)
    {
        entry_.description = std::move(text);
        return *this;
    }

    /// Adds a property and its layout row; the order of the calls is the order in files.
    template<class Value, class Owner>
    ComponentBuilder& Field(const char* name, Value Owner::*member, const FieldAttr& given = FieldAttr())
    {
        auto& reflection = Reflection::ReflectionRegistry::Instance();
        const FieldAttr attributes = Reflection::CompleteField<Value>(reflection, name, given);
        Value Component::*const own = member;
        if constexpr (std::is_same_v<Value, Core::Guid>)
        {
            if (Reflection::HasFlag(attributes.flags, PropertyFlags::EntityGuid))
            {
                OnRemap([own](Component& component, const EntityReferenceRemapper& remapper)
                        { remapper.RemapGuid(component.*own); });
            }
        }
        reflection.AddProperty<Component, Value>(entry_.typeName, name, own, *attributes.kind, attributes);
        AddLayoutRow(name, own, ComponentLayoutRow::Role::Reflected);
        return *this;
    }

    /// A run-time member: not saved, and back at its default in every copy of the component.
    template<class Value, class Owner>
    ComponentBuilder& AddTransient(Value Owner::*member)
    {
        Value Component::*const own = member;
        AddLayoutRow("transient@" + std::to_string(Detail::MemberOffset<Component>(own)), own,
                     ComponentLayoutRow::Role::Transient);
        entry_.transientResets.push_back([own](void* component)
                                         { static_cast<Component*>(component)->*own = Component{}.*own; });
        return *this;
    }

    /// A member that the component's own record code saves.
    template<class Value, class Owner>
    ComponentBuilder& AddCustom(Value Owner::*member)
    {
        Value Component::*const own = member;
        AddLayoutRow("custom@" + std::to_string(Detail::MemberOffset<Component>(own)), own,
                     ComponentLayoutRow::Role::Custom);
        return *this;
    }

    ComponentBuilder& Version(std::uint32_t version)
    {
        if (version == 0)
        {
            throw std::invalid_argument("Component schema versions start at 1: " + entry_.typeName);
        }
        Reflection::ReflectionRegistry::Instance().FindType(entry_.type)->version = version;
        return *this;
    }

    /// `function(SchemaRecord&, uint32 fromVersion)` brings a record of an older version up to date.
    template<class Function>
    ComponentBuilder& Migrate(Function function)
    {
        entry_.migrate = std::move(function);
        return *this;
    }

    /// `function(Component&, const ComponentSaveContext&)` changes the copy that is written.
    template<class Function>
    ComponentBuilder& OnSave(Function function)
    {
        entry_.saveHooks.push_back([function](void* component, const ComponentSaveContext& context)
                                   { function(*static_cast<Component*>(component), context); });
        return *this;
    }

    /// `function(Component&, const ComponentLoadContext&)` runs when all records of an entity are there.
    template<class Function>
    ComponentBuilder& OnLoad(Function function)
    {
        entry_.loadHooks.push_back([function](void* component, const ComponentLoadContext& context)
                                   { function(*static_cast<Component*>(component), context); });
        return *this;
    }

    /// `function(Component&, Registry&, Entity)` runs when all entities of a loaded scene exist.
    template<class Function>
    ComponentBuilder& OnResolve(Function function)
    {
        entry_.resolveHooks.push_back([function](void* component, Registry& registry, Entity entity)
                                      { function(*static_cast<Component*>(component), registry, entity); });
        return *this;
    }

    /// `function(Component&, ComponentCopyKind)` runs on every copy, behind the resets of run-time members.
    template<class Function>
    ComponentBuilder& OnCopy(Function function)
    {
        entry_.copyHooks.push_back([function](void* component, ComponentCopyKind kind)
                                   { function(*static_cast<Component*>(component), kind); });
        return *this;
    }

    /// `function(Component&, const EntityReferenceRemapper&)` rewrites references after a copy.
    template<class Function>
    ComponentBuilder& OnRemap(Function function)
    {
        entry_.AddRemap([function](void* component, const EntityReferenceRemapper& remapper)
                        { function(*static_cast<Component*>(component), remapper); });
        return *this;
    }

    /// A live handle and its stored GUID, kept in step by saving, resolving and copying. With
    /// `requirePersistent` a handle that gives no GUID, with none stored, fails the save.
    ComponentBuilder& EntityLink(Entity Component::*handle, Core::Guid Component::*guid,
                                 bool requirePersistent = false)
    {
        OnSave(
            [=](Component& component, const ComponentSaveContext& context) {
                RefreshLinkForSave(*context.registry, component.*handle, component.*guid, requirePersistent);
            });
        OnResolve(
            [=](Component& component, Registry& registry, Entity)
            {
                if ((component.*guid).IsValid())
                {
                    component.*handle = registry.FindEntityByGuid(component.*guid);
                }
                RefreshLink(registry, component.*handle, component.*guid);
            });
        return OnRemap([=](Component& component, const EntityReferenceRemapper& remapper)
                       { remapper.RemapEntityReference(component.*handle, component.*guid); });
    }

    /// A member of a type that `WriteSaveGameValue` takes, as part of the state that saved games keep.
    template<class Value, class Owner>
    ComponentBuilder& SaveGame(const char* name, Value Owner::*member)
    {
        Value Component::*const own = member;
        return SaveGameValue(
            name,
            [own](const Component& component, Core::ByteWriter& writer)
            { WriteSaveGameValue(writer, component.*own); },
            [own](Component& component, Core::ByteReader& reader)
            { ReadSaveGameValue(reader, component.*own); });
    }

    /// A handle, which a saved game keeps as the GUID of its entity.
    template<class Owner>
    ComponentBuilder& SaveGameEntity(const char* name, Entity Owner::*member)
    {
        Entity Component::*const own = member;
        return AddSaveGameField(
            name,
            [own](const void* component, Core::ByteWriter& writer, const SaveGameFieldCodecContext& context)
            { WriteSaveGameEntity(writer, static_cast<const Component*>(component)->*own, context); },
            [own](void* component, Core::ByteReader& reader, const SaveGameFieldCodecContext& context)
            { ReadSaveGameEntity(reader, static_cast<Component*>(component)->*own, context); });
    }

    /// `write(const Component&, ByteWriter&)` and `read(Component&, ByteReader&)`.
    template<class Write, class Read>
    ComponentBuilder& SaveGameValue(const char* name, Write write, Read read)
    {
        return AddSaveGameField(
            name,
            [write](const void* component, Core::ByteWriter& writer, const SaveGameFieldCodecContext&)
            { write(*static_cast<const Component*>(component), writer); },
            [read](void* component, Core::ByteReader& reader, const SaveGameFieldCodecContext&)
            { read(*static_cast<Component*>(component), reader); });
    }

    template<class Write, class Read>
    ComponentBuilder& AddSaveGameField(const char* name, Write write, Read read)
    {
        Detail::AddSaveGameField(entry_, {name, std::move(write), std::move(read)});
        entry_.saveGame.applyWrapper = [](void* component, const std::function<void(void*)>& applyAll)
        {
            Component copy = *static_cast<const Component*>(component);
            applyAll(&copy);
            *static_cast<Component*>(component) = std::move(copy);
        };
        return *this;
    }

    ComponentBuilder& SaveGameVersion(std::uint32_t version)
    {
        entry_.saveGame.version = version;
        return *this;
    }

    /// `function(SaveGameFieldSet&, uint32 fromVersion)` brings stored state of an older version up to date.
    template<class Function>
    ComponentBuilder& MigrateSaveGame(Function function)
    {
        entry_.saveGame.migrate = std::move(function);
        return *this;
    }

    /// A property, named by its path from the component, that a game sends over a network.
    ComponentBuilder& Replicated(const std::string& path, const ReplicatedFieldSettings& settings = {})
    {
        Detail::AddReplicatedField(entry_, {path, settings});
        return *this;
    }

    /// Accepts another record name for the main record; `rewrite(SchemaRecord&)` turns one into the other.
    template<class Function>
    ComponentBuilder& RecordAlias(std::string name, Function rewrite)
    {
        entry_.aliases.push_back({std::move(name), std::move(rewrite)});
        return *this;
    }

    /// Replaces the record list, with a saver and a loader of the component's own (see
    /// `InstallComponentSaver` and `InstallComponentLoader` for the signatures).
    template<class Extra = std::monostate, class Capture, class Load, class Finish = NoFinish>
    ComponentBuilder& Records(std::vector<ComponentRecordRow> rows, Capture capture, Load load,
                              Finish finish = {})
    {
        if (rows.empty())
        {
            throw std::invalid_argument("Component records need a main record: " + entry_.typeName);
        }
        entry_.records = std::move(rows);
        entry_.multiRecord = true;
        InstallComponentSaver<Component>(entry_, std::move(capture));
        InstallComponentLoader<Component, Extra>(entry_, std::move(load), std::move(finish));
        return *this;
    }

    /// Saves and loads the component as another reflected type: `toRecord(const Component&,
    /// const ComponentSaveContext&)` gives a `RecordType`, and `fromRecord(RecordType&&, Component&,
    /// const ComponentLoadContext&)` takes one over as soon as its record is read.
    template<class RecordType, class ToRecord, class FromRecord>
    ComponentBuilder& SaveAs(ToRecord toRecord, FromRecord fromRecord)
    {
        const auto& reflection = Reflection::ReflectionRegistry::Instance();
        const Reflection::TypeInfo* const type = reflection.FindType(Reflection::TypeIdOf<RecordType>());
        if (type == nullptr)
        {
            throw std::invalid_argument("SaveAs record type is not reflected: " + entry_.typeName);
        }
        using Value = ComponentLoadValue<Component>;
        return Records(
            {{type->name, false}},
            [toRecord](const Component& component, const ComponentSaveContext& context,
                       ComponentTypeEntry::RecordList& out)
            {
                const RecordType stored = toRecord(component, context);
                CaptureInto(stored, context, out);
            },
            [fromRecord](Value& state, const Reflection::SchemaRecord& record, std::uint64_t,
                         const ComponentLoadContext& context)
            { fromRecord(ApplyFresh<RecordType>(record, context), state.value, context); });
    }

private:
    template<class Value>
    void AddLayoutRow(std::string name, Value Component::*member, ComponentLayoutRow::Role role)
    {
        Detail::AddLayoutRow(entry_, {std::move(name), Detail::MemberOffset<Component>(member), sizeof(Value),
                                      alignof(Value), role});
    }

    ComponentTypeEntry& entry_;
};

/// Starts the registration of a component type.
template<class Component>
ComponentBuilder<Component> RegisterComponent(const std::string& typeName, const std::string& displayName,
                                              const std::string& category, ComponentFlags flags)
{
    return ComponentBuilder<Component>(MakeComponentEntry<Component>(typeName, displayName, category, flags));
}

} // namespace Vornu::Scene
