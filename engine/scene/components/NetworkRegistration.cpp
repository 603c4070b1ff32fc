#include "engine/scene/components/Registration.h"

#include "engine/scene/components/NetworkComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

namespace Vornu::Scene
{

void RegisterNetworkComponents()
{
    RegisterComponent<NetworkReplicationComponent>("NetworkReplicationComponent", "Network Replication",
                                                   "Networking", kAddable)
        .Description("Replicates this entity from the server to clients (relevance radius, priority).")
        .Field("relevanceRadius", &NetworkReplicationComponent::relevanceRadius,
               Label("Relevance Radius")
                   .Range(0, 100000)
                   .Tooltip("Clients farther away do not receive the entity; zero uses the server default."))
        .Field("priority", &NetworkReplicationComponent::priority,
               Label("Priority").Range(0, 100).Tooltip("Relative update priority when bandwidth is short."))
        .Field("alwaysRelevant", &NetworkReplicationComponent::alwaysRelevant, Label("Always Relevant"));
}

} // namespace Vornu::Scene
