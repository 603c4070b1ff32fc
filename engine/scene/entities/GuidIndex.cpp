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
    if ((size_ + gaps_) * kBucketsPerPair >= buckets_.size())
    {
        Rehash(std::max(kInitialBuckets, gaps_ > size_ ? buckets_.size() : buckets_.size() * 2));
    }
    const std::uint64_t hash = guid.Hash();
    Bucket& bucket = BucketOf(hash);
    std::uint32_t first = kNoNode; // of the run of the key
    if ((bucket.filter & FilterBit(hash)) != 0)
    {
        first = FirstOf(bucket, guid);
    }
    if (first != kNoNode && nodes_[first].gap)
    {
        nodes_[first].entity = entity;
        nodes_[first].gap = false;
        Remember(entity, first);
        --gaps_;
        ++size_;
        return;
    }
    const std::uint32_t added = TakeNode(guid, entity);
    if (first == kNoNode)
    {
        nodes_[added].next = bucket.first;
        nodes_[added].last = added;
        bucket.first = added;
    }
    else
    {
        std::uint32_t& last = nodes_[first].last;
        nodes_[added].next = nodes_[last].next;
        nodes_[last].next = added;
        last = added;
    }
    bucket.filter |= FilterBit(hash);
    Remember(entity, added);
    ++size_;
}

void GuidIndex::Remember(Entity entity, std::uint32_t node)
{
    const std::uint32_t index = EntityIndex(entity);
    if (index >= latestNodes_.size())
    {
        latestNodes_.resize(index + 1, kNoNode);
    }
    latestNodes_[index] = node;
}

bool GuidIndex::Erase(const Core::Guid& guid, Entity entity)
{
    if (size_ == 0)
    {
        return false;
    }
    if (EraseOnlyPair(guid, entity))
    {
        return true;
    }
    Bucket& bucket = BucketOf(guid.Hash());
    const std::uint32_t first = FirstOf(bucket, guid);
    std::uint32_t before = kNoNode; // in the run
    for (std::uint32_t node = first; node != kNoNode; before = node, node = Next(node))
    {
        if (nodes_[node].entity == entity && !nodes_[node].gap)
        {
            Unlink(bucket, first, before, node);
            return true;
        }
    }
    return false;
}

bool GuidIndex::EraseOnlyPair(const Core::Guid& guid, Entity entity)
{
    const std::uint32_t index = EntityIndex(entity);
    const std::uint32_t latest = index < latestNodes_.size() ? latestNodes_[index] : kNoNode;
    if (latest >= nodes_.size())
    {
        return false;
    }
    Node& node = nodes_[latest];
    if (node.gap || node.last != latest || node.entity != entity || !(node.guid == guid))
    {
        return false;
    }
    node.gap = true;
    ++gaps_;
    --size_;
    return true;
}

void GuidIndex::Unlink(Bucket& bucket, std::uint32_t first, std::uint32_t before, std::uint32_t node)
{
    const std::uint32_t next = nodes_[node].next;
    if (node != first)
    {
        nodes_[before].next = next;
        if (nodes_[first].last == node)
        {
            nodes_[first].last = before;
        }
    }
    else
    {
        if (nodes_[first].last != first)
        {
            nodes_[next].last = nodes_[first].last;
        }
        std::uint32_t* link = &bucket.first;
        while (*link != node)
        {
            link = &nodes_[nodes_[*link].last].next;
        }
        *link = next;
    }
    FreeNode(node);
    --size_;
    if (bucket.first == kNoNode)
    {
        bucket.filter = 0;
    }
}

std::uint32_t GuidIndex::First(const Core::Guid& guid) const noexcept
{
    if (size_ == 0)
    {
        return kNoNode;
    }
    const std::uint32_t first = FirstOf(buckets_[guid.Hash() & (buckets_.size() - 1)], guid);
    return first != kNoNode && nodes_[first].gap ? kNoNode : first;
}

std::uint32_t GuidIndex::FirstOf(const Bucket& bucket, const Core::Guid& guid) const noexcept
{
    std::uint32_t node = bucket.first;
    while (node != kNoNode && !(nodes_[node].guid == guid))
    {
        node = nodes_[nodes_[node].last].next;
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
    nodes_.clear(); // the hints stay: they are checked
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
            if (node.gap)
            {
                FreeNode(chain[i - 1]);
                continue;
            }
            const std::uint64_t hash = node.guid.Hash();
            Bucket& target = BucketOf(hash);
            node.next = target.first;
            target.first = chain[i - 1];
            target.filter |= FilterBit(hash);
        }
    }
    gaps_ = 0;
}

std::uint32_t GuidIndex::TakeNode(const Core::Guid& guid, Entity entity)
{
    if (freeNode_ == kNoNode)
    {
        nodes_.push_back({guid, entity});
        return static_cast<std::uint32_t>(nodes_.size() - 1);
    }
    const std::uint32_t node = freeNode_;
    freeNode_ = nodes_[node].next;
    nodes_[node] = {guid, entity};
    return node;
}

void GuidIndex::FreeNode(std::uint32_t node) noexcept
{
    nodes_[node].last = kNoNode; // not to be taken for one of a pair
    nodes_[node].next = freeNode_;
    freeNode_ = node;
}

} // namespace Vornu::Scene
