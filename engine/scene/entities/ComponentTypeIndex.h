#pragma once

#include <cstddef>
#include <type_traits>
#include <typeindex>
#include <vector>

namespace Vornu::Scene
{

/// The process-wide index of a component type: the number of types that had an index when `type` first asked.
/// Takes a lock; use ComponentTypeIndex(). Safe from any thread.
std::size_t RequestComponentTypeIndex(std::type_index type);

/// Every component type that has an index, in the order of first request. Safe from any thread.
std::vector<std::type_index> RegisteredComponentTypes();

/// The index of T, asked for once and then remembered. It depends on which type was touched first, so it must
/// not reach a file. Safe from any thread.
template<class T>
std::size_t ComponentTypeIndex()
{
    static_assert(std::is_same_v<T, std::remove_cvref_t<T>>, "Name the component type without qualifiers.");
    static const std::size_t index = RequestComponentTypeIndex(typeid(T));
    return index;
}

} // namespace Vornu::Scene
