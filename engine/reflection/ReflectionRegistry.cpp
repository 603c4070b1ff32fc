#include "engine/reflection/ReflectionRegistry.h"

#include "engine/reflection/SchemaText.h"

#include <algorithm>
#include <stdexcept>

namespace Vornu::Reflection
{
namespace Detail
{

void ThrowKindMismatch()
{
    throw std::invalid_argument("Reflection property kind does not match its C++ value type.");
}

} // namespace Detail

namespace
{

bool IsBelow(const EnumValue& a, const EnumValue& b)
{
    if (a.isNegative != b.isNegative)
    {
        return a.isNegative;
    }
    return a.bits < b.bits; // two's complement keeps the order among negative values
}

template<class Map>
auto Find(const Map& map, const typename Map::key_type& key) -> typename Map::mapped_type
{
    const auto found = map.find(key);
    return found == map.end() ? nullptr : found->second;
}

} // namespace

ReflectionRegistry::ReflectionRegistry()
{
    constexpr std::size_t kTypes = 256; // as many as the engine has, so that the tables needn't grow
    typesByName_.reserve(kTypes);
    typesById_.reserve(kTypes);
    enumsByName_.reserve(kTypes / 2);
}

ReflectionRegistry& ReflectionRegistry::Instance()
{
    static auto* const registry = new ReflectionRegistry; // stays until the process ends
    return *registry;
}

TypeInfo& ReflectionRegistry::RegisterType(TypeId type, const std::string& name,
                                           const std::string& displayName, const std::string& category,
                                           std::uint32_t version)
{
    if (name.empty() || version == 0)
    {
        throw std::invalid_argument("Reflection schema requires a name and a positive version.");
    }
    const TypeInfo* const sameName = FindType(name);
    if (sameName != nullptr && sameName->type != type)
    {
        throw std::invalid_argument("Reflection type name already belongs to another C++ type: " + name);
    }
    TypeInfo* info = FindType(type);
    if (info == nullptr)
    {
        info = types_.emplace_back(std::make_unique<TypeInfo>()).get();
        typesById_.emplace(type, info);
    }
    else
    {
        typesByName_.erase(info->name);
    }
    info->type = type;
    info->version = version;
    info->name = name;
    info->displayName = displayName.empty() ? name : displayName;
    info->category = category;
    typesByName_.emplace(info->name, info);
    sortedTypes_.clear();
    return *info;
}

EnumSchema& ReflectionRegistry::RegisterEnum(TypeId type, const std::string& name,
                                             std::vector<EnumEntry> values, EnumValue minimum,
                                             EnumValue maximum)
{
    for (const EnumEntry& entry : values)
    {
        if (IsBelow(entry.value, minimum) || IsBelow(maximum, entry.value))
        {
            throw std::invalid_argument("Enum value is outside its C++ storage range: " + name);
        }
    }
    if (name.empty() || values.empty())
    {
        throw std::invalid_argument("Enum schema requires a name and values.");
    }
    for (auto entry = values.begin(); entry != values.end(); ++entry)
    {
        const auto hasName = [&](const EnumEntry& other) { return other.name == entry->name; };
        if (entry->name.empty() || std::any_of(values.begin(), entry, hasName))
        {
            throw std::invalid_argument("Enum schema contains an empty or duplicate name: " + name);
        }
        if (entry->displayName.empty())
        {
            entry->displayName = entry->name;
        }
    }
    EnumSchema* schema = Find(enumsByName_, name);
    const EnumSchema* const sameType = FindEnum(type);
    if ((schema != nullptr && schema->type != type) || (sameType != nullptr && sameType->name != name))
    {
        throw std::invalid_argument("Enum schema name and C++ type disagree: " + name);
    }
    if (schema == nullptr)
    {
        schema = enums_.emplace_back(std::make_unique<EnumSchema>()).get();
        schema->name = name;
        schema->type = type;
        enumsByName_.emplace(schema->name, schema);
    }
    schema->values = std::move(values);
    return *schema;
}

AssetTypeInfo& ReflectionRegistry::AddAssetType(const std::string& name, std::uint32_t nativeId)
{
    if (name.empty() || nativeId == 0)
    {
        throw std::invalid_argument("Asset schema requires a name and a nonzero native ID.");
    }
    for (const std::unique_ptr<AssetTypeInfo>& entry : assetTypes_)
    {
        if ((entry->name == name) != (entry->nativeId == nativeId))
        {
            throw std::invalid_argument("Asset schema name and native ID disagree: " + name);
        }
    }
    if (AssetTypeInfo* const present = Find(assetTypesByName_, name))
    {
        return *present;
    }
    AssetTypeInfo& entry =
        *assetTypes_.emplace_back(std::make_unique<AssetTypeInfo>(AssetTypeInfo{name, nativeId}));
    assetTypesByName_.emplace(entry.name, &entry);
    return entry;
}

void ReflectionRegistry::RequireMember(bool present, const std::string& propertyName)
{
    if (!present)
    {
        throw std::invalid_argument("Reflection property requires a member pointer: " + propertyName);
    }
}

TypeInfo& ReflectionRegistry::AddProperty(TypeId owner, const std::string& typeName, PropertyInfo&& property)
{
    CheckAttributes(property.name, property.schema, property.attributes);
    TypeInfo* type = FindOwner(typeName);
    if (type == nullptr)
    {
        type = &RegisterType(owner, typeName, "", "", 1);
    }
    if (type->type != owner)
    {
        throw std::invalid_argument("Reflection property owner does not match type: " + typeName);
    }
    return AppendProperty(*type, std::move(property));
}

TypeInfo& ReflectionRegistry::AddOffsetProperty(const std::string& typeName, PropertyInfo&& property)
{
    CheckAttributes(property.name, property.schema, property.attributes);
    TypeInfo* const type = FindOwner(typeName);
    if (type == nullptr)
    {
        throw std::invalid_argument("Reflection offset property needs a registered owner type: " + typeName);
    }
    return AppendProperty(*type, std::move(property));
}

TypeInfo& ReflectionRegistry::AppendProperty(TypeInfo& type, PropertyInfo&& property)
{
    if (type.FindProperty(property.name) != nullptr)
    {
        throw std::invalid_argument("Duplicate reflection property: " + type.name + "." + property.name);
    }
    property.ownerType = type.type;
    PropertyAttributes& attributes = property.attributes;
    attributes.displayName = Keep(attributes.displayName.empty() ? property.name : attributes.displayName);
    attributes.tooltip = Keep(attributes.tooltip);
    attributes.group = Keep(attributes.group);
    attributes.knownAssetType = attributes.assetType.empty() ? nullptr : FindAssetType(attributes.assetType);
    attributes.assetType = Keep(attributes.assetType);
    attributes.knownEnum = attributes.enumName.empty() ? nullptr : FindEnum(attributes.enumName);
    attributes.enumName = Keep(attributes.enumName);
    property.lineHead = FieldLineHead(property.name, property.schema.shape, texts_);
    if (type.properties.empty())
    {
        type.properties.reserve(8);
    }
    type.properties.push_back(std::move(property));
    return type;
}

/// The type of that name; most properties follow those of the same type.
TypeInfo* ReflectionRegistry::FindOwner(std::string_view typeName) const noexcept
{
    return !types_.empty() && types_.back()->name == typeName ? types_.back().get()
                                                              : Find(typesByName_, typeName);
}

std::string_view ReflectionRegistry::Keep(std::string_view text)
{
    return text.empty() ? text : texts_.CopyText(text);
}

const TypeInfo* ReflectionRegistry::FindType(std::string_view name) const noexcept
{
    return Find(typesByName_, name);
}

const TypeInfo* ReflectionRegistry::FindType(TypeId type) const noexcept
{
    return Find(typesById_, type);
}

TypeInfo* ReflectionRegistry::FindType(TypeId type) noexcept
{
    return Find(typesById_, type);
}

const EnumSchema* ReflectionRegistry::FindEnum(std::string_view name) const noexcept
{
    return Find(enumsByName_, name);
}

const EnumSchema* ReflectionRegistry::FindEnum(TypeId type) const noexcept
{
    const auto found =
        std::find_if(enums_.begin(), enums_.end(), [&](const auto& schema) { return schema->type == type; });
    return found == enums_.end() ? nullptr : found->get();
}

const AssetTypeInfo* ReflectionRegistry::FindAssetType(std::string_view name) const noexcept
{
    return Find(assetTypesByName_, name);
}

const std::vector<const TypeInfo*>& ReflectionRegistry::SortedTypes() const
{
    if (sortedTypes_.size() != types_.size())
    {
        sortedTypes_.clear();
        for (const std::unique_ptr<TypeInfo>& type : types_)
        {
            sortedTypes_.push_back(type.get());
        }
        std::sort(sortedTypes_.begin(), sortedTypes_.end(),
                  [](const TypeInfo* a, const TypeInfo* b) { return a->name < b->name; });
    }
    return sortedTypes_;
}

} // namespace Vornu::Reflection
