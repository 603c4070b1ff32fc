#include "tools/schema/SchemaNames.h"

#include "engine/core/text/NumberText.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <span>
#include <utility>

namespace Vornu::Schema
{
namespace
{

using Reflection::PropertyFlags;
using Scene::ComponentFlags;

// In the order of the kinds.
constexpr std::array<std::string_view, 17> kKindNames = {
    "Bool", "Int32", "UInt32",   "UInt64",       "Float", "String", "Vec2",   "Vec3",          "Vec4",
    "Quat", "Enum",  "AssetRef", "EntityHandle", "Guid",  "Custom", "Object", "EntityLinkRef",
};

constexpr std::array<std::pair<PropertyFlags, std::string_view>, 6> kAttributeNames = {{
    {PropertyFlags::LinkGuid, "LinkGuid"},
    {PropertyFlags::ReadOnly, "ReadOnly"},
    {PropertyFlags::Color, "Color"},
    {PropertyFlags::Degrees, "Degrees"},
    {PropertyFlags::Runtime, "Runtime"},
    {PropertyFlags::EntityGuid, "EntityGuid"},
}};

constexpr std::array<std::pair<ComponentFlags, std::string_view>, 6> kFlagNames = {{
    {ComponentFlags::UserAddable, "UserAddable"},
    {ComponentFlags::Serialized, "Serialized"},
    {ComponentFlags::EditorVisible, "EditorVisible"},
    {ComponentFlags::EntityFrame, "EntityFrame"},
    {ComponentFlags::RuntimeOnly, "RuntimeOnly"},
    {ComponentFlags::FrameRecord, "FrameRecord"},
}};

template<class Flags>
std::vector<std::string_view> NamesOf(Flags flags, std::span<const std::pair<Flags, std::string_view>> table)
{
    std::vector<std::string_view> names;
    for (const auto& [flag, name] : table)
    {
        if (HasFlag(flags, flag))
        {
            names.push_back(name);
        }
    }
    return names;
}

} // namespace

std::string_view KindName(const Reflection::ValueSchema& schema)
{
    return schema.shape == Reflection::ValueShape::Collection
               ? "Array"
               : kKindNames.at(static_cast<std::size_t>(schema.kind));
}

std::vector<std::string_view> AttributeNames(PropertyFlags flags)
{
    return NamesOf<PropertyFlags>(flags, kAttributeNames);
}

std::vector<std::string_view> FlagNames(ComponentFlags flags)
{
    return NamesOf<ComponentFlags>(flags, kFlagNames);
}

std::vector<std::string_view> AliasNames(const Scene::ComponentTypeEntry& entry)
{
    std::vector<std::string_view> names;
    for (const Scene::ComponentRecordAlias& alias : entry.aliases)
    {
        names.push_back(alias.name);
    }
    return names;
}

std::vector<std::string_view> SaveGameFieldNames(const Scene::ComponentTypeEntry& entry)
{
    std::vector<std::string_view> names;
    for (const Scene::SaveGameField& field : entry.saveGame.fields)
    {
        names.push_back(field.name);
    }
    return names;
}

std::string EnumNumber(const Reflection::EnumValue& value)
{
    return value.isNegative ? std::to_string(static_cast<std::int64_t>(value.bits))
                            : std::to_string(value.bits);
}

std::string ShortNumber(float value)
{
    std::array<char, Core::kNumberTextCapacity> text;
    char* const begin = text.data();
    return {begin, std::to_chars(begin, begin + text.size(), value, std::chars_format::fixed).ptr};
}

} // namespace Vornu::Schema
