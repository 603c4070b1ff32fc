#include "engine/reflection/ValueBuilder.h"

namespace Vornu::Reflection::Detail
{

FieldAttr CompleteField(const ReflectionRegistry& registry, const char* name, const FieldAttr& given,
                        PropertyKind naturalKind, TypeId leafType)
{
    FieldAttr attributes = given;
    if (attributes.displayName.empty())
    {
        attributes.displayName = name;
    }
    if (!attributes.kind)
    {
        attributes.kind = attributes.assetType.empty() ? naturalKind : PropertyKind::AssetRef;
    }
    if (*attributes.kind == PropertyKind::Enum && attributes.enumName.empty())
    {
        if (const EnumSchema* const schema = registry.FindEnum(leafType))
        {
            attributes.enumName = schema->name;
        }
    }
    return attributes;
}

} // namespace Vornu::Reflection::Detail
