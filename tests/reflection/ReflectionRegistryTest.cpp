#include "engine/reflection/ReflectionRegistry.h"

#include "engine/reflection/ValueBuilder.h"
#include "tests/core/Failure.h"

#include <gtest/gtest.h>

#include <glm/gtc/quaternion.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace Vornu::Reflection
{
namespace
{

enum class Small : std::uint8_t
{
    First = 0,
};
enum class Signed : std::int8_t
{
    First = 0,
};
enum class Wide : std::uint64_t
{
    First = 0,
};

struct Piece
{
    float weight = 2.5f;
    friend bool operator==(const Piece&, const Piece&) = default;
};

struct Thing
{
    std::int32_t count = 3;
    float size = 0.0f;
    Small small = Small::First;
    std::uint64_t asset = 0;
    std::vector<Small> smalls;
    std::vector<std::uint64_t> assets;
    std::vector<std::vector<Piece>> parts;
    Piece part;
};

template<class Function>
std::string Fault(Function function)
{
    return Test::FailureOf<std::invalid_argument>(function);
}

TEST(ReflectionRegistry, TypesKeepTheirIdentityAndProperties)
{
    ReflectionRegistry registry;
    registry.AddProperty<Thing, std::int32_t>("Thing", "count", &Thing::count, PropertyKind::Int32, {});
    const TypeInfo* const type = registry.FindType("Thing");
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->version, 1u);
    EXPECT_EQ(type->displayName, "Thing");
    EXPECT_EQ(type->properties[0].attributes.displayName, "count");
    EXPECT_EQ(std::any_cast<std::int32_t>(type->properties[0].defaultValue), 3);

    registry.RegisterType<Thing>("Thing", "A thing", "Things", 4);
    EXPECT_EQ(registry.FindType(TypeIdOf<Thing>()), type);
    EXPECT_EQ(type->displayName + "/" + type->category, "A thing/Things");
    EXPECT_EQ(type->version, 4u);
    EXPECT_EQ(type->properties.size(), 1u);

    registry.RegisterType<Thing>("Renamed", "", "", 1);
    EXPECT_EQ(registry.FindType("Thing"), nullptr);
    EXPECT_EQ(registry.FindType("Renamed"), type);
    registry.RegisterType<Piece>("Other", "", "", 1);
    ASSERT_EQ(registry.SortedTypes().size(), 2u);
    EXPECT_EQ(registry.SortedTypes()[0]->name, "Other");
    registry.RegisterType<Piece>("Zebra", "", "", 1);
    EXPECT_EQ(registry.SortedTypes()[0]->name, "Renamed");

    EXPECT_EQ(Fault([&] { registry.RegisterType<Piece>("", "", "", 1); }),
              "Reflection schema requires a name and a positive version.");
    EXPECT_EQ(Fault([&] { registry.RegisterType<Piece>("Piece", "", "", 0); }),
              "Reflection schema requires a name and a positive version.");
    EXPECT_EQ(Fault([&] { registry.RegisterType<Piece>("Renamed", "", "", 1); }),
              "Reflection type name already belongs to another C++ type: Renamed");
    EXPECT_EQ(Fault([&] { ValueBuilder<Piece>(registry, "Piece", "", "").Version(0); }),
              "Value schema versions start at 1: Piece");
}

TEST(ReflectionRegistry, PropertyFaultsNameTheFirstFailedCheck)
{
    ReflectionRegistry registry;
    registry.RegisterType<Piece>("Piece", "", "", 1);
    const auto add =
        [&](const char* type, float Thing::*member, PropertyKind kind, const PropertyAttributes& attributes)
    { return Fault([&] { registry.AddProperty<Thing, float>(type, "size", member, kind, attributes); }); };
    PropertyAttributes badInterval;
    badInterval.sinceVersion = 0;
    EXPECT_EQ(add("Piece", nullptr, PropertyKind::Int32, badInterval),
              "Reflection property requires a member pointer: size");
    EXPECT_EQ(add("Piece", &Thing::size, PropertyKind::Int32, badInterval),
              "Reflection property kind does not match its C++ value type.");
    EXPECT_EQ(add("Piece", &Thing::size, PropertyKind::Float, badInterval),
              "Property requires a name and valid schema-version interval: size");
    EXPECT_EQ(add("Piece", &Thing::size, PropertyKind::Float, {}),
              "Reflection property owner does not match type: Piece");
    EXPECT_EQ(add("Thing", &Thing::size, PropertyKind::Float, {}), "none");
    EXPECT_EQ(add("Thing", &Thing::size, PropertyKind::Float, {}),
              "Duplicate reflection property: Thing.size");

    const auto addOffset = [&](const char* type) {
        return Fault([&]
                     { registry.AddOffsetProperty<float>(type, "size", 4, PropertyKind::Float, {}, 1.5f); });
    };
    EXPECT_EQ(addOffset("Unknown"), "Reflection offset property needs a registered owner type: Unknown");
    EXPECT_EQ(addOffset("Piece"), "none");
    EXPECT_EQ(addOffset("Piece"), "Duplicate reflection property: Piece.size");
    float storage[2] = {0.0f, 0.0f};
    const PropertyInfo& property = *registry.FindType("Piece")->FindProperty("size");
    EXPECT_FALSE(property.EqualsDefault(storage));
    EXPECT_TRUE(property.SetDefault(storage));
    EXPECT_TRUE(property.EqualsDefault(storage));
    EXPECT_EQ(storage[0], 0.0f);
    EXPECT_EQ(storage[1], 1.5f);
}

template<class Value>
std::string AdmittedKinds()
{
    std::string kinds;
    for (std::uint8_t kind = 0; kind <= 17; ++kind)
    {
        const std::string fault = Fault([&] { MakeValueSchema<Value>(static_cast<PropertyKind>(kind)); });
        if (fault == "none")
        {
            kinds.append(std::to_string(kind)).push_back(' ');
        }
    }
    return kinds;
}

TEST(ReflectionRegistry, ValueTypesAdmitTheirKinds)
{
    EXPECT_EQ(AdmittedKinds<bool>(), "0 14 ");
    EXPECT_EQ(AdmittedKinds<std::int32_t>(), "1 14 ");
    EXPECT_EQ(AdmittedKinds<std::uint32_t>(), "2 12 14 ");
    EXPECT_EQ(AdmittedKinds<std::uint64_t>(), "3 11 14 ");
    EXPECT_EQ(AdmittedKinds<float>(), "4 14 ");
    EXPECT_EQ(AdmittedKinds<std::string>(), "5 14 15 ");
    EXPECT_EQ(AdmittedKinds<glm::vec2>(), "6 14 15 ");
    EXPECT_EQ(AdmittedKinds<glm::vec3>(), "7 14 15 ");
    EXPECT_EQ(AdmittedKinds<glm::vec4>(), "8 14 15 ");
    EXPECT_EQ(AdmittedKinds<glm::quat>(), "9 14 15 ");
    EXPECT_EQ(AdmittedKinds<Core::Guid>(), "13 14 15 ");
    EXPECT_EQ(AdmittedKinds<Small>(), "10 14 ");
    EXPECT_EQ(AdmittedKinds<Piece>(), "14 15 ");
    EXPECT_EQ(AdmittedKinds<double>(), "14 ");
    EXPECT_EQ(AdmittedKinds<std::int64_t>(), "14 ");
    EXPECT_EQ(AdmittedKinds<std::uint8_t>(), "14 ");
    EXPECT_EQ(AdmittedKinds<const char*>(), "14 ");
    EXPECT_EQ(AdmittedKinds<std::vector<std::vector<std::uint32_t>>>(), "2 12 14 ");

    const ValueSchema nested = MakeValueSchema<std::vector<std::vector<Piece>>>(PropertyKind::Object);
    EXPECT_EQ(nested.shape, ValueShape::Collection);
    EXPECT_EQ(nested.kind, PropertyKind::Custom);
    EXPECT_EQ(nested.Leaf().shape, ValueShape::Object);
    EXPECT_TRUE(AccessorsOf<std::vector<std::vector<Piece>>>().matches(nested));
    EXPECT_FALSE(AccessorsOf<std::vector<std::vector<Thing>>>().matches(nested));
    EXPECT_FALSE(AccessorsOf<std::vector<Piece>>().matches(nested));
    ValueSchema scalar = MakeValueSchema<float>(PropertyKind::Float);
    scalar.kind = PropertyKind::Int32;
    EXPECT_FALSE(AccessorsOf<float>().matches(scalar));
}

TEST(ReflectionRegistry, EnumsFitTheirStorageAndKeepTheirNames)
{
    ReflectionRegistry registry;
    const auto small = [&](const char* name, const std::vector<EnumEntry>& values)
    { return Fault([&] { registry.RegisterEnum<Small>(name, values); }); };
    const auto wide = [&](const char* name, const std::vector<EnumEntry>& values)
    { return Fault([&] { registry.RegisterEnum<Signed>(name, values); }); };
    constexpr char kRange[] = "Enum value is outside its C++ storage range: Small";
    EXPECT_EQ(small("Small", {{256, "A"}}), kRange);
    EXPECT_EQ(small("Small", {{0, ""}, {-1, "A"}}), kRange);
    EXPECT_EQ(small("Small", {}), "Enum schema requires a name and values.");
    EXPECT_EQ(small("", {{1, "A"}}), "Enum schema requires a name and values.");
    EXPECT_EQ(small("Small", {{1, "A"}, {2, "A"}}), "Enum schema contains an empty or duplicate name: Small");
    EXPECT_EQ(small("Small", {{1, ""}}), "Enum schema contains an empty or duplicate name: Small");
    EXPECT_EQ(small("Small", {{0, "Old"}}), "none");
    EXPECT_EQ(small("Small", {{0, "A"}, {255, "B"}}), "none");
    EXPECT_EQ(small("Other", {{0, "A"}}), "Enum schema name and C++ type disagree: Other");
    EXPECT_EQ(wide("Small", {{0, "A"}}), "Enum schema name and C++ type disagree: Small");
    EXPECT_EQ(wide("Signed", {{-128, "A"}, {127, "B"}}), "none");
    EXPECT_EQ(wide("Signed", {{-129, "A"}}), "Enum value is outside its C++ storage range: Signed");
    EXPECT_EQ(wide("Signed", {{128, "A"}}), "Enum value is outside its C++ storage range: Signed");

    const EnumSchema& schema = *registry.FindEnum("Small");
    EXPECT_EQ(schema.FindName("Old"), nullptr);
    EXPECT_EQ(schema.FindValue(Small{255})->name, "B");
    // The same 64 bits, once as a negative and once as an unsigned number.
    registry.RegisterEnum<Wide>("Wide", {{~std::uint64_t{0}, "Top"}});
    EXPECT_EQ(registry.FindEnum("Wide")->FindValue(std::int64_t{-1}), nullptr);
    EXPECT_NE(registry.FindEnum("Wide")->FindValue(~std::uint64_t{0}), nullptr);
}

TEST(ReflectionRegistry, AssetTypesPairANameWithAnId)
{
    ReflectionRegistry registry;
    const auto add = [&](const char* name, std::uint32_t id)
    { return Fault([&] { registry.AddAssetType(name, id); }); };
    EXPECT_EQ(add("", 1), "Asset schema requires a name and a nonzero native ID.");
    EXPECT_EQ(add("Mesh", 0), "Asset schema requires a name and a nonzero native ID.");
    EXPECT_EQ(add("Mesh", 1), "none");
    EXPECT_EQ(add("Mesh", 1), "none");
    EXPECT_EQ(add("Mesh", 2), "Asset schema name and native ID disagree: Mesh");
    EXPECT_EQ(add("Model", 1), "Asset schema name and native ID disagree: Model");
    EXPECT_EQ(add("Model", 2), "none");
}

FieldAttr Ranged(float minimum, float maximum)
{
    return FieldAttr().Range(minimum, maximum);
}

FieldAttr Lived(std::uint32_t since, std::uint32_t until)
{
    return FieldAttr().Since(since).Until(until);
}

FieldAttr Named(const char* enumName, const char* assetType)
{
    FieldAttr attributes;
    attributes.enumName = enumName;
    attributes.assetType = assetType;
    return attributes;
}

TEST(ReflectionRegistry, AttributesAreCheckedAgainstTheLeaf)
{
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr char kInterval[] = "Property requires a name and valid schema-version interval: p";
    constexpr char kEnum[] = "Enum property requires matching enum metadata: p";
    constexpr char kAsset[] = "Asset property requires an asset-type constraint: p";
    constexpr char kRange[] = "Property has an invalid numeric authoring range: p";
    const ValueSchema number = MakeValueSchema<float>(PropertyKind::Float);
    const ValueSchema vector = MakeValueSchema<glm::vec3>(PropertyKind::Vec3);
    const ValueSchema quat = MakeValueSchema<glm::quat>(PropertyKind::Quat);
    const ValueSchema enums = MakeValueSchema<std::vector<Small>>(PropertyKind::Enum);
    const ValueSchema assets = MakeValueSchema<std::vector<std::uint64_t>>(PropertyKind::AssetRef);
    const struct
    {
        const ValueSchema& schema;
        PropertyAttributes attributes;
        std::string expected;
    } rows[] = {
        {number, Lived(3, 4), "none"},     {number, Lived(3, 3), kInterval},
        {number, Lived(0, 0), kInterval},  {number, Ranged(0, 0), "none"},
        {number, Ranged(1, 0), kRange},    {number, Ranged(0, kNan), kRange},
        {number, Ranged(kNan, 0), kRange}, {number, Ranged(0, kInfinity), kRange},
        {vector, Ranged(0, 1), "none"},    {quat, Ranged(0, 1), kRange},
        {number, Named("E", ""), kEnum},   {number, Named("", "A"), kAsset},
        {enums, Named("E", ""), "none"},   {enums, Named("", ""), kEnum},
        {assets, Named("", "A"), "none"},  {assets, Named("E", "A"), kEnum},
        {assets, Named("", ""), kAsset},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(Fault([&] { CheckAttributes("p", row.schema, row.attributes); }), row.expected)
            << "row " << &row - rows;
    }
    EXPECT_EQ(Fault([&] { CheckAttributes("", number, {}); }),
              "Property requires a name and valid schema-version interval: ");
}

TEST(ReflectionRegistry, ValidationReportsTheFirstFaultyProperty)
{
    using Builder = ValueBuilder<Thing>;
    using Setup = std::function<void(ReflectionRegistry&, Builder&)>;
    const std::pair<Setup, std::string> rows[] = {
        {[](auto&, Builder& thing) { thing.Field("count", &Thing::count, Lived(1, 2)).Version(2); }, ""},
        {[](auto&, Builder& thing) { thing.Field("count", &Thing::count, Lived(3, 0)).Version(2); },
         "Thing.count: Property version exceeds the enclosing schema version."},
        {[](auto&, Builder& thing) { thing.Field("count", &Thing::count, Lived(1, 3)).Version(2); },
         "Thing.count: Property version exceeds the enclosing schema version."},
        {[](auto&, Builder& thing) { thing.Field("parts", &Thing::parts); },
         "Thing.parts: Nested object schema has not been registered."},
        {[](ReflectionRegistry& registry, Builder& thing)
         {
             registry.RegisterType<Piece>("Piece", "", "", 1);
             thing.Field("parts", &Thing::parts).Field("part", &Thing::part);
         },
         ""},
        {[](auto&, Builder& thing)
         { thing.Field("part", &Thing::part, FieldAttr().Kind(PropertyKind::Custom)); },
         "Thing.part: Opaque custom property has no value schema."},
        {[](auto&, Builder& thing) { thing.Field("assets", &Thing::assets, Named("", "Mesh")); },
         "Thing.assets: Asset-type constraint has not been registered."},
        {[](ReflectionRegistry& registry, Builder& thing)
         {
             registry.AddAssetType("Mesh", 1);
             thing.Field("asset", &Thing::asset, Named("", "Mesh"));
         },
         ""},
        {[](auto&, Builder& thing) { thing.Field("smalls", &Thing::smalls, Named("Small", "")); },
         "Thing.smalls: Enum schema is missing or belongs to another C++ enum."},
        {[](ReflectionRegistry& registry, Builder& thing)
         {
             registry.RegisterEnum<Signed>("Signed", {{0, "A"}});
             thing.Field("small", &Thing::small, Named("Signed", ""));
             thing.Field("count", &Thing::count, Lived(9, 0));
         },
         "Thing.small: Enum schema is missing or belongs to another C++ enum."},
        {[](ReflectionRegistry& registry, Builder& thing)
         {
             thing.Field("count", &Thing::count);
             registry.FindType(TypeIdOf<Thing>())->properties[0].attributes.enumName = "Small";
         },
         "Thing.count: Enum property requires matching enum metadata: count"},
        // A fault of the attributes yields to one of the structure.
        {[](ReflectionRegistry& registry, Builder& thing)
         {
             thing.Field("count", &Thing::count);
             PropertyInfo& property = registry.FindType(TypeIdOf<Thing>())->properties[0];
             property.attributes.enumName = "Small";
             property.valueType = TypeIdOf<float>();
         },
         "Thing.count: Property schema disagrees with its checked accessor."},
    };
    for (const auto& [setup, expected] : rows)
    {
        ReflectionRegistry registry;
        Builder thing(registry, "Thing", "", "");
        setup(registry, thing);
        std::string error = "old";
        EXPECT_EQ(registry.Validate(&error), expected.empty());
        EXPECT_EQ(error, expected);
        EXPECT_EQ(registry.Validate(nullptr), expected.empty());
    }
}

} // namespace
} // namespace Vornu::Reflection
