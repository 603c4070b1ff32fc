#pragma once

#include "engine/core/Guid.h"
#include "engine/core/OrderedMap.h"
#include "engine/scene/entities/ComponentTypeIndex.h"
#include "engine/scene/entities/Entity.h"
#include "engine/scene/entities/GuidIndex.h"
#include "engine/scene/entities/Storage.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace Vornu::Scene
{

class CommandBuffer;
class PreservedRecordSet;

enum class EntityState : std::uint8_t
{
    Free = 0,
    Reserved = 1,
    Alive = 2,
};

struct EntitySlot
{
    std::uint32_t generation = 0;      // counts reuses
    std::uint32_t generationFloor = 0; // lowest generation the slot may take at its next release
    EntityState state = EntityState::Free;
};

/// The entity-component store that every scene is built on: hands out entity handles with a generation check,
/// keeps one storage per component type, the index from GUID to entity, and the records of unknown component
/// types that a load kept.
///
/// Operations on handles that aren't valid are silent. A handle carries 12 bits of its slot's generation, so
/// it comes back to life after 4096 reuses of the slot. Single-threaded. Every operation on one entity takes
/// amortised constant time unless it says otherwise.
class Registry
{
public:
    /// Released indices that are held back before the oldest one is reused.
    static constexpr std::size_t kHeldBackIndices = 1024;
    /// Slots including slot 0, which is never handed out.
    static constexpr std::size_t kMaximumSlots = std::size_t{kEntityIndexMask} + 1;

    Registry();
    ~Registry();
    Registry(const Registry&) = delete;
    Registry& operator=(const Registry&) = delete;
    /// Leaves `other` as after construction. References to its storages and its command buffer stay good.
    Registry(Registry&& other) noexcept;
    Registry& operator=(Registry&& other) noexcept;

    static constexpr Entity MakeHandle(std::uint32_t index, std::uint32_t generation) noexcept
    {
        return (generation << kEntityIndexBits) | (index & kEntityIndexMask);
    }

    bool IsValid(Entity entity) const noexcept
    {
        const std::uint32_t index = EntityIndex(entity);
        return index != 0 && index < slots_.size() && slots_[index].state == EntityState::Alive &&
               (slots_[index].generation & kEntityGenerationMask) == EntityGeneration(entity);
    }

    /// Throws `std::length_error` when every index is taken, as does ReserveEntity().
    Entity CreateEntity();

    /// Takes a handle that isn't alive until CommitReservedEntity().
    Entity ReserveEntity();
    void CommitReservedEntity(Entity entity);

    void DestroyEntity(Entity entity);

    /// Frees the slot of a reserved index and nothing more. An index that is out of range or free is ignored.
    void ReleaseIndex(std::uint32_t index);

    /// Brings a destroyed entity back under its old handle, without components, at `position` of the alive
    /// list or at its end. Returns false when the slot is in use or the handle is newer than the slot. Takes
    /// time in proportion to the alive entities when `position` isn't the end.
    bool RestoreEntity(Entity entity, std::uint64_t position);

    /// Makes room for `entityCount` entities in all.
    void Reserve(std::size_t entityCount);

    /// Every alive entity in order of becoming alive. The reference and its content hold until the next
    /// change of the registry's entities.
    const std::vector<Entity>& AliveEntities() const;
    std::size_t AliveCount() const noexcept { return aliveEntities_.size() - deadAlive_; }

    /// Slots that were ever used, slot 0 included: every entity's index is below.
    std::size_t SlotCount() const noexcept { return slots_.size(); }

    /// Rises at each creation, commit, restoration and destruction of an entity, at each first Add and each
    /// Remove of a component, and at Clear. It starts at 1.
    std::uint64_t Revision() const noexcept { return revision_; }

    /// Sets the component of `entity`. Overwriting one that is there changes no revision.
    template<class T>
    T& Add(Entity entity, T value = T{});

    template<class T>
    bool Has(Entity entity) const
    {
        const Storage<T>* storage = StorageOf<T>();
        return storage != nullptr && storage->Contains(entity);
    }

    /// The component or null. Never creates a storage.
    template<class T>
    T* TryGet(Entity entity)
    {
        return const_cast<T*>(std::as_const(*this).TryGet<T>(entity));
    }

    template<class T>
    const T* TryGet(Entity entity) const
    {
        const Storage<T>* storage = StorageOf<T>();
        return storage != nullptr ? storage->TryGet(entity) : nullptr;
    }

    /// Creates the storage when it is missing. Throws `std::out_of_range` when the entity has no T.
    template<class T>
    T& Get(Entity entity)
    {
        T* component = StorageOf<T>().TryGet(entity);
        if (component == nullptr)
        {
            ThrowMissingComponent();
        }
        return *component;
    }

    /// Throws `std::runtime_error` when the storage is missing, `std::out_of_range` when the entity has no T.
    template<class T>
    const T& Get(Entity entity) const
    {
        const Storage<T>* storage = StorageOf<T>();
        if (storage == nullptr)
        {
            ThrowMissingStorage();
        }
        const T* component = storage->TryGet(entity);
        if (component == nullptr)
        {
            ThrowMissingComponent();
        }
        return *component;
    }

    template<class T>
    void Remove(Entity entity)
    {
        RemoveFrom(FindStorage(ComponentTypeIndex<T>()), entity);
    }

    /// The storage of T, created when it is missing.
    template<class T>
    Storage<T>& StorageOf();

    /// The storage of T, or null when it is missing.
    template<class T>
    const Storage<T>* StorageOf() const
    {
        return static_cast<const Storage<T>*>(FindStorage(ComponentTypeIndex<T>()));
    }

    /// The storage of a component type index, or null.
    IStorage* FindStorage(std::size_t typeIndex) noexcept
    {
        return typeIndex < storages_.size() ? storages_[typeIndex].get() : nullptr;
    }
    const IStorage* FindStorage(std::size_t typeIndex) const noexcept
    {
        return typeIndex < storages_.size() ? storages_[typeIndex].get() : nullptr;
    }

    /// The registry's own command buffer, bound to it.
    CommandBuffer& Defer();
    bool HasPendingCommands() const noexcept;

    /// Plays the command buffer back until no command records another one. When a command throws, the
    /// commands behind it in that pass are lost, and those that the pass recorded stay queued.
    void FlushCommands();

    /// The first alive entity that has this GUID now, or the null handle.
    Entity FindEntityByGuid(const Core::Guid& guid) const;

    /// Add or remove one pair of the GUID index. The storage of EntityGuidComponent keeps the index current
    /// by itself, save for components that are written in place. Null GUIDs aren't listed.
    void IndexGuid(Entity entity, const Core::Guid& guid);
    void UnindexGuid(Entity entity, const Core::Guid& guid);

    /// The records of unknown component types that belong to an entity; they are dropped with it.
    std::vector<Entity> PreservedEntities() const;
    std::shared_ptr<const PreservedRecordSet> PreservedRecords(Entity entity) const;
    /// An empty pointer removes the entry.
    void SetPreservedRecords(Entity entity, std::shared_ptr<const PreservedRecordSet> records);

    /// Destroys every entity, frees reserved slots and drops pending commands. Storages and generations stay.
    void Clear();

    /// Makes every handle of `other` invalid here, so that a scene that replaces another one can't be reached
    /// through the old one's handles.
    void InheritGenerations(const Registry& other);

private:
    /// First-in first-out queue of released indices; an index taken out of the middle leaves a 0.
    struct FreeIndexQueue
    {
        std::vector<std::uint32_t> indices;
        std::size_t head = 0;
        std::size_t count = 0;
    };

    void Swap(Registry& other) noexcept;
    std::uint32_t AllocateIndex();
    std::uint32_t AppendSlot();
    void ReleaseSlot(std::uint32_t index);
    void EnqueueFree(std::uint32_t index);
    std::uint32_t DequeueFree();
    void RemoveFree(std::uint32_t index);
    void AppendAlive(Entity entity);
    void RemoveAlive(Entity entity);
    void CompactAlive() const;
    void RemoveFrom(IStorage* storage, Entity entity);
    void PutStorage(std::size_t typeIndex, std::unique_ptr<IStorage> storage);
    [[noreturn]] static void ThrowMissingStorage();
    [[noreturn]] static void ThrowMissingComponent();

    std::vector<EntitySlot> slots_;
    // Where each index stands: an alive one in aliveEntities_, a free one in the free queue. Only a hint,
    // which is checked where it is used, so that insertions in the middle needn't renumber what follows.
    mutable std::vector<std::uint32_t> places_;
    FreeIndexQueue freeIndices_;
    mutable std::vector<Entity> aliveEntities_; // 0 where an entity was destroyed, until the next reader
    mutable std::size_t deadAlive_ = 0;
    std::vector<std::unique_ptr<IStorage>> storages_; // by component type index; may hold null
    GuidIndex guidIndex_;
    std::unique_ptr<CommandBuffer> commandBuffer_; // made at first use
    std::uint64_t revision_ = 1;
    Core::OrderedMap<Entity, std::shared_ptr<const PreservedRecordSet>, EntityHash> preservedRecords_;
};

template<class T>
Storage<T>& Registry::StorageOf()
{
    const std::size_t typeIndex = ComponentTypeIndex<T>();
    IStorage* storage = FindStorage(typeIndex);
    if (storage == nullptr)
    {
        PutStorage(typeIndex, std::make_unique<Storage<T>>());
        storage = FindStorage(typeIndex);
    }
    return static_cast<Storage<T>&>(*storage);
}

template<class T>
T& Registry::Add(Entity entity, T value)
{
    Storage<T>& storage = StorageOf<T>();
    T* component = storage.TryGet(entity);
    if (component != nullptr)
    {
        if constexpr (std::is_same_v<T, EntityGuidComponent>)
        {
            UnindexGuid(entity, component->guid);
        }
        *component = std::move(value);
    }
    else
    {
        component = &storage.Insert(*this, entity, std::move(value));
        ++revision_;
    }
    if constexpr (std::is_same_v<T, EntityGuidComponent>)
    {
        IndexGuid(entity, component->guid);
    }
    return *component;
}

} // namespace Vornu::Scene
