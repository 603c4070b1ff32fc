#include "engine/scene/components/Registration.h"

#include "engine/scene/components/AnimatorComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

#include <limits>

namespace Vornu::Scene
{

namespace
{

/// Version 1 stored where the playback stood.
void DropPlayback(Reflection::SchemaRecord& record, std::uint32_t)
{
    record.RenameField("currentState", "initialState");
    record.RemoveFields(
        {"currentState", "currentTime", "nextState", "transitionDuration", "transitionTime", "blendAlpha"});
    record.ForEachRecord("layers",
                         [](Reflection::SchemaRecord& layer) { layer.RemoveFields({"timeSeconds"}); });
    record.ForEachRecord("parameters", [](Reflection::SchemaRecord& parameter)
                         { parameter.RemoveFields({"triggerArmed"}); });
}

/// Calls `visit(handle, guidText)` for every link from a chain to an entity.
template<class Visit>
void ForEachLink(AnimatorComponent& animator, Visit visit)
{
    for (AnimatorIkChain& chain : animator.ikChains)
    {
        visit(chain.targetEntity, chain.targetEntityGuid);
        visit(chain.poleEntity, chain.poleEntityGuid);
    }
    for (AnimatorLookAtChain& chain : animator.lookAtChains)
    {
        visit(chain.targetEntity, chain.targetEntityGuid);
    }
}

/// Brings the GUID texts into their one form; text that is no GUID goes. With a registry, which a save has, a
/// missing one is that of the entity at hand.
void NormalizeLinks(AnimatorComponent& animator, const Registry* registry)
{
    ForEachLink(animator,
                [registry](Entity& handle, std::string& text)
                {
                    Core::Guid guid = Core::Guid::TryParse(text).value_or(Core::Guid());
                    if (!guid.IsValid() && registry != nullptr)
                    {
                        RefreshLinkForSave(*registry, handle, guid, true);
                    }
                    text = guid.IsValid() ? guid.ToString() : std::string();
                });
}

void ResolveLinks(AnimatorComponent& animator, Registry& registry, Entity)
{
    ForEachLink(animator,
                [&registry](Entity& handle, std::string& text)
                {
                    if (!text.empty())
                    {
                        handle = registry.FindEntityByGuid(Core::Guid::TryParse(text).value_or(Core::Guid()));
                    }
                });
}

void RemapLinks(AnimatorComponent& animator, const EntityReferenceRemapper& remapper)
{
    ForEachLink(animator,
                [&remapper](Entity& handle, std::string& text) { remapper.RemapEntityText(handle, text); });
}

void RestartPose(AnimatorComponent& animator, ComponentCopyKind kind)
{
    animator.poseDirty = true;
    if (kind == ComponentCopyKind::Duplicate)
    {
        animator.manualBonePose.clear();
    }
}

void WriteLayerTimes(const AnimatorComponent& animator, Core::ByteWriter& writer)
{
    writer.WriteU32(static_cast<std::uint32_t>(animator.layers.size()));
    for (const AnimatorLayer& layer : animator.layers)
    {
        WriteSaveGameValue(writer, layer.timeSeconds);
    }
}

/// Times of layers that the animator no longer has are dropped.
void ReadLayerTimes(AnimatorComponent& animator, Core::ByteReader& reader)
{
    const std::uint32_t count = reader.ReadCount(sizeof(float), std::numeric_limits<std::uint32_t>::max());
    for (std::uint32_t i = 0; i < count; ++i)
    {
        float time = 0;
        ReadSaveGameValue(reader, time);
        if (i < animator.layers.size())
        {
            animator.layers[i].timeSeconds = time;
        }
    }
}

} // namespace

void RegisterAnimationComponents()
{
    Reflection::RegisterEnum<AnimatorParameterType>("AnimatorParameterType",
                                                    {
                                                        {AnimatorParameterType::Bool, "Bool"},
                                                        {AnimatorParameterType::Float, "Float"},
                                                        {AnimatorParameterType::Int, "Int"},
                                                        {AnimatorParameterType::Trigger, "Trigger"},
                                                    });
    Reflection::RegisterEnum<AnimatorLayerMode>("AnimatorLayerMode",
                                                {
                                                    {AnimatorLayerMode::Override, "Override"},
                                                    {AnimatorLayerMode::Additive, "Additive"},
                                                });
    Reflection::RegisterEnum<AnimatorIkSolverType>("AnimatorIkSolverType",
                                                   {
                                                       {AnimatorIkSolverType::TwoBone, "TwoBone"},
                                                       {AnimatorIkSolverType::FABRIK, "FABRIK"},
                                                       {AnimatorIkSolverType::CCD, "CCD"},
                                                   });
    Reflection::RegisterEnum<RagdollMode>("RagdollMode", {
                                                             {RagdollMode::Animated, "Animated"},
                                                             {RagdollMode::Simulated, "Simulated"},
                                                             {RagdollMode::Blend, "Blend"},
                                                         });

    Reflection::RegisterValue<AnimatorParameterValue>("AnimatorParameterValue", "AnimatorParameterValue",
                                                      "Animation")
        .Field("name", &AnimatorParameterValue::name, Label("Name"))
        .Field("type", &AnimatorParameterValue::type, Label("Type"))
        .Field("boolValue", &AnimatorParameterValue::boolValue, Label("Bool Value"))
        .Field("floatValue", &AnimatorParameterValue::floatValue, Label("Float Value"))
        .Field("intValue", &AnimatorParameterValue::intValue, Label("Int Value"))
        .Field("triggerArmed", &AnimatorParameterValue::triggerArmed,
               Label("Trigger Armed").With(PropertyFlags::Runtime));

    Reflection::RegisterValue<AnimatorBoneMaskRule>("AnimatorBoneMaskRule", "AnimatorBoneMaskRule",
                                                    "Animation")
        .Field("boneName", &AnimatorBoneMaskRule::boneName, Label("Bone Name"))
        .Field("includeDescendants", &AnimatorBoneMaskRule::includeDescendants, Label("Include Descendants"))
        .Field("weight", &AnimatorBoneMaskRule::weight, Label("Weight"));

    Reflection::RegisterValue<AnimatorLayer>("AnimatorLayer", "AnimatorLayer", "Animation")
        .Field("name", &AnimatorLayer::name, Label("Name"))
        .Field("enabled", &AnimatorLayer::enabled, Label("Enabled"))
        .Field("mode", &AnimatorLayer::mode, Label("Mode"))
        .Field("clip", &AnimatorLayer::clip, Label("Clip").Asset("AnimationClip"))
        .Field("timeSeconds", &AnimatorLayer::timeSeconds, Label("Time Seconds").With(PropertyFlags::Runtime))
        .Field("speed", &AnimatorLayer::speed, Label("Speed"))
        .Field("weight", &AnimatorLayer::weight, Label("Weight"))
        .Field("looping", &AnimatorLayer::looping, Label("Looping"))
        .Field("boneMask", &AnimatorLayer::boneMask, Label("Bone Mask"));

    Reflection::RegisterValue<AnimatorIkChain>("AnimatorIkChain", "AnimatorIkChain", "Animation")
        .Field("name", &AnimatorIkChain::name, Label("Name"))
        .Field("enabled", &AnimatorIkChain::enabled, Label("Enabled"))
        .Field("solver", &AnimatorIkChain::solver, Label("Solver"))
        .Field("rootBoneName", &AnimatorIkChain::rootBoneName, Label("Root Bone Name"))
        .Field("midBoneName", &AnimatorIkChain::midBoneName, Label("Mid Bone Name"))
        .Field("tipBoneName", &AnimatorIkChain::tipBoneName, Label("Tip Bone Name"))
        .Field("boneNames", &AnimatorIkChain::boneNames, Label("Bone Names"))
        .Field("targetPosition", &AnimatorIkChain::targetPosition, Label("Target Position"))
        .Field("targetRotationDegrees", &AnimatorIkChain::targetRotationDegrees,
               Label("Target Rotation Degrees"))
        .Field("useTargetRotation", &AnimatorIkChain::useTargetRotation, Label("Use Target Rotation"))
        .Field("useTargetEntity", &AnimatorIkChain::useTargetEntity, Label("Use Target Entity"))
        .Field("targetEntity", &AnimatorIkChain::targetEntity,
               Label("Target Entity").Kind(PropertyKind::EntityHandle).With(PropertyFlags::Runtime))
        .Field("targetEntityGuid", &AnimatorIkChain::targetEntityGuid, Label("Target Entity Guid"))
        .Field("targetEntityName", &AnimatorIkChain::targetEntityName, Label("Target Entity Name"))
        .Field("polePosition", &AnimatorIkChain::polePosition, Label("Pole Position"))
        .Field("usePoleVector", &AnimatorIkChain::usePoleVector, Label("Use Pole Vector"))
        .Field("usePoleEntity", &AnimatorIkChain::usePoleEntity, Label("Use Pole Entity"))
        .Field("poleEntity", &AnimatorIkChain::poleEntity,
               Label("Pole Entity").Kind(PropertyKind::EntityHandle).With(PropertyFlags::Runtime))
        .Field("poleEntityGuid", &AnimatorIkChain::poleEntityGuid, Label("Pole Entity Guid"))
        .Field("poleEntityName", &AnimatorIkChain::poleEntityName, Label("Pole Entity Name"))
        .Field("weight", &AnimatorIkChain::weight, Label("Weight"))
        .Field("iterations", &AnimatorIkChain::iterations, Label("Iterations"))
        .Field("tolerance", &AnimatorIkChain::tolerance, Label("Tolerance"));

    Reflection::RegisterValue<AnimatorLookAtChain>("AnimatorLookAtChain", "AnimatorLookAtChain", "Animation")
        .Field("name", &AnimatorLookAtChain::name, Label("Name"))
        .Field("enabled", &AnimatorLookAtChain::enabled, Label("Enabled"))
        .Field("boneName", &AnimatorLookAtChain::boneName, Label("Bone Name"))
        .Field("targetPosition", &AnimatorLookAtChain::targetPosition, Label("Target Position"))
        .Field("useTargetEntity", &AnimatorLookAtChain::useTargetEntity, Label("Use Target Entity"))
        .Field("targetEntity", &AnimatorLookAtChain::targetEntity,
               Label("Target Entity").Kind(PropertyKind::EntityHandle).With(PropertyFlags::Runtime))
        .Field("targetEntityGuid", &AnimatorLookAtChain::targetEntityGuid, Label("Target Entity Guid"))
        .Field("targetEntityName", &AnimatorLookAtChain::targetEntityName, Label("Target Entity Name"))
        .Field("localForwardAxis", &AnimatorLookAtChain::localForwardAxis, Label("Local Forward Axis"))
        .Field("localUpAxis", &AnimatorLookAtChain::localUpAxis, Label("Local Up Axis"))
        .Field("weight", &AnimatorLookAtChain::weight, Label("Weight"));

    Reflection::RegisterValue<BonePose>("BonePose", "BonePose", "Animation")
        .Field("position", &BonePose::position, Label("Position"))
        .Field("rotation", &BonePose::rotation, Label("Rotation"))
        .Field("scale", &BonePose::scale, Label("Scale"));

    Reflection::RegisterValue<RagdollBoneSettings>("RagdollBoneSettings", "Ragdoll Bone Settings",
                                                   "Animation")
        .Field("enabled", &RagdollBoneSettings::enabled, Label("Enabled"))
        .Field("shape", &RagdollBoneSettings::shape, Label("Shape"))
        .Field("localOffset", &RagdollBoneSettings::localOffset, Label("Local Offset"))
        .Field("localRotation", &RagdollBoneSettings::localRotation, Label("Local Rotation"))
        .Field("boxHalfExtents", &RagdollBoneSettings::boxHalfExtents, Label("Box Half Extents"))
        .Field("sphereRadius", &RagdollBoneSettings::sphereRadius, Label("Sphere Radius"))
        .Field("capsuleRadius", &RagdollBoneSettings::capsuleRadius, Label("Capsule Radius"))
        .Field("capsuleHeight", &RagdollBoneSettings::capsuleHeight, Label("Capsule Height"))
        .Field("mass", &RagdollBoneSettings::mass, Label("Mass"))
        .Field("localAnchor", &RagdollBoneSettings::localAnchor, Label("Local Anchor"))
        .Field("connectedAnchor", &RagdollBoneSettings::connectedAnchor, Label("Connected Anchor"));

    RegisterComponent<AnimatorComponent>("AnimatorComponent", "Animator", "Animation", kAuthored)
        .Description("Compatible skeleton found in this entity hierarchy.")
        .Field("skeleton", &AnimatorComponent::skeleton, Label("Skeleton").Asset("Skeleton"))
        .Field("rig", &AnimatorComponent::rig, Label("Rig").Asset("Rig"))
        .Field("rigDefinition", &AnimatorComponent::rigDefinition,
               Label("Rig Definition")
                   .Asset("RigDefinition")
                   .Tooltip("Bone roles (hips, spine, arms, legs) for spine lean and root motion. Empty uses "
                            "the roles generated for the skeleton at import."))
        .Field("clip", &AnimatorComponent::clip, Label("Clip").Asset("AnimationClip"))
        .Field("controller", &AnimatorComponent::controller, Label("Controller").Asset("AnimatorController"))
        .Field("enabled", &AnimatorComponent::enabled, Label("Enabled"))
        .Field("playing", &AnimatorComponent::playing, Label("Playing"))
        .Field("loop", &AnimatorComponent::loop, Label("Loop"))
        .Field("speed", &AnimatorComponent::speed, Label("Speed").Range(0, 10))
        .Field("applyRootMotion", &AnimatorComponent::applyRootMotion, Label("Apply Root Motion"))
        .Field("enableAnimationLayers", &AnimatorComponent::enableAnimationLayers,
               Label("Enable Layers").Group("Layers"))
        .Field("enableIk", &AnimatorComponent::enableIk, Label("Enable IK").Group("IK"))
        .Field(
            "initialState", &AnimatorComponent::initialState,
            Label("Initial State")
                .Tooltip("Controller state playback starts in; empty uses the controller's default state."))
        .Field("manualPoseEnabled", &AnimatorComponent::manualPoseEnabled, Label("Manual Pose Enabled"))
        .Field("showBones", &AnimatorComponent::showBones, Label("Show Bones"))
        .Field("renderBonesInFront", &AnimatorComponent::renderBonesInFront, Label("Render Bones In Front"))
        .Field("parameters", &AnimatorComponent::parameters, Label("Parameters"))
        .Field("layers", &AnimatorComponent::layers, Label("Layers"))
        .Field("ikChains", &AnimatorComponent::ikChains, Label("Ik Chains"))
        .Field("lookAtChains", &AnimatorComponent::lookAtChains, Label("Look At Chains"))
        .Field("manualBonePose", &AnimatorComponent::manualBonePose, Label("Manual Bone Pose"))
        .Version(2)
        .AddTransient(&AnimatorComponent::currentTime)
        .AddTransient(&AnimatorComponent::currentState)
        .AddTransient(&AnimatorComponent::nextState)
        .AddTransient(&AnimatorComponent::transitionDuration)
        .AddTransient(&AnimatorComponent::transitionTime)
        .AddTransient(&AnimatorComponent::blendAlpha)
        .AddTransient(&AnimatorComponent::spineLeanDegrees)
        .AddTransient(&AnimatorComponent::spineLeanForward)
        .AddTransient(&AnimatorComponent::poseDirty)
        .Migrate(&DropPlayback)
        .OnSave([](AnimatorComponent& animator, const ComponentSaveContext& context)
                { NormalizeLinks(animator, context.registry); })
        .OnLoad([](AnimatorComponent& animator, const ComponentLoadContext&)
                { NormalizeLinks(animator, nullptr); })
        .OnResolve(&ResolveLinks)
        .OnRemap(&RemapLinks)
        .OnCopy(&RestartPose)
        .SaveGame("currentTime", &AnimatorComponent::currentTime)
        .SaveGame("currentState", &AnimatorComponent::currentState)
        .SaveGame("nextState", &AnimatorComponent::nextState)
        .SaveGame("transitionDuration", &AnimatorComponent::transitionDuration)
        .SaveGame("transitionTime", &AnimatorComponent::transitionTime)
        .SaveGame("blendAlpha", &AnimatorComponent::blendAlpha)
        .SaveGame("spineLeanDegrees", &AnimatorComponent::spineLeanDegrees)
        .SaveGame("spineLeanForward", &AnimatorComponent::spineLeanForward)
        .SaveGameValue("layerTimes", &WriteLayerTimes, &ReadLayerTimes);

    RegisterComponent<RagdollComponent>("RagdollComponent", "Ragdoll", "Animation", kAuthored)
        .Description("Available because this entity already has an Animator.")
        .Field("enabled", &RagdollComponent::enabled, Label("Enabled"))
        .Field("usePhysicsPose", &RagdollComponent::usePhysicsPose, Label("Use Physics Pose"))
        .Field("mode", &RagdollComponent::mode, Label("Mode"))
        .Field("rigDefinition", &RagdollComponent::rigDefinition,
               Label("Rig Definition").Asset("RigDefinition"))
        .Field("blendInSeconds", &RagdollComponent::blendInSeconds, Label("Blend In Seconds").Range(0, 10))
        .Field("blendOutSeconds", &RagdollComponent::blendOutSeconds, Label("Blend Out Seconds").Range(0, 10))
        .Field("physicsBlendWeight", &RagdollComponent::physicsBlendWeight,
               Label("Physics Blend Weight").Range(0, 1))
        .Field("motorStrength", &RagdollComponent::motorStrength, Label("Motor Strength").Range(0, 10))
        .Field("collisionLayer", &RagdollComponent::collisionLayer, Label("Collision Layer"))
        .Field("bones", &RagdollComponent::bones, Label("Bones"))
        .Field("humanoidBoneSlots", &RagdollComponent::humanoidBoneSlots, Label("Humanoid Bone Slots"))
        .Field("currentPhysicsWeight", &RagdollComponent::currentPhysicsWeight,
               Label("Current Physics Weight").With(PropertyFlags::ReadOnly).With(PropertyFlags::Runtime));
}

} // namespace Vornu::Scene
