#include "bench/JsonReference.h"

#include "engine/core/Guid.h"
#include "engine/scene/components/LightingComponents.h"
#include "engine/scene/components/PhysicsComponents.h"
#include "engine/scene/components/RenderingComponents.h"
#include "engine/scene/entities/CoreComponents.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Vornu::Bench
{
namespace
{

using rapidjson::Value;

struct JsonEntity
{
    Core::Guid guid;
    std::string name;
    Core::Guid parent;
    Scene::TransformComponent transform;
    Scene::MeshRendererComponent renderer;
    std::optional<Scene::RigidBodyComponent> body;
    std::optional<Scene::PointLightComponent> light;
};

const Value& Member(const Value& object, const char* name)
{
    const auto found = object.FindMember(name);
    if (found == object.MemberEnd())
    {
        throw std::runtime_error("a member is missing");
    }
    return found->value;
}

void Take(const Value& object, const char* name, float& value)
{
    value = Member(object, name).GetFloat();
}

void Take(const Value& object, const char* name, bool& value)
{
    value = Member(object, name).GetBool();
}

void Take(const Value& object, const char* name, std::int32_t& value)
{
    value = Member(object, name).GetInt();
}

void Take(const Value& object, const char* name, std::uint32_t& value)
{
    value = Member(object, name).GetUint();
}

void Take(const Value& object, const char* name, glm::vec3& value)
{
    const Value& list = Member(object, name);
    value = {list[0].GetFloat(), list[1].GetFloat(), list[2].GetFloat()};
}

void Take(const Value& object, const char* name, Core::Guid& value)
{
    const Value& text = Member(object, name);
    value = Core::ParseStableGuid({text.GetString(), text.GetStringLength()});
}

class Converter
{
public:
    std::vector<JsonEntity> Convert(const rapidjson::Document& document)
    {
        std::vector<JsonEntity> entities;
        const Value& list = Member(document, "entities");
        entities.reserve(list.Size());
        for (const Value& entity : list.GetArray())
        {
            entities.push_back(ConvertEntity(entity));
        }
        return entities;
    }

private:
    Assets::AssetId Asset(const Value& text)
    {
        const std::string name(text.GetString(), text.GetStringLength());
        return name.empty() ? 0 : assets_.try_emplace(name, assets_.size() + 1).first->second;
    }

    JsonEntity ConvertEntity(const Value& source)
    {
        JsonEntity entity;
        Take(source, "guid", entity.guid);
        const Value& name = Member(source, "name");
        entity.name.assign(name.GetString(), name.GetStringLength());
        Take(source, "parent", entity.parent);
        const Value& transform = Member(Member(source, "TransformComponent"), "transform");
        Take(transform, "position", entity.transform.transform.position);
        Take(transform, "rotation", entity.transform.transform.rotation);
        Take(transform, "scale", entity.transform.transform.scale);
        ConvertRenderer(Member(source, "MeshRendererComponent"), entity.renderer);
        const auto body = source.FindMember("RigidBodyComponent");
        if (body != source.MemberEnd())
        {
            ConvertBody(body->value, entity.body.emplace());
        }
        const auto light = source.FindMember("PointLightComponent");
        if (light != source.MemberEnd())
        {
            ConvertLight(light->value, entity.light.emplace());
        }
        return entity;
    }

    void ConvertRenderer(const Value& source, Scene::MeshRendererComponent& renderer)
    {
        renderer.mesh = Asset(Member(source, "mesh"));
        renderer.material = Asset(Member(source, "material"));
        for (const Value& slot : Member(source, "materialSlots").GetArray())
        {
            renderer.materialSlots.push_back(Asset(slot));
        }
        renderer.skeleton = Asset(Member(source, "skeleton"));
        Take(source, "skinningEnabled", renderer.skinningEnabled);
        Take(source, "visible", renderer.visible);
        Take(source, "occluder", renderer.occluder);
        Take(source, "allowOcclusion", renderer.allowOcclusion);
        Take(source, "enableLod", renderer.enableLod);
        Take(source, "forceLodLevel", renderer.forceLodLevel);
        Take(source, "forcedLodLevel", renderer.forcedLodLevel);
        Take(source, "lodDistanceScale", renderer.lodDistanceScale);
        Take(source, "maxDrawDistance", renderer.maxDrawDistance);
    }

    static void ConvertBody(const Value& source, Scene::RigidBodyComponent& body)
    {
        constexpr std::string_view kTypes[] = {"Static", "Dynamic", "Kinematic"};
        const Value& type = Member(source, "bodyType");
        const auto found = std::find(std::begin(kTypes), std::end(kTypes),
                                     std::string_view(type.GetString(), type.GetStringLength()));
        body.bodyType = static_cast<Scene::BodyType>(found - std::begin(kTypes));
        Take(source, "mass", body.mass);
        Take(source, "linearDamping", body.linearDamping);
        Take(source, "angularDamping", body.angularDamping);
        Take(source, "gravityScale", body.gravityScale);
        Take(source, "enabled", body.enabled);
        Take(source, "useGravity", body.useGravity);
        Take(source, "allowSleep", body.allowSleep);
        Take(source, "inertiaTensor", body.inertiaTensor);
        Take(source, "lockPositionX", body.lockPositionX);
        Take(source, "lockPositionY", body.lockPositionY);
        Take(source, "lockPositionZ", body.lockPositionZ);
        Take(source, "lockRotationX", body.lockRotationX);
        Take(source, "lockRotationY", body.lockRotationY);
        Take(source, "lockRotationZ", body.lockRotationZ);
    }

    static void ConvertLight(const Value& source, Scene::PointLightComponent& light)
    {
        Take(source, "color", light.color);
        Take(source, "intensity", light.intensity);
        Take(source, "range", light.range);
        Take(source, "inverseSquareFalloff", light.inverseSquareFalloff);
        Take(source, "enabled", light.enabled);
        Take(source, "castsShadows", light.castsShadows);
        Take(source, "shadowBias", light.shadowBias);
        Take(source, "shadowNormalBias", light.shadowNormalBias);
        Take(source, "shadowSlopeBias", light.shadowSlopeBias);
        Take(source, "shadowStrength", light.shadowStrength);
        Take(source, "shadowPcfRadius", light.shadowPcfRadius);
        Take(source, "shadowResolution", light.shadowResolution);
        Take(source, "shadowNearPlane", light.shadowNearPlane);
        Take(source, "shadowFarPlane", light.shadowFarPlane);
    }

    std::unordered_map<std::string, Assets::AssetId> assets_;
};

} // namespace

std::size_t RoundTripJson(const std::filesystem::path& source, const std::filesystem::path& target)
{
    std::string text(std::filesystem::file_size(source), '\0');
    std::ifstream(source, std::ios::binary).read(text.data(), static_cast<std::streamsize>(text.size()));
    rapidjson::Document document;
    document.Parse(text.data(), text.size());
    if (document.HasParseError())
    {
        throw std::runtime_error("the JSON doesn't parse");
    }
    const std::vector<JsonEntity> entities = Converter().Convert(document);
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    document.Accept(writer);
    std::ofstream(target, std::ios::binary)
        .write(buffer.GetString(), static_cast<std::streamsize>(buffer.GetSize()));
    return entities.size();
}

} // namespace Vornu::Bench
