// The fields of these records must all be there. Faults go to the caller without the line.

#include "engine/scene/files/LoadFault.h"
#include "engine/scene/legacy/Records.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

namespace Vornu::Scene::Legacy
{
namespace
{

/// The settings that some form lacks, in their bounds whether the line holds them or not.
void Bound(BuoyancyComponent& buoyancy)
{
    const auto bound = [](auto& value, auto lowest, auto highest)
    { value = std::clamp(value, lowest, highest); };
    bound(buoyancy.wakeStrength, 0.0f, 4.0f);
    bound(buoyancy.wakeWidth, 0.05f, 50.0f);
    bound(buoyancy.wakeLifetime, 0.1f, 30.0f);
    bound(buoyancy.wakeSpacing, 0.05f, 20.0f);
    bound(buoyancy.wakeMinimumSpeed, 0.01f, 100.0f);
    bound(buoyancy.maximumWakePoints, 1u, 32u);
    bound(buoyancy.targetSubmersion, 0.05f, 0.95f);
    bound(buoyancy.hullVolumeScale, 0.01f, 1.0f);
    bound(buoyancy.uprightStiffness, 0.0f, 20.0f);
    bound(buoyancy.uprightDamping, 0.0f, 20.0f);
}

/// The forms grew at their end, so a form is the blocks up to its version.
template<int version>
void ReadBuoyancy(RecordLine& line, RecordContext& context)
{
    auto buoyancy = BeginComponent<BuoyancyComponent>(context, "Duplicate buoyancy component.");
    std::string waterBody;
    line.Read(buoyancy.enabled, buoyancy.autoFitCollider, waterBody, buoyancy.localCenter,
              buoyancy.localHalfExtents, buoyancy.samplePointCount, buoyancy.fluidDensity,
              buoyancy.buoyancyScale, buoyancy.maxSubmersionDepth, buoyancy.linearDrag, buoyancy.angularDrag,
              buoyancy.surfaceAlignment);
    RequireFields(line, context, "record");
    if constexpr (version >= 2)
    {
        line.Read(buoyancy.generateWake, buoyancy.wakeStrength, buoyancy.wakeWidth, buoyancy.wakeLifetime,
                  buoyancy.wakeSpacing, buoyancy.wakeMinimumSpeed, buoyancy.maximumWakePoints);
        RequireFields(line, context, "wake settings");
    }
    if constexpr (version >= 3)
    {
        line.Read(CutField{buoyancy.forceModel, BuoyancyForceModel::PhysicalDisplacement},
                  buoyancy.targetSubmersion, buoyancy.hullVolumeScale);
        RequireFields(line, context, "force settings");
    }
    if constexpr (version >= 4)
    {
        line.Read(CutField{buoyancy.samplingMode, BuoyancySamplingMode::CustomPoints}, buoyancy.canFlip,
                  buoyancy.uprightStiffness, buoyancy.uprightDamping, buoyancy.simulateInEditMode,
                  buoyancy.debugDraw);
        RequireFields(line, context, "authoring settings");
    }
    else
    {
        line.Read(buoyancy.debugDraw);
        RequireFields(line, context, "record");
    }
    Bound(buoyancy);
    if (!waterBody.empty())
    {
        const std::optional<Core::Guid> guid = Core::Guid::TryParse(waterBody);
        if (!guid)
        {
            throw LoadFault("Invalid water body GUID in " + std::string(context.keyword) + " record.");
        }
        buoyancy.waterBodyGuid = *guid;
    }
    context.entity.components.Set(std::move(buoyancy));
}

void ReadBuoyancyPoint(RecordLine& line, RecordContext& context)
{
    RefuseNamedRecord(context, "BuoyancyComponent", "Legacy buoyancy_point cannot modify a named schema.");
    auto* const buoyancy = context.entity.components.Find<BuoyancyComponent>();
    if (buoyancy == nullptr)
    {
        throw LoadFault("Buoyancy point appears before its buoyancy component.");
    }
    BuoyancyPoint point;
    line.Read(point.localPosition, point.immersionDepth, point.liftWeight, point.enabled);
    RequireFields(line, context, "record");
    if (buoyancy->customPoints.size() >= kMaxBuoyancyPoints)
    {
        throw LoadFault("Buoyancy component exceeds the maximum of 32 custom points.");
    }
    point.immersionDepth = std::max(point.immersionDepth, 0.001f);
    point.liftWeight = std::max(point.liftWeight, 0.0f);
    buoyancy->customPoints.push_back(point);
}

constexpr std::array kRecords = {
    EntityRecord{"buoyancy_v1", &ReadBuoyancy<1>},      EntityRecord{"buoyancy_v2", &ReadBuoyancy<2>},
    EntityRecord{"buoyancy_v3", &ReadBuoyancy<3>},      EntityRecord{"buoyancy_v4", &ReadBuoyancy<4>},
    EntityRecord{"buoyancy_point", &ReadBuoyancyPoint},
};

} // namespace

std::span<const EntityRecord> BuoyancyRecords() noexcept
{
    return kRecords;
}

} // namespace Vornu::Scene::Legacy
