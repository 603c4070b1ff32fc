#include "engine/scene/entities/GuidIndex.h"

#include <algorithm>
#include <bit>

namespace Vornu::Scene
{
namespace
{

constexpr std::size_t kInitialBuckets = 8;
constexpr std::size_t kBucketsPerPair = 2; // at least; a pair that shares its bucket costs a cache miss

} // namespace

void GuidIndex::Insert(const Core::Guid& guid, Entity entity)
{
    if (entity == kNullEntity)
    {
        return;
    }
    if ((size_ + gaps_) * kBucketsPerPair >= buckets_.size())
    {
        Rehash(std::max(kInitialBuckets, gaps_ > size_ ? buckets_.size() : buckets_.size() * 2));
    }
    const std::uint64_t hash = HashOf(guid);
    Bucket& bucket = BucketOf(hash);
    std::uint32_t first = kNoNode; // of the run of the key
    if ((bucket.filter & FilterBit(hash)) != 0)
    {
        first = FirstOf(bucket, guid);
    }
    ++size_;
    if (first != kNoNode && nodes_[first].entity == kNullEntity)
    {
        --gaps_;
        return Give(first, entity);
    }
    const std::uint32_t added = TakeNode(guid);
    if (first == kNoNode)
    {
        nodes_[added].next = bucket.first;
        nodes_[added].run = added;
        bucket.first = added;
    }
    else
    {
        AppendToRun(first, added);
    }
    bucket.filter |= FilterBit(hash);
    Give(added, entity);
}

/// Makes the node the latest pair of the entity.
void GuidIndex::Give(std::uint32_t node, Entity entity)
{
    const std::uint32_t index = EntityIndex(entity);
    if (index >= latestNodes_.size())
    {
        latestNodes_.resize(index + 1, kNoNode);
    }
    nodes_[node].older = LatestOf(entity);
    nodes_[node].entity = entity;
    latestNodes_[index] = node;
}

/// The latest pair of the entity, or of one that had its index before. What stands in the list is from before
/// the index was cleared where its node belongs to nobody or to another by now.
std::uint32_t GuidIndex::LatestOf(Entity entity) const noexcept
{
    const std::uint32_t index = EntityIndex(entity);
    const std::uint32_t latest = index < latestNodes_.size() ? latestNodes_[index] : kNoNode;
    return latest < nodes_.size() && EntityIndex(nodes_[latest].entity) == index ? latest : kNoNode;
}

bool GuidIndex::Erase(const Core::Guid& guid, Entity entity)
{
    const std::uint32_t node = entity != kNullEntity ? TakePair(guid, entity) : kNoNode;
    if (node == kNoNode)
    {
        return false;
    }
    --size_;
    if (nodes_[node].run == node)
    {
        nodes_[node].entity = kNullEntity;
        ++gaps_;
        return true;
    }
    RemoveFromRun(node);
    FreeNode(node);
    return true;
}

/// Takes the first pair of this key and entity out of the list of the entity's pairs.
std::uint32_t GuidIndex::TakePair(const Core::Guid& guid, Entity entity) noexcept
{
    std::uint32_t* found = nullptr;
    if (LatestOf(entity) != kNoNode)
    {
        for (std::uint32_t* link = &latestNodes_[EntityIndex(entity)]; *link != kNoNode;
             link = &nodes_[*link].older)
        {
            found = nodes_[*link].entity == entity && nodes_[*link].guid == guid ? link : found;
        }
    }
    if (found == nullptr)
    {
        return kNoNode;
    }
    const std::uint32_t node = *found;
    *found = nodes_[node].older;
    return node;
}

void GuidIndex::AppendToRun(std::uint32_t first, std::uint32_t added) noexcept
{
    const std::uint32_t last = LastOf(first);
    nodes_[added].next = nodes_[last].next;
    nodes_[added].run = last | kBehind;
    nodes_[last].next = added;
    nodes_[first].run = added;
}

/// For a node that isn't the only one of its run.
void GuidIndex::RemoveFromRun(std::uint32_t node) noexcept
{
    const std::uint32_t following = Next(node);
    const std::uint32_t run = nodes_[node].run;
    Bucket& bucket = BucketOf(HashOf(nodes_[node].guid));
    if (IsFirst(node))
    {
        std::uint32_t* link = &bucket.first;
        while (*link != node)
        {
            link = &nodes_[LastOf(*link)].next;
        }
        *link = following;
        nodes_[following].run = run;
        return;
    }
    const std::uint32_t before = run & ~kBehind;
    if (following != kNoNode)
    {
        nodes_[following].run = run;
    }
    else
    {
        nodes_[FirstOf(bucket, nodes_[node].guid)].run = before;
    }
    nodes_[before].next = nodes_[node].next;
}

std::uint32_t GuidIndex::First(const Core::Guid& guid) const noexcept
{
    if (size_ == 0)
    {
        return kNoNode;
    }
    const std::uint32_t first = FirstOf(buckets_[HashOf(guid) & (buckets_.size() - 1)], guid);
    return first != kNoNode && nodes_[first].entity == kNullEntity ? kNoNode : first;
}

std::uint32_t GuidIndex::FirstOf(const Bucket& bucket, const Core::Guid& guid) const noexcept
{
    std::uint32_t node = bucket.first;
    while (node != kNoNode && !(nodes_[node].guid == guid))
    {
        node = nodes_[LastOf(node)].next;
    }
    return node;
}

std::uint32_t GuidIndex::Next(std::uint32_t node) const noexcept
{
    const std::uint32_t next = nodes_[node].next;
    return next != kNoNode && nodes_[next].guid == nodes_[node].guid ? next : kNoNode;
}

void GuidIndex::Clear() noexcept
{
    std::fill(buckets_.begin(), buckets_.end(), Bucket{});
    nodes_.clear(); // the latest pairs stay: they are checked
    freeNode_ = kNoNode;
    size_ = 0;
    gaps_ = 0;
}

void GuidIndex::Reserve(std::size_t count)
{
    nodes_.reserve(count);
    latestNodes_.reserve(count + 1);
    if (count * kBucketsPerPair > buckets_.size())
    {
        Rehash(std::bit_ceil(std::max(count * kBucketsPerPair, kInitialBuckets)));
    }
}

/// Leaves the gaps out.
void GuidIndex::Rehash(std::size_t bucketCount)
{
    std::vector<Bucket> old(bucketCount);
    old.swap(buckets_);
    std::vector<std::uint32_t> chain;
    for (const Bucket& bucket : old)
    {
        chain.clear();
        for (std::uint32_t node = bucket.first; node != kNoNode; node = nodes_[node].next)
        {
            chain.push_back(node);
        }
        // Pushing the chain's nodes to the front from its end on keeps their order in every new bucket.
        for (std::size_t i = chain.size(); i > 0; --i)
        {
            Node& node = nodes_[chain[i - 1]];
            if (node.entity == kNullEntity)
            {
                FreeNode(chain[i - 1]);
                continue;
            }
            const std::uint64_t hash = HashOf(node.guid);
            Bucket& target = BucketOf(hash);
            node.next = target.first;
            target.first = chain[i - 1];
            target.filter |= FilterBit(hash);
        }
    }
    gaps_ = 0;
}

std::uint32_t GuidIndex::TakeNode(const Core::Guid& guid)
{
    if (freeNode_ == kNoNode)
    {
        nodes_.push_back({guid});
        return static_cast<std::uint32_t>(nodes_.size() - 1);
    }
    const std::uint32_t node = freeNode_;
    freeNode_ = nodes_[node].next;
    nodes_[node] = {guid};
    return node;
}

void GuidIndex::FreeNode(std::uint32_t node) noexcept
{
    nodes_[node].entity = kNullEntity;
    nodes_[node].next = freeNode_;
    freeNode_ = node;
}

} // namespace Vornu::Scene
