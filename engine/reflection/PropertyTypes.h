#pragma once

#include "engine/reflection/ObjectView.h"
#include "engine/reflection/TypeId.h"

#include <any>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace Vornu::Reflection
{

/// The leaf form of a value. The numbers are stable inside the program.
enum class PropertyKind : std::uint8_t
{
    Bool = 0,
    Int32 = 1,
    UInt32 = 2,
    UInt64 = 3,
    Float = 4,
    String = 5,
    Vec2 = 6,
    Vec3 = 7,
    Vec4 = 8,
    Quat = 9, // in memory x, y, z, w
    Enum = 10,
    AssetRef = 11,     // an asset id in an unsigned 64-bit integer
    EntityHandle = 12, // a live entity in an unsigned 32-bit integer
    Guid = 13,
    Custom = 14,        // the codec can't see inside
    Object = 15,        // a nested registered type
    EntityLinkRef = 16, // a GUID that is reached through the link accessors of its view
};

/// Describes one value. For a collection `kind` is Custom and `element` describes what it holds.
struct ValueSchema
{
    TypeId type;
    ValueShape shape = ValueShape::Scalar;
    PropertyKind kind = PropertyKind::Custom;
    std::shared_ptr<const ValueSchema> element;

    /// The innermost schema of the element chain; the schema itself when it is no collection.
    const ValueSchema& Leaf() const noexcept
    {
        const ValueSchema* leaf = this;
        while (leaf->element)
        {
            leaf = leaf->element.get();
        }
        return *leaf;
    }
};

enum class PropertyFlags : std::uint32_t
{
    None = 0,
    LinkGuid = 1,     // the GUID half of an entity link; tools hide it behind the link
    ReadOnly = 2,     // can't be written through the registry
    Color = 4,        // tools edit the value as a colour
    Degrees = 8,      // an angle in degrees
    Runtime = 16,     // run-time state: capture and apply skip the property
    EntityGuid = 128, // a GUID that names an entity of the same scene; copying entities remaps it
};

constexpr PropertyFlags operator|(PropertyFlags a, PropertyFlags b) noexcept
{
    return static_cast<PropertyFlags>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}

constexpr bool HasFlag(PropertyFlags flags, PropertyFlags flag) noexcept
{
    return (static_cast<std::uint32_t>(flags) & static_cast<std::uint32_t>(flag)) != 0;
}

struct AssetTypeInfo;
struct EnumSchema;

/// Metadata of one property. The texts of a registered one are the registry's; those of others are whoever's
/// who made them.
struct PropertyAttributes
{
    std::string_view displayName; // the property's name when left empty
    std::string_view tooltip;
    std::string_view group;
    std::string_view enumName;                     // set exactly when the leaf kind is Enum
    std::string_view assetType;                    // set exactly when the leaf kind is AssetRef
    const AssetTypeInfo* knownAssetType = nullptr; // of that name, when it was there first
    const EnumSchema* knownEnum = nullptr;         // the same
    float rangeMin = 0.0f; // authoring range, for tools; stored values may lie outside
    float rangeMax = 0.0f;
    bool hasRange = false;
    PropertyFlags flags = PropertyFlags::None;
    std::uint32_t sinceVersion = 1; // first schema version that holds the property
    std::uint32_t untilVersion = 0; // first schema version that no longer holds it; 0: none

    bool ExistsIn(std::uint32_t version) const noexcept
    {
        return version >= sinceVersion && (untilVersion == 0 || version < untilVersion);
    }
};

/// What builders take for a field: attributes, and a kind where it isn't the one that the value type
/// suggests. Texts have to live until the field is registered.
struct FieldAttr : PropertyAttributes
{
    std::optional<PropertyKind> kind;

    FieldAttr& Label(std::string_view text);
    FieldAttr& Asset(std::string_view typeName);
    FieldAttr& Group(std::string_view text);
    FieldAttr& Tooltip(std::string_view text);
    FieldAttr& Range(float minimum, float maximum);
    FieldAttr& With(PropertyFlags flag);
    FieldAttr& Kind(PropertyKind override);
    FieldAttr& Since(std::uint32_t version);
    FieldAttr& Until(std::uint32_t version);
};

/// Attributes with the display name `text`.
FieldAttr Label(std::string_view text);

/// A signed or an unsigned 64-bit integer. A negative value never equals an unsigned one.
struct EnumValue
{
    std::uint64_t bits = 0;
    bool isNegative = false;

    constexpr EnumValue() = default;

    template<class Number>
    requires(std::is_integral_v<Number> || std::is_enum_v<Number>) constexpr EnumValue(Number number) noexcept
        : bits(static_cast<std::uint64_t>(number)), isNegative(IsNegative(number))
    {
    }

    friend constexpr bool operator==(const EnumValue&, const EnumValue&) = default;

private:
    template<class Number>
    static constexpr bool IsNegative(Number number) noexcept
    {
        if constexpr (std::is_enum_v<Number>)
        {
            return IsNegative(static_cast<std::underlying_type_t<Number>>(number));
        }
        else if constexpr (std::is_signed_v<Number>)
        {
            return number < 0;
        }
        else
        {
            return false;
        }
    }
};

/// The texts are literals of the code that registers the enum.
struct EnumEntry
{
    EnumValue value;
    std::string_view name;             // as files have it
    std::string_view displayName = {}; // the name when left empty
};

struct EnumSchema
{
    std::string name;
    TypeId type;
    std::vector<EnumEntry> values;

    const EnumEntry* FindValue(const EnumValue& value) const noexcept;
    const EnumEntry* FindName(std::string_view entryName) const noexcept;
};

struct AssetTypeInfo
{
    std::string name;
    std::uint32_t nativeId = 0; // the number of the asset kind
};

/// How a property's default reaches its storage; one table for each value type.
struct DefaultAccessors
{
    bool (*set)(void* value, const std::any& defaultValue) = nullptr;
    bool (*equals)(const void* value, const std::any& defaultValue) = nullptr;
    const void* (*data)(const std::any& defaultValue) = nullptr;
};

struct PropertyInfo
{
    std::string name;
    std::string_view lineHead; // what its line in a record begins with, up to the value
    ValueSchema schema;
    std::size_t valueSize = 0;
    PropertyAttributes attributes;
    TypeId ownerType;
    TypeId valueType;
    std::size_t offset = 0; // of the member in its owner, in bytes
    const ValueAccessors* accessors = &kNoAccessors;
    DefaultAccessors defaults;
    std::any defaultValue;
    bool isConstructed = false; // the default is what a newly made owner holds

    const void* ConstPointer(const void* owner) const noexcept
    {
        return static_cast<const std::byte*>(owner) + offset;
    }
    void* MutablePointer(void* owner) const noexcept { return static_cast<std::byte*>(owner) + offset; }

    ObjectView ConstView(const void* owner) const noexcept
    {
        return {valueType, ConstPointer(owner), nullptr, accessors};
    }
    ObjectView MutableView(void* owner) const noexcept
    {
        void* const value = MutablePointer(owner);
        return {valueType, value, value, accessors};
    }

    /// A read-only view of the default; without data when there is none.
    ObjectView DefaultView() const noexcept
    {
        return {valueType, defaults.data != nullptr ? defaults.data(defaultValue) : nullptr, nullptr,
                accessors};
    }
    /// Writes the default into the member; false when there is none.
    bool SetDefault(void* owner) const
    {
        return defaults.set != nullptr && defaults.set(MutablePointer(owner), defaultValue);
    }
    bool EqualsDefault(const void* owner) const
    {
        return defaults.equals != nullptr && defaults.equals(ConstPointer(owner), defaultValue);
    }
};

/// One registered type. The order of `properties` is the order in files.
struct TypeInfo
{
    std::string name;
    std::string displayName;
    std::string category;
    TypeId type;
    std::uint32_t version = 1;
    std::vector<PropertyInfo> properties;

    const PropertyInfo* FindProperty(std::string_view propertyName) const noexcept;

    /// Whether a record of the present version holds the property.
    bool Stores(const PropertyInfo& property) const noexcept
    {
        return property.attributes.ExistsIn(version) &&
               !HasFlag(property.attributes.flags, PropertyFlags::Runtime);
    }
};

} // namespace Vornu::Reflection
