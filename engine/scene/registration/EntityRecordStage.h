#pragma once

#include "engine/core/FunctionRef.h"
#include "engine/reflection/ObjectText.h"
#include "engine/scene/entities/PreservedRecordSet.h"
#include "engine/scene/registration/ComponentRegistry.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace Vornu::Scene
{

/// Byte size of a record that its source can't tell.
inline constexpr std::uint64_t kUnknownEncodedBytes = ~std::uint64_t{0};

/// The components of one entity during a load: records become plain values here and reach the entity at the
/// end. Faults throw `std::runtime_error`.
class EntityRecordStage
{
public:
    /// Refuses a component at a commit by giving false.
    using Filter = Core::FunctionRef<bool(const ComponentTypeEntry& entry)>;

    /// Table and context outlive the stage.
    EntityRecordStage(const ComponentRecordTable& table, const ComponentLoadContext& context) noexcept
        : table_(&table), context_(&context)
    {
    }

    /// Makes the stage ready for another entity.
    void Clear() noexcept;

    /// Takes one record, which may be rewritten. `encodedBytes` is its size in the file.
    void Load(Reflection::SchemaRecord& record, std::uint64_t encodedBytes);

    /// Takes a record that stands in text as scenes are saved, without making a record of it: `headerRest` is
    /// its first line behind the keyword, `text` what follows. Gives nothing, and changes nothing, where it
    /// can't; the record is to be read and loaded then, which tells every fault.
    Reflection::ReadText LoadText(std::string_view headerRest, std::string_view text);

    /// Runs the final steps of every component; with `requireFrame` every component that each entity has must
    /// have come.
    void Finish(bool requireFrame);

    /// Whether a record of the component has come.
    bool Contains(const ComponentTypeEntry& entry) const noexcept;

    /// Whether a component has come that no commit has put on its entity yet.
    bool HasUncommitted() const noexcept;

    /// Hands preserved records to the registry and puts the components that the filter lets pass, and that
    /// weren't committed before, on the entity.
    void Commit(Registry& registry, Entity entity, Filter filter);
    void Commit(Registry& registry, Entity entity);

private:
    struct ActiveComponent
    {
        const ComponentTypeEntry* entry = nullptr;
        std::unique_ptr<ComponentLoadState> state;
        std::uint64_t seenSecondaries = 0; // a bit for each record of the entry that may come once
        bool committed = false;
    };

    void TakeUnknown(const Reflection::SchemaRecord& record);
    ActiveComponent& Begin(const ComponentRecordTable::Row& row, Reflection::SchemaRecord& record);
    ActiveComponent& Continue(const ComponentRecordTable::Row& row, const Reflection::SchemaRecord& record);
    ActiveComponent* FindActive(const ComponentTypeEntry& entry) noexcept;

    const ComponentRecordTable* table_;
    const ComponentLoadContext* context_;
    std::vector<ActiveComponent> active_; // in order of arrival
    std::shared_ptr<PreservedRecordSet> preserved_;
};

/// Runs the resolve hooks of an entity's components, given those that have any; for when all entities of the
/// scene exist.
void ResolveEntity(std::span<const ComponentTypeEntry* const> resolveOrder, Registry& registry,
                   Entity entity);

/// Fails where a load of the entity's records would for want of a component that every entity has.
void RequireFrame(const ComponentRecordTable& table, const Registry& registry, Entity entity);

/// Appends the records of an entity: those of its components that are among the given ones, in their order,
/// then copies of its preserved records. Records that were preserved under the name of a component that the
/// entity has by now are left out; others that a load would refuse fail. A fault gets the prefix
/// "<component>: ".
void SaveEntity(std::span<const ComponentTypeEntry* const> saveOrder, const ComponentSaveContext& context,
                ComponentTypeEntry::RecordList& out);

} // namespace Vornu::Scene
