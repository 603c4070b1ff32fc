#pragma once

#include "engine/scene/registration/ComponentTypeEntry.h"

#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Vornu::Scene
{

/// All component types of the process. Filled once by the registration of the scene schema, later only by
/// plugin components; read-only while scenes load and save.
class ComponentRegistry
{
public:
    static ComponentRegistry& Instance();

    /// The entry of a type, made with the next serial when it is new and otherwise emptied of its hooks.
    ComponentTypeEntry& AddEntry(Reflection::TypeId type);

    const ComponentTypeEntry* Find(Reflection::TypeId type) const noexcept;
    const ComponentTypeEntry* Find(std::string_view typeName) const noexcept;

    /// All entries, sorted by serial.
    const std::vector<std::unique_ptr<ComponentTypeEntry>>& Entries() const noexcept { return entries_; }

private:
    std::vector<std::unique_ptr<ComponentTypeEntry>> entries_;
    std::unordered_map<Reflection::TypeId, ComponentTypeEntry*, Reflection::TypeIdHash> byType_;
};

/// Which component a record name belongs to. Built afresh for every load and save from what is registered.
class ComponentRecordTable
{
public:
    struct Row
    {
        const ComponentTypeEntry* entry = nullptr;
        std::size_t index = 0; // of the record in its entry
        const ComponentRecordAlias* alias = nullptr;
        const Reflection::TypeInfo* type = nullptr; // that the entry's main record is named after
    };

    /// Throws `std::logic_error` when two components claim one name.
    explicit ComponentRecordTable(const ComponentRegistry& registry = ComponentRegistry::Instance());

    const Row* Find(std::string_view recordName) const noexcept;

    /// The components with scene records, in the order in which they are saved.
    const std::vector<const ComponentTypeEntry*>& SaveOrder() const noexcept { return saveOrder_; }
    /// Those of them that an entity of the registry has, in the same order.
    std::vector<const ComponentTypeEntry*> ComponentsIn(const Registry& registry) const;
    /// Those of them that every entity has, in the same order.
    const std::vector<const ComponentTypeEntry*>& FrameComponents() const noexcept
    {
        return frameComponents_;
    }
    /// Those of them with resolve hooks, in the same order.
    const std::vector<const ComponentTypeEntry*>& ResolveOrder() const noexcept { return resolveOrder_; }

private:
    void AddRow(std::string_view name, const Row& row);

    std::unordered_map<std::string_view, Row> rows_; // keys live in the entries
    std::vector<const ComponentTypeEntry*> saveOrder_;
    std::vector<const ComponentTypeEntry*> frameComponents_;
    std::vector<const ComponentTypeEntry*> resolveOrder_;
};

} // namespace Vornu::Scene
