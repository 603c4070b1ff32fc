#include "engine/reflection/PropertyTypes.h"

namespace Vornu::Reflection
{

FieldAttr& FieldAttr::Label(std::string_view text)
{
    displayName = text;
    return *this;
}

FieldAttr& FieldAttr::Asset(std::string_view typeName)
{
    assetType = typeName;
    return *this;
}

FieldAttr& FieldAttr::Group(std::string_view text)
{
    group = text;
    return *this;
}

FieldAttr& FieldAttr::Tooltip(std::string_view text)
{
    tooltip = text;
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

FieldAttr Label(std::string_view text)
{
    FieldAttr attributes;
    attributes.Label(text);
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
