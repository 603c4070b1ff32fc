#include "engine/scene/GuidIndex.h"

#include <algorithm>
#include <bit>

namespace Vornu::Scene
{
namespace
{

constexpr std::size_t kInitialBuckets = 8;

} // namespace

void GuidIndex::Insert(const Core::Guid& guid, Entity entity)
{
    if (size_ >= buckets_.size())
    {
        Rehash(std::max(kInitialBuckets, buckets_.size() * 2));
    }
    const std::uint64_t hash = guid.Hash();
    Bucket& bucket = BucketOf(hash);
    std::uint32_t lastEqual = kNoNode;
    if ((bucket.filter & FilterBit(hash)) != 0)
    {
        for (std::uint32_t node = bucket.first; node != kNoNode; node = nodes_[node].next)
        {
            if (nodes_[node].guid == guid)
            {
                lastEqual = node;
            }
            else if (lastEqual != kNoNode)
            {
                break;
            }
        }
    }
    const std::uint32_t added = TakeNode(guid, entity);
    std::uint32_t& link = lastEqual == kNoNode ? bucket.first : nodes_[lastEqual].next;
    nodes_[added].next = link;
    link = added;
    bucket.filter |= FilterBit(hash);
    ++size_;
}

bool GuidIndex::Erase(const Core::Guid& guid, Entity entity)
{
    if (size_ == 0)
    {
        return false;
    }
    Bucket& bucket = BucketOf(guid.Hash());
    for (std::uint32_t* link = &bucket.first; *link != kNoNode; link = &nodes_[*link].next)
    {
        const std::uint32_t node = *link;
        if (nodes_[node].entity == entity && nodes_[node].guid == guid)
        {
            *link = nodes_[node].next;
            nodes_[node].next = freeNode_;
            freeNode_ = node;
            --size_;
            if (bucket.first == kNoNode)
            {
                bucket.filter = 0;
            }
            return true;
        }
    }
    return false;
}

std::uint32_t GuidIndex::First(const Core::Guid& guid) const noexcept
{
    if (size_ == 0)
    {
        return kNoNode;
    }
    std::uint32_t node = buckets_[guid.Hash() & (buckets_.size() - 1)].first;
    while (node != kNoNode && !(nodes_[node].guid == guid))
    {
        node = nodes_[node].next;
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
    nodes_.clear();
    freeNode_ = kNoNode;
    size_ = 0;
}

void GuidIndex::Reserve(std::size_t count)
{
    nodes_.reserve(count);
    if (count > buckets_.size())
    {
        Rehash(std::bit_ceil(std::max(count, kInitialBuckets)));
    }
}

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
            const std::uint64_t hash = node.guid.Hash();
            Bucket& target = BucketOf(hash);
            node.next = target.first;
            target.first = chain[i - 1];
            target.filter |= FilterBit(hash);
        }
    }
}

std::uint32_t GuidIndex::TakeNode(const Core::Guid& guid, Entity entity)
{
    if (freeNode_ == kNoNode)
    {
        nodes_.push_back({guid, entity, kNoNode});
        return static_cast<std::uint32_t>(nodes_.size() - 1);
    }
    const std::uint32_t node = freeNode_;
    freeNode_ = nodes_[node].next;
    nodes_[node] = {guid, entity, kNoNode};
    return node;
}

} // namespace Vornu::Scene
