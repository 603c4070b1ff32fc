#include "engine/scene/components/Registration.h"

#include "engine/scene/components/StreamingComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

namespace Vornu::Scene
{

namespace
{

void MigrateChunk(Reflection::SchemaRecord& record, std::uint32_t fromVersion)
{
    if (fromVersion < 2)
    {
        record.RemoveFields({"loaded", "runtimeLoaded"});
    }
    if (fromVersion < 3)
    {
        record.RemoveFields({"extents", "streamInEditor"});
    }
}

} // namespace

void RegisterStreamingComponents()
{
    RegisterComponent<WorldStreamingSourceComponent>("WorldStreamingSourceComponent",
                                                     "World Streaming Source", "Streaming", kAddable)
        .Description("Loads world chunks within its radius.")
        .Field("enabled", &WorldStreamingSourceComponent::enabled, Label("Enabled"))
        .Field("radius", &WorldStreamingSourceComponent::radius, Label("Radius").Range(0, 100000));

    RegisterComponent<WorldChunkComponent>("WorldChunkComponent", "World Chunk", "Streaming", kAddable)
        .Description("A streamable region loaded and unloaded by distance to streaming sources.")
        .Field("chunkId", &WorldChunkComponent::chunkId, Label("Chunk Id"))
        .Field("center", &WorldChunkComponent::center, Label("Center"))
        .Field("loadDistance", &WorldChunkComponent::loadDistance, Label("Load Distance").Range(0, 100000))
        .Field("unloadDistance", &WorldChunkComponent::unloadDistance,
               Label("Unload Distance").Range(0, 100000))
        .Field("affectRendering", &WorldChunkComponent::affectRendering, Label("Affect Rendering"))
        .Field("affectLogic", &WorldChunkComponent::affectLogic, Label("Affect Logic"))
        .Version(3)
        .AddTransient(&WorldChunkComponent::loaded)
        .AddTransient(&WorldChunkComponent::runtimeLoaded)
        .Migrate(&MigrateChunk);

    RegisterComponent<WorldPartitionComponent>("WorldPartitionComponent", "World Partition", "Streaming",
                                               kAddable)
        .Description("Q-03: streams the cells of a world asset around the streaming sources (this scene is "
                     "the persistent layer).")
        .Field("world", &WorldPartitionComponent::world, Label("World").Asset("World"))
        .Field("enabled", &WorldPartitionComponent::enabled, Label("Enabled"))
        .Field("loadRadius", &WorldPartitionComponent::loadRadius, Label("Load Radius").Range(0, 100000))
        .Field("unloadRadius", &WorldPartitionComponent::unloadRadius,
               Label("Unload Radius").Range(0, 100000))
        .Field("minResidentFrames", &WorldPartitionComponent::minResidentFrames, Label("Min Resident Frames"))
        .Field("maxConcurrentLoads", &WorldPartitionComponent::maxConcurrentLoads,
               Label("Max Concurrent Loads").Group("Budgets"))
        .Field("frameBudgetMilliseconds", &WorldPartitionComponent::frameBudgetMilliseconds,
               Label("Frame Budget (ms)").Range(0.05f, 100).Group("Budgets"))
        .Field("memoryBudgetMegabytes", &WorldPartitionComponent::memoryBudgetMegabytes,
               Label("Memory Budget (MB)").Range(1, 1048576).Group("Budgets"))
        .Field("terrainLodDistance", &WorldPartitionComponent::terrainLodDistance,
               Label("Terrain LOD Distance").Range(1, 100000).Group("Terrain"))
        .Field("terrainMaxLod", &WorldPartitionComponent::terrainMaxLod,
               Label("Terrain Max LOD").Group("Terrain"));

    RegisterComponent<WorldPersistentComponent>("WorldPersistentComponent", "World Persistent", "Streaming",
                                                kAddable)
        .Description("Q-03: keeps the entity (and its children) in the always-loaded persistent layer when "
                     "the scene is partitioned into cells.")
        .Field("persistent", &WorldPersistentComponent::persistent, Label("Persistent"));

    RegisterComponent<WorldCellPreviewComponent>("WorldCellPreviewComponent", "World Cell Preview",
                                                 "Streaming", ComponentFlags::RuntimeOnly)
        .Description("Q-03: runtime tag of entities the editor's streaming preview created; never saved, "
                     "copied or listed.");
}

} // namespace Vornu::Scene
