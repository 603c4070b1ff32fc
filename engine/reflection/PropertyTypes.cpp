#include "engine/reflection/PropertyTypes.h"

#include <utility>

namespace Vornu::Reflection
{

FieldAttr& FieldAttr::Label(std::string text)
{
    displayName = std::move(text);
    return *this;
}

FieldAttr& FieldAttr::Asset(std::string typeName)
{
    assetType = std::move(typeName);
    return *this;
}

FieldAttr& FieldAttr::Group(std::string text)
{
    group = std::move(text);
    return *this;
}

FieldAttr& FieldAttr::Tooltip(std::string text)
{
    tooltip = std::move(text);
    return *this;
}

FieldAttr& FieldAttr::Range(float minimum, float maximum)
{
    rangeMin = minimum;
    rangeMax = maximum;
    hasRange = true;
    return *this;
}

FieldAttr& FieldAttr::With(PropertyFlags flag)
{
    flags = flags | flag;
    return *this;
}

FieldAttr& FieldAttr::Kind(PropertyKind override)
{
    kind = override;
    return *this;
}

FieldAttr& FieldAttr::Since(std::uint32_t version)
{
    sinceVersion = version;
    return *this;
}

FieldAttr& FieldAttr::Until(std::uint32_t version)
{
    untilVersion = version;
    return *this;
}

FieldAttr Label(std::string text)
{
    FieldAttr attributes;
    attributes.Label(std::move(text));
    return attributes;
}

const EnumEntry* EnumSchema::FindValue(const EnumValue& value) const noexcept
{
    for (const EnumEntry& entry : values)
    {
        if (entry.value == value)
        {
            return &entry;
        }
    }
    return nullptr;
}

const EnumEntry* EnumSchema::FindName(std::string_view entryName) const noexcept
{
    for (const EnumEntry& entry : values)
    {
        if (entry.name == entryName)
        {
            return &entry;
        }
    }
    return nullptr;
}

const PropertyInfo* TypeInfo::FindProperty(std::string_view propertyName) const noexcept
{
    for (const PropertyInfo& property : properties)
    {
        if (property.name == propertyName)
        {
            return &property;
        }
    }
    return nullptr;
}

} // namespace Vornu::Reflection
