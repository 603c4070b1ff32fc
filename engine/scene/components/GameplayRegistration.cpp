#include "engine/scene/components/Registration.h"

#include "engine/scene/ComponentBuilder.h"
#include "engine/scene/components/GameplayComponents.h"

namespace Vornu::Scene
{

void RegisterGameplayComponents()
{
    Reflection::RegisterEnum<GameplayLayer>("GameplayLayer",
                                            {
                                                {GameplayLayer::Default, "Default"},
                                                {GameplayLayer::Floor, "Floor"},
                                                {GameplayLayer::Wall, "Wall"},
                                                {GameplayLayer::Ceiling, "Ceiling"},
                                                {GameplayLayer::Obstacle, "Obstacle"},
                                                {GameplayLayer::Player, "Player"},
                                                {GameplayLayer::Enemy, "Enemy"},
                                                {GameplayLayer::NPC, "NPC"},
                                                {GameplayLayer::Projectile, "Projectile"},
                                                {GameplayLayer::Pickup, "Pickup"},
                                                {GameplayLayer::Trigger, "Trigger"},
                                                {GameplayLayer::Climbable, "Climbable"},
                                                {GameplayLayer::Water, "Water"},
                                                {GameplayLayer::DamageZone, "DamageZone", "Damage Zone"},
                                                {GameplayLayer::NoNav, "NoNav", "No Navigation"},
                                                {GameplayLayer::Cover, "Cover"},
                                                {GameplayLayer::Interactable, "Interactable"},
                                            });

    RegisterComponent<RotatorComponent>("RotatorComponent", "Rotator", "Gameplay", kAuthored)
        .Description("Rotates the entity continuously at a fixed rate.")
        .Field("degreesPerSecond", &RotatorComponent::degreesPerSecond,
               Label("Degrees Per Second").With(PropertyFlags::Degrees));

    RegisterComponent<GameplayLayerComponent>("GameplayLayerComponent", "Gameplay Layer", "Gameplay",
                                              kAuthored)
        .Description("Assigns gameplay/physics layer metadata to the entity.")
        .Field("layer", &GameplayLayerComponent::layer, Label("Layer"));
}

} // namespace Vornu::Scene
