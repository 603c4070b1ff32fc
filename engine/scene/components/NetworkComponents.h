#pragma once

namespace Vornu::Scene
{

struct NetworkReplicationComponent
{
    float relevanceRadius = 0.0f;
    float priority = 1.0f;
    bool alwaysRelevant = false;
};

} // namespace Vornu::Scene
