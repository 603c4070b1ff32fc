#include "engine/scene/plugins/PluginComponents.h"

#include "engine/core/logging/Logger.h"
#include "engine/scene/EntityCopy.h"
#include "engine/scene/components/SceneSchema.h"
#include "engine/scene/registration/ComponentBuilder.h"
#include "tests/assets/LogLines.h"
#include "tests/scene/OneEntityScene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Vornu::Scene
{
namespace
{

using Fields = std::vector<PluginFieldDefinition>;
using Test::Load;
using Test::Record;
using Test::Save;

struct CompiledComponent
{
};
struct CompiledValue
{
};

/// A field of the kind of its default.
PluginFieldDefinition Field(const std::string& name, PluginFieldValue value)
{
    PluginFieldDefinition field;
    field.name = name;
    field.kind = static_cast<PluginFieldKind>(value.index());
    field.defaultValue = std::move(value);
    return field;
}

Fields Repeated(std::size_t count, const PluginFieldValue& value)
{
    Fields fields;
    for (std::size_t i = 0; i < count; ++i)
    {
        fields.push_back(Field("f" + std::to_string(i), value));
    }
    return fields;
}

PluginComponentDefinition Definition(const std::string& name, Fields fields = {})
{
    PluginComponentDefinition definition;
    definition.name = name;
    definition.pluginId = name.substr(0, name.find('.'));
    definition.serialized = true;
    definition.fields = std::move(fields);
    return definition;
}

std::string ErrorOf(const PluginComponentDefinition& definition)
{
    std::string error = "none";
    EXPECT_EQ(RegisterPluginComponent(definition, &error), RegisterPluginComponent(definition, nullptr));
    return error;
}

const ComponentTypeEntry& Register(const PluginComponentDefinition& definition)
{
    EXPECT_EQ(ErrorOf(definition), "none");
    return *RegisterPluginComponent(definition, nullptr);
}

const Reflection::TypeInfo& TypeOf(const ComponentTypeEntry& entry)
{
    return *Reflection::ReflectionRegistry::Instance().FindType(entry.type);
}

TEST(PluginComponents, FaultyDefinitionsAreRefusedAndLeaveNothing)
{
    EnsureSceneSchema();
    RegisterComponent<CompiledComponent>("faulty.Compiled", "", "", ComponentFlags::None);
    Reflection::RegisterValue<CompiledValue>("faulty.Value", "", "");
    const std::string badName = "A plugin component name must be '<plugin id>.<name>'.";
    const std::string longest = "faulty." + std::string(121, 'x');
    auto wrongKind = Field("w", 1.0f);
    wrongKind.kind = PluginFieldKind::Int;
    auto noKind = Field("n", Core::Guid());
    noKind.kind = static_cast<PluginFieldKind>(8);
    auto fullAndMore = Repeated(16, glm::vec4());
    fullAndMore.push_back(Field("more", true));
    auto range = Field("r", 1.0f);
    range.hasRange = true;
    range.rangeMin = 1.0f;
    const std::pair<PluginComponentDefinition, std::string> rows[] = {
        {Definition(""), badName},
        {Definition("nodot"), badName},
        {Definition(longest + "x"), badName},
        {Definition("faulty.Compiled", Repeated(9, "")),
         "The name 'faulty.Compiled' is taken by another type."},
        {Definition("faulty.Value"), "The name 'faulty.Value' is taken by another type."},
        {Definition("faulty.A", {Field("a-b", 1)}),
         "Invalid field name 'a-b' (letters, digits and '_', starting with a letter)."},
        {Definition("faulty.A", {Field("a", 1), Field("b", 1), Field("a", "")}), "Duplicate field 'a'."},
        {Definition("faulty.A", {wrongKind}), "The default of field 'w' does not match its type."},
        {Definition("faulty.A", {noKind}), "The default of field 'n' does not match its type."},
        {Definition("faulty.A", Repeated(9, "")), "Too many string fields (limit 8)."},
        {Definition("faulty.A", fullAndMore), "The fields need more than 256 bytes."},
        {Definition("faulty.A", {Field("a", 1), range}),
         "The component 'faulty.A' could not be registered: Property has an invalid numeric authoring "
         "range: r"},
    };
    const std::size_t entries = ComponentRegistry::Instance().Entries().size();
    const std::size_t types = Reflection::ReflectionRegistry::Instance().Types().size();
    for (const auto& [definition, message] : rows)
    {
        EXPECT_EQ(ErrorOf(definition), message);
        EXPECT_FALSE(IsPluginComponent(definition.name));
    }
    EXPECT_EQ(ComponentRegistry::Instance().Entries().size(), entries);
    EXPECT_EQ(Reflection::ReflectionRegistry::Instance().Types().size(), types);

    range.rangeMax = 2.0f;
    EXPECT_EQ(Register(Definition("faulty.A", {range})).serial, entries);
    Register(Definition(longest));
    EXPECT_TRUE(IsPluginComponent(longest));
    for (const std::string& name : {std::string(), std::string("1a"), std::string("_a"),
                                    std::string("a\xC3\xA4"), std::string(65, 'a')})
    {
        EXPECT_FALSE(IsPluginFieldName(name)) << name;
    }
    EXPECT_TRUE(IsPluginFieldName("Z_9" + std::string(61, 'a')));
}

TEST(PluginComponents, TheSameDefinitionIsTheSameComponentInEveryThread)
{
    const auto definition = Definition("same.Door", {Field("open", 0.5f), Field("label", "Door")});
    std::vector<const ComponentTypeEntry*> entries(4);
    {
        std::vector<std::jthread> threads;
        for (const ComponentTypeEntry*& entry : entries)
        {
            threads.emplace_back([&] { entry = RegisterPluginComponent(definition, nullptr); });
        }
    }
    EXPECT_EQ(entries, std::vector(4, ComponentRegistry::Instance().Find("same.Door")));

    std::vector changes(4, definition);
    changes[0].fields[1].defaultValue = "Gate";
    changes[1].fields[0].rangeMax = 1.0f;
    changes[2].version = 0;          // as good as 1, but not what was registered
    changes[3].fields[0].name = "1"; // the comparison comes first
    for (const PluginComponentDefinition& change : changes)
    {
        EXPECT_EQ(ErrorOf(change), "The component 'same.Door' is already registered with a different "
                                   "definition in this session (restart to change its fields).");
    }
}

TEST(PluginComponents, FieldsStandInOrderAndTheRestIsUnused)
{
    const auto& mixed = Register(Definition(
        "layout.Mixed", {Field("flag", true), Field("first", "1"), Field("count", 7), Field("last", false),
                         Field("id", Core::Guid{1, 2}), Field("second", "2"), Field("at", glm::vec3(1.0f))}));
    auto fields = Repeated(16, glm::vec4(1.0f, 2.0f, 3.0f, 4.0f));
    for (char letter = 'a'; letter < 'i'; ++letter)
    {
        fields.push_back(Field(std::string(1, letter), std::string(40, letter)));
    }
    const auto& full = Register(Definition("layout.Full", fields));
    std::string layout;
    for (const ComponentLayoutRow& row : mixed.fields)
    {
        layout += row.name + " " + std::to_string(row.offset) + " " + std::to_string(row.size) + " " +
                  std::to_string(row.alignment) + " " + std::to_string(static_cast<int>(row.role)) + "\n";
    }
    EXPECT_EQ(layout, "flag 0 1 1 0\nfirst 256 32 8 0\ncount 4 4 4 0\nlast 8 1 1 0\nid 16 16 8 0\n"
                      "second 288 32 8 0\nat 32 12 4 0\n"
                      "unused0 1 3 1 2\nunused1 9 7 1 2\nunused2 44 212 1 2\n"
                      "unusedString2 320 32 8 2\nunusedString3 352 32 8 2\nunusedString4 384 32 8 2\n"
                      "unusedString5 416 32 8 2\nunusedString6 448 32 8 2\nunusedString7 480 32 8 2\n");
    EXPECT_EQ(full.fields.size(), 24u);
    EXPECT_EQ(full.size, 512u);

    Scene scene;
    const Entity entity = scene.CreateEntity("E");
    for (const ComponentTypeEntry* const entry : {&full, &mixed})
    {
        entry->add(scene, entity);
        for (const Reflection::PropertyInfo& property : TypeOf(*entry).properties)
        {
            EXPECT_TRUE(property.EqualsDefault(entry->getConst(scene, entity))) << property.name;
        }
    }
}

TEST(PluginComponents, DefinitionsDescribeTheComponent)
{
    const auto& bare = Register(Definition("describe.Bare", {Field("speed", 1.0f)}));
    EXPECT_EQ(bare.displayName + "|" + bare.category + "|" + bare.description,
              "describe.Bare|Plugins|Plugin component of describe.");
    EXPECT_EQ(bare.flags, ComponentFlags::Serialized);

    auto definition = Definition("describe.Full", {Field("angle", 1), Field("tint", glm::vec3(1.0f))});
    definition.displayName = "Full";
    definition.category = "Tests";
    definition.description = "All set.";
    definition.version = 0;
    definition.serialized = false;
    definition.userAddable = true;
    definition.fields[0].tooltip = "To the north";
    definition.fields[0].readOnly = definition.fields[0].degrees = definition.fields[0].runtime = true;
    definition.fields[1].linkGuid = definition.fields[1].color = definition.fields[1].entityGuid = true;
    definition.fields[1].displayName = "Tint";
    for (PluginFieldDefinition& field : definition.fields)
    {
        field.hasRange = true;
        field.rangeMax = 360.0f;
    }
    const auto& full = Register(definition);
    const auto& angle = TypeOf(full).properties[0].attributes;
    const auto& tint = TypeOf(full).properties[1].attributes;
    EXPECT_EQ(full.displayName + "|" + full.category + "|" + full.description, "Full|Tests|All set.");
    EXPECT_EQ(full.flags, ComponentFlags::UserAddable);
    EXPECT_EQ(angle.displayName, "angle");
    EXPECT_EQ(angle.tooltip, "To the north");
    EXPECT_EQ(tint.displayName, "Tint");
    EXPECT_EQ(static_cast<int>(angle.flags), 2 + 8 + 16);
    EXPECT_EQ(static_cast<int>(tint.flags), 1 + 4 + 128);
    EXPECT_EQ(angle.rangeMax, 360.0f);
    EXPECT_FALSE(tint.hasRange);
    EXPECT_TRUE(full.remapHooks.empty()); // no GUID
    std::string fault;
    EXPECT_TRUE(Reflection::ReflectionRegistry::Instance().Validate(&fault)) << fault;
}

TEST(PluginComponents, ScenesKeepAllKindsOfFields)
{
    auto definition =
        Definition("file.All", {Field("state", 3), Field("flag", true), Field("count", -7),
                                Field("speed", 1.5f), Field("size", glm::vec2(1, 2)),
                                Field("at", glm::vec3(1, 2, 3)), Field("tint", glm::vec4(1, 2, 3, 4)),
                                Field("label", "a \"b\""), Field("id", Core::Guid{0, 5})});
    definition.version = 3;
    definition.fields[0].runtime = true;
    Register(definition);
    const std::string defaults = "component_schema \"file.All\" 3 8\nproperty \"flag\" \"1\"\n"
                                 "property \"count\" \"-7\"\nproperty \"speed\" \"1.5\"\n"
                                 "property \"size\" \"1 2\"\nproperty \"at\" \"1 2 3\"\n"
                                 "property \"tint\" \"1 2 3 4\"\nproperty \"label\" \"a \\\"b\\\"\"\n"
                                 "property \"id\" \"00000000-0000-0000-0000-000000000005\"\n"
                                 "end_component_schema\n";
    std::string changed = defaults;
    for (const auto& [from, to] : {std::pair("1 2 3 4\"", "5 6 7 8\""), {"-7", "9"}, {"a \\", "x\\"}})
    {
        changed.replace(changed.find(from), std::string_view(from).size(), to);
    }
    Scene scene;
    ASSERT_EQ(Load(Record("file.All", 2), scene), "");
    EXPECT_EQ(Save(scene), defaults);
    ASSERT_EQ(Load(changed, scene), "");
    EXPECT_EQ(scene.PreservedRecords(scene.AliveEntities()[0]), nullptr);
    EXPECT_EQ(Save(scene), changed);
    EXPECT_NE(Load(Record("file.All", 4), scene), "");
    EXPECT_NE(Load(Record("file.All", 3, "state", "1"), scene), "");
}

TEST(PluginComponents, CopiesHaveTheirOwnValuesAndFollowEntities)
{
    auto definition = Definition(
        "copy.Link", {Field("pad", false), Field("target", Core::Guid()), Field("other", Core::Guid())});
    definition.fields[1].entityGuid = true;
    const auto& entry = Register(definition);
    const auto& neighbour = Register(Definition("copy.Neighbour", definition.fields));
    Scene scene;
    const Entity root = scene.CreateEntity("root");
    const Entity child = scene.CreateEntity("child");
    scene.SetParent(child, root);
    entry.add(scene, child);
    const auto guid = [&](Entity entity, std::size_t field) -> Core::Guid&
    {
        return *static_cast<Core::Guid*>(
            TypeOf(entry).properties[field].MutablePointer(entry.get(scene, entity)));
    };
    const Core::Guid rootGuid = scene.Get<EntityGuidComponent>(root).guid;
    guid(child, 1) = guid(child, 2) = rootGuid;

    EntityCopy::EntityMap map;
    const Entity newRoot = EntityCopy::CopyEntityTree(scene, root, kNullEntity, map, "");
    EntityCopy::RemapReferences(scene, scene, map, true);
    const Entity copy = *map.Find(child);
    EXPECT_EQ(guid(copy, 1), scene.Get<EntityGuidComponent>(newRoot).guid);
    EXPECT_EQ(guid(copy, 2), rootGuid);
    EXPECT_EQ(guid(child, 1), rootGuid);
    EXPECT_FALSE(neighbour.has(scene, copy));
    entry.remove(scene, child);
    EXPECT_TRUE(entry.has(scene, copy));
}

TEST(PluginComponents, RecordsOfAnUnloadedPluginSurviveUntilItIsThere)
{
    const std::string nonsense = "component_schema \"absent.Door\" 99 1\narray_property \"speed\" 2\n"
                                 "value \"\\n\\0\"\nobject \"No.such type\" 7 1\narray_property \"x\" 0\n"
                                 "end_array\nend_component_schema\nend_array\nend_component_schema\n";
    const std::string door = Record("absent.Door", 1, "speed", "2.5");
    std::vector<Core::LogRecord> log;
    const std::uint64_t before = Core::GetLogger().HistorySince(0, log);
    Scene scene;
    ASSERT_EQ(Load(nonsense + door + nonsense, scene), "");
    EXPECT_EQ(Save(scene), nonsense + door + nonsense);
    ASSERT_EQ(Load(door, scene), "");
    EXPECT_EQ(Save(scene), door);
    log.clear();
    Core::GetLogger().HistorySince(before, log);
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].message, "Component 'absent.Door' belongs to a plugin that is not loaded; its data is "
                              "kept and saved back unchanged.");

    const auto& entry = Register(Definition("absent.Door", {Field("speed", 1.0f)}));
    ASSERT_EQ(Load(door, scene), "");
    EXPECT_TRUE(entry.has(scene, scene.AliveEntities()[0]));
    EXPECT_EQ(Save(scene), door);
    EXPECT_NE(Load(nonsense, scene), "");
}

