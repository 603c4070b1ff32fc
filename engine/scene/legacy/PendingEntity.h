#pragma once

#include "engine/core/Guid.h"
#include "engine/reflection/TypeId.h"
#include "engine/scene/components/AiComponents.h"
#include "engine/scene/components/AnimatorComponents.h"
#include "engine/scene/components/AudioComponents.h"
#include "engine/scene/components/BuoyancyComponents.h"
#include "engine/scene/components/ClothComponents.h"
#include "engine/scene/components/GameplayComponents.h"
#include "engine/scene/components/LightingComponents.h"
#include "engine/scene/components/NavigationComponents.h"
#include "engine/scene/components/OceanComponents.h"
#include "engine/scene/components/ParticleComponents.h"
#include "engine/scene/components/PhysicsComponents.h"
#include "engine/scene/components/RenderingComponents.h"
#include "engine/scene/components/ScriptComponents.h"
#include "engine/scene/components/SplineComponents.h"
#include "engine/scene/components/StreamingComponents.h"
#include "engine/scene/components/TerrainComponents.h"
#include "engine/scene/components/UiComponents.h"
#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/entities/Registry.h"
#include "engine/scene/registration/EntityRecordStage.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Vornu::Scene::Legacy
{

namespace Detail
{

template<class... Components>
struct SlotList
{
    template<class Component>
    static constexpr std::size_t IndexOf() noexcept
    {
        std::size_t index = 0;
        const bool found = ((std::is_same_v<Component, Components> || (++index, false)) || ...);
        return found ? index : sizeof...(Components);
    }
    static constexpr std::size_t kSize = sizeof...(Components);
};

/// The components that positional records fill, in the order in which they are attached.
using Slots =
    SlotList<PrefabInstanceComponent, MeshRendererComponent, AnimatorComponent, CameraComponent,
             GameplayLayerComponent, NavigationBakeComponent, SplineComponent, TerrainComponent,
             OceanComponent, CharacterControllerComponent, FirstPersonCameraControllerComponent,
             PathWalkerComponent, BlackboardComponent, AIControllerComponent, WorldStreamingSourceComponent,
             WorldChunkComponent, ThirdPersonCameraControllerComponent, HealthComponent, SpawnPointComponent,
             ParticleEmitterComponent, AudioSourceComponent, AudioListenerComponent, UICanvasComponent,
             RigidBodyComponent, ColliderComponent, ConstraintComponent, BuoyancyComponent, ClothComponent,
             DirectionalLightComponent, PointLightComponent, SpotLightComponent, RotatorComponent>;

} // namespace Detail

/// The components that positional records have filled for one entity. Costs memory only for those.
class PendingComponents
{
public:
    /// One filled component, whatever its type.
    class Slot
    {
    public:
        Slot(std::size_t order, Reflection::TypeId type) noexcept : order_(order), type_(type) {}
        virtual ~Slot() = default;

        std::size_t Order() const noexcept { return order_; }
        Reflection::TypeId Type() const noexcept { return type_; }

        virtual void Attach(Registry& registry, Entity entity) = 0;

    private:
        std::size_t order_;
        Reflection::TypeId type_;
    };

    template<class Component>
    Component* Find() noexcept
    {
        const auto found = Position(kOrder<Component>);
        return found != slots_.end() && (*found)->Order() == kOrder<Component>
                   ? &static_cast<TypedSlot<Component>&>(**found).value
                   : nullptr;
    }

    /// Fills the slot of the component's type; an earlier value is replaced.
    template<class Component>
    Component& Set(Component component)
    {
        if (Component* const present = Find<Component>())
        {
            return *present = std::move(component);
        }
        auto slot = std::make_unique<TypedSlot<Component>>(std::move(component));
        Component& value = slot->value;
        slots_.insert(Position(kOrder<Component>), std::move(slot));
        return value;
    }

    template<class Component>
    Component& FindOrAdd()
    {
        Component* const present = Find<Component>();
        return present != nullptr ? *present : Set(Component{});
    }

    /// In order of attachment.
    const std::vector<std::unique_ptr<Slot>>& Filled() const noexcept { return slots_; }

private:
    template<class Component>
    static constexpr std::size_t kOrder = []
    {
        constexpr std::size_t order = Detail::Slots::IndexOf<Component>();
        static_assert(order < Detail::Slots::kSize, "the component has no place in the order of attachment");
        return order;
    }();

    template<class Component>
    class TypedSlot : public Slot
    {
    public:
        explicit TypedSlot(Component component)
            : Slot(kOrder<Component>, Reflection::TypeIdOf<Component>()), value(std::move(component))
        {
        }
        void Attach(Registry& registry, Entity entity) override
        {
            registry.Add<Component>(entity, std::move(value));
        }

        Component value;
    };

    std::vector<std::unique_ptr<Slot>>::iterator Position(std::size_t order)
    {
        return std::find_if(slots_.begin(), slots_.end(),
                            [=](const auto& slot) { return slot->Order() >= order; });
    }

    std::vector<std::unique_ptr<Slot>> slots_;
};

/// The scripts that positional records have given an entity.
struct PendingScripts
{
    bool seen = false; // a record of scripts was there, even if it gave none
    bool open = false; // the last script still takes fields
    std::vector<ScriptAttachment> scripts;
};

/// One entity between its `entity` line and the end of the file.
struct PendingEntity
{
    PendingEntity(const ComponentRecordTable& table, const ComponentLoadContext& context)
        : recordStage(table, context)
    {
    }

    Core::Guid guid;
    std::string name;
    std::optional<Core::Guid> parentGuid;
    Transform transform;
    EntityRecordStage recordStage;
    PendingComponents components;
    PendingScripts scripts;
    bool clothSeen = false; // a `cloth` line, not one of its details

    /// Notes the name of a schema record, or the word `parent`; false when it was there already.
    bool AddNamedRecord(std::string_view recordName)
    {
        if (!namedRecords_)
        {
            namedRecords_ = std::make_unique<std::set<std::string, std::less<>>>();
        }
        return namedRecords_->emplace(recordName).second;
    }
    bool HasNamedRecord(std::string_view recordName) const
    {
        return namedRecords_ && namedRecords_->contains(recordName);
    }

private:
    std::unique_ptr<std::set<std::string, std::less<>>> namedRecords_;
};

} // namespace Vornu::Scene::Legacy
