#include "engine/reflection/SchemaCodec.h"

#include "engine/reflection/ValueBuilder.h"
#include "tests/core/Failure.h"
#include "tests/reflection/RecordText.h"

#include <gtest/gtest.h>

#include <glm/gtc/quaternion.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <limits>
#include <string>
#include <vector>

namespace Vornu::Reflection
{
namespace
{

using Test::FailureOf;
using Test::ReadRecord;
using Test::WriteRecord;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

enum class Mode : std::uint8_t
{
    Slow = 1,
    Fast = 200,
};

struct Inner
{
    Inner(float w = 2.0f, std::string l = {}) : weight(w), label(std::move(l)) {}

    float weight;
    std::string label;
    friend bool operator==(const Inner&, const Inner&) = default;
};

struct Outer
{
    bool flag = true;
    glm::vec3 place{0, 1, 0};
    Mode mode = Mode::Fast;
    std::uint64_t asset = 0;
    std::uint32_t entity = 0;
    Core::Guid guid;
    Inner inner;
    std::vector<Inner> parts;
    std::vector<bool> bits{true, false};
    std::vector<std::vector<Mode>> modes;
    std::vector<std::uint64_t> assets;
    std::int32_t cache = 0;
    friend bool operator==(const Outer&, const Outer&) = default;
};

struct Aged
{
    std::int32_t always = 1;
    std::int32_t late = 2;
    std::int32_t gone = 3;
    friend bool operator==(const Aged&, const Aged&) = default;
};

struct Locked
{
    std::int32_t value = 0;
};
struct Infinite
{
    float value = kInfinity;
};
struct Opaque
{
    std::vector<Inner> value;
};
struct Node
{
    std::vector<Node> nodes;
    friend bool operator==(const Node&, const Node&) = default;
};
struct Bulky
{
    std::vector<bool> a = std::vector<bool>(1024);
    std::vector<bool> b = std::vector<bool>(1024);
    std::vector<bool> c = std::vector<bool>(1024);
    std::vector<bool> d = std::vector<bool>(1024);
};

const ReflectionRegistry& Types()
{
    static ReflectionRegistry registry;
    if (!registry.Types().empty())
    {
        return registry;
    }
    registry.AddAssetType("Mesh", 1);
    registry.RegisterEnum<Mode>("Mode", {{Mode::Slow, "Slow"}, {Mode::Fast, "Fast"}});
    ValueBuilder<Inner>(registry, "Inner", "", "")
        .Field("weight", &Inner::weight)
        .Field("label", &Inner::label);
    ValueBuilder<Outer>(registry, "Outer", "", "")
        .Field("flag", &Outer::flag)
        .Field("place", &Outer::place)
        .Field("mode", &Outer::mode)
        .Field("asset", &Outer::asset, FieldAttr().Asset("Mesh"))
        .Field("entity", &Outer::entity, FieldAttr().Kind(PropertyKind::EntityHandle))
        .Field("guid", &Outer::guid)
        .Field("inner", &Outer::inner)
        .Field("parts", &Outer::parts)
        .Field("bits", &Outer::bits)
        .Field("modes", &Outer::modes)
        .Field("assets", &Outer::assets, FieldAttr().Asset("Mesh"))
        .Field("cache", &Outer::cache, FieldAttr().With(PropertyFlags::Runtime | PropertyFlags::ReadOnly))
        .Version(2);
    ValueBuilder<Aged>(registry, "Aged", "", "")
        .Field("always", &Aged::always)
        .Field("late", &Aged::late, FieldAttr().Since(3))
        .Field("gone", &Aged::gone, FieldAttr().Until(4))
        .Version(5);
    ValueBuilder<Locked>(registry, "Locked", "", "")
        .Field("value", &Locked::value, FieldAttr().With(PropertyFlags::ReadOnly));
    ValueBuilder<Infinite>(registry, "Infinite", "", "").Field("value", &Infinite::value);
    ValueBuilder<Opaque>(registry, "Opaque", "", "")
        .Field("value", &Opaque::value, FieldAttr().Kind(PropertyKind::Custom));
    ValueBuilder<Node>(registry, "Node", "", "").Field("nodes", &Node::nodes);
    ValueBuilder<Bulky>(registry, "Bulky", "", "")
        .Field("a", &Bulky::a)
        .Field("b", &Bulky::b)
        .Field("c", &Bulky::c)
        .Field("d", &Bulky::d);
    return registry;
}

/// Asset 5 is `mesh:5`, `stripped` may stay empty, and entity 9 has the GUID 0...09.
SchemaCodecContext HostContext()
{
    SchemaCodecContext context;
    context.assetToText = [](std::uint64_t id, const AssetTypeInfo&)
    { return id == 5 ? std::optional<std::string>("mesh:5") : std::nullopt; };
    context.textToAsset = [](const std::string& text, const AssetTypeInfo& type) {
        return text == "stripped" ? ~std::uint64_t{0} : text == "mesh:5" ? 4 + type.nativeId : 0;
    };
    context.entityToGuid = [](std::uint32_t entity) { return Core::Guid{0, entity == 9 ? 9u : 0u}; };
    context.guidToEntity = [](const Core::Guid& guid) { return guid.low == 9 ? 9u : 0u; };
    return context;
}

template<class Type>
std::string Capture(const Type& object, const SchemaCodecContext& context = HostContext())
{
    std::string text;
    const std::string fault = FailureOf(
        [&]
        {
            SchemaArena arena;
            text = WriteRecord(CaptureObject(ViewOf(object), Types(), context, arena));
        });
    return fault == "none" ? text : fault;
}

template<class Type>
std::string Apply(const std::string& text, Type& object, const SchemaCodecContext& context = HostContext())
{
    return FailureOf(
        [&]
        {
            SchemaArena arena;
            ApplyRecord(ReadRecord(text, arena), ViewOf(object), Types(), context);
        });
}

std::string Record(const std::string& name, int version, std::size_t fields, const std::string& body)
{
    return "component_schema \"" + name + "\" " + std::to_string(version) + " " + std::to_string(fields) +
           "\n" + body + "end_component_schema\n";
}

const std::string kFilled = R"(component_schema "Outer" 2 11
property "flag" "0"
property "place" "1 2.5 -3"
property "mode" "Slow"
property "asset" "mesh:5"
property "entity" "00000000-0000-0000-0000-000000000009"
property "guid" "00000000-0000-0001-0000-000000000002"
object_property "inner" "Inner" 1 2
property "weight" "0.5"
property "label" "a\nb"
end_component_schema
array_property "parts" 2
object "Inner" 1 2
property "weight" "1"
property "label" ""
end_component_schema
object "Inner" 1 2
property "weight" "2"
property "label" ""
end_component_schema
end_array
array_property "bits" 3
value "0"
value "1"
value "1"
end_array
array_property "modes" 2
array 0
end_array
array 2
value "Fast"
value "Slow"
end_array
end_array
array_property "assets" 2
value ""
value "mesh:5"
end_array
end_component_schema
)";

TEST(SchemaCodec, ObjectsSurviveTheirRecords)
{
    Outer object;
    object.cache = 77;
    EXPECT_EQ(Apply(kFilled, object), "none");
    EXPECT_EQ(object.place, glm::vec3(1, 2.5f, -3));
    EXPECT_EQ(object.mode, Mode::Slow);
    EXPECT_EQ(object.asset, 5u);
    EXPECT_EQ(object.entity, 9u);
    EXPECT_EQ(object.parts.size(), 2u);
    EXPECT_EQ(object.bits, (std::vector<bool>{false, true, true}));
    EXPECT_EQ(object.cache, 77); // run-time state is left alone
    EXPECT_EQ(Capture(object), kFilled);

    // What a record doesn't name goes back to its default, and defaults are written out.
    EXPECT_EQ(Apply(Record("Outer", 1, 0, ""), object), "none");
    object.cache = 0;
    EXPECT_EQ(object, Outer());
    const std::string defaults = Capture(object);
    EXPECT_EQ(defaults.substr(0, defaults.find('\n')), "component_schema \"Outer\" 2 11");
    EXPECT_EQ(Apply(kFilled, object), "none");
    EXPECT_EQ(Apply(defaults, object), "none");
    EXPECT_EQ(object, Outer());

    object.assets = {1, 2, 3};
    EXPECT_EQ(Apply(Record("Outer", 2, 1,
                           "array_property \"assets\" 2\nvalue \"stripped\"\nvalue "
                           "\"\"\nend_array\n"),
                    object),
              "none");
    EXPECT_EQ(object.assets, (std::vector<std::uint64_t>{0, 0}));
}

TEST(SchemaCodec, VersionsDecideWhichFieldsARecordMayName)
{
    const std::string late = "property \"late\" \"20\"\n";
    const std::string gone = "property \"gone\" \"30\"\n";
    constexpr char kLate[] = "Unknown, duplicate, or unavailable schema field: Aged.late";
    constexpr char kGone[] = "Unknown, duplicate, or unavailable schema field: Aged.gone";
    const struct
    {
        int version;
        std::string field;
        std::string expected;
        Aged object; // starts as {7, 7, 7}
    } rows[] = {
        {5, "", "none", {1, 2, 7}},
        {5, late, "none", {1, 20, 7}},
        {5, gone, kGone, {1, 2, 7}},
        {4, gone, kGone, {1, 2, 7}},
        {3, gone, "none", {1, 2, 30}},
        {3, late, "none", {1, 20, 3}},
        {2, late, kLate, {1, 2, 3}},
        {2, "", "none", {1, 2, 3}},
        {6, "", "Unsupported component schema, version, or destination: Aged", {7, 7, 7}},
    };
    for (const auto& row : rows)
    {
        Aged object{7, 7, 7};
        EXPECT_EQ(Apply(Record("Aged", row.version, row.field.empty() ? 0 : 1, row.field), object),
                  row.expected);
        EXPECT_EQ(object, row.object) << row.version << row.field;
    }
    EXPECT_EQ(Capture(Aged()), Record("Aged", 5, 2, "property \"always\" \"1\"\nproperty \"late\" \"2\"\n"));
}

TEST(SchemaCodec, ApplyFaultsNameTheFieldAndTheFirstFailedCheck)
{
    const std::pair<std::string, std::string> rows[] = {
        {"property \"cache\" \"1\"\n", "Unknown, duplicate, or unavailable schema field: Outer.cache"},
        {"property \"Flag\" \"1\"\n", "Unknown, duplicate, or unavailable schema field: Outer.Flag"},
        {"property \"flag\" \"yes\"\n", "Outer.flag: Boolean schema value must be 0 or 1."},
        {"array_property \"flag\" 0\nend_array\n", "Outer.flag: Expected a scalar property."},
        {"property \"parts\" \"\"\n", "Outer.parts: Expected a bounded collection."},
        {"property \"inner\" \"\"\n", "Outer.inner: Expected an object property."},
        {"object_property \"inner\" \"Inner\" 1 1\nproperty \"weight\" \"inf\"\nend_component_schema\n",
         "Outer.inner: Inner.weight: Non-finite numeric value."},
        {"object_property \"inner\" \"Inner\" 2 0\nend_component_schema\n",
         "Outer.inner: Unsupported component schema, version, or destination: Inner"},
        {"object_property \"inner\" \"Aged\" 1 0\nend_component_schema\n",
         "Outer.inner: Unsupported component schema, version, or destination: Aged"},
        {"object_property \"inner\" \"Inner\" 1 1\nproperty \"x\" \"\"\nend_component_schema\n",
         "Outer.inner: Unknown, duplicate, or unavailable schema field: Inner.x"},
        {"array_property \"modes\" 1\nvalue \"Fast\"\nend_array\n",
         "Outer.modes: Expected a bounded collection."},
        {"array_property \"parts\" 1\nvalue \"\"\nend_array\n", "Outer.parts: Expected an object property."},
        {"property \"mode\" \"fast\"\n", "Outer.mode: Unknown enum name or rejected accessor: fast"},
        {"property \"asset\" \"mesh:6\"\n", "Outer.asset: Unresolved asset reference: mesh:6"},
        {"property \"entity\" \"0\"\n", "Outer.entity: Invalid stable GUID length."},
        {"property \"entity\" \"00000000000000000000000000000008\"\n",
         "Outer.entity: Unresolved stable entity reference."},
    };
    for (const auto& [field, expected] : rows)
    {
        Outer object;
        EXPECT_EQ(Apply(Record("Outer", 2, 1, field), object), expected) << field;
    }
    Outer object;
    EXPECT_EQ(Apply(Record("Outer", 2, 1, "property \"asset\" \"mesh:5\"\n"), object, {}),
              "Outer.asset: Asset reference requires a host codec.");
    EXPECT_EQ(Apply(Record("Outer", 2, 1, "property \"entity\" \"00000000000000000000000000000009\"\n"),
                    object, {}),
              "Outer.entity: Entity reference requires a host codec.");
    Locked locked;
    EXPECT_EQ(Apply(Record("Locked", 1, 0, ""), locked), "Schema record requires a writable property: value");
    std::string none;
    EXPECT_EQ(Apply(Record("Outer", 2, 0, ""), none), "Missing or invalid object schema or storage.");
    SchemaArena arena;
    const std::string text = Record("Outer", 2, 0, "");
    EXPECT_EQ(
        FailureOf([&] { ApplyRecord(ReadRecord(text, arena), ViewOf(std::as_const(object)), Types(), {}); }),
        "Unsupported component schema, version, or destination: Outer");
}

TEST(SchemaCodec, CaptureFaultsNameTheField)
{
    const auto fault = [](auto change, const SchemaCodecContext& context = HostContext())
    {
        Outer object;
        change(object);
        return Capture(object, context);
    };
    EXPECT_EQ(fault([](Outer& o) { o.place.y = kInfinity; }),
              "Outer.place: Cannot save a non-finite schema value.");
    EXPECT_EQ(fault(
                  [](Outer& o) {
                      o.parts = {Inner(), Inner{-kInfinity, ""}};
                  }),
              "Outer.parts: Inner.weight: Cannot save a non-finite schema value.");
    EXPECT_EQ(fault([](Outer& o) { o.mode = Mode{2}; }),
              "Outer.mode: Unregistered enum value or rejected accessor.");
    EXPECT_EQ(fault([](Outer& o) { o.asset = 6; }), "Outer.asset: Unresolved non-null asset reference.");
    EXPECT_EQ(fault([](Outer& o) { o.asset = 5; }, {}),
              "Outer.asset: Asset reference requires a host codec.");
    EXPECT_EQ(fault([](Outer& o) { o.entity = 8; }), "Outer.entity: Entity reference has no stable GUID.");
    EXPECT_EQ(fault([](Outer& o) { o.entity = 9; }, {}),
              "Outer.entity: Entity reference requires a host codec.");
    EXPECT_EQ(fault([](Outer& o) { o.bits.resize(1025); }), "Outer.bits: Invalid or oversized collection.");
    EXPECT_EQ(Capture(Locked()), "Schema record requires a writable property: value");
    EXPECT_EQ(Capture(Opaque()), "Opaque.value: Opaque collection elements require a schema codec.");
    EXPECT_EQ(Capture(std::string()), "Missing or invalid object schema or storage.");
}

TEST(SchemaCodec, CountsAndDepthHaveTheLimitsOfText)
{
    Outer outer;
    outer.bits.assign(1024, true);
    Outer back;
    back.bits.assign(5000, false);
    EXPECT_EQ(Apply(Capture(outer), back), "none");
    EXPECT_EQ(back, outer);

    // Every level of nodes takes two steps of depth, of its array and of its object.
    Node node;
    for (int level = 0; level < 7; ++level)
    {
        node = Node{{node}};
    }
    const std::string deepest = Capture(node);
    Node copy;
    EXPECT_EQ(Apply(deepest, copy), "none");
    EXPECT_EQ(copy, node);
    std::string fault;
    for (int level = 0; level < 8; ++level)
    {
        fault += "Node.nodes: ";
    }
    EXPECT_EQ(Capture(Node{{node}}), fault + "Schema exceeds the nesting or field budget.");

    // Defaults count, those of properties that a record names don't.
    constexpr char kBudget[] = "Schema exceeds the nesting or field budget.";
    Bulky bulky;
    EXPECT_EQ(Capture(bulky), std::string("Bulky.d: ") + kBudget);
    EXPECT_EQ(Apply(Record("Bulky", 1, 0, ""), bulky), std::string("Bulky.d: ") + kBudget);
    const auto withD = [](std::size_t count)
    {
        std::string body = "array_property \"d\" " + std::to_string(count) + "\n";
        for (std::size_t i = 0; i < count; ++i)
        {
            body += "value \"1\"\n";
        }
        return Record("Bulky", 1, 1, body + "end_array\n");
    };
    EXPECT_EQ(Apply(withD(1020), bulky), "none");
    EXPECT_EQ(bulky.d, std::vector<bool>(1020, true));
    EXPECT_EQ(Apply(withD(1021), bulky), std::string("Bulky.c: ") + kBudget);

    Infinite infinite;
    EXPECT_EQ(Apply(Record("Infinite", 1, 0, ""), infinite),
              "Infinite.value: Cannot save a non-finite schema value.");
    EXPECT_EQ(Apply(Record("Infinite", 1, 1, "property \"value\" \"1\"\n"), infinite), "none");
}

TEST(SchemaCodec, AccessorsThatAreMissingFailTheValue)
{
    const SchemaCodecContext context = HostContext();
    SchemaArena arena;
    const auto encode = [&](const ObjectView& view, const ValueSchema& schema)
    {
        CodecState state{Types(), context, arena};
        std::string text;
        const std::string fault =
            FailureOf([&] { text = EncodeTypedValue(view, schema, {}, state, 2).Text(); });
        return fault == "none" ? text : fault;
    };
    const auto decode = [&](const SchemaValue& value, const ObjectView& view, const ValueSchema& schema)
    {
        CodecState state{Types(), context, arena};
        return FailureOf([&] { DecodeTypedValue(value, view, schema, {}, state, 2); });
    };

    std::vector<float> list{1, 2};
    ValueSchema schema = MakeValueSchema<std::vector<float>>(PropertyKind::Float);
    ValueAccessors accessors = AccessorsOf<std::vector<float>>();
    ObjectView view = ViewOf(list);
    view.accessors = &accessors;
    const SchemaArray values(arena, 2);
    accessors.constElement = nullptr;
    EXPECT_EQ(encode(view, schema), "Collection element accessor failed.");
    accessors.size = nullptr;
    EXPECT_EQ(encode(view, schema), "Invalid or oversized collection.");
    accessors.mutableElement = nullptr;
    EXPECT_EQ(decode(values, view, schema), "Mutable collection element accessor failed.");
    accessors.resize = [](void*, std::size_t) { return false; };
    EXPECT_EQ(decode(values, view, schema), "Collection extent or mutable storage mismatch.");
    EXPECT_EQ(encode(ViewOf(list), MakeValueSchema<float>(PropertyKind::Float)),
              "Value schema disagrees with captured storage.");
    EXPECT_EQ(decode(values, ViewOf(std::as_const(list)), schema),
              "Value schema disagrees with writable storage.");

    // A link is reached by its accessors alone.
    Core::Guid guid{0, 9};
    schema = {TypeIdOf<Core::Guid>(), ValueShape::Scalar, PropertyKind::EntityLinkRef, nullptr};
    ValueAccessors link;
    link.matches = [](const ValueSchema&) { return true; };
    const ObjectView linkView{TypeIdOf<Core::Guid>(), &guid, &guid, &link};
    EXPECT_EQ(encode(linkView, schema), "Invalid entity-reference storage.");
    EXPECT_EQ(decode(SchemaValue("x"), linkView, schema), "Invalid stable GUID length.");
    EXPECT_EQ(decode(SchemaValue(""), linkView, schema), "Invalid entity-reference storage.");
    link.linkRead = [](const void* data) { return static_cast<const Core::Guid*>(data); };
    link.linkWrite = [](void* data, const Core::Guid& value) { *static_cast<Core::Guid*>(data) = value; };
    EXPECT_EQ(encode(linkView, schema), "00000000-0000-0000-0000-000000000009");
    EXPECT_EQ(decode(SchemaValue(""), linkView, schema), "none");
    EXPECT_EQ(encode(linkView, schema), "");
}

} // namespace
} // namespace Vornu::Reflection
