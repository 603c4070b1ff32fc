#include "engine/assets/AssetManager.h"
#include "engine/assets/AssetReference.h"
#include "engine/core/InputFile.h"
#include "engine/reflection/SchemaCodec.h"
#include "engine/scene/EntityRecordStage.h"
#include "engine/scene/Environment.h"
#include "engine/scene/Hierarchy.h"
#include "engine/scene/Scene.h"
#include "engine/scene/SceneFile.h"
#include "engine/scene/SceneStage.h"

#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Vornu::Scene
{
namespace
{

/// A failure whose text goes to the caller as it stands.
class LoadFault : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// One entity with all its components as plain values.
struct LoadStage
{
    Core::Guid guid;
    std::string name;
    Core::Guid parentGuid;
    EntityRecordStage records;
};

void ReadStage(const std::filesystem::path& path, SceneStage& stage)
{
    Core::InputFile file(path);
    if (!file.IsOpen())
    {
        throw LoadFault("Failed to open scene file for reading.");
    }
    const bool complete = file.ReadAll(stage.bytes);
    Core::LineReader lines(stage.bytes, !complete);
    std::string error;
    if (!ParseSceneText(lines, true, stage, path, error))
    {
        throw LoadFault(error);
    }
}

EnvironmentSettings ApplyEnvironment(const SceneStage& stage, const Reflection::SchemaCodecContext& codec)
{
    EnvironmentSettings settings;
    if (stage.environment)
    {
        try
        {
            Reflection::ApplyRecord(*stage.environment, Reflection::ViewOf(settings),
                                    Reflection::ReflectionRegistry::Instance(), codec);
        }
        catch (const std::exception& fault)
        {
            throw LoadFault(std::string("Failed to load scene environment: ") + fault.what());
        }
    }
    return settings;
}

/// Where a fault stands: its line in a text scene, the number of its entity in a cooked one.
LoadFault FaultAt(std::uint32_t line, std::size_t entity, const std::exception& fault)
{
    if (line != 0)
    {
        return LoadFault("Failed to parse scene file at line " + std::to_string(line) + ": " + fault.what());
    }
    return LoadFault("Failed to load cooked scene entity " + std::to_string(entity) + ": " + fault.what());
}

/// Turns the staged records into component values and gives back their memory as it goes.
std::vector<LoadStage> StageComponents(SceneStage& stage, const ComponentRecordTable& table,
                                       const ComponentLoadContext& context)
{
    std::vector<LoadStage> loads;
    loads.reserve(stage.entities.size());
    for (std::size_t i = 0; i < stage.entities.size(); ++i)
    {
        StagedEntity& entity = stage.entities[i];
        LoadStage& load = loads.emplace_back(LoadStage{entity.guid, std::move(entity.name), entity.parentGuid,
                                                       EntityRecordStage(table, context)});
        std::uint32_t line = entity.line;
        try
        {
            for (StagedRecord& staged : entity.records)
            {
                line = staged.line;
                load.records.Load(staged.record, staged.encodedBytes);
            }
            line = entity.line;
            load.records.Finish(true);
        }
        catch (const std::exception& fault)
        {
            throw FaultAt(line, i, fault);
        }
        entity.records = {};
    }
    return loads;
}

void CheckHierarchy(const std::vector<LoadStage>& loads)
{
    Core::OrderedMap<Core::Guid, Core::Guid, Core::GuidHash> parents;
    parents.Reserve(loads.size());
    for (const LoadStage& load : loads)
    {
        if (!parents.Emplace(load.guid, load.parentGuid).second)
        {
            throw std::runtime_error("Scene contains duplicate entity GUIDs.");
        }
    }
    ValidateHierarchy(parents);
}

Scene BuildScene(std::vector<LoadStage>& loads, EnvironmentSettings environment,
                 const ComponentRecordTable& table, const Scene& target)
{
    Scene scene;
    scene.InheritGenerations(target);
    scene.SetEnvironment(std::move(environment));
    scene.Reserve(loads.size());
    std::vector<Entity> handles;
    handles.reserve(loads.size());
    for (LoadStage& load : loads)
    {
        const Entity entity = scene.CreateEntity(std::move(load.name), load.guid);
        load.records.Commit(scene, entity);
        handles.push_back(entity);
    }
    for (std::size_t i = 0; i < loads.size(); ++i)
    {
        const Entity parent = scene.FindEntityByGuid(loads[i].parentGuid);
        if (parent != kNullEntity)
        {
            scene.LinkNewChild(handles[i], parent);
        }
    }
    for (const Entity entity : handles)
    {
        ResolveEntity(table, scene, entity);
    }
    scene.MarkLoaded();
    return scene;
}

void Load(const std::filesystem::path& path, Scene& target, Assets::AssetManager& assets)
{
    const Assets::AssetRegistry& registry = assets.GetRegistry();
    const Reflection::SchemaCodecContext codec = Assets::MakeSceneCodecContext(registry);
    const ComponentLoadContext context{&codec, &registry};
    const ComponentRecordTable table;
    EnvironmentSettings environment;
    std::vector<LoadStage> loads;
    {
        SceneStage stage;
        ReadStage(path, stage);
        environment = ApplyEnvironment(stage, codec);
        loads = StageComponents(stage, table, context);
    }
    CheckHierarchy(loads);
    Scene scene = BuildScene(loads, std::move(environment), table, target);
    target = std::move(scene);
}

} // namespace

bool LoadScene(const std::filesystem::path& path, Scene& target, Assets::AssetManager& assets,
               std::string* error)
{
    std::string message;
    try
    {
        Load(path, target, assets);
    }
    catch (const LoadFault& fault)
    {
        message = fault.what();
    }
    catch (const std::exception& fault)
    {
        message = std::string("Failed to load scene: ") + fault.what();
    }
    const bool loaded = message.empty();
    if (error != nullptr)
    {
        *error = std::move(message);
    }
    return loaded;
}

} // namespace Vornu::Scene
