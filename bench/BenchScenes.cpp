#include "bench/BenchScenes.h"

#include "engine/assets/manager/AssetManager.h"
#include "engine/core/Guid.h"
#include "engine/core/logging/Logger.h"
#include "engine/core/system/System.h"
#include "engine/scene/Scene.h"
#include "engine/scene/files/SceneFile.h"
#include "engine/scene/legacy/LegacyReader.h"
#include "tools/upgrade/UpgradeTool.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace Vornu::Bench
{
namespace
{

/// The numbers of one entity: what an author's tool would write, few decimals for places and angles.
struct EntityValues
{
    std::string guid;
    std::string parent; // empty for the root
    std::string name;
    float position[3];
    float rotation[3];
    float scale;
    Reference mesh;
    Reference material;
    Reference secondMaterial; // empty for most
    bool hasBody;
    float mass;
    float damping;
    bool hasLight;
    float color[3];
    float intensity;
    float range;
};

std::size_t ParentOf(std::size_t entity, Shape shape)
{
    constexpr std::size_t kChildren = 8;
    switch (shape)
    {
    case Shape::Flat:
        return 0;
    case Shape::Deep:
        return entity - 1;
    default:
        return (entity - 1) / kChildren;
    }
}

template<class Visit>
void ForEachEntity(std::size_t count, Shape shape, References references, Visit visit)
{
    std::mt19937_64 random(count);
    const auto number = [&random](float limit)
    { return limit * static_cast<float>(random() % 20001) / 10000.0f - limit; };
    std::vector<std::string> guids;
    for (std::size_t i = 0; i < count; ++i)
    {
        EntityValues entity;
        entity.guid = guids.emplace_back(Core::Guid{random() | 1, random()}.ToString());
        entity.parent = i == 0 ? "" : guids[ParentOf(i, shape)];
        entity.name = "Prop_" + std::to_string(i);
        for (int axis = 0; axis < 3; ++axis)
        {
            entity.position[axis] = number(250.0f);
            entity.rotation[axis] = number(180.0f);
            entity.color[axis] = 0.5f + number(0.5f);
        }
        entity.scale = random() % 4 == 0 ? 1.5f + number(0.5f) : 1.0f;
        entity.mesh = MeshReference(random, references);
        entity.material = MaterialReference(random, references);
        entity.secondMaterial = i % 4 == 0 ? MaterialReference(random, references) : Reference();
        entity.hasBody = i % 5 == 0;
        entity.mass = 20.0f + number(15.0f);
        entity.damping = 0.5f + number(0.5f);
        entity.hasLight = i % 10 == 0;
        entity.intensity = 18.0f + number(10.0f);
        entity.range = 10.0f + number(5.0f);
        visit(entity);
    }
}

/// Appends printf text; floats come as doubles.
template<class... Values>
void AppendFormat(std::string& out, const char* format, Values... values)
{
    char buffer[1024];
    const int size = std::snprintf(buffer, sizeof buffer, format, values...);
    out.append(buffer, static_cast<std::size_t>(size));
}

void AppendFloats(std::string& out, std::initializer_list<float> values, const char* separator)
{
    const char* between = "";
    for (const float value : values)
    {
        AppendFormat(out, "%s%.9g", between, static_cast<double>(value));
        between = separator;
    }
}

void AppendMember(std::string& out, const char* name, std::initializer_list<float> values)
{
    AppendFormat(out, "\"%s\":", name);
    out += values.size() > 1 ? "[" : "";
    AppendFloats(out, values, ",");
    out += values.size() > 1 ? "]" : "";
}

/// Every positional record of the examples, each with the main record that it needs in front of it.
std::vector<std::string> AllRecords()
{
    constexpr std::string_view kMainRecords[] = {"animator", "buoyancy_v4", "script"};
    std::ifstream file(VORNU_EXAMPLES "/Content/Levels/every_record_v5.vscene");
    std::vector<std::string> records;
    std::string main;
    for (std::string line; std::getline(file, line);)
    {
        const std::string keyword = line.substr(0, line.find(' '));
        line += "\n";
        if (std::find(std::begin(kMainRecords), std::end(kMainRecords), keyword) != std::end(kMainRecords))
        {
            main = line;
        }
        if (keyword == "entity")
        {
            main.clear();
        }
        else if (!main.empty() ||
                 (keyword != "scene_version" && keyword != "parent" && keyword != "end_entity"))
        {
            const bool isDetail = !main.empty() && main != line && keyword.starts_with(main.substr(0, 6));
            records.push_back((isDetail ? main : "") + line);
        }
    }
    return records;
}

std::string TerrainText(int resolution)
{
    std::string text;
    AppendFormat(text, "terrain 24 24 3 %d %d\nterrain_heights %d", resolution, resolution,
                 resolution * resolution);
    for (int i = 0; i < resolution * resolution; ++i)
    {
        AppendFormat(text, " %.4g", 0.001 * (i % 997));
    }
    return text + "\n";
}

std::string MixedSceneText(std::size_t entityCount)
{
    const std::vector<std::string> records = AllRecords();
    const std::string terrain = TerrainText(256);
    std::mt19937_64 random(entityCount);
    std::string text = "scene_version 5\n";
    for (std::size_t i = 0; i < entityCount; ++i)
    {
        const std::string guid = Core::Guid{random() | 1, random()}.ToString();
        AppendFormat(text, "entity \"%s\" \"Thing_%zu\"\n", guid.c_str(), i);
        text += records[i % records.size()];
        text += i % 10'000 == 0 ? terrain : "";
        text += "end_entity\n";
    }
    return text;
}

} // namespace

std::string LegacySceneText(std::size_t entityCount, Shape shape, References references)
{
    if (shape == Shape::Mixed)
    {
        return MixedSceneText(entityCount);
    }
    std::string text = "scene_version 3\nenvironment \"\" 1 1 0 1\n";
    ForEachEntity(entityCount, shape, references,
                  [&text](const EntityValues& e)
                  {
                      AppendFormat(text, "entity \"%s\" \"%s\"\n", e.guid.c_str(), e.name.c_str());
                      if (!e.parent.empty())
                      {
                          AppendFormat(text, "parent \"%s\"\n", e.parent.c_str());
                      }
                      text += "transform ";
                      AppendFloats(text,
                                   {e.position[0], e.position[1], e.position[2], e.rotation[0], e.rotation[1],
                                    e.rotation[2], e.scale, e.scale, e.scale},
                                   " ");
                      AppendFormat(text, "\nmesh_renderer \"%s\" \"%s\" \"\" 1 1 1 1 0 0 0 1 250\n",
                                   e.mesh.legacy.c_str(), e.material.legacy.c_str());
                      if (!e.secondMaterial.legacy.empty())
                      {
                          AppendFormat(text, "mesh_material_slot 1 \"%s\"\n",
                                       e.secondMaterial.legacy.c_str());
                      }
                      if (e.hasBody)
                      {
                          text += "rigid_body 2 ";
                          AppendFloats(text, {e.mass, e.damping, e.damping}, " ");
                          text += " 1 0 0 0 0 0 0 1 1 1 1 0 0 0 0 0 0\n";
                      }
                      if (e.hasLight)
                      {
                          text += "point_light ";
                          AppendFloats(text, {e.color[0], e.color[1], e.color[2], e.intensity, e.range}, " ");
                          text += " 1 0 0.0015 0.01 1 0.78 1 512 0.05 0\n";
                      }
                      text += "end_entity\n";
                  });
    return text;
}

std::string TerrainSceneText()
{
    return "scene_version 3\nentity \"\" \"Hills\"\n" + TerrainText(2000) + "end_entity\n";
}

std::string JsonSceneText(std::size_t entityCount, Shape shape)
{
    std::string text = "{\"scene_version\":6,\"entities\":[";
    ForEachEntity(
        entityCount, shape, References::Usual,
        [&text](const EntityValues& e)
        {
            text += text.back() == '[' ? "" : ",";
            AppendFormat(text, "{\"guid\":\"%s\",\"name\":\"%s\",\"parent\":\"%s\",", e.guid.c_str(),
                         e.name.c_str(), e.parent.c_str());
            text += "\"TransformComponent\":{\"transform\":{";
            AppendMember(text, "position", {e.position[0], e.position[1], e.position[2]});
            text += ",";
            AppendMember(text, "rotation", {e.rotation[0], e.rotation[1], e.rotation[2]});
            text += ",";
            AppendMember(text, "scale", {e.scale, e.scale, e.scale});
            std::string material = e.material.current.empty() ? e.secondMaterial.current : e.material.current;
            material = material.empty() ? "builtin:Builtin/DefaultMaterial" : material;
            AppendFormat(text,
                         "}},\"MeshRendererComponent\":{\"mesh\":\"%s\",\"material\":\"%s\","
                         "\"materialSlots\":[\"%s\"",
                         e.mesh.current.c_str(), material.c_str(), material.c_str());
            if (!e.mesh.current.empty() || !e.secondMaterial.legacy.empty()) // the mesh has two parts
            {
                const bool hasSecond = e.mesh.current.empty() || !e.secondMaterial.current.empty();
                AppendFormat(text, ",\"%s\"", (hasSecond ? e.secondMaterial.current : material).c_str());
            }
            text += "],\"skeleton\":\"\",\"skinningEnabled\":true,"
                    "\"visible\":true,\"occluder\":true,\"allowOcclusion\":true,\"enableLod\":false,"
                    "\"forceLodLevel\":false,\"forcedLodLevel\":0,\"lodDistanceScale\":1,\"maxDrawDistance\":"
                    "250}";
            if (e.hasBody)
            {
                text += ",\"RigidBodyComponent\":{\"bodyType\":\"Kinematic\",";
                AppendMember(text, "mass", {e.mass});
                text += ",";
                AppendMember(text, "linearDamping", {e.damping});
                text += ",";
                AppendMember(text, "angularDamping", {e.damping});
                text += ",\"gravityScale\":1,\"enabled\":true,\"useGravity\":true,\"allowSleep\":true,"
                        "\"inertiaTensor\":[1,1,1],\"lockPositionX\":false,\"lockPositionY\":false,"
                        "\"lockPositionZ\":false,\"lockRotationX\":false,\"lockRotationY\":false,"
                        "\"lockRotationZ\":false}";
            }
            if (e.hasLight)
            {
                text += ",\"PointLightComponent\":{";
                AppendMember(text, "color", {e.color[0], e.color[1], e.color[2]});
                text += ",";
                AppendMember(text, "intensity", {e.intensity});
                text += ",";
                AppendMember(text, "range", {e.range});
                text +=
                    ",\"inverseSquareFalloff\":false,\"enabled\":true,\"castsShadows\":false,"
                    "\"shadowBias\":0.00150000001,\"shadowNormalBias\":0.00999999978,\"shadowSlopeBias\":1,"
                    "\"shadowStrength\":0.779999971,\"shadowPcfRadius\":1,\"shadowResolution\":512,"
                    "\"shadowNearPlane\":0.0500000007,\"shadowFarPlane\":0}";
            }
            text += "}";
        });
    return text + "]}";
}

ScratchFolder::ScratchFolder()
    : path_(std::filesystem::temp_directory_path() / ("vornu-bench-" + Core::Guid::Generate().ToString()))
{
    std::filesystem::create_directories(path_);
    Platform::KeepFreedMemory(); // as the program does
    setenv("VORNU_USER_SETTINGS_DIR", (path_ / "user").c_str(), 1);
    Core::GetLogger().SetMinimumLevelForAll(Core::LogLevel::Error);
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored; // what stays behind in the temporary folder is the system's to remove
    std::filesystem::remove_all(path_, ignored);
}

void WriteText(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

void MakeCurrentScene(const std::filesystem::path& path, std::size_t entityCount, Shape shape)
{
    WriteText(path, LegacySceneText(entityCount, shape));
    Assets::AssetManager assets;
    assets.Initialize(Upgrade::FindContentFolder(path), Assets::AssetMountMode::Authoring);
    Scene::Scene scene;
    std::string error;
    if (!Scene::Legacy::Load(path, scene, assets, &error) || !Scene::SaveScene(path, scene, assets, &error))
    {
        throw std::runtime_error(error);
    }
}

} // namespace Vornu::Bench
