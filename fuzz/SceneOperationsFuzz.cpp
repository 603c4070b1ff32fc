#include "engine/core/logging/Logger.h"
#include "engine/reflection/ReflectionRegistry.h"
#include "engine/reflection/SchemaCodec.h"
#include "engine/scene/EntityCopy.h"
#include "engine/scene/components/ClothComponents.h"
#include "engine/scene/components/SceneSchema.h"
#include "engine/scene/components/ScriptComponents.h"
#include "engine/scene/components/TerrainComponents.h"
#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/entities/PreservedRecordSet.h"
#include "engine/scene/files/CookedScene.h"
#include "engine/scene/files/SceneFile.h"
#include "engine/scene/plugins/PluginComponents.h"
#include "engine/scene/registration/ComponentRegistry.h"
#include "fuzz/FuzzFiles.h"
#include "fuzz/FuzzScenes.h"

#include <algorithm>
#include <cstring>

namespace
{

using namespace Vornu;
using Reflection::ObjectView;
using Reflection::PropertyKind;
using Reflection::ValueSchema;

/// Takes values from the input, and zeros behind its end.
class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}

    bool Empty() const { return at_ == end_; }

    template<class Value>
    Value Take()
    {
        Value value{};
        const auto count = std::min(sizeof(Value), static_cast<std::size_t>(end_ - at_));
        std::memcpy(&value, at_, count);
        at_ += count;
        return value;
    }

    std::uint8_t Byte() { return Take<std::uint8_t>(); }
    std::size_t Below(std::size_t limit) { return limit > 0 ? Byte() % limit : 0; }

    /// Mostly short; now and then past the limits of lines and names.
    std::string Text()
    {
        const std::uint8_t kind = Byte();
        if (kind >= 0xF0)
        {
            return std::string(65'500 + kind, static_cast<char>(Byte()));
        }
        std::string text;
        for (int i = kind % 12; i > 0; --i)
        {
            text += static_cast<char>(Byte());
        }
        return text;
    }

    /// Of few, so that some are alike.
    Core::Guid Guid()
    {
        const std::uint8_t number = Byte();
        return {0, number % 16u};
    }

private:
    const std::uint8_t* at_;
    const std::uint8_t* end_;
};

/// A small number, a common one or any bits.
float TakeFloat(Input& in)
{
    const std::uint8_t kind = in.Byte();
    return kind < 64 ? static_cast<float>(kind) / 4.0f : kind < 128 ? in.Take<float>() : 1.0f;
}

void FillObject(const ObjectView& view, Input& in, int depth);

void FillFloats(void* data, std::size_t count, Input& in)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        static_cast<float*>(data)[i] = TakeFloat(in);
    }
}

void FillAsset(Assets::AssetId& id, Input& in)
{
    // Ids start small in each process; one of the examples is likely among these.
    id = in.Byte();
}

void Fill(const ObjectView& view, const ValueSchema& schema, Input& in, int depth)
{
    void* const data = view.mutableData;
    if (schema.shape == Reflection::ValueShape::Collection)
    {
        const std::uint8_t kind = in.Byte();
        const std::size_t count = kind == 255 ? 1025 : kind > 250 ? 1024 : kind % 5;
        view.accessors->resize(data, count);
        for (std::size_t i = 0; i < std::min<std::size_t>(view.accessors->size(data), 5) && depth < 4; ++i)
        {
            view.accessors->mutableElement(
                data, i, [&](const ObjectView& element) { Fill(element, *schema.element, in, depth + 1); });
        }
        return;
    }
    switch (schema.kind)
    {
    case PropertyKind::Bool:
        *static_cast<bool*>(data) = in.Byte() % 2 == 1;
        break;
    case PropertyKind::Int32:
    case PropertyKind::UInt32:
    case PropertyKind::EntityHandle:
        *static_cast<std::uint32_t*>(data) = in.Byte() % 2 == 1 ? in.Take<std::uint32_t>() : in.Byte();
        break;
    case PropertyKind::UInt64:
        *static_cast<std::uint64_t*>(data) = in.Take<std::uint64_t>();
        break;
    case PropertyKind::AssetRef:
        FillAsset(*static_cast<Assets::AssetId*>(data), in);
        break;
    case PropertyKind::Float:
        FillFloats(data, 1, in);
        break;
    case PropertyKind::Vec2:
        FillFloats(data, 2, in);
        break;
    case PropertyKind::Vec3:
        FillFloats(data, 3, in);
        break;
    case PropertyKind::Vec4:
    case PropertyKind::Quat:
        FillFloats(data, 4, in);
        break;
    case PropertyKind::String:
        *static_cast<std::string*>(data) = in.Text();
        break;
    case PropertyKind::Guid:
        *static_cast<Core::Guid*>(data) = in.Guid();
        break;
    case PropertyKind::Enum:
        view.accessors->enumWrite(data, {Reflection::EnumValue(std::uint32_t{in.Byte()}), ""});
        break;
    case PropertyKind::Object:
        FillObject(view, in, depth + 1);
        break;
    default:
        break;
    }
}

