#pragma once

#include "engine/reflection/ReflectionRegistry.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace Vornu::Reflection
{

namespace Detail
{

/// `given` with everything filled in that the value type tells.
FieldAttr CompleteField(const ReflectionRegistry& registry, const char* name, const FieldAttr& given,
                        PropertyKind naturalKind, TypeId leafType);

} // namespace Detail

/// The attributes of a field of type `Value` with everything filled in that the type tells: the kind, the
/// name of its enum, and the field's own name as display name.
template<class Value>
FieldAttr CompleteField(const ReflectionRegistry& registry, const char* name, const FieldAttr& given)
{
    constexpr PropertyKind kNatural = NaturalKind<LeafType<Value>>();
    static_assert(kNatural != PropertyKind::Custom,
                  "no kind of property holds this type; see NaturalKind for those that have one");
    return Detail::CompleteField(registry, name, given, kNatural, TypeIdOf<LeafType<Value>>());
}

/// Registers a nested value type by chained calls.
template<class Type>
class ValueBuilder
{
public:
    ValueBuilder(ReflectionRegistry& registry, const std::string& name, const std::string& displayName,
                 const std::string& category)
        : registry_(registry), type_(registry.RegisterType<Type>(name, displayName, category, 1))
    {
    }

    template<class Value, class Owner>
    ValueBuilder& Field(const char* name, Value Owner::*member, const FieldAttr& given = FieldAttr())
    {
        const FieldAttr attributes = CompleteField<Value>(registry_, name, given);
        registry_.AddProperty<Type, Value>(type_.name, name, member, *attributes.kind, attributes);
        return *this;
    }

    ValueBuilder& Version(std::uint32_t version)
    {
        if (version == 0)
        {
            throw std::invalid_argument("Value schema versions start at 1: " + type_.name);
        }
        type_.version = version;
        return *this;
    }

private:
    ReflectionRegistry& registry_;
    TypeInfo& type_;
};

/// Starts the registration of a nested value type in the registry of the process.
template<class Type>
ValueBuilder<Type> RegisterValue(const std::string& name, const std::string& displayName,
                                 const std::string& category)
{
    return {ReflectionRegistry::Instance(), name, displayName, category};
}

template<class Enum>
EnumSchema& RegisterEnum(const std::string& name, std::vector<EnumEntry> values)
{
    return ReflectionRegistry::Instance().RegisterEnum<Enum>(name, std::move(values));
}

} // namespace Vornu::Reflection
