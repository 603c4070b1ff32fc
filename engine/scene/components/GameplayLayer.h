#pragma once

#include <cstdint>

namespace Vornu::Scene
{

enum class GameplayLayer : std::uint8_t
{
    Default = 0,
    Floor = 1,
    Wall = 2,
    Ceiling = 3,
    Obstacle = 4,
    Player = 5,
    Enemy = 6,
    NPC = 7,
    Projectile = 8,
    Pickup = 9,
    Trigger = 10,
    Climbable = 11,
    Water = 12,
    DamageZone = 13,
    NoNav = 14,
    Cover = 15,
    Interactable = 16,
};

} // namespace Vornu::Scene
