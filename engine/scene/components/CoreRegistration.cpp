#include "engine/scene/components/Registration.h"

#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

#include <algorithm>
#include <utility>

namespace Vornu::Scene
{

namespace
{

constexpr ComponentFlags kEntityFrame =
    ComponentFlags::Serialized | ComponentFlags::EntityFrame | ComponentFlags::FrameRecord;

/// A record named `Transform` holds the three fields directly; it becomes the object field of the component.
void WrapTransform(Reflection::SchemaRecord& record)
{
    Reflection::SchemaArena& arena = *record.Arena();
    auto* const flat = new (arena.Allocate<Reflection::SchemaRecord>(1)) Reflection::SchemaRecord(record);
    record = Reflection::SchemaRecord(arena, "TransformComponent", 1, 1);
    record.Append("transform", flat);
}

ReplicatedFieldSettings Smooth()
{
    ReplicatedFieldSettings settings;
    settings.interpolated = true;
    return settings;
}

ReplicatedFieldSettings SmoothAngle()
{
    ReplicatedFieldSettings settings = Smooth();
    settings.wrapsAround = true;
    return settings;
}

/// Version 1 named the entity of an override `entityGuid`. Beside a `localGuid` it has no meaning.
void MigratePrefabInstance(Reflection::SchemaRecord& record, std::uint32_t)
{
    record.ForEachRecord("overrides",
                         [](Reflection::SchemaRecord& override)
                         {
                             override.RenameField("entityGuid", "localGuid");
                             override.RemoveFields({"entityGuid"});
                             override.version = std::max(override.version, 2u);
                         });
}

} // namespace

void RegisterCoreComponents()
{
    Reflection::RegisterValue<Transform>("Transform", "Transform", "Core")
        .Field("position", &Transform::position, Label("Position"))
        .Field("rotation", &Transform::rotation, Label("Rotation").With(PropertyFlags::Degrees))
        .Field("scale", &Transform::scale, Label("Scale"));

    Reflection::RegisterValue<PrefabOverride>("PrefabOverride", "PrefabOverride", "Serialization")
        .Field("localGuid", &PrefabOverride::localGuid)
        .Field("propertyPath", &PrefabOverride::propertyPath)
        .Field("value", &PrefabOverride::value)
        .Version(2);

    Reflection::RegisterValue<PrefabComponentChange>("PrefabComponentChange", "PrefabComponentChange",
                                                     "Serialization")
        .Field("localGuid", &PrefabComponentChange::localGuid)
        .Field("component", &PrefabComponentChange::component);

    Reflection::RegisterValue<PrefabInstanceRecord>("PrefabInstanceRecord", "PrefabInstanceRecord",
                                                    "Serialization")
        .Field("prefab", &PrefabInstanceRecord::prefab, Label("Prefab").Asset("Prefab"))
        .Field("sourceEntityGuid", &PrefabInstanceRecord::sourceEntityGuid)
        .Field("instanceRootGuid", &PrefabInstanceRecord::instanceRootGuid)
        .Field("connected", &PrefabInstanceRecord::connected)
        .Field("overrides", &PrefabInstanceRecord::overrides)
        .Field("addedComponents", &PrefabInstanceRecord::addedComponents)
        .Field("removedComponents", &PrefabInstanceRecord::removedComponents)
        .Field("addedEntities", &PrefabInstanceRecord::addedEntities)
        .Field("removedEntities", &PrefabInstanceRecord::removedEntities)
        .Version(2);

    RegisterComponent<NameComponent>("NameComponent", "Name", "Core", kEntityFrame)
        .Field("name", &NameComponent::name, Label("Name"));

    RegisterComponent<EntityGuidComponent>("EntityGuidComponent", "Entity Guid", "Core", kEntityFrame)
        .Field("guid", &EntityGuidComponent::guid, Label("Guid").With(PropertyFlags::ReadOnly));

    RegisterComponent<TransformComponent>("TransformComponent", "Transform", "Core",
                                          ComponentFlags::Serialized | ComponentFlags::EntityFrame)
        .Field("transform", &TransformComponent::transform, Label("Transform"))
        .RecordAlias("Transform", &WrapTransform)
        .Replicated("transform.position", Smooth().Quantized(0.001f, 0, 0))
        .Replicated("transform.rotation", SmoothAngle().Quantized(0.01f, -720, 720))
        .Replicated("transform.scale");

    RegisterComponent<HierarchyComponent>("HierarchyComponent", "Hierarchy", "Core", kEntityFrame)
        .Field("parent", &HierarchyComponent::parent,
               Label("Parent").Kind(PropertyKind::EntityHandle).With(PropertyFlags::ReadOnly))
        .Field("children", &HierarchyComponent::children,
               Label("Children").Kind(PropertyKind::EntityHandle).With(PropertyFlags::ReadOnly));

    RegisterComponent<PrefabInstanceComponent>("PrefabInstanceComponent", "Prefab Instance", "Core",
                                               ComponentFlags::Serialized)
        .Field("prefab", &PrefabInstanceComponent::prefab, Label("Prefab").Asset("Prefab"))
        .Field("sourceEntityGuid", &PrefabInstanceComponent::sourceEntityGuid,
               Label("Source Entity").With(PropertyFlags::ReadOnly))
        .Field("instanceRootGuid", &PrefabInstanceComponent::instanceRootGuid,
               Label("Instance Root").With(PropertyFlags::ReadOnly).With(PropertyFlags::EntityGuid))
        .Field("connected", &PrefabInstanceComponent::connected, Label("Connected"))
        .Field("overrides", &PrefabInstanceComponent::overrides,
               Label("Overrides").With(PropertyFlags::ReadOnly))
        .Field("addedComponents", &PrefabInstanceComponent::addedComponents,
               Label("Added Components").With(PropertyFlags::ReadOnly))
        .Field("removedComponents", &PrefabInstanceComponent::removedComponents,
               Label("Removed Components").With(PropertyFlags::ReadOnly))
        .Field("addedEntities", &PrefabInstanceComponent::addedEntities,
               Label("Added Entities").With(PropertyFlags::ReadOnly))
        .Field("removedEntities", &PrefabInstanceComponent::removedEntities,
               Label("Removed Entities").With(PropertyFlags::ReadOnly))
        .SaveAs<PrefabInstanceRecord>(
            [](const PrefabInstanceComponent& component, const ComponentSaveContext&) -> PrefabInstanceRecord
            { return component; },
            [](PrefabInstanceRecord&& record, PrefabInstanceComponent& component, const ComponentLoadContext&)
            { static_cast<PrefabInstanceRecord&>(component) = std::move(record); })
        .Migrate(&MigratePrefabInstance);

    RegisterComponent<TransientComponent>("TransientComponent", "Transient", "Core",
                                          ComponentFlags::RuntimeOnly)
        .Description("Runtime-only entity tag (spawned VFX emitters): never saved, copied or listed.");
}

} // namespace Vornu::Scene
