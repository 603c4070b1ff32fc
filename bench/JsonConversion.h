#pragma once

#include "engine/core/Guid.h"
#include "engine/scene/components/LightingComponents.h"
#include "engine/scene/components/PhysicsComponents.h"
#include "engine/scene/components/RenderingComponents.h"
#include "engine/scene/entities/CoreComponents.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Vornu::Bench
{

/// What a scene becomes that is read from JSON: the component structs, with asset names looked up.
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

/// Turns a DOM into entities. `Dom` reads its values: a `Value` type; `Member`, which throws when it is
/// missing, and `FindMember`, whose result converts to false then; `Float`, `Int`, `UInt`, `Bool` and `Text`;
/// `Floats`, the first three of a list; `Size` and `ForEach` of a list.
template<class Dom>
class JsonConverter
{
public:
    using Value = typename Dom::Value;

    std::vector<JsonEntity> Convert(Value document)
    {
        std::vector<JsonEntity> entities;
        Value list = Dom::Member(document, "entities");
        entities.reserve(Dom::Size(list));
        Dom::ForEach(list, [&](Value entity) { entities.push_back(ConvertEntity(entity)); });
        return entities;
    }

private:
    static void Take(Value object, const char* name, float& value)
    {
        value = Dom::Float(Dom::Member(object, name));
    }
    static void Take(Value object, const char* name, bool& value)
    {
        value = Dom::Bool(Dom::Member(object, name));
    }
    static void Take(Value object, const char* name, std::uint32_t& value)
    {
        value = Dom::UInt(Dom::Member(object, name));
    }
    static void Take(Value object, const char* name, std::int32_t& value)
    {
        value = Dom::Int(Dom::Member(object, name));
    }
    static void Take(Value object, const char* name, glm::vec3& value)
    {
        const std::array<float, 3> floats = Dom::Floats(Dom::Member(object, name));
        value = {floats[0], floats[1], floats[2]};
    }
    static void Take(Value object, const char* name, Core::Guid& value)
    {
        value = Core::ParseStableGuid(Dom::Text(Dom::Member(object, name)));
    }

    Assets::AssetId Asset(Value text)
    {
        const std::string name(Dom::Text(text));
        return name.empty() ? 0 : assets_.try_emplace(name, assets_.size() + 1).first->second;
    }

    JsonEntity ConvertEntity(Value source)
    {
        JsonEntity entity;
        Take(source, "guid", entity.guid);
        entity.name = Dom::Text(Dom::Member(source, "name"));
        Take(source, "parent", entity.parent);
        Value transform = Dom::Member(Dom::Member(source, "TransformComponent"), "transform");
        Take(transform, "position", entity.transform.transform.position);
        Take(transform, "rotation", entity.transform.transform.rotation);
        Take(transform, "scale", entity.transform.transform.scale);
        ConvertRenderer(Dom::Member(source, "MeshRendererComponent"), entity.renderer);
        if (const auto body = Dom::FindMember(source, "RigidBodyComponent"))
        {
            ConvertBody(*body, entity.body.emplace());
        }
        if (const auto light = Dom::FindMember(source, "PointLightComponent"))
        {
            ConvertLight(*light, entity.light.emplace());
        }
        return entity;
    }

    void ConvertRenderer(Value source, Scene::MeshRendererComponent& renderer)
    {
        renderer.mesh = Asset(Dom::Member(source, "mesh"));
        renderer.material = Asset(Dom::Member(source, "material"));
        Dom::ForEach(Dom::Member(source, "materialSlots"),
                     [&](Value slot) { renderer.materialSlots.push_back(Asset(slot)); });
        renderer.skeleton = Asset(Dom::Member(source, "skeleton"));
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

    static void ConvertBody(Value source, Scene::RigidBodyComponent& body)
    {
        constexpr std::string_view kTypes[] = {"Static", "Dynamic", "Kinematic"};
        const auto found =
            std::find(std::begin(kTypes), std::end(kTypes), Dom::Text(Dom::Member(source, "bodyType")));
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

    static void ConvertLight(Value source, Scene::PointLightComponent& light)
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

} // namespace Vornu::Bench
