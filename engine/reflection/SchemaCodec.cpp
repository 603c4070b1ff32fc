#include "engine/reflection/SchemaCodec.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace Vornu::Reflection
{
namespace
{

constexpr char kEntityStorageFault[] = "Invalid entity-reference storage.";
constexpr char kAssetStorageFault[] = "Invalid asset constraint or storage.";
constexpr char kEnumFault[] = "Missing or mismatched enum schema.";

/// Throws the exception in flight anew behind "<owner>.<field>: ". For use in a handler.
[[noreturn]] void RethrowInField(std::string_view owner, std::string_view field)
{
    try
    {
        throw;
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception& fault)
    {
        std::string message(owner);
        message.append(".").append(field).append(": ").append(fault.what());
        throw std::runtime_error(message);
    }
}

const TypeInfo& RequireType(const ObjectView& object, const ReflectionRegistry& registry)
{
    const TypeInfo* const type = registry.FindType(object.type);
    if (object.constData == nullptr || type == nullptr || type->version == 0 || type->name.empty())
    {
        throw std::runtime_error("Missing or invalid object schema or storage.");
    }
    return *type;
}

bool IsRuntime(const PropertyInfo& property)
{
    return HasFlag(property.attributes.flags, PropertyFlags::Runtime);
}

[[noreturn]] void ThrowPropertyFault(const char* fault, const PropertyInfo& property)
{
    throw std::runtime_error(fault + property.name);
}

void CheckProperty(const PropertyInfo& property)
{
    if (property.schema.type != property.valueType)
    {
        ThrowPropertyFault("Property schema disagrees with its storage: ", property);
    }
    if (HasFlag(property.attributes.flags, PropertyFlags::ReadOnly))
    {
        ThrowPropertyFault("Schema record requires a writable property: ", property);
    }
}

const EnumSchema& RequireEnum(const PropertyAttributes& attributes, TypeId type,
                              const ReflectionRegistry& registry)
{
    const EnumSchema* const schema = FindEnumOf(attributes, registry);
    if (schema == nullptr || schema->type != type)
    {
        throw std::runtime_error(kEnumFault);
    }
    return *schema;
}

const AssetTypeInfo& RequireAssetType(const ObjectView& view, const void* data,
                                      const PropertyAttributes& attributes,
                                      const ReflectionRegistry& registry)
{
    const AssetTypeInfo* const type = FindAssetTypeOf(attributes, registry);
    if (type == nullptr || view.type != TypeIdOf<std::uint64_t>() || data == nullptr)
    {
        throw std::runtime_error(kAssetStorageFault);
    }
    return *type;
}

void RequireEntityStorage(const ObjectView& view, const void* data)
{
    if (view.type != TypeIdOf<std::uint32_t>() || data == nullptr)
    {
        throw std::runtime_error(kEntityStorageFault);
    }
}

// Capture
// -----------------------------------------------------------------------------------------------------

SchemaRecord Capture(const ObjectView& object, CodecState& state, std::uint32_t depth)
{
    const TypeInfo& type = RequireType(object, state.registry);
    state.budget.Charge(type.properties.size(), depth);
    SchemaRecord record(state.arena, type.name, type.version,
                        static_cast<std::uint32_t>(type.properties.size()));
    const PropertyInfo* current = nullptr;
    try
    {
        for (const PropertyInfo& property : type.properties)
        {
            if (!type.Stores(property))
            {
                continue;
            }
            current = nullptr;
            CheckProperty(property);
            current = &property;
            const ObjectView member = property.ConstView(object.constData);
            record.Append(property.name,
                          EncodeTypedValue(member, property.schema, property.attributes, state, depth + 1));
        }
    }
    catch (...)
    {
        if (current == nullptr)
        {
            throw;
        }
        RethrowInField(type.name, current->name);
    }
    return record;
}

SchemaValue EncodeCollection(const ObjectView& view, const ValueSchema& schema,
                             const PropertyAttributes& attributes, CodecState& state, std::uint32_t depth)
{
    CheckCollectionLeaf(schema, attributes, state.registry);
    const ValueAccessors& accessors = *view.accessors;
    const std::size_t size = accessors.size != nullptr ? accessors.size(view.constData) : kMaxElements + 1;
    if (size > kMaxElements)
    {
        throw std::runtime_error("Invalid or oversized collection.");
    }
    state.budget.Charge(size, depth);
    if (size > 0 && accessors.constElement == nullptr)
    {
        throw std::runtime_error("Collection element accessor failed.");
    }
    const SchemaArray array(state.arena, static_cast<std::uint32_t>(size));
    if (accessors.floats != nullptr)
    {
        const float* const floats = accessors.floats(view.constData);
        for (std::size_t i = 0; i < size; ++i)
        {
            array[i] = FormatFloat(floats[i], state.arena);
        }
        return array;
    }
    for (std::size_t i = 0; i < size; ++i)
    {
        accessors.constElement(
            view.constData, i,
            [&](const ObjectView& element)
            { array[i] = EncodeTypedValue(element, *schema.element, attributes, state, depth + 1); });
    }
    return array;
}

SchemaValue EncodeEnum(const ObjectView& view, const PropertyAttributes& attributes, CodecState& state)
{
    const EnumSchema& schema = RequireEnum(attributes, view.type, state.registry);
    const EnumEntry* entry = nullptr;
    if (view.accessors->enumRead != nullptr)
    {
        entry = schema.FindValue(view.accessors->enumRead(view.constData));
    }
    if (entry == nullptr)
    {
        throw std::runtime_error("Unregistered enum value or rejected accessor.");
    }
    return std::string_view(entry->name);
}

SchemaValue EncodeAsset(const ObjectView& view, const PropertyAttributes& attributes, CodecState& state)
{
    const AssetTypeInfo& type = RequireAssetType(view, view.constData, attributes, state.registry);
    const auto id = *static_cast<const std::uint64_t*>(view.constData);
    if (id == 0)
    {
        return {};
    }
    if (!state.context.assetToText)
    {
        throw std::runtime_error("Asset reference requires a host codec.");
    }
    const std::optional<std::string> text = state.context.assetToText(id, type);
    if (!text)
    {
        throw std::runtime_error("Unresolved non-null asset reference.");
    }
    return state.arena.CopyText(*text);
}

SchemaValue EncodeGuid(const Core::Guid& guid, CodecState& state)
{
    return FormatLeaf(PropertyKind::Guid, ViewOf(guid), state.arena);
}

SchemaValue EncodeEntity(const ObjectView& view, CodecState& state)
{
    RequireEntityStorage(view, view.constData);
    const auto entity = *static_cast<const std::uint32_t*>(view.constData);
    if (entity == 0)
    {
        return {};
    }
    if (!state.context.entityToGuid)
    {
        throw std::runtime_error("Entity reference requires a host codec.");
    }
    const Core::Guid guid = state.context.entityToGuid(entity);
    if (!guid.IsValid())
    {
        throw std::runtime_error("Entity reference has no stable GUID.");
    }
    return EncodeGuid(guid, state);
}

SchemaValue EncodeScalar(const ObjectView& view, const ValueSchema& schema,
                         const PropertyAttributes& attributes, CodecState& state)
{
    switch (schema.kind)
    {
    case PropertyKind::Enum:
        return EncodeEnum(view, attributes, state);
    case PropertyKind::AssetRef:
        return EncodeAsset(view, attributes, state);
    case PropertyKind::EntityHandle:
        return EncodeEntity(view, state);
    case PropertyKind::EntityLinkRef:
    {
        const Core::Guid* const guid =
            view.accessors->linkRead != nullptr ? view.accessors->linkRead(view.constData) : nullptr;
        if (guid == nullptr)
        {
            throw std::runtime_error(kEntityStorageFault);
        }
        return EncodeGuid(*guid, state);
    }
    default:
        return FormatLeaf(schema.kind, view, state.arena);
    }
}

// Apply
// -------------------------------------------------------------------------------------------------------

void Apply(const SchemaRecord& record, const ObjectView& object, CodecState& state, std::uint32_t depth,
           bool isNew = false);

/// Properties of a type that the fields of a record have named.
class SeenProperties
{
public:
    explicit SeenProperties(std::size_t count)
    {
        if (count > 64)
        {
            many_.resize(count);
        }
    }

    bool Contains(std::size_t index) const { return many_.empty() ? (few_ >> index & 1) != 0 : many_[index]; }

    void Insert(std::size_t index)
    {
        if (many_.empty())
        {
            few_ |= std::uint64_t{1} << index;
        }
        else
        {
            many_[index] = true;
        }
    }

private:
    std::uint64_t few_ = 0;
    std::vector<bool> many_;
};

/// One object under a record of its type, step by step.
class RecordApplier
{
public:
    /// `isNew` tells that the object has just been made.
    RecordApplier(const SchemaRecord& record, const ObjectView& object, const TypeInfo& type,
                  CodecState& state, std::uint32_t depth, bool isNew)
        : record_(record), object_(object), type_(type), state_(state), depth_(depth), isNew_(isNew),
          seen_(type.properties.size())
    {
    }

    void ResetToDefaults()
    {
        for (const PropertyInfo& property : type_.properties)
        {
            if (!IsActive(property))
            {
                continue;
            }
            CheckProperty(property);
            if (!(isNew_ && property.isConstructed) && !property.SetDefault(object_.mutableData))
            {
                throw std::runtime_error("Property has no writable schema default: " + property.name);
            }
        }
    }

    void ApplyFields()
    {
        std::size_t next = 0;
        for (const SchemaField& field : record_.Fields())
        {
            const std::size_t index = FindProperty(field.name, next);
            if (index == type_.properties.size() || seen_.Contains(index) ||
                !type_.properties[index].attributes.ExistsIn(record_.version) ||
                IsRuntime(type_.properties[index]))
            {
                throw std::runtime_error("Unknown, duplicate, or unavailable schema field: " +
                                         std::string(record_.name) + "." + std::string(field.name));
            }
            seen_.Insert(index);
            next = index + 1;
            const PropertyInfo& property = type_.properties[index];
            try
            {
                DecodeTypedValue(field.value, property.MutableView(object_.mutableData), property.schema,
                                 property.attributes, state_, depth_ + 1);
            }
            catch (...)
            {
                RethrowInField(record_.name, field.name);
            }
        }
    }

    /// A default that couldn't be saved again is refused here and not at the next save.
    void CheckUnnamed()
    {
        for (std::size_t i = 0; i < type_.properties.size(); ++i)
        {
            const PropertyInfo& property = type_.properties[i];
            if (seen_.Contains(i) || !IsActive(property))
            {
                continue;
            }
            try
            {
                EncodeTypedValue(property.ConstView(object_.constData), property.schema, property.attributes,
                                 state_, depth_ + 1);
            }
            catch (...)
            {
                RethrowInField(type_.name, property.name);
            }
        }
    }

private:
    bool IsActive(const PropertyInfo& property) const
    {
        const PropertyAttributes& attributes = property.attributes;
        return (attributes.ExistsIn(type_.version) || attributes.ExistsIn(record_.version)) &&
               !IsRuntime(property);
    }

    /// The reader of records gives fields the very names of their properties where it can.
    static bool IsName(const std::string& propertyName, std::string_view name)
    {
        return propertyName.size() == name.size() &&
               (propertyName.data() == name.data() || propertyName == name);
    }

    /// Fields mostly come in the order of registration, so the search starts behind the last one found.
    std::size_t FindProperty(std::string_view name, std::size_t start) const
    {
        const std::size_t count = type_.properties.size();
        for (std::size_t i = start; i < count; ++i)
        {
            if (IsName(type_.properties[i].name, name))
            {
                return i;
            }
        }
        for (std::size_t i = 0; i < start; ++i)
        {
            if (IsName(type_.properties[i].name, name))
            {
                return i;
            }
        }
        return count;
    }

    const SchemaRecord& record_;
    const ObjectView& object_;
    const TypeInfo& type_;
    CodecState& state_;
    std::uint32_t depth_;
    bool isNew_;
    SeenProperties seen_;
};

void Apply(const SchemaRecord& record, const ObjectView& object, CodecState& state, std::uint32_t depth,
           bool isNew)
{
    const TypeInfo& type = RequireType(object, state.registry);
    state.budget.Charge(std::max(record.Fields().size(), type.properties.size()), depth);
    if (object.mutableData == nullptr || record.name != type.name || record.version == 0 ||
        record.version > type.version)
    {
        throw std::runtime_error("Unsupported component schema, version, or destination: " +
                                 std::string(record.name));
    }
    RecordApplier applier(record, object, type, state, depth, isNew);
    applier.ResetToDefaults();
    applier.ApplyFields();
    applier.CheckUnnamed();
}

std::string_view RequireText(const SchemaValue& value)
{
    if (!value.IsText())
    {
        throw std::runtime_error("Expected a scalar property.");
    }
    return value.Text();
}

void DecodeCollection(const SchemaValue& value, const ObjectView& view, const ValueSchema& schema,
                      const PropertyAttributes& attributes, CodecState& state, std::uint32_t depth)
{
    CheckCollectionLeaf(schema, attributes, state.registry);
    if (!value.IsArray() || value.Array().Size() > kMaxElements)
    {
        throw std::runtime_error("Expected a bounded collection.");
    }
    const SchemaArray array = value.Array();
    state.budget.Charge(array.Size(), depth);
    const ValueAccessors& accessors = *view.accessors;
    if (accessors.resize == nullptr || !accessors.resize(view.mutableData, array.Size()))
    {
        throw std::runtime_error("Collection extent or mutable storage mismatch.");
    }
    if (array.Size() > 0 && accessors.mutableElement == nullptr)
    {
        throw std::runtime_error("Mutable collection element accessor failed.");
    }
    if (accessors.floats != nullptr)
    {
        auto* const floats = const_cast<float*>(accessors.floats(view.mutableData));
        for (std::size_t i = 0; i < array.Size(); ++i)
        {
            floats[i] = ParseFloat(RequireText(array[i]));
        }
        return;
    }
    for (std::size_t i = 0; i < array.Size(); ++i)
    {
        accessors.mutableElement(
            view.mutableData, i,
            [&](const ObjectView& element)
            { DecodeTypedValue(array[i], element, *schema.element, attributes, state, depth + 1); });
    }
}

void DecodeEnum(std::string_view text, const ObjectView& view, const PropertyAttributes& attributes,
                CodecState& state)
{
    const EnumSchema& schema = RequireEnum(attributes, view.type, state.registry);
    const EnumEntry* const entry = schema.FindName(text);
    if (entry == nullptr || view.accessors->enumWrite == nullptr ||
        !view.accessors->enumWrite(view.mutableData, *entry))
    {
        throw std::runtime_error("Unknown enum name or rejected accessor: " + std::string(text));
    }
}

void DecodeAsset(std::string_view text, const ObjectView& view, const PropertyAttributes& attributes,
                 CodecState& state)
{
    const AssetTypeInfo& type = RequireAssetType(view, view.mutableData, attributes, state.registry);
    auto& stored = *static_cast<std::uint64_t*>(view.mutableData);
    if (text.empty())
    {
        stored = 0;
        return;
    }
    if (!state.context.textToAsset)
    {
        throw std::runtime_error("Asset reference requires a host codec.");
    }
    const std::uint64_t id = state.context.textToAsset(std::string(text), type);
    if (id == 0)
    {
        throw std::runtime_error("Unresolved asset reference: " + std::string(text));
    }
    const bool stripped = id == std::numeric_limits<std::uint64_t>::max();
    stored = stripped ? 0 : id;
}

void DecodeEntity(std::string_view text, const ObjectView& view, CodecState& state)
{
    RequireEntityStorage(view, view.mutableData);
    auto& stored = *static_cast<std::uint32_t*>(view.mutableData);
    const Core::Guid guid = Core::ParseStableGuid(text);
    if (!guid.IsValid())
    {
        stored = 0;
        return;
    }
    if (!state.context.guidToEntity)
    {
        throw std::runtime_error("Entity reference requires a host codec.");
    }
    const std::uint32_t entity = state.context.guidToEntity(guid);
    if (entity == 0)
    {
        throw std::runtime_error("Unresolved stable entity reference.");
    }
    stored = entity;
}

void DecodeScalar(std::string_view text, const ObjectView& view, const ValueSchema& schema,
                  const PropertyAttributes& attributes, CodecState& state)
{
    switch (schema.kind)
    {
    case PropertyKind::Enum:
        return DecodeEnum(text, view, attributes, state);
    case PropertyKind::AssetRef:
        return DecodeAsset(text, view, attributes, state);
    case PropertyKind::EntityHandle:
        return DecodeEntity(text, view, state);
    case PropertyKind::EntityLinkRef:
    {
        const Core::Guid guid = Core::ParseStableGuid(text);
        if (view.accessors->linkWrite == nullptr)
        {
            throw std::runtime_error(kEntityStorageFault);
        }
        view.accessors->linkWrite(view.mutableData, guid);
        return;
    }
    default:
        ParseLeaf(schema.kind, text, view);
    }
}

} // namespace

const EnumSchema* FindEnumOf(const PropertyAttributes& attributes, const ReflectionRegistry& registry)
{
    return attributes.knownEnum != nullptr ? attributes.knownEnum : registry.FindEnum(attributes.enumName);
}

const AssetTypeInfo* FindAssetTypeOf(const PropertyAttributes& attributes, const ReflectionRegistry& registry)
{
    return attributes.knownAssetType != nullptr ? attributes.knownAssetType
                                                : registry.FindAssetType(attributes.assetType);
}

void CheckCollectionLeaf(const ValueSchema& schema, const PropertyAttributes& attributes,
                         const ReflectionRegistry& registry)
{
    const ValueSchema& leaf = schema.Leaf();
    if (leaf.kind == PropertyKind::Custom)
    {
        throw std::runtime_error("Opaque collection elements require a schema codec.");
    }
    if (leaf.kind == PropertyKind::Enum)
    {
        RequireEnum(attributes, leaf.type, registry);
    }
    if (leaf.kind == PropertyKind::AssetRef && FindAssetTypeOf(attributes, registry) == nullptr)
    {
        throw std::runtime_error("Collection asset constraint is not registered.");
    }
    if (leaf.shape == ValueShape::Object)
    {
        const TypeInfo* const type = registry.FindType(leaf.type);
        if (type == nullptr || type->name.empty() || type->version == 0)
        {
            throw std::runtime_error("Collection object schema is not registered.");
        }
    }
}

SchemaValue EncodeTypedValue(const ObjectView& view, const ValueSchema& schema,
                             const PropertyAttributes& attributes, CodecState& state, std::uint32_t depth)
{
    if (view.constData == nullptr || view.accessors->matches == nullptr || !view.accessors->matches(schema))
    {
        throw std::runtime_error("Value schema disagrees with captured storage.");
    }
    switch (schema.shape)
    {
    case ValueShape::Object:
        return new (state.arena.Allocate<SchemaRecord>(1)) SchemaRecord(Capture(view, state, depth));
    case ValueShape::Collection:
        return EncodeCollection(view, schema, attributes, state, depth);
    case ValueShape::Scalar:
        break;
    }
    return EncodeScalar(view, schema, attributes, state);
}

void DecodeTypedValue(const SchemaValue& value, const ObjectView& view, const ValueSchema& schema,
                      const PropertyAttributes& attributes, CodecState& state, std::uint32_t depth)
{
    if (view.mutableData == nullptr || view.accessors->matches == nullptr || !view.accessors->matches(schema))
    {
        throw std::runtime_error("Value schema disagrees with writable storage.");
    }
    switch (schema.shape)
    {
    case ValueShape::Object:
        if (!value.IsRecord())
        {
            throw std::runtime_error("Expected an object property.");
        }
        return Apply(value.Record(), view, state, depth);
    case ValueShape::Collection:
        return DecodeCollection(value, view, schema, attributes, state, depth);
    case ValueShape::Scalar:
        break;
    }
    DecodeScalar(RequireText(value), view, schema, attributes, state);
}

SchemaRecord CaptureObject(const ObjectView& object, const ReflectionRegistry& registry,
                           const SchemaCodecContext& context, SchemaArena& arena)
{
    CodecState state{registry, context, arena};
    return Capture(object, state, 1);
}

void ApplyRecord(const SchemaRecord& record, const ObjectView& object, const ReflectionRegistry& registry,
                 const SchemaCodecContext& context)
{
    SchemaArena scratch;
    CodecState state{registry, context, scratch};
    Apply(record, object, state, 1);
}

void ApplyRecordToNew(const SchemaRecord& record, const ObjectView& object,
                      const ReflectionRegistry& registry, const SchemaCodecContext& context)
{
    SchemaArena scratch;
    CodecState state{registry, context, scratch};
    Apply(record, object, state, 1, true);
}

} // namespace Vornu::Reflection
