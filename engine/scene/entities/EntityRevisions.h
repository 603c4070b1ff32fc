#pragma once

#include "engine/scene/entities/Entity.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vornu::Scene
{

/// Map from entity handle to the revision of its last change, walked in the order in which its keys were
/// first inserted.
///
/// Finds a handle through a table by entity index, so that entities of neighbouring indices lie together.
/// Several generations of an index may be listed at once. Every operation but ChangedAfter takes amortised
/// constant time.
class EntityRevisions
{
public:
    /// The revision of `entity`, or 0 when it isn't listed.
    std::uint64_t RevisionOf(Entity entity) const noexcept
    {
        const std::uint32_t place = PlaceOf(entity);
        return place != 0 ? entries_[place - 1].revision : 0;
    }

    /// `revision` isn't 0. A listed entity keeps its place in the order.
    void Set(Entity entity, std::uint64_t revision);

    void Erase(Entity entity);

    /// The entities whose revision is above `revision`, in order.
    std::vector<Entity> ChangedAfter(std::uint64_t revision) const;

    /// Keeps the memory.
    void Clear() noexcept;

    /// Makes room for `count` entities in all.
    void Reserve(std::size_t count);

private:
    struct Entry
    {
        Entity entity = kNullEntity;
        std::uint32_t next = 0;     // place of another generation of the same index
        std::uint64_t revision = 0; // 0 where an entity was erased
    };

    /// Position in `entries_` + 1, or 0.
    std::uint32_t PlaceOf(Entity entity) const noexcept
    {
        const std::uint32_t index = EntityIndex(entity);
        std::uint32_t place = index < firstPlaces_.size() ? firstPlaces_[index] : 0;
        while (place != 0 && entries_[place - 1].entity != entity)
        {
            place = entries_[place - 1].next;
        }
        return place;
    }

    void Compact();

    std::vector<Entry> entries_;
    std::vector<std::uint32_t> firstPlaces_; // by entity index
    std::size_t deadCount_ = 0;
};

} // namespace Vornu::Scene
