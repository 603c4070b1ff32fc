#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace Vornu::Core
{

/// Hash map that is walked in the order in which its keys were first inserted.
///
/// Entries lie in one vector; an open-addressing index finds them. Erasing leaves a dead entry behind, which
/// walks skip, and the map compacts itself when half of its entries are dead, so every operation takes
/// amortised constant time. With a transparent `Hash`, keys are found by anything that hashes and compares
/// alike, such as `std::string` keys by `std::string_view`.
///
/// Key and Value must be default constructible and movable. Any insertion or erasure invalidates iterators,
/// pointers and positions. Keys must not be changed through an iterator. At most 2^32 - 2 entries.
template<class Key, class Value, class Hash>
class OrderedMap
{
public:
    using Entry = std::pair<Key, Value>;

    template<bool isConst>
    class BasicIterator
    {
    public:
        using Map = std::conditional_t<isConst, const OrderedMap, OrderedMap>;
        using iterator_category = std::forward_iterator_tag;
        using value_type = Entry;
        using difference_type = std::ptrdiff_t;
        using reference = std::conditional_t<isConst, const Entry&, Entry&>;
        using pointer = std::conditional_t<isConst, const Entry*, Entry*>;

        BasicIterator() = default;
        BasicIterator(Map* map, std::size_t position) : map_(map), position_(position) { SkipDead(); }

        reference operator*() const { return map_->entries_[position_]; }
        pointer operator->() const { return &map_->entries_[position_]; }

        BasicIterator& operator++()
        {
            ++position_;
            SkipDead();
            return *this;
        }

        BasicIterator operator++(int)
        {
            BasicIterator before = *this;
            ++*this;
            return before;
        }

        friend bool operator==(const BasicIterator&, const BasicIterator&) = default;

    private:
        void SkipDead()
        {
            while (position_ < map_->entries_.size() && map_->IsDead(position_))
            {
                ++position_;
            }
        }

        Map* map_ = nullptr;
        std::size_t position_ = 0;
    };

    using iterator = BasicIterator<false>;
    using const_iterator = BasicIterator<true>;

    static constexpr std::size_t kNoPosition = ~std::size_t{0};

    OrderedMap() = default;
    OrderedMap(const OrderedMap&) = default;
    OrderedMap& operator=(const OrderedMap&) = default;
    ~OrderedMap() = default;

    /// Leaves `other` empty.
    OrderedMap(OrderedMap&& other) noexcept { Swap(other); }

    OrderedMap& operator=(OrderedMap&& other) noexcept
    {
        OrderedMap taken(std::move(other));
        Swap(taken);
        return *this;
    }

    iterator begin() { return {this, 0}; }
    iterator end() { return {this, entries_.size()}; }
    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, entries_.size()}; }

    std::size_t Size() const noexcept { return entries_.size() - deadCount_; }
    bool Empty() const noexcept { return Size() == 0; }

    /// The value of `key`, or null.
    template<class Lookup>
    Value* Find(const Lookup& key)
    {
        const std::size_t position = PositionOf(key);
        return position == kNoPosition ? nullptr : &entries_[position].second;
    }

    template<class Lookup>
    const Value* Find(const Lookup& key) const
    {
        const std::size_t position = PositionOf(key);
        return position == kNoPosition ? nullptr : &entries_[position].second;
    }

    template<class Lookup>
    bool Contains(const Lookup& key) const
    {
        return PositionOf(key) != kNoPosition;
    }

    /// Adds `key` with a value made from `arguments`; does nothing when the key is there. Returns the value
    /// of the key and whether it was added.
    template<class Lookup, class... Arguments>
    std::pair<Value*, bool> Emplace(Lookup&& key, Arguments&&... arguments)
    {
        const std::uint64_t hash = Hash{}(key);
        if (const std::size_t slot = SlotOf(key, hash); slot != kNoPosition)
        {
            return {&entries_[slots_[slot].place - 1].second, false};
        }
        if ((entries_.size() + 1) * 4 > slots_.size() * 3)
        {
            Rebuild(Size() + 1);
        }
        entries_.emplace_back(std::piecewise_construct, std::forward_as_tuple(std::forward<Lookup>(key)),
                              std::forward_as_tuple(std::forward<Arguments>(arguments)...));
        if (!dead_.empty())
        {
            dead_.push_back(false);
        }
        Link(hash, entries_.size());
        return {&entries_.back().second, true};
    }

    /// Sets the value of `key`. A key that is there keeps its place in the order.
    template<class Lookup, class Assigned>
    Value& InsertOrAssign(Lookup&& key, Assigned&& value)
    {
        const auto [stored, added] = Emplace(std::forward<Lookup>(key));
        *stored = std::forward<Assigned>(value);
        return *stored;
    }

    /// The value of `key`, added with a default value when it isn't there.
    template<class Lookup>
    Value& operator[](Lookup&& key)
    {
        return *Emplace(std::forward<Lookup>(key)).first;
    }

    /// Removes `key`; returns whether it was there. The order of the rest is kept.
    template<class Lookup>
    bool Erase(const Lookup& key)
    {
        if (Empty())
        {
            return false;
        }
        const std::size_t slot = SlotOf(key, Hash{}(key));
        if (slot == kNoPosition)
        {
            return false;
        }
        const std::size_t position = slots_[slot].place - 1;
        slots_[slot].place = kDeadPlace;
        entries_[position] = Entry{};
        dead_.resize(entries_.size(), false);
        dead_[position] = true;
        ++deadCount_;
        if (Empty())
        {
            Clear();
        }
        else if (deadCount_ * 2 >= entries_.size() && deadCount_ >= kMinimumSlots)
        {
            Rebuild(Size());
        }
        return true;
    }

    /// Keeps the memory of entries and index.
    void Clear()
    {
        entries_.clear();
        dead_.clear();
        deadCount_ = 0;
        slots_.assign(slots_.size(), Slot{});
    }

    /// Makes room for `count` entries in all.
    void Reserve(std::size_t count)
    {
        entries_.reserve(count);
        if (count * 4 > slots_.size() * 3)
        {
            Rebuild(count);
        }
    }

    /// Where `key` stands among the entries, or kNoPosition. Positions rise in the order of the walk, lie
    /// below PositionLimit() and have gaps where keys were erased; they let side tables stand beside the map.
    template<class Lookup>
    std::size_t PositionOf(const Lookup& key) const
    {
        if (Empty())
        {
            return kNoPosition;
        }
        const std::size_t slot = SlotOf(key, Hash{}(key));
        return slot == kNoPosition ? kNoPosition : slots_[slot].place - 1;
    }

    std::size_t PositionLimit() const noexcept { return entries_.size(); }

    /// The entry at a position that PositionOf() gave.
    const Entry& EntryAt(std::size_t position) const { return entries_[position]; }

