#pragma once

#include "engine/assets/identity/AssetId.h"

#include <glm/vec3.hpp>

#include <cstdint>
#include <string>

namespace Vornu::Scene
{

struct WorldStreamingSourceComponent
{
    bool enabled = true;
    float radius = 120.0f;
};

struct WorldChunkComponent
{
    std::string chunkId = "Chunk";
    glm::vec3 center{0.0f};
    float loadDistance = 120.0f;
    float unloadDistance = 150.0f;
    bool affectRendering = true;
    bool affectLogic = true;

    // Run-time state.
    bool loaded = true;
    bool runtimeLoaded = true;
};

struct WorldPartitionComponent
{
    Assets::AssetId world = 0;
    bool enabled = true;
    float loadRadius = 192.0f;
    float unloadRadius = 256.0f;
    std::uint32_t minResidentFrames = 30;
    std::uint32_t maxConcurrentLoads = 4;
    float frameBudgetMilliseconds = 2.0f;
    float memoryBudgetMegabytes = 256.0f;
    float terrainLodDistance = 160.0f;
    std::uint32_t terrainMaxLod = 2;
};

struct WorldPersistentComponent
{
    bool persistent = true;
};

/// Tag of an entity that a streaming preview made.
struct WorldCellPreviewComponent
{
};

} // namespace Vornu::Scene