/// Fills some properties of an object, those of run-time state included.
void FillObject(const ObjectView& view, Input& in, int depth)
{
    const auto* const type = Reflection::ReflectionRegistry::Instance().FindType(view.type);
    if (type == nullptr || type->properties.empty() || depth > 6)
    {
        return;
    }
    for (int i = in.Byte() % 4; i >= 0; --i)
    {
        const Reflection::PropertyInfo& property = type->properties[in.Below(type->properties.size())];
        Fill(property.MutableView(view.mutableData), property.schema, in, depth);
    }
}

/// A record of a name that a saver has to think about.
Reflection::SchemaRecord TakeRecord(Input& in, Reflection::SchemaArena& arena)
{
    static constexpr std::string_view kNames[] = {"fuzz.Plugin",
                                                  "away.Plugin",
                                                  "a.b",
                                                  "Foo",
                                                  "",
                                                  "TransformComponent",
                                                  "Transform",
                                                  "EnvironmentSettings",
                                                  "TerrainSampleChunk",
                                                  "ScriptComponentRecord",
                                                  "NameComponent",
                                                  "TestedRemoved",
                                                  "WeaponComponent"};
    Reflection::SchemaRecord record(arena, kNames[in.Below(std::size(kNames))], in.Byte() % 3u);
    for (int i = in.Byte() % 3; i > 0; --i)
    {
        static constexpr std::string_view kFields[] = {"speed", "name", "", "other"};
        record.AddField(kFields[in.Below(std::size(kFields))], in.Text());
    }
    return record;
}

Scene::ScriptField TakeScriptField(Input& in)
{
    Scene::ScriptField field{in.Guid(), in.Text(), static_cast<Scene::ScriptFieldType>(in.Byte() % 16), {}};
    switch (in.Byte() % 5)
    {
    case 0:
        field.value = in.Text();
        break;
    case 1:
        field.value = std::to_string(in.Byte());
        break;
    case 2:
        field.value = in.Take<double>();
        break;
    case 3:
        field.value = in.Guid();
        break;
    default:
        field.value = in.Take<std::int32_t>();
        break;
    }
    return field;
}

/// What a host may do to a scene, one operation after the other.
class Host
{
public:
    Host(Scene::Scene& scene, Input& in) : scene_(scene), in_(in) {}

    void Run()
    {
        for (int steps = 0; !in_.Empty() && steps < 200; ++steps)
        {
            Step();
        }
    }

private:
    void Step()
    {
        const Scene::Entity entity = AnyEntity();
        switch (in_.Byte() % 13)
        {
        case 0:
        case 1:
            scene_.CreateEntity(in_.Text());
            break;
        case 2:
            scene_.CreateEntity(in_.Text(), in_.Guid());
            break;
        case 3:
        case 4:
        case 5:
            ChangeComponent(entity);
            break;
        case 6:
            scene_.SetParent(entity, AnyEntity());
            break;
        case 7:
            RemoveComponent(entity);
            break;
        case 8:
            Preserve(entity);
            break;
        case 9:
            FillObject(Reflection::ViewOf(scene_.GetEnvironment()), in_, 0);
            break;
        case 10:
            FillSamples(entity);
            break;
        case 11:
            FillScripts(entity);
            break;
        default:
            CopyOrDestroy(entity);
            break;
        }
    }

    Scene::Entity AnyEntity()
    {
        const auto& alive = scene_.AliveEntities();
        return alive.empty() ? Scene::kNullEntity : alive[in_.Below(alive.size())];
    }

    void ChangeComponent(Scene::Entity entity)
    {
        const Scene::ComponentTypeEntry& entry = AnyComponent();
        if (!scene_.IsValid(entity))
        {
            return;
        }
        if (!entry.has(scene_, entity))
        {
            entry.add(scene_, entity);
        }
        FillObject(entry.view(scene_, entity), in_, 0);
    }

    void RemoveComponent(Scene::Entity entity)
    {
        const Scene::ComponentTypeEntry& entry = AnyComponent();
        if (scene_.IsValid(entity) && entry.has(scene_, entity))
        {
            entry.remove(scene_, entity);
        }
    }

    const Scene::ComponentTypeEntry& AnyComponent()
    {
        const auto& entries = Scene::ComponentRegistry::Instance().Entries();
        return *entries[in_.Below(entries.size())];
    }

