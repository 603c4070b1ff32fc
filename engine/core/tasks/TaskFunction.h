#pragma once

#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace Vornu::Core::Tasks
{

/// Owns a callable without arguments, movable but not copyable. A small callable stands in the object itself,
/// a larger one on the heap.
class TaskFunction
{
public:
    /// The largest callable, in bytes, that needs no memory of its own.
    static constexpr std::size_t kInlineSize = 40;

    TaskFunction() noexcept = default;

    /// A null function pointer or an empty `std::function` gives an empty object.
    template<class Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, TaskFunction> &&
             std::is_invocable_v<std::decay_t<Callable>&>) TaskFunction(Callable&& callable)
    {
        using Stored = std::decay_t<Callable>;
        if constexpr (std::is_pointer_v<Stored> || requires { callable.target_type(); })
        {
            if (callable == nullptr)
            {
                return;
            }
        }
        if constexpr (FitsInline<Stored>())
        {
            ::new (static_cast<void*>(storage_)) Stored(std::forward<Callable>(callable));
            operations_ = &kInlineOperations<Stored>;
        }
        else
        {
            auto* stored = new Stored(std::forward<Callable>(callable));
            std::memcpy(storage_, &stored, sizeof(stored));
            operations_ = &kHeapOperations<Stored>;
        }
    }

    TaskFunction(TaskFunction&& other) noexcept { MoveFrom(other); }

    TaskFunction& operator=(TaskFunction&& other) noexcept
    {
        if (this != &other)
        {
            Reset();
            MoveFrom(other);
        }
        return *this;
    }

    ~TaskFunction() { Reset(); }

    explicit operator bool() const noexcept { return operations_ != nullptr; }

    /// Throws `std::bad_function_call` when empty, and whatever the callable throws.
    void operator()()
    {
        if (operations_ == nullptr)
        {
            throw std::bad_function_call();
        }
        operations_->call(storage_);
    }

    /// Destroys the callable.
    void Reset() noexcept
    {
        if (operations_ != nullptr)
        {
            if (operations_->destroy != nullptr)
            {
                operations_->destroy(storage_);
            }
            operations_ = nullptr;
        }
    }

private:
    struct Operations
    {
        void (*call)(std::byte* storage);
        /// Null when copying the bytes moves the callable.
        void (*move)(std::byte* to, std::byte* from) noexcept;
        /// Null when there is nothing to destroy.
        void (*destroy)(std::byte* storage) noexcept;
    };

    template<class Stored>
    static constexpr bool FitsInline()
    {
        return sizeof(Stored) <= kInlineSize && alignof(Stored) <= alignof(void*) &&
               std::is_nothrow_move_constructible_v<Stored>;
    }

    template<class Stored>
    static Stored* Inline(std::byte* storage) noexcept
    {
        return std::launder(reinterpret_cast<Stored*>(storage));
    }

    template<class Stored>
    static Stored* OnHeap(std::byte* storage) noexcept
    {
        Stored* stored;
        std::memcpy(&stored, storage, sizeof(stored));
        return stored;
    }

    template<class Stored>
    static void MoveInline(std::byte* to, std::byte* from) noexcept
    {
        ::new (static_cast<void*>(to)) Stored(std::move(*Inline<Stored>(from)));
        std::destroy_at(Inline<Stored>(from));
    }

    template<class Stored>
    static void DestroyInline(std::byte* storage) noexcept
    {
        std::destroy_at(Inline<Stored>(storage));
    }

    template<class Stored>
    static constexpr Operations kInlineOperations = {
        [](std::byte* storage) { static_cast<void>((*Inline<Stored>(storage))()); },
        std::is_trivially_copyable_v<Stored> ? nullptr : &MoveInline<Stored>,
        std::is_trivially_destructible_v<Stored> ? nullptr : &DestroyInline<Stored>,
    };

    template<class Stored>
    static constexpr Operations kHeapOperations = {
        [](std::byte* storage) { static_cast<void>((*OnHeap<Stored>(storage))()); },
        nullptr,
        [](std::byte* storage) noexcept { delete OnHeap<Stored>(storage); },
    };

    void MoveFrom(TaskFunction& other) noexcept
    {
        operations_ = other.operations_;
        if (operations_ != nullptr)
        {
            if (operations_->move == nullptr)
            {
                std::memcpy(storage_, other.storage_, kInlineSize);
            }
            else
            {
                operations_->move(storage_, other.storage_);
            }
            other.operations_ = nullptr;
        }
    }

    const Operations* operations_ = nullptr;
    alignas(void*) std::byte storage_[kInlineSize];
};

} // namespace Vornu::Core::Tasks
