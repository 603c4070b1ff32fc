#include "engine/scene/registration/EntityRecordStage.h"

#include "engine/reflection/ReflectionRegistry.h"
#include "engine/reflection/SchemaRecordText.h"
#include "engine/scene/entities/Registry.h"
#include "engine/scene/registration/MissingComponents.h"

#include <algorithm>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Vornu::Scene
{

namespace
{

[[noreturn]] void ThrowMissing(const ComponentTypeEntry& entry)
{
    throw std::runtime_error("Entity is missing its " + entry.records.front().name + " record.");
}

/// Appends what was preserved for an entity, as a load would take it.
class PreservedRecordSaver
{
public:
    PreservedRecordSaver(const ComponentRecordTable& table, const ComponentSaveContext& context,
                         ComponentTypeEntry::RecordList& out)
        : table_(table), context_(context), out_(out)
    {
    }

    void Save(const PreservedRecordSet& preserved)
    {
        for (const Reflection::SchemaRecord& record : preserved.Records())
        {
            const ComponentRecordTable::Row* const row = table_.Find(record.name);
            if (row != nullptr && row->entry->has(*context_.registry, context_.entity))
            {
                NoteSuperseded(record.name);
                continue;
            }
            out_.push_back(Reflection::CopyRecord(record, out_.Arena()));
            if (row != nullptr)
            {
                Try([&] { Load(record); }, record.name);
            }
            else if (!IsPluginRecordName(record.name))
            {
                throw std::runtime_error("Unsupported component schema: " + std::string(record.name));
            }
        }
        Try([&] { stage_.Finish(false); }, loadedName_);
    }

private:
    void NoteSuperseded(std::string_view name)
    {
        if (context_.superseded == nullptr)
        {
            ReportSupersededRecords(name);
        }
        else if (!context_.superseded->contains(name))
        {
            context_.superseded->emplace(name);
        }
    }

    /// A migration changes the record, so a copy is loaded.
    void Load(const Reflection::SchemaRecord& record)
    {
        loadedName_ = record.name;
        Reflection::SchemaRecord copy = Reflection::CopyRecord(record, arena_);
        stage_.Load(copy, Reflection::MeasureSchemaRecord(record));
    }

    template<class Step>
    static void Try(Step step, std::string_view name)
    {
        try
        {
            step();
        }
        catch (const std::runtime_error& fault)
        {
            throw std::runtime_error(std::string(name) + ": " + fault.what());
        }
    }

    const ComponentRecordTable& table_;
    const ComponentSaveContext& context_;
    ComponentTypeEntry::RecordList& out_;
    Reflection::SchemaArena arena_;
    const ComponentLoadContext loadContext_{context_.codec, context_.assets, nullptr};
    EntityRecordStage stage_{table_, loadContext_};
    std::string_view loadedName_;
};

} // namespace

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

Reflection::ReadText EntityRecordStage::LoadText(std::string_view headerRest, std::string_view text)
{
    const std::optional<Reflection::RecordHead> head = Reflection::ReadRecordHead(headerRest);
    const ComponentRecordTable::Row* const row = head ? table_->Find(head->name) : nullptr;
    if (row == nullptr || row->index != 0 || row->alias != nullptr || row->type == nullptr ||
        row->entry->stateView == nullptr || FindActive(*row->entry) != nullptr)
    {
        return {};
    }
    std::unique_ptr<ComponentLoadState> state = row->entry->makeLoadState();
    const Reflection::ReadText read =
        Reflection::ReadObjectFields(text, *head, *row->type, row->entry->stateView(*state),
                                     Reflection::ReflectionRegistry::Instance(), *context_->codec);
    if (read.bytes > 0)
    {
        ActiveComponent& component = active_.emplace_back();
        component.entry = row->entry;
        component.state = std::move(state);
    }
    return read;
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
            ThrowMissing(*entry);
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

void RequireFrame(const ComponentRecordTable& table, const Registry& registry, Entity entity)
{
    for (const ComponentTypeEntry* const entry : table.FrameComponents())
    {
        if (!entry->has(registry, entity))
        {
            ThrowMissing(*entry);
        }
    }
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
    const auto preserved = context.registry->PreservedRecords(context.entity);
    if (preserved == nullptr)
    {
        return;
    }
    std::optional<ComponentRecordTable> own;
    const ComponentRecordTable& table = context.table != nullptr ? *context.table : own.emplace();
    PreservedRecordSaver(table, context, out).Save(*preserved);
}

} // namespace Vornu::Scene
