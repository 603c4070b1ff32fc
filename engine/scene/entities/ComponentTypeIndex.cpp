#include "engine/scene/entities/ComponentTypeIndex.h"

#include <mutex>
#include <unordered_map>

namespace Vornu::Scene
{
namespace
{

struct TypeTable
{
    std::mutex mutex;
    std::unordered_map<std::type_index, std::size_t> indices;
    std::vector<std::type_index> types;
};

TypeTable& Types()
{
    static TypeTable table;
    return table;
}

} // namespace

std::size_t RequestComponentTypeIndex(std::type_index type)
{
    TypeTable& table = Types();
    const std::lock_guard lock(table.mutex);
    const auto [entry, added] = table.indices.try_emplace(type, table.types.size());
    if (added)
    {
        table.types.push_back(type);
    }
    return entry->second;
}

std::vector<std::type_index> RegisteredComponentTypes()
{
    TypeTable& table = Types();
    const std::lock_guard lock(table.mutex);
    return table.types;
}

} // namespace Vornu::Scene
