#include "engine/scene/registration/EntityRecordStage.h"

#include "engine/reflection/ReflectionRegistry.h"
#include "engine/scene/entities/Registry.h"
#include "engine/scene/registration/MissingComponents.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Vornu::Scene
{

void EntityRecordStage::Clear() noexcept
{
    active_.clear();
    preserved_.reset();
}

void EntityRecordStage::Load(Reflection::SchemaRecord& record, std::uint64_t encodedBytes)
{
    const ComponentRecordTable::Row* const row = table_->Find(record.name);
    if (row == nullptr)
    {
        return TakeUnknown(record);
    }
    ActiveComponent& component = row->index == 0 ? Begin(*row, record) : Continue(*row, record);
    component.entry->loadRecord(*component.state, record, encodedBytes, *context_);
}

/// Drops a record of a removed component and keeps one of a plugin that isn't loaded.
void EntityRecordStage::TakeUnknown(const Reflection::SchemaRecord& record)
{
    const bool removed = IsRemovedComponent(record.name);
    if (!removed && !IsPluginRecordName(record.name))
    {
        throw std::runtime_error("Unsupported component schema: " + std::string(record.name));
    }
    if (context_->missing != nullptr)
    {
        context_->missing->Note(record.name);
    }
    else
    {
        MissingComponentReport report;
        report.Note(record.name);
        report.Send();
    }
    if (removed)
    {
        return;
    }
    if (!preserved_)
    {
        preserved_ = std::make_shared<PreservedRecordSet>();
    }
    preserved_->Add(record);
}

EntityRecordStage::ActiveComponent& EntityRecordStage::Begin(const ComponentRecordTable::Row& row,
                                                             Reflection::SchemaRecord& record)
{
    const ComponentTypeEntry& entry = *row.entry;
    if (FindActive(entry) != nullptr)
    {
        throw std::runtime_error("Duplicate component schema: " + std::string(record.name));
    }
    const Reflection::TypeInfo* type = row.type;
    if (row.alias != nullptr)
    {
        row.alias->rewrite(record);
        type = Reflection::ReflectionRegistry::Instance().FindType(record.name);
    }
    if (type != nullptr && record.version > 0 && record.version < type->version && entry.migrate)
    {
        entry.migrate(record, record.version);
        record.version = type->version;
    }
    ActiveComponent& component = active_.emplace_back();
    component.entry = &entry;
    component.state = entry.makeLoadState();
    return component;
}

EntityRecordStage::ActiveComponent& EntityRecordStage::Continue(const ComponentRecordTable::Row& row,
                                                                const Reflection::SchemaRecord& record)
{
    const ComponentTypeEntry& entry = *row.entry;
    ActiveComponent* const component = FindActive(entry);
    if (component == nullptr)
    {
        throw std::runtime_error(std::string(record.name) + " requires its " + entry.records.front().name +
                                 " record first.");
    }
    const std::uint64_t bit = std::uint64_t{1} << row.index;
    if (!entry.records[row.index].repeatable && (component->seenSecondaries & bit) != 0)
    {
        throw std::runtime_error("Duplicate component schema: " + std::string(record.name));
    }
    component->seenSecondaries |= bit;
    return *component;
}

EntityRecordStage::ActiveComponent* EntityRecordStage::FindActive(const ComponentTypeEntry& entry) noexcept
{
    const auto found = std::find_if(active_.begin(), active_.end(),
                                    [&](const ActiveComponent& active) { return active.entry == &entry; });
    return found == active_.end() ? nullptr : &*found;
}

bool EntityRecordStage::Contains(const ComponentTypeEntry& entry) const noexcept
{
    return std::any_of(active_.begin(), active_.end(),
                       [&](const ActiveComponent& active) { return active.entry == &entry; });
}

bool EntityRecordStage::HasUncommitted() const noexcept
{
    return std::any_of(active_.begin(), active_.end(),
                       [](const ActiveComponent& active) { return !active.committed; });
}

void EntityRecordStage::Finish(bool requireFrame)
{
    for (ActiveComponent& component : active_)
    {
        component.entry->finishLoad(*component.state, *context_);
    }
    if (!requireFrame)
    {
        return;
    }
    for (const ComponentTypeEntry* const entry : table_->FrameComponents())
    {
        if (!Contains(*entry))
        {
            throw std::runtime_error("Entity is missing its " + entry->records.front().name + " record.");
        }
    }
}

void EntityRecordStage::Commit(Registry& registry, Entity entity, Filter filter)
{
    if (preserved_)
    {
        registry.SetPreservedRecords(entity, std::move(preserved_));
        preserved_.reset();
    }
    for (ActiveComponent& component : active_)
    {
        if (!component.committed && filter(*component.entry))
        {
            component.entry->commitLoad(*component.state, registry, entity);
            component.committed = true;
        }
    }
}

void EntityRecordStage::Commit(Registry& registry, Entity entity)
{
    Commit(registry, entity, [](const ComponentTypeEntry&) { return true; });
}

void ResolveEntity(std::span<const ComponentTypeEntry* const> resolveOrder, Registry& registry, Entity entity)
{
    for (const ComponentTypeEntry* const entry : resolveOrder)
    {
        for (const auto& hook : entry->resolveHooks)
        {
            if (void* const component = entry->get(registry, entity))
            {
                hook(component, registry, entity);
            }
        }
    }
}

void SaveEntity(std::span<const ComponentTypeEntry* const> saveOrder, const ComponentSaveContext& context,
                ComponentTypeEntry::RecordList& out)
{
    for (const ComponentTypeEntry* const entry : saveOrder)
    {
        const void* const component = entry->getConst(*context.registry, context.entity);
        if (component == nullptr)
        {
            continue;
        }
        try
        {
            entry->saver(component, context, out);
        }
        catch (const std::bad_alloc&)
        {
            throw;
        }
        catch (const std::exception& fault)
        {
            throw std::runtime_error(entry->typeName + ": " + fault.what());
        }
    }
    if (const auto preserved = context.registry->PreservedRecords(context.entity))
    {
        out.insert(out.end(), preserved->Records().begin(), preserved->Records().end());
    }
}

} // namespace Vornu::Scene