    void Preserve(Scene::Entity entity)
    {
        auto records = std::make_shared<Scene::PreservedRecordSet>();
        Reflection::SchemaArena arena;
        for (int i = in_.Byte() % 4; i >= 0; --i)
        {
            records->Add(TakeRecord(in_, arena));
        }
        scene_.SetPreservedRecords(entity, std::move(records));
    }

    void FillSamples(Scene::Entity entity)
    {
        if (!scene_.IsValid(entity))
        {
            return;
        }
        const std::size_t count = in_.Take<std::uint16_t>() % 5000u;
        const float value = TakeFloat(in_);
        if (in_.Byte() % 2 == 0)
        {
            auto& terrain = scene_.Add<Scene::TerrainComponent>(entity);
            terrain.heights.assign(count, value);
            terrain.layerWeights.assign(in_.Byte(), value);
        }
        else
        {
            scene_.Add<Scene::ClothComponent>(entity).pinWeights.assign(count, value);
        }
    }

    void FillScripts(Scene::Entity entity)
    {
        if (!scene_.IsValid(entity))
        {
            return;
        }
        auto& scripts = scene_.Add<Scene::ScriptComponent>(entity).scripts;
        scripts.resize(in_.Byte() % 3u + 1);
        for (int i = in_.Byte() % 6; i > 0; --i)
        {
            Scene::ScriptAttachment& script = scripts[in_.Below(scripts.size())];
            (in_.Byte() % 2 == 0 ? script.serializedFields : script.unknownFields)
                .push_back(TakeScriptField(in_));
        }
    }

    void CopyOrDestroy(Scene::Entity entity)
    {
        if (in_.Byte() % 2 == 0)
        {
            scene_.DestroyEntity(entity);
        }
        else if (scene_.AliveCount() < 100)
        {
            Scene::EntityCopy::EntityMap map;
            Scene::EntityCopy::CopyEntityTree(scene_, entity, Scene::kNullEntity, map, " Copy");
            Scene::EntityCopy::RemapReferences(scene_, scene_, map, true);
        }
    }

    Scene::Scene& scene_;
    Input& in_;
};

void RegisterPlugin()
{
    Scene::PluginComponentDefinition definition;
    definition.name = "fuzz.Plugin";
    definition.pluginId = "fuzz";
    definition.serialized = true;
    Scene::PluginFieldDefinition speed;
    speed.name = "speed";
    speed.kind = Scene::PluginFieldKind::Float;
    speed.defaultValue = 1.0f;
    Scene::PluginFieldDefinition name;
    name.name = "name";
    name.kind = Scene::PluginFieldKind::String;
    name.defaultValue = std::string();
    definition.fields = {speed, name};
    Scene::RegisterPluginComponent(definition, nullptr);
}

/// What a load of the file gives when it is saved again.
std::string Reload(const std::filesystem::path& path, const char* what)
{
    Scene::Scene scene;
    std::string error;
    Fuzz::Require(Scene::LoadScene(path, scene, Fuzz::SharedAssets(), &error),
                  std::string(what) + " doesn't load: " + error);
    const std::filesystem::path again = Fuzz::ScratchFile("again.vscene");
    Fuzz::Require(Scene::SaveScene(again, scene, Fuzz::SharedAssets(), &error),
                  std::string(what) + " doesn't save again: " + error);
    return Fuzz::ReadBytes(again);
}

} // namespace

/// The input is a sequence of operations on a scene. Whatever they leave, a scene that is saved or cooked
/// loads; saved a second time it doesn't change any more.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool ready = []
    {
        Core::GetLogger().ApplyLevelSpec("off");
        Scene::EnsureSceneSchema();
        RegisterPlugin();
        return true;
    }();
    static_cast<void>(ready);
    Input in(data, size);
    Scene::Scene scene;
    Host(scene, in).Run();

    std::string error;
    if (!Scene::SaveScene(Fuzz::SavedScene(), scene, Fuzz::SharedAssets(), &error))
    {
        Fuzz::Require(!error.empty(), "a refused save says nothing");
        return 0;
    }
    const std::string reloaded = Reload(Fuzz::SavedScene(), "a saved scene");
    std::vector<std::byte> cooked;
    if (Scene::CookScene(Fuzz::SavedScene(), cooked, error))
    {
        const std::filesystem::path path = Fuzz::ScratchFile("cooked.vscene");
        Fuzz::WriteBytes(path, {reinterpret_cast<const char*>(cooked.data()), cooked.size()});
        Fuzz::Require(Reload(path, "a cooked scene") == reloaded, "a cooked scene differs from its text");
    }
    Fuzz::WriteBytes(Fuzz::SavedScene(), reloaded);
    Fuzz::Require(Reload(Fuzz::SavedScene(), "a saved scene") == reloaded, "a saved scene isn't stable");
    return 0;
}
