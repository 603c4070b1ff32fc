#pragma once

#include "engine/core/Guid.h"
#include "engine/reflection/PropertyTypes.h"

#include <glm/fwd.hpp>

#include <any>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

/// What the compiler knows of a value type, turned into tables: the kinds that it admits, its schema, and the
/// functions that reach its storage.
namespace Vornu::Reflection
{

template<class Value>
inline constexpr bool kIsCollection = false;
template<class Element>
inline constexpr bool kIsCollection<std::vector<Element>> = true;
template<class Element, std::size_t kSize>
inline constexpr bool kIsCollection<std::array<Element, kSize>> = true;

namespace Detail
{

template<class Value>
struct LeafOf
{
    using Type = Value;
};
template<class Element>
struct LeafOf<std::vector<Element>> : LeafOf<Element>
{
};
template<class Element, std::size_t kSize>
struct LeafOf<std::array<Element, kSize>> : LeafOf<Element>
{
};

} // namespace Detail

/// The innermost element type of a collection; the type itself when it is none.
template<class Value>
using LeafType = typename Detail::LeafOf<Value>::Type;

/// The kind that a value type suggests; `Custom` for one that no kind holds, such as `double`.
template<class Value>
constexpr PropertyKind NaturalKind() noexcept
{
    using enum PropertyKind;
    if constexpr (std::is_same_v<Value, bool>)
    {
        return Bool;
    }
    else if constexpr (std::is_same_v<Value, std::int32_t>)
    {
        return Int32;
    }
    else if constexpr (std::is_same_v<Value, std::uint32_t>)
    {
        return UInt32;
    }
    else if constexpr (std::is_same_v<Value, std::uint64_t>)
    {
        return UInt64;
    }
    else if constexpr (std::is_same_v<Value, float>)
    {
        return Float;
    }
    else if constexpr (std::is_same_v<Value, std::string>)
    {
        return String;
    }
    else if constexpr (std::is_same_v<Value, glm::vec2>)
    {
        return Vec2;
    }
    else if constexpr (std::is_same_v<Value, glm::vec3>)
    {
        return Vec3;
    }
    else if constexpr (std::is_same_v<Value, glm::vec4>)
    {
        return Vec4;
    }
    else if constexpr (std::is_same_v<Value, glm::quat>)
    {
        return Quat;
    }
    else if constexpr (std::is_same_v<Value, Core::Guid>)
    {
        return PropertyKind::Guid;
    }
    else if constexpr (std::is_enum_v<Value>)
    {
        return Enum;
    }
    else
    {
        return std::is_class_v<Value> ? Object : Custom;
    }
}

/// Whether a property of the value type may have the kind.
template<class Value>
constexpr bool AdmitsKind(PropertyKind kind) noexcept
{
    if (kind == NaturalKind<Value>() || kind == PropertyKind::Custom)
    {
        return true;
    }
    if constexpr (std::is_same_v<Value, std::uint32_t>)
    {
        return kind == PropertyKind::EntityHandle;
    }
    else if constexpr (std::is_same_v<Value, std::uint64_t>)
    {
        return kind == PropertyKind::AssetRef;
    }
    else
    {
        return std::is_class_v<Value> && kind == PropertyKind::Object;
    }
}

template<class Value>
const ValueAccessors& AccessorsOf() noexcept;

namespace Detail
{

template<class Value>
bool MatchesScalar(const ValueSchema& schema)
{
    const bool isObject = schema.kind == PropertyKind::Object;
    return schema.type == TypeIdOf<Value>() && !schema.element && AdmitsKind<Value>(schema.kind) &&
           schema.shape == (isObject ? ValueShape::Object : ValueShape::Scalar);
}

template<class Collection>
bool MatchesCollection(const ValueSchema& schema)
{
    using Element = typename Collection::value_type;
    return schema.type == TypeIdOf<Collection>() && schema.shape == ValueShape::Collection &&
           schema.kind == PropertyKind::Custom && schema.element &&
           AccessorsOf<Element>().matches(*schema.element);
}

template<class Enum>
bool WriteEnum(void* data, const EnumEntry& entry)
{
    *static_cast<Enum*>(data) = static_cast<Enum>(entry.value.bits);
    return true;
}

/// A fixed array can be resized to its own size alone.
template<class Collection>
bool ResizeCollection(void* data, std::size_t count)
{
    auto& collection = *static_cast<Collection*>(data);
    if constexpr (requires { collection.resize(count); })
    {
        collection.resize(count);
    }
    return collection.size() == count;
}

template<class Collection>
ValueAccessors MakeCollectionAccessors()
{
    using Element = typename Collection::value_type;
    ValueAccessors table;
    table.matches = &MatchesCollection<Collection>;
    table.shape = ValueShape::Collection;
    table.size = [](const void* data) { return static_cast<const Collection*>(data)->size(); };
    table.resize = &ResizeCollection<Collection>;
    if constexpr (!requires(Collection collection) { collection.resize(std::size_t{}); })
    {
        table.fixedSize = Collection().size();
    }
    if constexpr (std::is_same_v<Element, float>)
    {
        table.floats = [](const void* data) { return static_cast<const Collection*>(data)->data(); };
    }
    table.constElement = [](const void* data, std::size_t index, ElementCallback callback)
    {
        const Collection& collection = *static_cast<const Collection*>(data);
        // A copy for a vector of bool, whose elements have no address.
        const Element& element = collection[index];
        callback(ObjectView{TypeIdOf<Element>(), &element, nullptr, &AccessorsOf<Element>()});
    };
    table.mutableElement = [](void* data, std::size_t index, ElementCallback callback)
    {
        Collection& collection = *static_cast<Collection*>(data);
        if constexpr (std::is_same_v<Element, bool>)
        {
            bool element = collection[index];
            callback(ObjectView{TypeIdOf<bool>(), &element, &element, &AccessorsOf<bool>()});
            collection[index] = element;
        }
        else
        {
            Element& element = collection[index];
            callback(ObjectView{TypeIdOf<Element>(), &element, &element, &AccessorsOf<Element>()});
        }
    };
    return table;
}

template<class Value>
struct AccessorTable
{
    static ValueAccessors Make()
    {
        ValueAccessors table;
        table.matches = &MatchesScalar<Value>;
        table.shape = NaturalKind<Value>() == PropertyKind::Object ? ValueShape::Object : ValueShape::Scalar;
        if constexpr (std::is_enum_v<Value>)
        {
            table.enumRead = [](const void* data) { return EnumValue(*static_cast<const Value*>(data)); };
            table.enumWrite = &WriteEnum<Value>;
        }
        return table;
    }
};
template<class Value>
requires kIsCollection<Value>
struct AccessorTable<Value>
{
    static ValueAccessors Make() { return MakeCollectionAccessors<Value>(); }
};

[[noreturn]] void ThrowKindMismatch();

} // namespace Detail

/// The accessor table of a value type.
template<class Value>
const ValueAccessors& AccessorsOf() noexcept
{
    static const ValueAccessors table = Detail::AccessorTable<Value>::Make();
    return table;
}

/// The schema of a value type whose leaf has the kind. Throws `std::invalid_argument` when it doesn't admit
/// it.
template<class Value>
ValueSchema MakeValueSchema(PropertyKind leafKind)
{
    ValueSchema schema;
    schema.type = TypeIdOf<Value>();
    if constexpr (kIsCollection<Value>)
    {
        schema.shape = ValueShape::Collection;
        schema.kind = PropertyKind::Custom;
        schema.element =
            std::make_shared<const ValueSchema>(MakeValueSchema<typename Value::value_type>(leafKind));
    }
    else
    {
        if (!AdmitsKind<Value>(leafKind))
        {
            Detail::ThrowKindMismatch();
        }
        schema.kind = leafKind;
        schema.shape = leafKind == PropertyKind::Object ? ValueShape::Object : ValueShape::Scalar;
    }
    return schema;
}

/// The functions that write and compare defaults of a value type.
template<std::equality_comparable Value>
DefaultAccessors DefaultsOf() noexcept
{
    return {[](void* value, const std::any& defaultValue)
            {
                const Value* const source = std::any_cast<Value>(&defaultValue);
                if (source == nullptr)
                {
                    return false;
                }
                *static_cast<Value*>(value) = *source;
                return true;
            },
            [](const void* value, const std::any& defaultValue)
            {
                const Value* const source = std::any_cast<Value>(&defaultValue);
                return source != nullptr && *static_cast<const Value*>(value) == *source;
            },
            [](const std::any& defaultValue) -> const void* { return std::any_cast<Value>(&defaultValue); }};
}

} // namespace Vornu::Reflection
