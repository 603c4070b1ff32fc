#include "engine/scene/entities/Storage.h"

#include <algorithm>

namespace Vornu::Scene
{

IStorage::IStorage(const IStorage&) = default;
IStorage::~IStorage() = default;

void IStorage::Append(Entity entity)
{
    const std::uint32_t index = EntityIndex(entity);
    const std::size_t page = index >> kPageBits;
    if (page >= pages_.size())
    {
        pages_.resize(page + 1);
    }
    if (pages_[page].empty())
    {
        pages_[page].resize(kPageSize, 0);
    }
    entities_.push_back(entity);
    pages_[page][index & (kPageSize - 1)] = static_cast<std::uint32_t>(entities_.size());
    ++revision_;
}

void IStorage::SwapRemove(std::size_t position)
{
    const Entity removed = entities_[position];
    const Entity moved = entities_.back();
    entities_[position] = moved;
    entities_.pop_back();
    const std::uint32_t movedIndex = EntityIndex(moved);
    pages_[movedIndex >> kPageBits][movedIndex & (kPageSize - 1)] = static_cast<std::uint32_t>(position + 1);
    // Last, so that it also holds when the removed entity is the one that stood at the end.
    const std::uint32_t removedIndex = EntityIndex(removed);
    pages_[removedIndex >> kPageBits][removedIndex & (kPageSize - 1)] = 0;
    ++revision_;
}

void IStorage::RemoveEntities() noexcept
{
    revision_ += entities_.size();
    entities_.clear();
    for (std::vector<std::uint32_t>& page : pages_)
    {
        std::fill(page.begin(), page.end(), 0u);
    }
}

} // namespace Vornu::Scene
