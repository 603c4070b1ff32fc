#include "engine/reflection/ReflectionRegistry.h"

#include <cmath>
#include <stdexcept>

namespace Vornu::Reflection
{
namespace
{

bool MayHaveRange(PropertyKind kind)
{
    using enum PropertyKind;
    return kind == Int32 || kind == UInt32 || kind == UInt64 || kind == Float || kind == Vec2 ||
           kind == Vec3 || kind == Vec4;
}

} // namespace

void CheckAttributes(const std::string& propertyName, const ValueSchema& schema,
                     const PropertyAttributes& attributes)
{
    const PropertyKind leaf = schema.Leaf().kind;
    if (propertyName.empty() || attributes.sinceVersion == 0 ||
        (attributes.untilVersion != 0 && attributes.untilVersion <= attributes.sinceVersion))
    {
        throw std::invalid_argument("Property requires a name and valid schema-version interval: " +
                                    propertyName);
    }
    if ((leaf == PropertyKind::Enum) == attributes.enumName.empty())
    {
        throw std::invalid_argument("Enum property requires matching enum metadata: " + propertyName);
    }
    if ((leaf == PropertyKind::AssetRef) == attributes.assetType.empty())
    {
        throw std::invalid_argument("Asset property requires an asset-type constraint: " + propertyName);
    }
    if (attributes.hasRange &&
        !(MayHaveRange(leaf) && std::isfinite(attributes.rangeMin) && std::isfinite(attributes.rangeMax) &&
          attributes.rangeMin <= attributes.rangeMax))
    {
        throw std::invalid_argument("Property has an invalid numeric authoring range: " + propertyName);
    }
}

/// The first structural fault of a property, empty when there is none.
std::string ReflectionRegistry::FindStructuralFault(const TypeInfo& type, const PropertyInfo& property) const
{
    const ValueSchema& leaf = property.schema.Leaf();
    const PropertyAttributes& attributes = property.attributes;
    if (property.ownerType != type.type || property.valueType != property.schema.type)
    {
        return "Property schema disagrees with its checked accessor.";
    }
    if (attributes.sinceVersion > type.version || attributes.untilVersion > type.version)
    {
        return "Property version exceeds the enclosing schema version.";
    }
    if (leaf.shape == ValueShape::Object && FindType(leaf.type) == nullptr)
    {
        return "Nested object schema has not been registered.";
    }
    if (leaf.kind == PropertyKind::Custom)
    {
        return "Opaque custom property has no value schema.";
    }
    if (leaf.kind == PropertyKind::AssetRef && attributes.knownAssetType == nullptr &&
        FindAssetType(attributes.assetType) == nullptr)
    {
        return "Asset-type constraint has not been registered.";
    }
    if (leaf.kind == PropertyKind::Enum)
    {
        const EnumSchema* const schema = FindEnum(attributes.enumName);
        if (schema == nullptr || schema->type != leaf.type)
        {
            return "Enum schema is missing or belongs to another C++ enum.";
        }
    }
    return {};
}

bool ReflectionRegistry::Validate(std::string* error) const
{
    if (error != nullptr)
    {
        error->clear();
    }
    for (const std::unique_ptr<TypeInfo>& type : types_)
    {
        for (const PropertyInfo& property : type->properties)
        {
            std::string message;
            try
            {
                CheckAttributes(property.name, property.schema, property.attributes);
            }
            catch (const std::invalid_argument& fault)
            {
                message = fault.what();
            }
            const std::string structural = FindStructuralFault(*type, property);
            if (!structural.empty())
            {
                message = structural;
            }
            if (message.empty())
            {
                continue;
            }
            if (error != nullptr)
            {
                *error = type->name + "." + property.name + ": " + message;
            }
            return false;
        }
    }
    return true;
}

} // namespace Vornu::Reflection
