#pragma once

#include "engine/core/Guid.h"
#include "engine/reflection/ObjectView.h"
#include "engine/reflection/PropertyTypes.h"
#include "engine/reflection/ReflectionRegistry.h"
#include "engine/reflection/SchemaRecord.h"
#include "engine/reflection/SchemaText.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

/// Turns reflected objects into records and back. Faults throw `std::runtime_error`; those inside a field get
/// the prefix "<type>.<field>: ".
namespace Vornu::Reflection
{

/// What the host gives the codec. Each function may be empty; a value that needs it then fails.
struct SchemaCodecContext
{
    /// Text of a non-null asset id; no value when it can't be written.
    std::function<std::optional<std::string>(std::uint64_t id, const AssetTypeInfo& type)> assetToText;
    /// Id of a non-empty reference; 0 when unresolved, all ones for one that may stay empty.
    std::function<std::uint64_t(const std::string& text, const AssetTypeInfo& type)> textToAsset;
    std::function<Core::Guid(std::uint32_t entity)> entityToGuid;
    /// 0 when unresolved.
    std::function<std::uint32_t(const Core::Guid& guid)> guidToEntity;
};

/// State of one capture or apply at top level.
struct CodecState
{
    const ReflectionRegistry& registry;
    const SchemaCodecContext& context;
    SchemaArena& arena; // of the captured texts and records
    FieldBudget budget = {};
};

/// The record of an object, with its texts in `arena`. Names of fields and types stay those of the registry.
SchemaRecord CaptureObject(const ObjectView& object, const ReflectionRegistry& registry,
                           const SchemaCodecContext& context, SchemaArena& arena);

/// Writes a record onto an object: properties that it doesn't name get their defaults. After a failure the
/// object is partly written.
void ApplyRecord(const SchemaRecord& record, const ObjectView& object, const ReflectionRegistry& registry,
                 const SchemaCodecContext& context);
/// The same for an object that was just made, so that it has most defaults already.
void ApplyRecordToNew(const SchemaRecord& record, const ObjectView& object,
                      const ReflectionRegistry& registry, const SchemaCodecContext& context);

/// The enum and the asset type that a property names; null when there is none.
const EnumSchema* FindEnumOf(const PropertyAttributes& attributes, const ReflectionRegistry& registry);
const AssetTypeInfo* FindAssetTypeOf(const PropertyAttributes& attributes,
                                     const ReflectionRegistry& registry);

/// What capture and apply both ask of a collection's innermost leaf, whether there are elements or not.
void CheckCollectionLeaf(const ValueSchema& schema, const PropertyAttributes& attributes,
                         const ReflectionRegistry& registry);

SchemaValue EncodeTypedValue(const ObjectView& view, const ValueSchema& schema,
                             const PropertyAttributes& attributes, CodecState& state, std::uint32_t depth);
void DecodeTypedValue(const SchemaValue& value, const ObjectView& view, const ValueSchema& schema,
                      const PropertyAttributes& attributes, CodecState& state, std::uint32_t depth);

/// A writable view of an object of a compiled type.
template<class Type>
ObjectView ViewOf(Type& object) noexcept
{
    return {TypeIdOf<Type>(), &object, &object, &AccessorsOf<Type>()};
}
/// A read-only view of an object of a compiled type.
template<class Type>
ObjectView ViewOf(const Type& object) noexcept
{
    return {TypeIdOf<Type>(), &object, nullptr, &AccessorsOf<Type>()};
}

} // namespace Vornu::Reflection
