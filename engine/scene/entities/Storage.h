#pragma once

#include "engine/scene/entities/Entity.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

namespace Vornu::Core
{
struct Guid;
}

namespace Vornu::Scene
{

class Registry;
struct EntityGuidComponent;

/// Takes the pair out of the registry's GUID index, which follows its EntityGuidComponent storage.
void UnindexStoredGuid(Registry& registry, Entity entity, const Core::Guid& guid);

/// The components of one type without their type: which entities have one, in dense order.
///
/// A paged sparse set. The dense arrays are in insertion order, changed by swap-removal. Used from the thread
/// of its registry only.
class IStorage
{
public:
    virtual ~IStorage();

    /// Whether this very handle has a component; a handle of another generation has none.
    bool Contains(Entity entity) const noexcept
    {
        const std::uint32_t place = PlaceOf(entity);
        return place != 0 && entities_[place - 1] == entity;
    }

    /// The dense entity array. Appends while walking by index are seen when the size is read anew.
    const std::vector<Entity>& Entities() const noexcept { return entities_; }

    /// Removes the component of `entity`; does nothing when it has none. The last component takes its place.
    virtual void Remove(Registry& registry, Entity entity) = 0;

    /// Removes every component, for a registry whose GUID index is empty by then. Keeps the memory.
    virtual void Clear() = 0;

    /// A deep copy with the same revision. Throws `std::logic_error` when the component type can't be copied.
    virtual std::unique_ptr<IStorage> Clone() const = 0;

    /// Rises by one at every insertion and removal, not when a value is overwritten.
    std::uint64_t Revision() const noexcept { return revision_; }

    /// Sets the revision to one more than the larger of itself and `other`.
    void PassRevision(std::uint64_t other) noexcept
    {
        revision_ = (revision_ > other ? revision_ : other) + 1;
    }

protected:
    IStorage() = default;
    IStorage(const IStorage&);
    IStorage& operator=(const IStorage&) = delete;

    /// Dense position + 1 of whatever generation of the index is stored, 0 when none is.
    std::uint32_t PlaceOf(Entity entity) const noexcept
    {
        const std::uint32_t index = EntityIndex(entity);
        const std::size_t page = index >> kPageBits;
        return page < pages_.size() && !pages_[page].empty() ? pages_[page][index & (kPageSize - 1)] : 0;
    }

    /// Appends `entity` to the dense array. Its index must be unoccupied.
    void Append(Entity entity);

    /// Takes the entity at `position` out of the dense array and puts the last one there.
    void SwapRemove(std::size_t position);

    /// The same for all.
    void RemoveEntities() noexcept;

    void ReserveEntities(std::size_t count) { entities_.reserve(count); }

private:
    static constexpr std::uint32_t kPageBits = 9;
    static constexpr std::uint32_t kPageSize = 1u << kPageBits;

    std::uint64_t revision_ = 0;
    std::vector<std::vector<std::uint32_t>> pages_; // made on first write; dense position + 1, 0 means absent
    std::vector<Entity> entities_;
};

/// The components of type T, parallel to Entities(). References to components don't survive an insertion into
/// or a removal from the storage. T must be move constructible and move assignable.
template<class T>
class Storage final : public IStorage
{
public:
    Storage() = default;

    T* TryGet(Entity entity) noexcept
    {
        const std::uint32_t place = PlaceOf(entity);
        return place != 0 && Entities()[place - 1] == entity ? &components_[place - 1] : nullptr;
    }

    const T* TryGet(Entity entity) const noexcept { return const_cast<Storage*>(this)->TryGet(entity); }

    /// In dense order, parallel to Entities().
    std::vector<T>& Components() noexcept { return components_; }
    const std::vector<T>& Components() const noexcept { return components_; }

    /// Adds a component to an entity that has none in this storage. A record of another generation of the
    /// same index is removed first. Go through Registry::Add, which keeps the registry's own books.
    T& Insert(Registry& registry, Entity entity, T value)
    {
        if (const std::uint32_t place = PlaceOf(entity); place != 0)
        {
            RemoveAt(registry, place - 1);
        }
        components_.push_back(std::move(value));
        Append(entity);
        return components_.back();
    }

    void Remove(Registry& registry, Entity entity) override
    {
        if (Contains(entity))
        {
            RemoveAt(registry, PlaceOf(entity) - 1);
        }
    }

    void Clear() override
    {
        components_.clear();
        RemoveEntities();
    }

    std::unique_ptr<IStorage> Clone() const override
    {
        if constexpr (std::is_copy_constructible_v<T>)
        {
            return std::unique_ptr<IStorage>(new Storage(*this));
        }
        else
        {
            throw std::logic_error("Component type cannot be copied.");
        }
    }

    void Reserve(std::size_t count)
    {
        ReserveEntities(count);
        components_.reserve(count);
    }

private:
    Storage(const Storage&) = default;

    void RemoveAt([[maybe_unused]] Registry& registry, std::size_t position)
    {
        if constexpr (std::is_same_v<T, EntityGuidComponent>)
        {
            UnindexStoredGuid(registry, Entities()[position], components_[position].guid);
        }
        if (position + 1 != components_.size())
        {
            components_[position] = std::move(components_.back());
        }
        components_.pop_back();
        SwapRemove(position);
    }

    std::vector<T> components_;
};

} // namespace Vornu::Scene