TEST(PluginComponents, RecordsAreSavedAsTheyLoadWhenTheirPluginComesLater)
{
    const std::string kept = Record("late.Door", 1, "speed", "2.5");
    const std::string other = Record("never.Door", 1, "speed", "");
    Scene scene;
    Scene twice;
    Scene faulty;
    ASSERT_EQ(Load(kept + other, scene), "");
    ASSERT_EQ(Load(other + kept + kept, twice), "");
    ASSERT_EQ(Load(Record("late.Door", 1, "height", "2"), faulty), "");
    const auto& entry = Register(Definition("late.Door", {Field("speed", 1.0f)}));

    EXPECT_EQ(Save(scene), kept + other);
    EXPECT_EQ(Save(twice), "Failed to save scene: late.Door: Duplicate component schema: late.Door");
    EXPECT_EQ(Save(faulty),
              "Failed to save scene: late.Door: Unknown, duplicate, or unavailable schema field: "
              "late.Door.height");

    // The component that an entity has counts, and what was kept under its name goes with one warning.
    entry.add(scene, scene.AliveEntities()[0]);
    entry.add(twice, twice.AliveEntities()[0]);
    Vornu::Test::LogLines log;
    EXPECT_EQ(Save(scene), Record("late.Door", 1, "speed", "1") + other);
    EXPECT_EQ(Save(twice), Record("late.Door", 1, "speed", "1") + other);
    const std::string warning =
        "[Warn] Component 'late.Door' is saved from the entities that have it; the data "
        "that was kept for them while its plugin was not loaded is left out.\n";
    EXPECT_EQ(log.Take(), warning + warning);
}

// The last test of the suite, since it leaves no type to the others.
TEST(PluginComponents, SixtyFourTypesFit)
{
    const auto known = Definition("limit.Known");
    Register(known);
    const std::string full = "No more plugin component types can be registered (limit 64).";
    std::string error = "none";
    for (int i = 0; error == "none" && i < 100; ++i)
    {
        error = ErrorOf(Definition("limit.T" + std::to_string(i)));
    }
    EXPECT_EQ(error, full);
    EXPECT_EQ(ErrorOf(Definition("limit.T100", {Field("1", 1)})), full);
    EXPECT_EQ(ErrorOf(known), "none");
    std::set<const void*> types;
    for (const auto& entry : ComponentRegistry::Instance().Entries())
    {
        if (IsPluginComponent(entry->typeName))
        {
            types.insert(entry->type.tag);
        }
    }
    EXPECT_EQ(types.size(), 64u);
}

} // namespace
} // namespace Vornu::Scene
