#pragma once

#include <cstddef>
#include <functional>

namespace Vornu::Reflection
{

/// Run-time identity of a compiled type; stable in one process.
struct TypeId
{
    const void* tag = nullptr;

    friend bool operator==(TypeId, TypeId) = default;
};

namespace Detail
{

template<class Type>
inline char typeTag = 0;

} // namespace Detail

template<class Type>
TypeId TypeIdOf() noexcept
{
    return {&Detail::typeTag<Type>};
}

struct TypeIdHash
{
    std::size_t operator()(TypeId type) const noexcept { return std::hash<const void*>()(type.tag); }
};

} // namespace Vornu::Reflection
