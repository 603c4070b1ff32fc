#include "engine/scene/registration/ComponentRegistry.h"

#include "engine/core/logging/Logger.h"
#include "engine/scene/Scene.h"
#include "engine/scene/components/SceneSchema.h"
#include "engine/scene/registration/ComponentBuilder.h"
#include "engine/scene/registration/EntityRecordStage.h"
#include "engine/scene/registration/MissingComponents.h"
#include "engine/scene/registration/SampleChunks.h"
#include "tests/core/Failure.h"
#include "tests/scene/OneEntityScene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace Vornu::Scene
{
namespace
{

using Reflection::SchemaRecord;
using Test::FailureOf;
using Test::Load;
using Test::Record;
using Test::Save;

constexpr ComponentFlags kSaved = ComponentFlags::Serialized;

std::string hooks; // what ran since it was last cleared

struct Hooked
{
    std::int32_t value = 1;
    std::int32_t cache = 5;
    Core::Guid friendGuid;
};
struct Linked
{
    Entity strict = kNullEntity;
    Core::Guid strictGuid;
    Entity loose = kNullEntity;
    Core::Guid looseGuid;
};
struct Grown
{
    std::int32_t size = 1;
};
struct Wrapped
{
    std::int32_t doubled = 0;
};
struct WrappedRecord
{
    std::int32_t half = 0;
};
struct Sampled
{
    std::string title;
    std::vector<float> samples;
};
struct SampleCount
{
    std::uint64_t count = 0;
};
struct SampleChunk
{
    std::uint64_t offset = 0;
    std::vector<float> values;
};
struct Framed
{
};
struct Bare
{
};

const SampleFaults kFaults{"too many", "too long", "truncated", "count first", "bad chunk", "incomplete"};

void CaptureSamples(const Sampled& component, const ComponentSaveContext& context,
                    ComponentTypeEntry::RecordList& out)
{
    SampleChunkSaver saver(kFaults, component.samples.size());
    CaptureInto(component, context, out);
    saver.Charge(out.SizeOfLast());
    CaptureInto(SampleCount{component.samples.size()}, context, out);
    saver.Charge(out.SizeOfLast());
    SampleChunkSaver::ForEachChunk(
        component.samples,
        [&](std::uint64_t offset, std::span<const float> values)
        {
            CaptureInto(SampleChunk{offset, {values.begin(), values.end()}}, context, out);
            saver.Charge(out.SizeOfLast());
        });
}

void LoadSamples(ComponentLoadValue<Sampled, SampleChunkLoader>& state, const SchemaRecord& record,
                 std::uint64_t encodedBytes, const ComponentLoadContext& context)
{
    state.extra.Charge(kFaults, encodedBytes);
    if (record.name == "TestSampled")
    {
        state.value = ApplyFresh<Sampled>(record, context);
    }
    else if (record.name == "TestSampleCount")
    {
        const std::array counts{ApplyFresh<SampleCount>(record, context).count};
        state.extra.SetCounts(kFaults, counts);
    }
    else
    {
        state.extra.RequireCounts(kFaults);
        const auto chunk = ApplyFresh<SampleChunk>(record, context);
        state.extra.Append(kFaults, 0, chunk.offset, chunk.values, state.value.samples);
    }
}

void FinishSamples(ComponentLoadValue<Sampled, SampleChunkLoader>& state)
{
    state.extra.Finish(kFaults, std::array{state.value.samples.size()});
}

void RegisterPlainTypes()
{
    RegisterComponent<Hooked>("TestHooked", "", "", kSaved)
        .Field("value", &Hooked::value)
        .Field("friend", &Hooked::friendGuid, FieldAttr().With(PropertyFlags::EntityGuid))
        .AddTransient(&Hooked::cache)
        .OnSave([](Hooked& h, const ComponentSaveContext&) { h.value += 1; })
        .OnSave([](Hooked& h, const ComponentSaveContext&) { h.value *= 10; })
        .OnLoad([](Hooked& h, const ComponentLoadContext&)
                { hooks += "load" + std::to_string(h.value) + " "; })
        .OnResolve(
            [](Hooked&, Registry& registry, Entity entity)
            {
                hooks += "resolve" + std::to_string(registry.AliveCount()) + "/" +
                         std::to_string(EntityIndex(entity)) + " ";
            })
        .OnCopy([](Hooked& h, ComponentCopyKind) { hooks += "copy" + std::to_string(h.cache) + " "; })
        .OnCopy([](Hooked&, ComponentCopyKind kind)
                { hooks += "kind" + std::to_string(static_cast<int>(kind)) + " "; })
        .RecordAlias("TestOldHooked", [](SchemaRecord& record) { record.name = "TestHooked"; });
    RegisterComponent<Linked>("TestLinked", "", "", kSaved)
        .Field("strict", &Linked::strictGuid)
        .Field("loose", &Linked::looseGuid)
        .EntityLink(&Linked::strict, &Linked::strictGuid, true)
        .EntityLink(&Linked::loose, &Linked::looseGuid);
    RegisterComponent<Grown>("TestGrown", "", "", kSaved)
        .Field("size", &Grown::size, FieldAttr().Since(3))
        .Version(3)
        .Migrate(
            [](SchemaRecord& record, std::uint32_t from)
            {
                hooks += "migrate" + std::to_string(from) + " ";
                record.RenameField("width", "size");
            })
        .RecordAlias("TestOldGrown", [](SchemaRecord& record) { record.name = "TestGrown"; });
}

void RegisterTestTypes()
{
    static bool done = false;
    if (done)
    {
        return;
    }
    done = true;
    EnsureSceneSchema();
    RegisterPlainTypes();
    auto wrapped = RegisterComponent<Wrapped>("TestWrapped", "", "", kSaved);
    const auto toRecord = [](const Wrapped& w, const ComponentSaveContext&)
    { return WrappedRecord{w.doubled / 2}; };
    const auto fromRecord = [](WrappedRecord&& r, Wrapped& w, const ComponentLoadContext&)
    { w.doubled = 2 * r.half; };
    EXPECT_EQ(FailureOf<std::invalid_argument>([&] { wrapped.SaveAs<WrappedRecord>(toRecord, fromRecord); }),
              "SaveAs record type is not reflected: TestWrapped");
    Reflection::RegisterValue<WrappedRecord>("TestWrappedRecord", "", "").Field("half", &WrappedRecord::half);
    wrapped.SaveAs<WrappedRecord>(toRecord, fromRecord);

    Reflection::RegisterValue<SampleCount>("TestSampleCount", "", "").Field("count", &SampleCount::count);
    Reflection::RegisterValue<SampleChunk>("TestSampleChunk", "", "")
        .Field("offset", &SampleChunk::offset)
        .Field("values", &SampleChunk::values);
    auto sampled = RegisterComponent<Sampled>("TestSampled", "", "", kSaved);
    sampled.Field("title", &Sampled::title).AddCustom(&Sampled::samples);
    EXPECT_EQ(FailureOf<std::invalid_argument>(
                  [&]
                  { sampled.Records<SampleChunkLoader>({}, CaptureSamples, LoadSamples, FinishSamples); }),
              "Component records need a main record: TestSampled");
    sampled.Records<SampleChunkLoader>(
        {{"TestSampled", false}, {"TestSampleCount", false}, {"TestSampleChunk", true}}, CaptureSamples,
        LoadSamples, FinishSamples);
    RegisterComponent<Framed>("TestFramed", "", "", kSaved | ComponentFlags::FrameRecord);
    std::string error;
    EXPECT_TRUE(Reflection::ReflectionRegistry::Instance().Validate(&error)) << error;
    hooks.clear();
}

class ComponentRegistryTest : public testing::Test
{
protected:
    ComponentRegistryTest()
    {
        Core::GetLogger().SetConsoleEnabled(false);
        RegisterTestTypes();
        hooks.clear();
    }
    ~ComponentRegistryTest() override { Core::GetLogger().SetConsoleEnabled(true); }

    Scene scene;
};

TEST_F(ComponentRegistryTest, EntriesDescribeTheirComponent)
{
    const ComponentRegistry& registry = ComponentRegistry::Instance();
    const ComponentTypeEntry& entry = *registry.Find("TestHooked");
    EXPECT_EQ(registry.Find(Reflection::TypeIdOf<Hooked>()), &entry);
    EXPECT_EQ(registry.Entries()[entry.serial].get(), &entry);
    ASSERT_EQ(entry.fields.size(), 3u);
    EXPECT_EQ(entry.fields[0].name + " " + entry.fields[2].name, "value transient@4");
    EXPECT_EQ(registry.Find("TestSampled")->fields[1].name, "custom@" + std::to_string(sizeof(std::string)));
    EXPECT_TRUE(registry.Find("TestSampled")->multiRecord);

    // Registered again, a type keeps its place; two components can't claim one record name.
    ComponentRegistry own;
    ComponentTypeEntry& first = own.AddEntry(Reflection::TypeIdOf<Bare>());
    ComponentTypeEntry& second = own.AddEntry(Reflection::TypeIdOf<Framed>());
    EXPECT_EQ(&own.AddEntry(Reflection::TypeIdOf<Bare>()), &first);
    EXPECT_EQ(first.serial, 0u);
    first.records = {{"A"}, {"B"}};
    second.records = {{"C"}};
    second.aliases = {{"B", {}}};
    first.flags = second.flags = kSaved;
    EXPECT_EQ(FailureOf<std::logic_error>([&] { ComponentRecordTable table(own); }),
              "Two components claim the scene record name: B");
    second.flags = ComponentFlags::Serialized | ComponentFlags::FrameRecord;
    EXPECT_EQ(ComponentRecordTable(own).SaveOrder().size(), 1u);

    // A save demands what a load would.
    first.flags = kSaved | ComponentFlags::EntityFrame;
    first.has = [](const Registry&, Entity entity) { return entity != kNullEntity; };
    const ComponentRecordTable framed(own);
    RequireFrame(framed, scene, scene.CreateEntity("E"));
    EXPECT_EQ(FailureOf<std::runtime_error>([&] { RequireFrame(framed, scene, kNullEntity); }),
              "Entity is missing its A record.");
    EXPECT_EQ(FailureOf<std::invalid_argument>(
                  [] { RegisterComponent<Bare>("TestBare", "", "", ComponentFlags::None).Version(0); }),
              "Component schema versions start at 1: TestBare");
}

TEST_F(ComponentRegistryTest, HooksRunInOrderAndSavingLeavesTheComponent)
{
    ASSERT_EQ(Load(Record("TestOldHooked", 1, "value", "3"), scene), "");
    EXPECT_EQ(hooks, "load3 resolve1/1 ");
    const Entity entity = scene.AliveEntities()[0];
    EXPECT_EQ(Save(scene),
              "component_schema \"TestHooked\" 1 2\nproperty \"value\" \"40\"\nproperty \"friend\" "
              "\"\"\nend_component_schema\n");
    EXPECT_EQ(scene.Get<Hooked>(entity).value, 3);

    hooks.clear();
    scene.Get<Hooked>(entity).cache = 8;
    const ComponentTypeEntry& entry = *ComponentRegistry::Instance().Find("TestHooked");
    const Entity copy = scene.CreateEntity("Copy");
    entry.copy(scene, entity, copy, ComponentCopyKind::Duplicate);
    entry.copy(scene, copy, entity, ComponentCopyKind::Duplicate);
    Scene other;
    const Entity far = other.CreateEntity("Far");
    entry.copyToOtherRegistry(scene, other, entity, far, ComponentCopyKind::Persistent);
    entry.copyToOtherRegistry(scene, other, kNullEntity, far, ComponentCopyKind::Persistent);
    EXPECT_EQ(hooks, "copy5 kind0 copy5 kind0 copy5 kind1 ");
    EXPECT_EQ(other.Get<Hooked>(far).value, 3);
    EXPECT_EQ(other.Get<Hooked>(far).cache, 5);
}

TEST_F(ComponentRegistryTest, OldRecordsAreRewrittenBeforeTheyAreApplied)
{
    const std::string unavailable = "Unknown, duplicate, or unavailable schema field: TestGrown.";
    ASSERT_EQ(Load(Record("TestGrown", 1, "width", "7"), scene), "");
    EXPECT_EQ(scene.Get<Grown>(scene.AliveEntities()[0]).size, 7);
    ASSERT_EQ(Load(Record("TestOldGrown", 2, "width", "8"), scene), "");
    EXPECT_EQ(scene.Get<Grown>(scene.AliveEntities()[0]).size, 8);
    EXPECT_EQ(hooks, "migrate1 migrate2 ");
    EXPECT_EQ(Load(Record("TestGrown", 3, "width", "7"), scene), unavailable + "width");
    EXPECT_EQ(Load(Record("TestGrown", 4), scene),
              "Unsupported component schema, version, or destination: TestGrown");
    EXPECT_EQ(Load(Record("TestGrown", 3) + Record("TestOldGrown", 3), scene),
              "Duplicate component schema: TestOldGrown");
    EXPECT_EQ(hooks, "migrate1 migrate2 ");

    ASSERT_EQ(Load(Record("TestWrappedRecord", 1, "half", "21"), scene), "");
    EXPECT_EQ(scene.Get<Wrapped>(scene.AliveEntities()[0]).doubled, 42);
    EXPECT_EQ(Save(scene), Record("TestWrappedRecord", 1, "half", "21"));
    EXPECT_EQ(Load(Record("TestWrapped"), scene), "Unsupported component schema: TestWrapped");
    EXPECT_EQ(Load(Record("TestFramed"), scene), "Unsupported component schema: TestFramed");
}

/// Notes what it is given.
class Remapper : public EntityReferenceRemapper
{
public:
    void RemapEntity(Entity&) const override {}
    void RemapGuid(Core::Guid& guid) const override { guid.low += 100; }
    void RemapEntityText(Entity&, std::string&) const override {}
    void RemapEntityReference(Entity& entity, Core::Guid& guid) const override
    {
        entity += 1;
        guid.low += 10;
    }
};

TEST_F(ComponentRegistryTest, EntityLinksKeepHandleAndGuidInStep)
{
    const std::string guid = "00000000-0000-0000-0000-00000000000";
    const auto saved = [&](const std::string& strict, const std::string& loose)
    {
        return "component_schema \"TestLinked\" 1 2\nproperty \"strict\" \"" + strict +
               "\"\nproperty \"loose\" \"" + loose + "\"\nend_component_schema\n";
    };
    ASSERT_EQ(Load(saved(guid + "1", guid + "7"), scene), "");
    const Entity entity = scene.AliveEntities()[0];
    auto& linked = scene.Get<Linked>(entity);
    EXPECT_EQ(linked.strict, entity);
    EXPECT_EQ(linked.loose, kNullEntity);
    EXPECT_EQ(Save(scene), saved(guid + "1", guid + "7"));

    scene.SetEntityGuid(entity, {0, 2});
    EXPECT_EQ(Save(scene), saved(guid + "2", guid + "7"));
    EXPECT_EQ(linked.strictGuid, (Core::Guid{0, 1}));
    linked = {12345, {0, 3}, 12345, {}};
    EXPECT_EQ(Save(scene), saved(guid + "3", ""));
    linked.strictGuid = {};
    EXPECT_EQ(Save(scene), "Failed to save scene: TestLinked: Entity reference has no persistent GUID.");
    linked.strict = kNullEntity;
    EXPECT_EQ(Save(scene), saved("", ""));

    Linked remapped{1, {0, 1}, 2, {0, 2}};
    for (const auto& hook : ComponentRegistry::Instance().Find("TestLinked")->remapHooks)
    {
        hook(&remapped, Remapper());
    }
    EXPECT_EQ(remapped.strict + 100 * remapped.loose, 302u);
    EXPECT_EQ(remapped.strictGuid.low + 100 * remapped.looseGuid.low, 1211u);
    Hooked hooked;
    ComponentRegistry::Instance().Find("TestHooked")->remapHooks.at(0)(&hooked, Remapper());
    EXPECT_EQ(hooked.friendGuid.low, 100u);
}

std::string Chunk(std::size_t offset, std::size_t count)
{
    std::string text = "component_schema \"TestSampleChunk\" 1 2\nproperty \"offset\" \"" +
                       std::to_string(offset) + "\"\narray_property \"values\" " + std::to_string(count) +
                       "\n";
    for (std::size_t i = offset; i < offset + count; ++i)
    {
        text += "value \"" + std::to_string(i) + "\"\n";
    }
    return text + "end_array\nend_component_schema\n";
}

TEST_F(ComponentRegistryTest, LongArraysAreSavedAndLoadedInChunks)
{
    const std::string main = Record("TestSampled", 1, "title", "t");
    const auto count = [](std::size_t number)
    { return Record("TestSampleCount", 1, "count", std::to_string(number)); };
    const std::string whole[] = {main + count(0), main + count(1024) + Chunk(0, 1024),
                                 main + count(1025) + Chunk(0, 1024) + Chunk(1024, 1)};
    for (const std::string& records : whole)
    {
        ASSERT_EQ(Load(records, scene), "");
        EXPECT_EQ(Save(scene), records);
    }
    EXPECT_EQ(scene.Get<Sampled>(scene.AliveEntities()[0]).samples.back(), 1024.0f);
    // Chunks may be shorter than they need be.
    EXPECT_EQ(Load(main + count(3) + Chunk(0, 1) + Record("TestHooked") + Chunk(1, 2), scene), "");

    const std::pair<std::string, std::string> rows[] = {
        {Chunk(0, 1), "TestSampleChunk requires its TestSampled record first."},
        {count(0) + main, "TestSampleCount requires its TestSampled record first."},
        {main + main, "Duplicate component schema: TestSampled"},
        {main + count(0) + count(0), "Duplicate component schema: TestSampleCount"},
        {main, "incomplete"},
        {main + Chunk(0, 1), "count first"},
        {main + count(2) + Chunk(0, 1), "incomplete"},
        {main + count(2) + Chunk(0, 0), "bad chunk"},
        {main + count(2) + Chunk(0, 3), "bad chunk"},
        {main + count(2) + Chunk(1, 1), "bad chunk"},
        {main + count(2000) + Chunk(0, 1000) + Chunk(1024, 1), "bad chunk"},
        {main + count(2000) + Chunk(0, 1000) + Chunk(999, 1), "bad chunk"},
        {main + count(0x1000000), "incomplete"},
        {main + count(0x1000001), "too many"},
        {main + count(~std::size_t{0}), "too many"},
    };
    for (const auto& [records, expected] : rows)
    {
        EXPECT_EQ(Load(records, scene), expected) << records.substr(0, 300);
    }

    EXPECT_EQ(FailureOf([] { SampleChunkSaver(kFaults, kMaxSamples); }), "none");
    EXPECT_EQ(FailureOf([] { SampleChunkSaver(kFaults, kMaxSamples + 1); }), "too many");
    SampleChunkLoader loader;
    EXPECT_EQ(FailureOf([&] { loader.Charge(kFaults, kMaxSampleBytes); }), "none");
    EXPECT_EQ(FailureOf([&] { loader.Charge(kFaults, 1); }), "too long");
    EXPECT_EQ(FailureOf([&] { loader.Charge(kFaults, kUnknownEncodedBytes); }), "truncated");
    EXPECT_EQ(FailureOf(
                  [&] {
                      loader.SetCounts(kFaults, std::array{kMaxSamples, std::uint64_t{1}});
                  }),
              "too many");
}

TEST_F(ComponentRegistryTest, UnknownRecordsAreDroppedKeptOrRefused)
{
    std::vector<Core::LogRecord> records;
    const std::uint64_t before = Core::GetLogger().HistorySince(0, records);
    const std::string plugin = Record("test.Plugin", 9, "f", "\\0");
    const std::string second = Record("Test-2.x_y", 1);
    const std::string hooked =
        "component_schema \"TestGrown\" 3 1\nproperty \"size\" \"1\"\nend_component_schema\n";
    for (int round = 0; round < 2; ++round)
    {
        ASSERT_EQ(Load(second + Record("WeaponComponent", 7, "x", "") + plugin + second + hooked +
                           Record("WeaponComponent"),
                       scene),
                  "");
        EXPECT_EQ(Save(scene), hooked + second + plugin + second);
    }
    records.clear();
    Core::GetLogger().HistorySince(before, records);
    std::vector<std::string> messages;
    for (const Core::LogRecord& record : records)
    {
        messages.push_back(record.message);
    }
    const auto kept = [](const std::string& name)
    {
        return "Component '" + name +
               "' belongs to a plugin that is not loaded; its data is kept and saved back unchanged.";
    };
    EXPECT_EQ(messages,
              (std::vector<std::string>{
                  kept("Test-2.x_y"),
                  "WeaponComponent is no longer an engine component (D-01); its data is skipped. Game rules "
                  "belong to a game script (see the Weapon script of the project templates).",
                  kept("test.Plugin")}));

    for (const char* const name : {"Foo", "a.", ".ab", "1.a", "a.b c", "a.\xC3\xA4"})
    {
        EXPECT_FALSE(IsPluginRecordName(name));
        EXPECT_EQ(Load(Record(name), scene), std::string("Unsupported component schema: ") + name);
    }
    EXPECT_TRUE(IsPluginRecordName("a.b"));
    EXPECT_TRUE(IsPluginRecordName("Z.."));
}

TEST_F(ComponentRegistryTest, CommitsMayLeaveComponentsForLater)
{
    const ComponentRecordTable table;
    const Reflection::SchemaCodecContext codec;
    const ComponentLoadContext context{&codec, nullptr};
    EntityRecordStage stage(table, context);
    Reflection::SchemaArena arena;
    for (const char* const name : {"TestGrown", "TestHooked", "test.Plugin"})
    {
        SchemaRecord record(arena, name, 1);
        stage.Load(record, 1);
    }
    stage.Finish(false);
    EXPECT_EQ(FailureOf([&] { stage.Finish(true); }), "Entity is missing its TransformComponent record.");
    const Entity entity = scene.CreateEntity("E");
    scene.Add<Grown>(entity).size = 77;
    stage.Commit(scene, entity,
                 [](const ComponentTypeEntry& entry) { return entry.typeName == "TestGrown"; });
    EXPECT_EQ(scene.Get<Grown>(entity).size, 1);
    EXPECT_FALSE(scene.Has<Hooked>(entity));
    EXPECT_EQ(scene.PreservedRecords(entity)->Records().size(), 1u);
    scene.Get<Grown>(entity).size = 77;
    scene.SetPreservedRecords(entity, nullptr);
    stage.Commit(scene, entity);
    EXPECT_TRUE(scene.Has<Hooked>(entity));
    EXPECT_EQ(scene.Get<Grown>(entity).size, 77);
    EXPECT_EQ(scene.PreservedRecords(entity), nullptr);
}

} // namespace
} // namespace Vornu::Scene
