#pragma once

#include "engine/core/Guid.h"
#include "engine/scene/entities/Entity.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Vornu::Scene
{

/// Multimap from GUID to entity in flat vectors: buckets of chained nodes and a free list.
///
/// Pairs of equal keys stand in insertion order. An operation takes amortised constant time, whatever the
/// keys are; only `Erase` walks the pairs of its entity, which mostly has one. Single-threaded.
///
/// The one pair of a key is erased without a look at its bucket, which would be a cache miss in a large
/// index: its node is known from the entity and stays in the chain as a gap. A later pair of the key takes
/// the gap again; the others go when the index is next rebuilt.
class GuidIndex
{
public:
    static constexpr std::uint32_t kNoNode = ~std::uint32_t{0};

    /// The null entity isn't inserted.
    void Insert(const Core::Guid& guid, Entity entity);

    /// Removes the first pair of exactly this key and entity; returns whether there was one.
    bool Erase(const Core::Guid& guid, Entity entity);

    /// The first pair of the key, or kNoNode. Nodes stay good until the next change of the index.
    std::uint32_t First(const Core::Guid& guid) const noexcept;

    /// The pair of the same key behind `node`, or kNoNode.
    std::uint32_t Next(std::uint32_t node) const noexcept;

    Entity EntityAt(std::uint32_t node) const noexcept { return nodes_[node].entity; }

    std::size_t Size() const noexcept { return size_; }

    /// Keeps the memory.
    void Clear() noexcept;

    /// Makes room for `count` pairs in all.
    void Reserve(std::size_t count);

private:
    /// Aligned so that none lies across two cache lines.
    struct alignas(32) Node
    {
        Core::Guid guid;
        Entity entity = kNullEntity;   // null for a gap, the only node of its key, and for a free node
        std::uint32_t next = kNoNode;  // in the bucket, or in the free list
        std::uint32_t run = kNoNode;   // in the run of equal keys: see `LastOf`
        std::uint32_t older = kNoNode; // pair of the same entity
    };

    /// Set in `run` of a node that isn't the first of its run; it names the node before it. The first node
    /// names the last one.
    static constexpr std::uint32_t kBehind = 0x80000000u;

    struct Bucket
    {
        std::uint32_t first = kNoNode;
        std::uint32_t filter = 0; // has the bit of every key in the chain; spares a new key the walk
    };

    static std::uint64_t HashOf(const Core::Guid& guid) noexcept { return Core::GuidHash{}(guid); }
    Bucket& BucketOf(std::uint64_t hash) noexcept { return buckets_[hash & (buckets_.size() - 1)]; }
    static std::uint32_t FilterBit(std::uint64_t hash) noexcept { return 1u << (hash >> 59); }
    std::uint32_t FirstOf(const Bucket& bucket, const Core::Guid& guid) const noexcept;
    bool IsFirst(std::uint32_t node) const noexcept { return (nodes_[node].run & kBehind) == 0; }
    std::uint32_t LastOf(std::uint32_t first) const noexcept { return nodes_[first].run; }
    std::uint32_t LatestOf(Entity entity) const noexcept;
    std::uint32_t TakePair(const Core::Guid& guid, Entity entity) noexcept;
    void AppendToRun(std::uint32_t first, std::uint32_t added) noexcept;
    void RemoveFromRun(std::uint32_t node) noexcept;
    void Rehash(std::size_t bucketCount);
    std::uint32_t TakeNode(const Core::Guid& guid);
    void FreeNode(std::uint32_t node) noexcept;
    void Give(std::uint32_t node, Entity entity);

    std::vector<Bucket> buckets_; // a power of two of them, or none yet
    std::vector<Node> nodes_;
    std::vector<std::uint32_t> latestNodes_; // by entity index, of its latest pair; see `LatestOf`
    std::uint32_t freeNode_ = kNoNode;
    std::size_t size_ = 0; // without gaps
    std::size_t gaps_ = 0;
};

} // namespace Vornu::Scene
