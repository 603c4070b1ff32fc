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
    const std::uint32_t added = TakeNode(guid, entity);
    const std::size_t bucket = BucketOf(guid);
    std::uint32_t lastEqual = kNoNode;
    for (std::uint32_t node = buckets_[bucket]; node != kNoNode; node = nodes_[node].next)
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
    std::uint32_t& link = lastEqual == kNoNode ? buckets_[bucket] : nodes_[lastEqual].next;
    nodes_[added].next = link;
    link = added;
    ++size_;
}

bool GuidIndex::Erase(const Core::Guid& guid, Entity entity)
{
    if (size_ == 0)
    {
        return false;
    }
    for (std::uint32_t* link = &buckets_[BucketOf(guid)]; *link != kNoNode; link = &nodes_[*link].next)
    {
        const std::uint32_t node = *link;
        if (nodes_[node].entity == entity && nodes_[node].guid == guid)
        {
            *link = nodes_[node].next;
            nodes_[node].next = freeNode_;
            freeNode_ = node;
            --size_;
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
    std::uint32_t node = buckets_[BucketOf(guid)];
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
    std::fill(buckets_.begin(), buckets_.end(), kNoNode);
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
    std::vector<std::uint32_t> old(bucketCount, kNoNode);
    old.swap(buckets_);
    std::vector<std::uint32_t> chain;
    for (const std::uint32_t first : old)
    {
        chain.clear();
        for (std::uint32_t node = first; node != kNoNode; node = nodes_[node].next)
        {
            chain.push_back(node);
        }
        // Pushing the chain's nodes to the front from its end on keeps their order in every new bucket.
        for (std::size_t i = chain.size(); i > 0; --i)
        {
            Node& node = nodes_[chain[i - 1]];
            std::uint32_t& head = buckets_[BucketOf(node.guid)];
            node.next = head;
            head = chain[i - 1];
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
