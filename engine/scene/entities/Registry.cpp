#include "engine/scene/entities/Registry.h"

#include "engine/scene/entities/CommandBuffer.h"
#include "engine/scene/entities/CoreComponents.h"

#include <algorithm>
#include <stdexcept>

namespace Vornu::Scene
{

void UnindexStoredGuid(Registry& registry, Entity entity, const Core::Guid& guid)
{
    registry.UnindexGuid(entity, guid);
}

Registry::Registry() = default;
Registry::~Registry() = default;

Registry::Registry(Registry&& other) noexcept
{
    Swap(other);
}

Registry& Registry::operator=(Registry&& other) noexcept
{
    if (this != &other)
    {
        Registry taken(std::move(other));
        Swap(taken);
    }
    return *this;
}

void Registry::Swap(Registry& other) noexcept
{
    std::swap(slots_, other.slots_);
    std::swap(places_, other.places_);
    std::swap(freeIndices_, other.freeIndices_);
    std::swap(aliveEntities_, other.aliveEntities_);
    std::swap(deadAlive_, other.deadAlive_);
    std::swap(storages_, other.storages_);
    std::swap(guidIndex_, other.guidIndex_);
    std::swap(commandBuffer_, other.commandBuffer_);
    std::swap(revision_, other.revision_);
    std::swap(preservedRecords_, other.preservedRecords_);
    for (Registry* registry : {this, &other})
    {
        if (registry->commandBuffer_)
        {
            registry->commandBuffer_->Bind(registry);
        }
    }
}

Entity Registry::CreateEntity()
{
    const std::uint32_t index = AllocateIndex();
    slots_[index].state = EntityState::Alive;
    const Entity entity = MakeHandle(index, slots_[index].generation);
    AppendAlive(entity);
    ++revision_;
    return entity;
}

Entity Registry::ReserveEntity()
{
    const std::uint32_t index = AllocateIndex();
    slots_[index].state = EntityState::Reserved;
    return MakeHandle(index, slots_[index].generation);
}

void Registry::CommitReservedEntity(Entity entity)
{
    const std::uint32_t index = EntityIndex(entity);
    if (index == 0 || index >= slots_.size())
    {
        return;
    }
    EntitySlot& slot = slots_[index];
    if (slot.state == EntityState::Reserved && entity == MakeHandle(index, slot.generation))
    {
        slot.state = EntityState::Alive;
        AppendAlive(entity);
        ++revision_;
    }
}

void Registry::DestroyEntity(Entity entity)
{
    if (!IsValid(entity))
    {
        return;
    }
    for (const std::unique_ptr<IStorage>& storage : storages_)
    {
        if (storage && storage->Contains(entity))
        {
            storage->Remove(*this, entity);
        }
    }
    preservedRecords_.Erase(entity);
    RemoveAlive(entity);
    ReleaseSlot(EntityIndex(entity));
    ++revision_;
}

void Registry::ReleaseIndex(std::uint32_t index)
{
    if (index != 0 && index < slots_.size() && slots_[index].state != EntityState::Free)
    {
        ReleaseSlot(index);
    }
}

bool Registry::RestoreEntity(Entity entity, std::uint64_t position)
{
    const std::uint32_t index = EntityIndex(entity);
    if (index == 0 || index >= slots_.size() || slots_[index].state != EntityState::Free)
    {
        return false;
    }
    EntitySlot& slot = slots_[index];
    const std::uint32_t behind = (slot.generation - EntityGeneration(entity)) & kEntityGenerationMask;
    if (behind > slot.generation)
    {
        return false;
    }
    RemoveFree(index);
    slot.generationFloor = std::max(slot.generationFloor, slot.generation + (behind == 0 ? 1 : 0));
    slot.generation -= behind;
    slot.state = EntityState::Alive;
    if (position >= AliveCount())
    {
        AppendAlive(entity);
    }
    else
    {
        CompactAlive();
        aliveEntities_.insert(aliveEntities_.begin() + static_cast<std::ptrdiff_t>(position), entity);
        places_[index] = static_cast<std::uint32_t>(position);
    }
    ++revision_;
    return true;
}

void Registry::Reserve(std::size_t entityCount)
{
    const std::size_t slotCount = std::min(entityCount + 1, kMaximumSlots);
    slots_.reserve(slotCount);
    places_.reserve(slotCount);
    aliveEntities_.reserve(slotCount);
    guidIndex_.Reserve(entityCount);
}

const std::vector<Entity>& Registry::AliveEntities() const
{
    CompactAlive();
    return aliveEntities_;
}

CommandBuffer& Registry::Defer()
{
    if (!commandBuffer_)
    {
        commandBuffer_ = std::make_unique<CommandBuffer>();
    }
    commandBuffer_->Bind(this);
    return *commandBuffer_;
}

bool Registry::HasPendingCommands() const noexcept
{
    return commandBuffer_ && !commandBuffer_->Empty();
}

void Registry::FlushCommands()
{
    while (HasPendingCommands())
    {
        const std::vector<std::unique_ptr<ICommand>> commands = commandBuffer_->Take();
        for (const std::unique_ptr<ICommand>& command : commands)
        {
            command->Execute(*this);
        }
    }
}

Entity Registry::FindEntityByGuid(const Core::Guid& guid) const
{
    if (!guid.IsValid())
    {
        return kNullEntity;
    }
    for (std::uint32_t node = guidIndex_.First(guid); node != GuidIndex::kNoNode;
         node = guidIndex_.Next(node))
    {
        const Entity entity = guidIndex_.EntityAt(node);
        const EntityGuidComponent* component = TryGet<EntityGuidComponent>(entity);
        if (component != nullptr && component->guid == guid && IsValid(entity))
        {
            return entity;
        }
    }
    return kNullEntity;
}

void Registry::IndexGuid(Entity entity, const Core::Guid& guid)
{
    if (guid.IsValid())
    {
        guidIndex_.Insert(guid, entity);
    }
}

void Registry::UnindexGuid(Entity entity, const Core::Guid& guid)
{
    guidIndex_.Erase(guid, entity);
}

std::vector<Entity> Registry::PreservedEntities() const
{
    std::vector<Entity> entities;
    entities.reserve(preservedRecords_.Size());
    for (const auto& [entity, records] : preservedRecords_)
    {
        entities.push_back(entity);
    }
    return entities;
}

std::shared_ptr<const PreservedRecordSet> Registry::PreservedRecords(Entity entity) const
{
    const auto* records = preservedRecords_.Find(entity);
    return records != nullptr ? *records : nullptr;
}

void Registry::SetPreservedRecords(Entity entity, std::shared_ptr<const PreservedRecordSet> records)
{
    if (records)
    {
        preservedRecords_.InsertOrAssign(entity, std::move(records));
    }
    else
    {
        preservedRecords_.Erase(entity);
    }
}

void Registry::Clear()
{
    // What is left is as if the entities had been destroyed from the last to the first, but nothing is
    // searched.
    guidIndex_.Clear();
    preservedRecords_.Clear();
    for (const std::unique_ptr<IStorage>& storage : storages_)
    {
        if (storage)
        {
            storage->Clear();
        }
    }
    CompactAlive();
    revision_ += aliveEntities_.size();
    for (std::size_t i = aliveEntities_.size(); i > 0; --i)
    {
        ReleaseSlot(EntityIndex(aliveEntities_[i - 1]));
    }
    aliveEntities_.clear();
    if (commandBuffer_)
    {
        commandBuffer_->Clear();
    }
    for (std::uint32_t index = 1; index < slots_.size(); ++index)
    {
        if (slots_[index].state == EntityState::Reserved)
        {
            ReleaseSlot(index);
        }
    }
    ++revision_;
}

void Registry::InheritGenerations(const Registry& other)
{
    if (this == &other)
    {
        return;
    }
    if (slots_.empty())
    {
        AppendSlot();
    }
    for (std::uint32_t index = 1; index < other.slots_.size(); ++index)
    {
        const EntitySlot& theirs = other.slots_[index];
        const std::uint32_t inUse = theirs.state != EntityState::Free ? 1 : 0;
        const std::uint32_t generation = std::max(theirs.generation + inUse, theirs.generationFloor);
        if (index >= slots_.size())
        {
            AppendSlot();
            slots_[index].generation = generation;
            EnqueueFree(index);
        }
        else if (slots_[index].state != EntityState::Free)
        {
            slots_[index].generationFloor = std::max(slots_[index].generationFloor, generation);
        }
        else
        {
            slots_[index].generation = std::max(slots_[index].generation, generation);
        }
    }
    revision_ = std::max(revision_, other.revision_) + 1;
    for (std::size_t typeIndex = 0; typeIndex < storages_.size(); ++typeIndex)
    {
        if (storages_[typeIndex])
        {
            const IStorage* theirs = other.FindStorage(typeIndex);
            storages_[typeIndex]->PassRevision(theirs != nullptr ? theirs->Revision() : 0);
        }
    }
}

std::uint32_t Registry::AllocateIndex()
{
    if (slots_.empty())
    {
        AppendSlot();
    }
    const bool full = slots_.size() >= kMaximumSlots;
    if (freeIndices_.count > kHeldBackIndices || (full && freeIndices_.count != 0))
    {
        return DequeueFree();
    }
    if (full)
    {
        throw std::length_error("Entity index space exhausted.");
    }
    return AppendSlot();
}

std::uint32_t Registry::AppendSlot()
{
    places_.push_back(0);
    slots_.emplace_back();
    return static_cast<std::uint32_t>(slots_.size() - 1);
}

void Registry::ReleaseSlot(std::uint32_t index)
{
    EntitySlot& slot = slots_[index];
    slot.state = EntityState::Free;
    slot.generation = std::max(slot.generation + 1, slot.generationFloor);
    EnqueueFree(index);
}

void Registry::EnqueueFree(std::uint32_t index)
{
    FreeIndexQueue& queue = freeIndices_;
    // Dropping what is used up only when it is the larger part keeps the cost of an entry constant.
    const std::size_t used = queue.indices.size() - queue.count;
    if (used > kHeldBackIndices && used * 2 > queue.indices.size())
    {
        queue.indices.erase(queue.indices.begin(),
                            queue.indices.begin() + static_cast<std::ptrdiff_t>(queue.head));
        std::erase(queue.indices, 0u);
        queue.head = 0;
        for (std::size_t i = 0; i < queue.indices.size(); ++i)
        {
            places_[queue.indices[i]] = static_cast<std::uint32_t>(i);
        }
    }
    places_[index] = static_cast<std::uint32_t>(queue.indices.size());
    queue.indices.push_back(index);
    ++queue.count;
}

std::uint32_t Registry::DequeueFree()
{
    FreeIndexQueue& queue = freeIndices_;
    while (queue.indices[queue.head] == 0)
    {
        ++queue.head;
    }
    --queue.count;
    return queue.indices[queue.head++];
}

void Registry::RemoveFree(std::uint32_t index)
{
    FreeIndexQueue& queue = freeIndices_;
    std::size_t position = places_[index];
    if (position < queue.head || position >= queue.indices.size() || queue.indices[position] != index)
    {
        const auto first = queue.indices.begin() + static_cast<std::ptrdiff_t>(queue.head);
        const auto found = std::find(first, queue.indices.end(), index);
        if (found == queue.indices.end())
        {
            return;
        }
        position = static_cast<std::size_t>(found - queue.indices.begin());
    }
    queue.indices[position] = 0;
    --queue.count;
}

void Registry::AppendAlive(Entity entity)
{
    places_[EntityIndex(entity)] = static_cast<std::uint32_t>(aliveEntities_.size());
    aliveEntities_.push_back(entity);
}

void Registry::RemoveAlive(Entity entity)
{
    const std::uint32_t index = EntityIndex(entity);
    if (places_[index] >= aliveEntities_.size() || aliveEntities_[places_[index]] != entity)
    {
        // An insertion in the middle moved the entities behind it: number them all anew.
        for (std::size_t i = 0; i < aliveEntities_.size(); ++i)
        {
            if (IsValid(aliveEntities_[i]))
            {
                places_[EntityIndex(aliveEntities_[i])] = static_cast<std::uint32_t>(i);
            }
        }
    }
    const std::size_t position = places_[index];
    if (position + 1 == aliveEntities_.size())
    {
        aliveEntities_.pop_back();
        return;
    }
    aliveEntities_[position] = kNullEntity;
    ++deadAlive_;
    if (deadAlive_ > kHeldBackIndices && deadAlive_ * 2 > aliveEntities_.size())
    {
        CompactAlive();
    }
}

void Registry::CompactAlive() const
{
    if (deadAlive_ == 0)
    {
        return;
    }
    std::size_t kept = 0;
    for (const Entity entity : aliveEntities_)
    {
        if (entity != kNullEntity)
        {
            if (IsValid(entity))
            {
                places_[EntityIndex(entity)] = static_cast<std::uint32_t>(kept);
            }
            aliveEntities_[kept++] = entity;
        }
    }
    aliveEntities_.resize(kept);
    deadAlive_ = 0;
}

void Registry::RemoveFrom(IStorage* storage, Entity entity)
{
    if (storage != nullptr && storage->Contains(entity))
    {
        storage->Remove(*this, entity);
        ++revision_;
    }
}

void Registry::PutStorage(std::size_t typeIndex, std::unique_ptr<IStorage> storage)
{
    if (typeIndex >= storages_.size())
    {
        storages_.resize(typeIndex + 1);
    }
    storages_[typeIndex] = std::move(storage);
}

void Registry::ThrowMissingStorage()
{
    throw std::runtime_error("Component storage does not exist.");
}

void Registry::ThrowMissingComponent()
{
    throw std::out_of_range("Entity does not have the requested component.");
}

} // namespace Vornu::Scene
