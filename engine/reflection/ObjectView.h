#pragma once

#include "engine/core/FunctionRef.h"
#include "engine/core/Guid.h"
#include "engine/reflection/TypeId.h"

#include <cstddef>
#include <cstdint>

namespace Vornu::Reflection
{

struct ObjectView;
struct ValueSchema;
struct EnumEntry;
struct EnumValue;

enum class ValueShape : std::uint8_t
{
    Scalar = 0,
    Object = 1,
    Collection = 2,
};

/// Receives one element of a collection; the view is valid for the call.
using ElementCallback = Core::FunctionRef<void(const ObjectView&)>;

/// How schema code reaches the values of one compiled type. A table holds only the operations that its type
/// needs; a missing one counts as a failed accessor.
struct ValueAccessors
{
    /// The schema describes this very type: identity, shape, element chain, and a kind that the type admits.
    bool (*matches)(const ValueSchema& schema) = nullptr;
    ValueShape shape = ValueShape::Scalar;
    std::size_t (*size)(const void* data) = nullptr;
    /// Makes a collection exactly `count` long.
    bool (*resize)(void* data, std::size_t count) = nullptr;
    /// The only size that a collection of a fixed length has; 0 for one that can be resized.
    std::size_t fixedSize = 0;
    void (*constElement)(const void* data, std::size_t index, ElementCallback callback) = nullptr;
    void (*mutableElement)(void* data, std::size_t index, ElementCallback callback) = nullptr;
    /// The elements of a collection of floats, where they lie side by side.
    const float* (*floats)(const void* data) = nullptr;
    EnumValue (*enumRead)(const void* data) = nullptr;
    bool (*enumWrite)(void* data, const EnumEntry& entry) = nullptr;
    const Core::Guid* (*linkRead)(const void* data) = nullptr;
    void (*linkWrite)(void* data, const Core::Guid& guid) = nullptr;
};

inline constexpr ValueAccessors kNoAccessors{};

/// A by-value handle on one piece of storage. A read-only view fills `constData` alone.
struct ObjectView
{
    TypeId type = TypeIdOf<void>();
    const void* constData = nullptr;
    void* mutableData = nullptr;
    const ValueAccessors* accessors = &kNoAccessors;
};

} // namespace Vornu::Reflection
