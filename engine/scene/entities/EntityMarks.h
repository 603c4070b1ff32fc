#pragma once

#include "engine/scene/entities/Entity.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace Vornu::Scene
{

/// Scratch table of one mark per entity index, for walks over a hierarchy. A new round forgets all marks in
/// constant time; the table only grows.
class EntityMarks
{
public:
    enum class Mark : std::uint8_t
    {
        None,
        Yes,
        No,
    };

    /// Starts a round over entities whose indices are below `slotCount`.
    void Begin(std::size_t slotCount)
    {
        if (round_ > std::numeric_limits<std::uint32_t>::max() - 4)
        {
            stamps_.clear();
            round_ = 0;
        }
        round_ += 2;
        if (stamps_.size() < slotCount)
        {
            stamps_.resize(slotCount, 0);
        }
    }

    Mark Get(Entity entity) const
    {
        const std::uint32_t stamp = stamps_[EntityIndex(entity)];
        return stamp == round_ ? Mark::Yes : stamp == round_ + 1 ? Mark::No : Mark::None;
    }

    void Set(Entity entity, Mark mark)
    {
        stamps_[EntityIndex(entity)] = mark == Mark::None ? 0 : round_ + (mark == Mark::No ? 1 : 0);
    }

private:
    std::uint32_t round_ = 0; // even; a stamp is the round for Yes and one more for No
    std::vector<std::uint32_t> stamps_;
};

} // namespace Vornu::Scene
