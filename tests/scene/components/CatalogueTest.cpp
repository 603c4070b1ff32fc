#include "engine/reflection/SchemaCodec.h"
#include "engine/scene/components/AnimatorComponents.h"
#include "engine/scene/components/BuoyancyComponents.h"
#include "engine/scene/components/ClothComponents.h"
#include "engine/scene/components/GameplayComponents.h"
#include "engine/scene/components/LightingComponents.h"
#include "engine/scene/components/OceanComponents.h"
#include "engine/scene/components/ParticleComponents.h"
#include "engine/scene/components/PhysicsComponents.h"
#include "engine/scene/components/RenderingComponents.h"
#include "engine/scene/components/SceneSchema.h"
#include "engine/scene/components/SplineComponents.h"
#include "engine/scene/components/TerrainComponents.h"
#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/registration/ComponentRegistry.h"
#include "tests/scene/OneEntityScene.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Vornu::Scene
{
namespace
{

using Test::Load;
using Test::Record;
using Test::Save;

constexpr std::uint64_t kComponents = 55; // further entries belong to tests
constexpr Core::Guid kOwnGuid{0, 1};
constexpr char kGuidText[] = "00000000-0000-0000-0000-00000000000";

using Fields = std::vector<std::pair<std::string, std::string>>;

std::string FieldLines(const Fields& fields)
{
    std::string text;
    for (const auto& [name, value] : fields)
    {
        text += "property \"" + name + "\" \"" + value + "\"\n";
    }
    return text;
}

std::string Record(const std::string& name, int version, const Fields& fields)
{
    return "component_schema \"" + name + "\" " + std::to_string(version) + " " +
           std::to_string(fields.size()) + "\n" + FieldLines(fields) + "end_component_schema\n";
}

/// An array field with `count` objects of the same fields.
std::string Objects(const std::string& field, const std::string& type, std::size_t count, int version,
                    const Fields& fields)
{
    std::string text = "array_property \"" + field + "\" " + std::to_string(count) + "\n";
    for (std::size_t i = 0; i < count; ++i)
    {
        text += "object \"" + type + "\" " + std::to_string(version) + " " + std::to_string(fields.size()) +
                "\n" + FieldLines(fields) + "end_component_schema\n";
    }
    return text + "end_array\n";
}

/// A record of the fields whose lines are given.
std::string RecordOf(const std::string& name, int version, const std::vector<std::string>& fields)
{
    std::string text = "component_schema \"" + name + "\" " + std::to_string(version) + " " +
                       std::to_string(fields.size()) + "\n";
    for (const std::string& field : fields)
    {
        text += field;
    }
    return text + "end_component_schema\n";
}

/// The only component of a type in a scene of one entity.
template<class Component>
Component& Only(Scene& scene)
{
    return scene.Get<Component>(scene.AliveEntities()[0]);
}

/// The components whose records the helpers leave to the test.
std::vector<const ComponentTypeEntry*> SavedComponents()
{
    EnsureSceneSchema();
    std::vector<const ComponentTypeEntry*> entries;
    for (const auto& entry : ComponentRegistry::Instance().Entries())
    {
        if (entry->serial < kComponents && entry->HasSceneRecords() &&
            entry->type != Reflection::TypeIdOf<TransformComponent>())
        {
            entries.push_back(entry.get());
        }
    }
    return entries;
}

/// An empty record of each component, at its current version or at version 1.
std::string EmptyRecords(bool current)
{
    std::string text;
    for (const ComponentTypeEntry* const entry : SavedComponents())
    {
        const auto* const type =
            Reflection::ReflectionRegistry::Instance().FindType(entry->records.front().name);
        text += Record(type->name, current ? static_cast<int>(type->version) : 1);
        for (const ComponentRecordRow& record : entry->records)
        {
            const bool isCount = &record != entry->records.data() && !record.repeatable;
            text += isCount ? Record(record.name) : "";
        }
    }
    return text;
}

TEST(Catalogue, EmptyRecordsOfAllComponentsGiveTheirDefaults)
{
    const std::vector<const ComponentTypeEntry*> entries = SavedComponents();
    ASSERT_EQ(entries.size(), 48u);
    Scene fresh;
    const Entity entity = fresh.CreateEntity("E", kOwnGuid);
    for (const ComponentTypeEntry* const entry : entries)
    {
        entry->add(fresh, entity);
    }
    const std::string defaults = Save(fresh);

    Scene scene;
    ASSERT_EQ(Load(EmptyRecords(true), scene), "");
    EXPECT_EQ(Save(scene), defaults);
    for (const ComponentTypeEntry* const entry : entries)
    {
        const void* const component = entry->getConst(scene, scene.AliveEntities()[0]);
        for (const auto& property :
             Reflection::ReflectionRegistry::Instance().FindType(entry->type)->properties)
        {
            EXPECT_TRUE(property.EqualsDefault(component)) << entry->typeName << "." << property.name;
        }
    }

    // Records of version 1: old lights alone differ, in one property.
    std::string old = defaults;
    const std::string falloff = "property \"inverseSquareFalloff\" \"";
    int lights = 0;
    for (std::size_t at = old.find(falloff); at != std::string::npos; at = old.find(falloff, at + 1))
    {
        ASSERT_EQ(old[at + falloff.size()], '1');
        old[at + falloff.size()] = '0';
        ++lights;
    }
    EXPECT_EQ(lights, 2);
    ASSERT_EQ(Load(EmptyRecords(false), scene), "");
    EXPECT_EQ(Save(scene), old);
}

TEST(Catalogue, MigrationsDropFieldsOfOldVersionsAlone)
{
    const std::string fault = "Unknown, duplicate, or unavailable schema field: ";
    struct Row
    {
        std::string name;
        int version;
        Fields fields;
        std::string refused; // the field that the version doesn't have
    };
    const std::vector<Row> rows = {
        {"RigidBodyComponent",
         1,
         {{"linearVelocity", "1 2 3"}, {"mass", "7"}, {"angularVelocity", "4 5 6"}, {"isAwake", "0"}},
         ""},
        {"RigidBodyComponent", 1, {{"linearSpeed", "1"}}, "linearSpeed"},
        {"RigidBodyComponent", 2, {{"isAwake", "0"}}, "isAwake"},
        {"PathWalkerComponent", 1, {{"hasDestination", "1"}}, ""},
        {"PathWalkerComponent", 2, {{"hasDestination", "1"}}, "hasDestination"},
        {"WorldChunkComponent",
         1,
         {{"loaded", "1"}, {"runtimeLoaded", "1"}, {"extents", "1 1 1"}, {"streamInEditor", "1"}},
         ""},
        {"WorldChunkComponent", 2, {{"extents", "1 1 1"}, {"streamInEditor", "1"}}, ""},
        {"WorldChunkComponent", 2, {{"loaded", "1"}}, "loaded"},
        {"WorldChunkComponent", 2, {{"runtimeLoaded", "1"}}, "runtimeLoaded"},
        {"WorldChunkComponent", 3, {{"extents", "1 1 1"}}, "extents"},
        {"WorldChunkComponent", 3, {{"streamInEditor", "1"}}, "streamInEditor"},
        {"AnimatorComponent",
         1,
         {{"currentTime", "1"},
          {"nextState", "a"},
          {"transitionDuration", "1"},
          {"transitionTime", "1"},
          {"blendAlpha", "1"}},
         ""},
        {"AnimatorComponent", 2, {{"currentTime", "1"}}, "currentTime"},
    };
    Scene scene;
    for (const Row& row : rows)
    {
        const std::string expected = row.refused.empty() ? "" : fault + row.name + "." + row.refused;
        EXPECT_EQ(Load(Record(row.name, row.version, row.fields), scene), expected)
            << row.name << row.version;
    }
    ASSERT_EQ(Load(Record(rows[0].name, 1, rows[0].fields), scene), "");
    const auto& body = Only<RigidBodyComponent>(scene);
    EXPECT_EQ(body.mass, 7.0f);
    EXPECT_TRUE(body.isAwake);
    EXPECT_EQ(body.linearVelocity, glm::vec3(0));
}

TEST(Catalogue, MigrationsKeepWhatOldFieldsMeant)
{
    Scene scene;
    for (const int version : {1, 2})
    {
        const Fields fields = {{"inverseSquareFalloff", "1"}, {"intensity", "3"}};
        ASSERT_EQ(Load(Record("PointLightComponent", version, fields) +
                           Record("SpotLightComponent", version, fields),
                       scene),
                  "");
        EXPECT_EQ(Only<PointLightComponent>(scene).inverseSquareFalloff, version == 2);
        EXPECT_EQ(Only<SpotLightComponent>(scene).inverseSquareFalloff, version == 2);
        EXPECT_EQ(Only<SpotLightComponent>(scene).intensity, 3.0f);
    }

    const std::string layers =
        Objects("layers", "AnimatorLayer", 2, 1, {{"timeSeconds", "4"}, {"name", "Upper"}});
    const std::string parameters =
        Objects("parameters", "AnimatorParameterValue", 1, 1, {{"triggerArmed", "1"}, {"name", "jump"}});
    const std::string run = FieldLines({{"currentState", "Run"}});
    ASSERT_EQ(Load(RecordOf("AnimatorComponent", 1, {run, layers, parameters}), scene), "");
    EXPECT_EQ(Only<AnimatorComponent>(scene).initialState, "Run");
    EXPECT_EQ(Only<AnimatorComponent>(scene).currentState, "");
    ASSERT_EQ(Only<AnimatorComponent>(scene).layers.size(), 2u);
    EXPECT_EQ(Only<AnimatorComponent>(scene).layers[1].name, "Upper");
    EXPECT_EQ(Only<AnimatorComponent>(scene).layers[1].timeSeconds, 0.0f);
    EXPECT_FALSE(Only<AnimatorComponent>(scene).parameters.at(0).triggerArmed);
    const std::string idle = FieldLines({{"initialState", "Idle"}});
    ASSERT_EQ(Load(RecordOf("AnimatorComponent", 1, {run, idle}), scene), "");
    EXPECT_EQ(Only<AnimatorComponent>(scene).initialState, "Idle");

    const Fields renamed = {{"entityGuid", kGuidText + std::string("7")}, {"propertyPath", "a.b"}};
    const Fields both = {{"entityGuid", kGuidText + std::string("7")},
                         {"localGuid", kGuidText + std::string("8")}};
    for (const auto& [fields, expected] : {std::pair(renamed, 7u), std::pair(both, 8u)})
    {
        ASSERT_EQ(
            Load(RecordOf("PrefabInstanceRecord", 1, {Objects("overrides", "PrefabOverride", 2, 1, fields)}),
                 scene),
            "");
        ASSERT_EQ(Only<PrefabInstanceComponent>(scene).overrides.size(), 2u);
        EXPECT_EQ(Only<PrefabInstanceComponent>(scene).overrides[1].localGuid, (Core::Guid{0, expected}));
    }
    EXPECT_NE(Save(scene).find("object \"PrefabOverride\" 2 3"), std::string::npos);
    EXPECT_NE(
        Load(RecordOf("PrefabInstanceRecord", 1, {Objects("overrides", "PrefabOverride", 1, 3, renamed)}),
             scene)
            .find("Unsupported component schema, version, or destination: PrefabOverride"),
        std::string::npos);
}

TEST(Catalogue, BuoyancyHasLimitedPointsAndFloatsOnOceansAlone)
{
    Scene scene;
    const auto points = [](std::size_t count)
    {
        return RecordOf("BuoyancyComponent", 1,
                        {Objects("customPoints", "BuoyancyPoint", count, 1, {{"liftWeight", "2"}})});
    };
    const std::string fault = "Buoyancy component exceeds 32 custom points.";
    EXPECT_EQ(Load(points(33), scene), fault);
    ASSERT_EQ(Load(points(32), scene), "");
    EXPECT_EQ(Save(scene).find("Failed"), std::string::npos);
    Only<BuoyancyComponent>(scene).customPoints.emplace_back();
    EXPECT_EQ(Save(scene), "Failed to save scene: BuoyancyComponent: " + fault);

    const std::string link = Record("BuoyancyComponent", 1, "waterBodyGuid", kGuidText + std::string("1"));
    ASSERT_EQ(Load(link, scene), "");
    EXPECT_EQ(Only<BuoyancyComponent>(scene).waterBody, kNullEntity);
    EXPECT_EQ(Only<BuoyancyComponent>(scene).waterBodyGuid, kOwnGuid);
    ASSERT_EQ(Load(link + Record("OceanComponent"), scene), "");
    EXPECT_EQ(Only<BuoyancyComponent>(scene).waterBody, scene.AliveEntities()[0]);
}

TEST(Catalogue, LinksWithoutAGuidFailTheSaveWhereTheyMustPersist)
{
    constexpr Entity kNowhere = 12345;
    Scene scene;
    const Entity entity = scene.CreateEntity("E", kOwnGuid);
    const std::vector<std::pair<std::string, std::function<void()>>> rows = {
        {"ConstraintComponent", [&] { scene.Add<ConstraintComponent>(entity).connectedEntity = kNowhere; }},
        {"CharacterControllerComponent",
         [&] { scene.Add<CharacterControllerComponent>(entity).visualRoot = kNowhere; }},
        {"ThirdPersonCameraControllerComponent",
         [&] { scene.Add<ThirdPersonCameraControllerComponent>(entity).target = kNowhere; }},
        {"ThirdPersonCameraControllerComponent",
         [&] { scene.Add<ThirdPersonCameraControllerComponent>(entity).aimTarget = kNowhere; }},
        {"AnimatorComponent",
         [&] { scene.Add<AnimatorComponent>(entity).ikChains.emplace_back().targetEntity = kNowhere; }},
        {"AnimatorComponent",
         [&] { scene.Add<AnimatorComponent>(entity).ikChains.emplace_back().poleEntity = kNowhere; }},
        {"AnimatorComponent",
         [&] { scene.Add<AnimatorComponent>(entity).lookAtChains.emplace_back().targetEntity = kNowhere; }},
    };
    for (const auto& [name, add] : rows)
    {
        add();
        EXPECT_EQ(Save(scene),
                  "Failed to save scene: " + name + ": Entity reference has no persistent GUID.");
        ComponentRegistry::Instance().Find(name)->remove(scene, entity);
    }
    scene.Add<BuoyancyComponent>(entity).waterBody = kNowhere;
    EXPECT_NE(Save(scene).find("property \"waterBodyGuid\" \"\"\n"), std::string::npos);
}

TEST(Catalogue, ChainsKeepTheirLinksAsText)
{
    Scene scene;
    ASSERT_EQ(Load(RecordOf("AnimatorComponent", 2,
                            {Objects("ikChains", "AnimatorIkChain", 1, 1,
                                     {{"targetEntityGuid", "0000000000000000000000000000000-1"},
                                      {"poleEntityGuid", "nobody"}}),
                             Objects("lookAtChains", "AnimatorLookAtChain", 1, 1,
                                     {{"targetEntityGuid", "000000000000000000000000000000AB"}})}),
                   scene),
              "");
    auto& animator = Only<AnimatorComponent>(scene);
    AnimatorIkChain& ik = animator.ikChains.at(0);
    AnimatorLookAtChain& look = animator.lookAtChains.at(0);
    EXPECT_EQ(ik.targetEntityGuid, kGuidText + std::string("1"));
    EXPECT_EQ(ik.targetEntity, scene.AliveEntities()[0]);
    EXPECT_EQ(ik.poleEntityGuid, "");
    EXPECT_EQ(look.targetEntityGuid, "00000000-0000-0000-0000-0000000000ab");
    EXPECT_EQ(look.targetEntity, kNullEntity);

    // The text counts; the handle fills it only where there is none.
    look.targetEntity = scene.AliveEntities()[0];
    ik.poleEntity = scene.AliveEntities()[0];
    ik.poleEntityGuid = "nobody";
    const std::string saved = Save(scene);
    EXPECT_NE(saved.find("\"targetEntityGuid\" \"00000000-0000-0000-0000-0000000000ab\""), std::string::npos);
    EXPECT_NE(saved.find("\"poleEntityGuid\" \"" + std::string(kGuidText) + "1\""), std::string::npos);
    EXPECT_EQ(ik.poleEntityGuid, "nobody");
}

TEST(Catalogue, SplinesLimitTheirCache)
{
    Scene scene;
    const auto spline = [](const std::string& samples)
    {
        return RecordOf("SplineComponentRecord", 1,
                        {"object_property \"spline\" \"SplineCurveRecord\" 1 1\n" +
                         FieldLines({{"cacheSamplesPerSegment", samples}}) + "end_component_schema\n"});
    };
    for (const char* const samples : {"1", "257", "4294967295"})
    {
        EXPECT_EQ(Load(spline(samples), scene), "Spline cache samples must be between 2 and 256.");
    }
    for (const char* const samples : {"2", "256"})
    {
        ASSERT_EQ(Load(spline(samples), scene), "");
        EXPECT_NE(Save(scene).find("\"cacheSamplesPerSegment\" \"" + std::string(samples) + "\""),
                  std::string::npos);
    }
    EXPECT_TRUE(Only<SplineComponent>(scene).meshDirty);
}

std::string Values(const std::vector<std::string>& values)
{
    std::string text = "array_property \"values\" " + std::to_string(values.size()) + "\n";
    for (const std::string& value : values)
    {
        text += "value \"" + value + "\"\n";
    }
    return text + "end_array\n";
}

std::string TerrainChunk(const std::string& kind, const std::string& offset,
                         const std::vector<std::string>& values)
{
    return RecordOf("TerrainSampleChunk", 1,
                    {FieldLines({{"kind", kind}}), FieldLines({{"offset", offset}}), Values(values)});
}

std::string ClothChunk(const std::string& offset, const std::vector<std::string>& values)
{
    return RecordOf("ClothPinWeightChunk", 1, {FieldLines({{"offset", offset}}), Values(values)});
}

TEST(Catalogue, SamplesOfTerrainAndClothComeInChunks)
{
    Scene scene;
    const std::string terrain = Record("TerrainComponent");
    const std::string cloth = Record("ClothComponent");
    const std::string counts = Record("TerrainSampleCounts", 1, {{"heights", "3"}, {"layerWeights", "2"}});
    const std::string count = Record("ClothPinWeightCount", 1, "count", "2");
    ASSERT_EQ(Load(terrain + cloth + counts + TerrainChunk("Heights", "0", {"1", "2"}) +
                       TerrainChunk("LayerWeights", "0", {"0.5"}) + count + ClothChunk("0", {"1"}) +
                       TerrainChunk("Heights", "2", {"3"}) + TerrainChunk("LayerWeights", "1", {"0.25"}) +
                       ClothChunk("1", {"0"}),
                   scene),
              "");
    EXPECT_EQ(Only<TerrainComponent>(scene).heights, (std::vector<float>{1, 2, 3}));
    EXPECT_EQ(Only<TerrainComponent>(scene).layerWeights, (std::vector<float>{0.5f, 0.25f}));
    EXPECT_EQ(Only<ClothComponent>(scene).pinWeights, (std::vector<float>{1, 0}));
    const std::string saved = Save(scene);
    EXPECT_NE(saved.find(count + ClothChunk("0", {"1", "0"})), std::string::npos);
    EXPECT_NE(saved.find(counts + TerrainChunk("Heights", "0", {"1", "2", "3"}) +
                         TerrainChunk("LayerWeights", "0", {"0.5", "0.25"})),
              std::string::npos);

    const std::pair<std::string, std::string> rows[] = {
        {terrain, "Terrain samples are missing or incomplete."},
        {terrain + counts, "Terrain samples are missing or incomplete."},
        {terrain + TerrainChunk("Heights", "0", {"1"}), "Terrain chunks require sample counts first."},
        {terrain + counts + TerrainChunk("LayerWeights", "1", {"1"}),
         "Terrain sample chunk is empty, out of order, overlapping, or exceeds its declared count."},
        {terrain + Record("TerrainSampleCounts", 1, {{"heights", "16777216"}, {"layerWeights", "1"}}),
         "Terrain exceeds its total sample limit."},
        {cloth, "Cloth pin weights are missing or incomplete."},
        {cloth + ClothChunk("0", {"1"}), "Cloth chunks require a pin-weight count first."},
        {cloth + count + ClothChunk("0", {"1", "2", "3"}),
         "Cloth pin-weight chunk is empty, out of order, overlapping, or exceeds its declared count."},
        {cloth + Record("ClothPinWeightCount", 1, "count", "16777217"),
         "Cloth exceeds its total pin-weight limit."},
    };
    for (const auto& [records, expected] : rows)
    {
        EXPECT_EQ(Load(records, scene), expected);
    }
}

TEST(Catalogue, CopiesStartAfresh)
{
    Scene scene;
    const Entity from = scene.CreateEntity("from");
    const Entity to = scene.CreateEntity("to");
    auto& body = scene.Add<RigidBodyComponent>(from);
    body.mass = 5;
    body.linearVelocity = {1, 2, 3};
    body.isAwake = false;
    auto& emitter = scene.Add<ParticleEmitterComponent>(from);
    emitter.randomSeed = 77;
    emitter.runtimeSeed = 123456;
    auto& animator = scene.Add<AnimatorComponent>(from);
    animator.currentState = "Run";
    animator.initialState = "Idle";
    animator.manualBonePose.resize(3);
    auto& controller = scene.Add<CharacterControllerComponent>(from);
    controller.velocity = {1, 0, 0};
    controller.groundEntity = from;
    auto& terrain = scene.Add<TerrainComponent>(from);
    terrain.generatedMesh = 9;
    terrain.heights = {1, 2};

    const auto copy = [&](ComponentCopyKind kind)
    {
        for (const char* const name : {"RigidBodyComponent", "ParticleEmitterComponent", "AnimatorComponent",
                                       "CharacterControllerComponent", "TerrainComponent"})
        {
            ComponentRegistry::Instance().Find(name)->copy(scene, from, to, kind);
        }
    };
    copy(ComponentCopyKind::Persistent);
    EXPECT_EQ(scene.Get<AnimatorComponent>(to).manualBonePose.size(), 3u);
    copy(ComponentCopyKind::Duplicate);
    EXPECT_TRUE(scene.Get<AnimatorComponent>(to).manualBonePose.empty());
    EXPECT_TRUE(scene.Get<AnimatorComponent>(to).poseDirty);
    EXPECT_EQ(scene.Get<AnimatorComponent>(to).currentState, "");
    EXPECT_EQ(scene.Get<AnimatorComponent>(to).initialState, "Idle");
    EXPECT_EQ(scene.Get<RigidBodyComponent>(to).mass, 5.0f);
    EXPECT_EQ(scene.Get<RigidBodyComponent>(to).linearVelocity, glm::vec3(0));
    EXPECT_TRUE(scene.Get<RigidBodyComponent>(to).isAwake);
    EXPECT_EQ(scene.Get<ParticleEmitterComponent>(to).runtimeSeed, 77u);
    EXPECT_EQ(scene.Get<CharacterControllerComponent>(to).velocity, glm::vec3(0));
    EXPECT_EQ(scene.Get<CharacterControllerComponent>(to).groundEntity, kNullEntity);
    EXPECT_EQ(scene.Get<TerrainComponent>(to).generatedMesh, 0u);
    EXPECT_EQ(scene.Get<TerrainComponent>(to).heights, (std::vector<float>{1, 2}));

    Scene loaded;
    ASSERT_EQ(Load(Record("ParticleEmitterComponent", 1, "randomSeed", "42"), loaded), "");
    EXPECT_EQ(Only<ParticleEmitterComponent>(loaded).runtimeSeed, 42u);
}

TEST(Catalogue, GeneratedMeshesStayOutOfFiles)
{
    constexpr Assets::AssetId kGenerated = 50;
    constexpr Assets::AssetId kSource = 60;
    Scene scene;
    Reflection::SchemaCodecContext codec;
    codec.assetToText = [](std::uint64_t id, const Reflection::AssetTypeInfo&) { return std::to_string(id); };
    const auto saved = [&](Entity entity)
    {
        ComponentTypeEntry::RecordList records;
        const ComponentTypeEntry& entry = *ComponentRegistry::Instance().Find("MeshRendererComponent");
        entry.saver(entry.getConst(scene, entity), {&scene, entity, &codec}, records);
        return std::string(records.back().FindField("mesh")->value.Text());
    };
    const auto entityWith = [&](Assets::AssetId mesh)
    {
        const Entity entity = scene.CreateEntity("E");
        scene.Add<MeshRendererComponent>(entity).mesh = mesh;
        return entity;
    };
    const Entity spline = entityWith(kGenerated);
    const Entity terrain = entityWith(kGenerated);
    const Entity ocean = entityWith(kGenerated);
    const Entity cloth = entityWith(kGenerated);
    scene.Add<SplineComponent>(spline).generatedMesh = kGenerated;
    scene.Add<TerrainComponent>(terrain).generatedMesh = kGenerated;
    scene.Add<OceanComponent>(ocean).generatedMesh = kGenerated;
    scene.Add<ClothComponent>(cloth).generatedMesh = kGenerated;
    scene.Get<ClothComponent>(cloth).sourceMesh = kSource;
    for (const Entity entity : {spline, terrain, ocean})
    {
        EXPECT_EQ(saved(entity), "");
        EXPECT_EQ(scene.Get<MeshRendererComponent>(entity).mesh, kGenerated);
    }
    EXPECT_EQ(saved(cloth), "60");

    // Meshes of other entities, other meshes and none stay what they are.
    EXPECT_EQ(saved(entityWith(kGenerated)), "50");
    scene.Get<MeshRendererComponent>(cloth).mesh = 51;
    EXPECT_EQ(saved(cloth), "51");
    scene.Get<MeshRendererComponent>(cloth).mesh = 0;
    scene.Get<ClothComponent>(cloth).generatedMesh = 0;
    EXPECT_EQ(saved(cloth), "");
}

} // namespace
} // namespace Vornu::Scene
