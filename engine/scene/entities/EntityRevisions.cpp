#include "engine/scene/entities/EntityRevisions.h"

#include <algorithm>

namespace Vornu::Scene
{
namespace
{

constexpr std::size_t kMinimumDeadToCompact = 64;

} // namespace

void EntityRevisions::Set(Entity entity, std::uint64_t revision)
{
    if (const std::uint32_t place = PlaceOf(entity); place != 0)
    {
        entries_[place - 1].revision = revision;
        return;
    }
    const std::uint32_t index = EntityIndex(entity);
    if (index >= firstPlaces_.size())
    {
        firstPlaces_.resize(index + std::size_t{1}, 0);
    }
    entries_.push_back({entity, firstPlaces_[index], revision});
    firstPlaces_[index] = static_cast<std::uint32_t>(entries_.size());
}

void EntityRevisions::Erase(Entity entity)
{
    const std::uint32_t place = PlaceOf(entity);
    if (place == 0)
    {
        return;
    }
    std::uint32_t* link = &firstPlaces_[EntityIndex(entity)];
    while (*link != place)
    {
        link = &entries_[*link - 1].next;
    }
    *link = entries_[place - 1].next;
    if (place == entries_.size())
    {
        entries_.pop_back();
        return;
    }
    entries_[place - 1] = {};
    ++deadCount_;
    if (deadCount_ >= kMinimumDeadToCompact && deadCount_ * 2 >= entries_.size())
    {
        Compact();
    }
}

std::vector<Entity> EntityRevisions::ChangedAfter(std::uint64_t revision) const
{
    std::vector<Entity> changed;
    for (const Entry& entry : entries_)
    {
        if (entry.revision > revision)
        {
            changed.push_back(entry.entity);
        }
    }
    return changed;
}

void EntityRevisions::Clear() noexcept
{
    for (const Entry& entry : entries_)
    {
        firstPlaces_[EntityIndex(entry.entity)] = 0;
    }
    entries_.clear();
    deadCount_ = 0;
}

void EntityRevisions::Reserve(std::size_t count)
{
    entries_.reserve(count);
    firstPlaces_.reserve(count + 1);
}

void EntityRevisions::Compact()
{
    std::erase_if(entries_, [](const Entry& entry) { return entry.revision == 0; });
    for (const Entry& entry : entries_)
    {
        firstPlaces_[EntityIndex(entry.entity)] = 0;
    }
    for (std::size_t i = 0; i < entries_.size(); ++i)
    {
        std::uint32_t& first = firstPlaces_[EntityIndex(entries_[i].entity)];
        entries_[i].next = first;
        first = static_cast<std::uint32_t>(i + 1);
    }
    deadCount_ = 0;
}

} // namespace Vornu::Scene
