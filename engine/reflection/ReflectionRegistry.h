#pragma once

#include "engine/reflection/PropertyTypes.h"
#include "engine/reflection/SchemaRecord.h"
#include "engine/reflection/ValueTraits.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Vornu::Reflection
{

/// An object as it is made. The same for the whole process, where the making of one for each look would cost.
template<class Type>
const Type& DefaultOf()
{
    static const Type* const object = new Type{}; // stays until the process ends
    return *object;
}

/// Bytes from the start of an object to one of its members.
inline std::size_t OffsetIn(const void* object, const void* member) noexcept
{
    return static_cast<std::size_t>(static_cast<const std::byte*>(member) -
                                    static_cast<const std::byte*>(object));
}

/// Description of every compiled type that takes part in files: components, nested values, enums, asset
/// types.
///
/// Filled by one thread at start-up and read-only afterwards. Registration faults are programming errors and
/// throw `std::invalid_argument`. Entries are never removed.
class ReflectionRegistry
{
public:
    /// The one of the process.
    static ReflectionRegistry& Instance();

    /// A registry of its own, for tests.
    ReflectionRegistry();
    ReflectionRegistry(const ReflectionRegistry&) = delete;
    ReflectionRegistry& operator=(const ReflectionRegistry&) = delete;

    /// Registers a type, or overwrites display name, category and version of the same type.
    template<class Type>
    TypeInfo& RegisterType(const std::string& name, const std::string& displayName,
                           const std::string& category, std::uint32_t version)
    {
        return RegisterType(TypeIdOf<Type>(), name, displayName, category, version);
    }
    TypeInfo& RegisterType(TypeId type, const std::string& name, const std::string& displayName,
                           const std::string& category, std::uint32_t version);

    template<class Enum>
    EnumSchema& RegisterEnum(const std::string& name, std::vector<EnumEntry> values)
    {
        using Limits = std::numeric_limits<std::underlying_type_t<Enum>>;
        return RegisterEnum(TypeIdOf<Enum>(), name, std::move(values), EnumValue(Limits::min()),
                            EnumValue(Limits::max()));
    }

    AssetTypeInfo& AddAssetType(const std::string& name, std::uint32_t nativeId);

    /// Adds a property that is a member of `Owner`. A type that isn't there yet is registered under
    /// `typeName`.
    template<class Owner, class Value>
    TypeInfo& AddProperty(const std::string& typeName, std::string propertyName, Value Owner::*member,
                          PropertyKind kind, const PropertyAttributes& attributes)
    {
        RequireMember(member != nullptr, propertyName);
        PropertyInfo property = MakeProperty<Value>(std::move(propertyName), kind, attributes);
        const Owner& owner = DefaultOf<Owner>();
        property.offset = OffsetIn(&owner, &(owner.*member));
        property.defaultValue = owner.*member;
        property.isConstructed = true;
        return AddProperty(TypeIdOf<Owner>(), typeName, std::move(property));
    }

    /// Adds a property of a type that is laid out at run time and already registered.
    template<class Value>
    TypeInfo& AddOffsetProperty(const std::string& typeName, std::string propertyName, std::size_t byteOffset,
                                PropertyKind kind, const PropertyAttributes& attributes, Value defaultValue)
    {
        PropertyInfo property = MakeProperty<Value>(std::move(propertyName), kind, attributes);
        property.offset = byteOffset;
        property.defaultValue = std::move(defaultValue);
        return AddOffsetProperty(typeName, std::move(property));
    }

    const TypeInfo* FindType(std::string_view name) const noexcept;
    const TypeInfo* FindType(TypeId type) const noexcept;
    TypeInfo* FindType(TypeId type) noexcept;
    const EnumSchema* FindEnum(std::string_view name) const noexcept;
    const EnumSchema* FindEnum(TypeId type) const noexcept;
    const AssetTypeInfo* FindAssetType(std::string_view name) const noexcept;

    /// All types in order of registration.
    const std::vector<std::unique_ptr<TypeInfo>>& Types() const noexcept { return types_; }
    /// All enums and asset types in order of registration.
    const std::vector<std::unique_ptr<EnumSchema>>& Enums() const noexcept { return enums_; }
    const std::vector<std::unique_ptr<AssetTypeInfo>>& AssetTypes() const noexcept { return assetTypes_; }
    /// All types sorted by name. Built on demand; not for use by several threads at once.
    const std::vector<const TypeInfo*>& SortedTypes() const;

    /// Checks everything that was registered. On false `error`, where given, names the first faulty property.
    bool Validate(std::string* error) const;

private:
    template<class Value>
    PropertyInfo MakeProperty(std::string&& name, PropertyKind kind, const PropertyAttributes& attributes)
    {
        PropertyInfo property;
        property.name = std::move(name);
        property.schema = MakeValueSchema<Value>(kind);
        property.valueSize = sizeof(Value);
        property.attributes = attributes;
        property.valueType = TypeIdOf<Value>();
        property.accessors = &AccessorsOf<Value>();
        property.defaults = DefaultsOf<Value>();
        return property;
    }

    TypeInfo* FindOwner(std::string_view typeName) const noexcept;
    std::string_view Keep(std::string_view text);
    static void RequireMember(bool present, const std::string& propertyName);
    EnumSchema& RegisterEnum(TypeId type, const std::string& name, std::vector<EnumEntry> values,
                             EnumValue minimum, EnumValue maximum);
    TypeInfo& AddProperty(TypeId owner, const std::string& typeName, PropertyInfo&& property);
    TypeInfo& AddOffsetProperty(const std::string& typeName, PropertyInfo&& property);
    TypeInfo& AppendProperty(TypeInfo& type, PropertyInfo&& property);
    std::string FindStructuralFault(const TypeInfo& type, const PropertyInfo& property) const;

    std::vector<std::unique_ptr<TypeInfo>> types_;
    std::unordered_map<std::string_view, TypeInfo*> typesByName_; // keys live in the entries
    std::unordered_map<TypeId, TypeInfo*, TypeIdHash> typesById_;
    std::vector<std::unique_ptr<EnumSchema>> enums_;
    std::unordered_map<std::string_view, EnumSchema*> enumsByName_;
    std::vector<std::unique_ptr<AssetTypeInfo>> assetTypes_;
    std::unordered_map<std::string_view, AssetTypeInfo*> assetTypesByName_;
    mutable std::vector<const TypeInfo*> sortedTypes_;
    SchemaArena texts_; // of the attributes
};

/// The four checks of a property's attributes. Throws `std::invalid_argument` with the first that fails.
void CheckAttributes(const std::string& propertyName, const ValueSchema& schema,
                     const PropertyAttributes& attributes);

} // namespace Vornu::Reflection
