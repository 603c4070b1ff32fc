#include "engine/scene/registration/ComponentRegistry.h"

#include "engine/reflection/ReflectionRegistry.h"
#include "engine/scene/entities/Registry.h"

#include <stdexcept>
#include <string>

namespace Vornu::Scene
{

ComponentRegistry& ComponentRegistry::Instance()
{
    static auto* const registry = new ComponentRegistry; // stays until the process ends
    return *registry;
}

ComponentTypeEntry& ComponentRegistry::AddEntry(Reflection::TypeId type)
{
    ComponentTypeEntry*& entry = byType_[type];
    if (entry == nullptr)
    {
        entry = entries_.emplace_back(std::make_unique<ComponentTypeEntry>()).get();
        entry->serial = entries_.size() - 1;
    }
    else
    {
        const std::uint64_t serial = entry->serial;
        *entry = ComponentTypeEntry();
        entry->serial = serial;
    }
    entry->type = type;
    return *entry;
}

const ComponentTypeEntry* ComponentRegistry::Find(Reflection::TypeId type) const noexcept
{
    const auto found = byType_.find(type);
    return found == byType_.end() ? nullptr : found->second;
}

const ComponentTypeEntry* ComponentRegistry::Find(std::string_view typeName) const noexcept
{
    for (const std::unique_ptr<ComponentTypeEntry>& entry : entries_)
    {
        if (entry->typeName == typeName)
        {
            return entry.get();
        }
    }
    return nullptr;
}

ComponentRecordTable::ComponentRecordTable(const ComponentRegistry& registry)
{
    for (const std::unique_ptr<ComponentTypeEntry>& entry : registry.Entries())
    {
        if (!entry->HasSceneRecords())
        {
            continue;
        }
        saveOrder_.push_back(entry.get());
        if (HasFlag(entry->flags, ComponentFlags::EntityFrame))
        {
            frameComponents_.push_back(entry.get());
        }
        if (!entry->resolveHooks.empty())
        {
            resolveOrder_.push_back(entry.get());
        }
        const Reflection::TypeInfo* const type =
            Reflection::ReflectionRegistry::Instance().FindType(entry->records.front().name);
        for (std::size_t i = 0; i < entry->records.size(); ++i)
        {
            AddRow(entry->records[i].name, {entry.get(), i, nullptr, type});
        }
        for (const ComponentRecordAlias& alias : entry->aliases)
        {
            AddRow(alias.name, {entry.get(), 0, &alias, type});
        }
    }
}

void ComponentRecordTable::AddRow(std::string_view name, const Row& row)
{
    if (!rows_.emplace(name, row).second)
    {
        throw std::logic_error("Two components claim the scene record name: " + std::string(name));
    }
}

std::vector<const ComponentTypeEntry*> ComponentRecordTable::ComponentsIn(const Registry& registry) const
{
    std::vector<const ComponentTypeEntry*> present;
    for (const ComponentTypeEntry* const entry : saveOrder_)
    {
        const IStorage* const storage = entry->storage(registry);
        if (storage != nullptr && !storage->Entities().empty())
        {
            present.push_back(entry);
        }
    }
    return present;
}

const ComponentRecordTable::Row* ComponentRecordTable::Find(std::string_view recordName) const noexcept
{
    const auto found = rows_.find(recordName);
    return found == rows_.end() ? nullptr : &found->second;
}

} // namespace Vornu::Scene