private:
    static constexpr std::uint32_t kDeadPlace = ~std::uint32_t{0};
    static constexpr std::size_t kMinimumSlots = 8;

    /// `place` is the entry's position + 1; 0 marks a slot that was never used since the last rebuild.
    struct Slot
    {
        std::uint32_t tag = 0;
        std::uint32_t place = 0;
    };

    bool IsDead(std::size_t position) const { return !dead_.empty() && dead_[position]; }

    std::size_t FirstSlot(std::uint64_t hash) const
    {
        // The multiplication spreads hashes whose low bits are alike; the index takes the well-mixed top
        // bits.
        return static_cast<std::size_t>((hash * 0x9E3779B97F4A7C15ull) >> shift_);
    }

    template<class Lookup>
    std::size_t SlotOf(const Lookup& key, std::uint64_t hash) const
    {
        if (slots_.empty())
        {
            return kNoPosition;
        }
        const auto tag = static_cast<std::uint32_t>(hash);
        for (std::size_t slot = FirstSlot(hash);; slot = (slot + 1) & (slots_.size() - 1))
        {
            const Slot& candidate = slots_[slot];
            if (candidate.place == 0)
            {
                return kNoPosition;
            }
            if (candidate.tag == tag && candidate.place != kDeadPlace &&
                entries_[candidate.place - 1].first == key)
            {
                return slot;
            }
        }
    }

    void Link(std::uint64_t hash, std::size_t place)
    {
        std::size_t slot = FirstSlot(hash);
        while (slots_[slot].place != 0)
        {
            slot = (slot + 1) & (slots_.size() - 1);
        }
        slots_[slot] = {static_cast<std::uint32_t>(hash), static_cast<std::uint32_t>(place)};
    }

    /// Drops dead entries and builds the index anew with room for `count` entries and as much growth.
    void Rebuild(std::size_t count)
    {
        if (deadCount_ != 0)
        {
            std::size_t kept = 0;
            for (std::size_t position = 0; position < entries_.size(); ++position)
            {
                if (!dead_[position])
                {
                    if (kept != position)
                    {
                        entries_[kept] = std::move(entries_[position]);
                    }
                    ++kept;
                }
            }
            entries_.resize(kept);
            deadCount_ = 0;
        }
        dead_.clear();
        std::size_t slotCount = kMinimumSlots;
        while (slotCount * 3 < (count + count / 4) * 4)
        {
            slotCount *= 2;
        }
        slots_.assign(slotCount, Slot{});
        shift_ = 64 - std::countr_zero(slotCount);
        for (std::size_t position = 0; position < entries_.size(); ++position)
        {
            Link(Hash{}(entries_[position].first), position + 1);
        }
    }

    void Swap(OrderedMap& other) noexcept
    {
        entries_.swap(other.entries_);
        dead_.swap(other.dead_);
        slots_.swap(other.slots_);
        std::swap(deadCount_, other.deadCount_);
        std::swap(shift_, other.shift_);
    }

    std::vector<Entry> entries_;
    std::vector<bool> dead_; // empty as long as nothing was erased since the last rebuild
    std::vector<Slot> slots_;
    std::size_t deadCount_ = 0;
    int shift_ = 0;
};

} // namespace Vornu::Core
