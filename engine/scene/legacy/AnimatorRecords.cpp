#include "engine/scene/legacy/Records.h"

#include <array>
#include <string>

namespace Vornu::Scene::Legacy
{
namespace
{

constexpr std::uint32_t kRigVersion = 3; // the first with a rig reference

/// Reads a field that doesn't need the one before it; the next one is free to be read in any case.
void ReadFreely(RecordLine& line, bool& value)
{
    bool read = false;
    if (line.Read(read))
    {
        value = read;
    }
    else
    {
        line.ClearFailure();
    }
}

void ReadAnimator(RecordLine& line, RecordContext& context)
{
    auto animator = BeginComponent<AnimatorComponent>(context, "Duplicate AnimatorComponent record.");
    line.Read(AssetField{animator.skeleton});
    if (context.version >= kRigVersion)
    {
        line.Read(AssetField{animator.rig});
    }
    line.Read(AssetField{animator.clip}, AssetField{animator.controller}, animator.enabled, animator.playing,
              animator.loop, animator.speed, animator.currentTime, animator.currentState, animator.nextState,
              animator.transitionDuration, animator.transitionTime, animator.blendAlpha,
              animator.manualPoseEnabled);
    animator.showBones = animator.manualPoseEnabled;
    ReadFreely(line, animator.showBones);
    ReadFreely(line, animator.renderBonesInFront);
    ReadFreely(line, animator.applyRootMotion);
    ReadFreely(line, animator.enableAnimationLayers);
    ReadFreely(line, animator.enableIk);
    context.entity.components.Set(std::move(animator));
}

/// A detail of an animator: without one on the entity it is passed over, its fields unread.
template<void (*read)(RecordLine&, const RecordContext&, AnimatorComponent&)>
void ReadDetail(RecordLine& line, RecordContext& context)
{
    RefuseNamedRecord(context, "AnimatorComponent", "Legacy detail appended to named animator.");
    if (auto* const animator = context.entity.components.Find<AnimatorComponent>())
    {
        read(line, context, *animator);
    }
}

void ReadParameter(RecordLine& line, const RecordContext&, AnimatorComponent& animator)
{
    AnimatorParameterValue parameter;
    parameter.type = AnimatorParameterType::Bool;
    line.Read(parameter.name, ClampedField{parameter.type, AnimatorParameterType::Trigger},
              parameter.boolValue, parameter.floatValue, parameter.intValue, parameter.triggerArmed);
    animator.parameters.push_back(std::move(parameter));
}

void ReadLayer(RecordLine& line, const RecordContext& context, AnimatorComponent& animator)
{
    std::uint64_t index = 0;
    AnimatorLayer layer;
    line.Read(index, layer.name, layer.enabled, ClampedField{layer.mode, AnimatorLayerMode::Additive},
              AssetField{layer.clip}, layer.timeSeconds, layer.speed, layer.weight, layer.looping);
    ElementAt(context, animator.layers, index) = std::move(layer);
}

void ReadLayerMask(RecordLine& line, const RecordContext& context, AnimatorComponent& animator)
{
    std::uint64_t index = 0;
    AnimatorBoneMaskRule rule;
    line.Read(index, rule.boneName, rule.includeDescendants, rule.weight);
    ElementAt(context, animator.layers, index).boneMask.push_back(std::move(rule));
}

/// The links of a chain stand behind it in two forms, of which the older has no GUIDs.
void ReadIkTargets(RecordLine& line, AnimatorIkChain& chain)
{
    if (!line.ReadTogether(chain.useTargetEntity, chain.targetEntityGuid, chain.targetEntityName,
                           chain.usePoleEntity, chain.poleEntityGuid, chain.poleEntityName))
    {
        line.ClearFailure();
        line.ReadTogether(chain.useTargetEntity, chain.targetEntityName, chain.usePoleEntity,
                          chain.poleEntityName);
    }
}

void ReadIkChain(RecordLine& line, const RecordContext& context, AnimatorComponent& animator)
{
    std::uint64_t index = 0;
    AnimatorIkChain chain;
    line.Read(index, chain.name, chain.enabled, ClampedField{chain.solver, AnimatorIkSolverType::CCD},
              chain.rootBoneName, chain.midBoneName, chain.tipBoneName, chain.targetPosition,
              chain.targetRotationDegrees, chain.useTargetRotation, chain.polePosition, chain.usePoleVector,
              chain.weight, chain.iterations, chain.tolerance);
    ReadIkTargets(line, chain);
    ElementAt(context, animator.ikChains, index) = std::move(chain);
}

void ReadIkChainBone(RecordLine& line, const RecordContext& context, AnimatorComponent& animator)
{
    std::uint64_t index = 0;
    std::string bone;
    line.Read(index, bone);
    ElementAt(context, animator.ikChains, index).boneNames.push_back(std::move(bone));
}

void ReadLookAtChain(RecordLine& line, const RecordContext& context, AnimatorComponent& animator)
{
    std::uint64_t index = 0;
    AnimatorLookAtChain chain;
    line.Read(index, chain.name, chain.enabled, chain.boneName, chain.targetPosition, chain.localForwardAxis,
              chain.localUpAxis, chain.weight);
    if (!line.ReadTogether(chain.useTargetEntity, chain.targetEntityGuid, chain.targetEntityName))
    {
        line.ClearFailure();
        line.ReadTogether(chain.useTargetEntity, chain.targetEntityName);
    }
    ElementAt(context, animator.lookAtChains, index) = std::move(chain);
}

void ReadPose(RecordLine& line, const RecordContext& context, AnimatorComponent& animator)
{
    std::uint64_t index = 0;
    BonePose pose;
    line.Read(index, pose.position, pose.rotation.w, pose.rotation.x, pose.rotation.y, pose.rotation.z,
              pose.scale);
    ElementAt(context, animator.manualBonePose, index) = pose;
}

constexpr std::array kRecords = {
    EntityRecord{"animator", &ReadAnimator},
    EntityRecord{"animator_parameter", &ReadDetail<&ReadParameter>},
    EntityRecord{"animator_layer", &ReadDetail<&ReadLayer>},
    EntityRecord{"animator_layer_mask", &ReadDetail<&ReadLayerMask>},
    EntityRecord{"animator_ik_chain", &ReadDetail<&ReadIkChain>},
    EntityRecord{"animator_ik_chain_bone", &ReadDetail<&ReadIkChainBone>},
    EntityRecord{"animator_look_at_chain", &ReadDetail<&ReadLookAtChain>},
    EntityRecord{"animator_pose", &ReadDetail<&ReadPose>},
};

} // namespace

std::span<const EntityRecord> AnimatorRecords() noexcept
{
    return kRecords;
}

void CompleteAnimator(AnimatorComponent& animator)
{
    if (animator.initialState.empty())
    {
        animator.initialState = animator.currentState;
    }
}

} // namespace Vornu::Scene::Legacy
