#include "engine/scene/components/Registration.h"

#include "engine/scene/components/VfxComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

namespace Vornu::Scene
{

void RegisterVfxComponents()
{
    Reflection::RegisterEnum<VfxParameterType>("VfxParameterType",
                                               {
                                                   {VfxParameterType::Float, "Float"},
                                                   {VfxParameterType::Color, "Color"},
                                                   {VfxParameterType::Vector3, "Vector3", "Vector 3"},
                                                   {VfxParameterType::Bool, "Bool"},
                                               });
    Reflection::RegisterEnum<VfxParameterTarget>(
        "VfxParameterTarget",
        {
            {VfxParameterTarget::EmissionRate, "EmissionRate", "Emission Rate"},
            {VfxParameterTarget::StartSize, "StartSize", "Start Size"},
            {VfxParameterTarget::StartSpeed, "StartSpeed", "Start Speed"},
            {VfxParameterTarget::Lifetime, "Lifetime"},
            {VfxParameterTarget::SimulationSpeed, "SimulationSpeed", "Simulation Speed"},
            {VfxParameterTarget::Color, "Color"},
            {VfxParameterTarget::LightIntensity, "LightIntensity", "Light Intensity"},
            {VfxParameterTarget::Gravity, "Gravity"},
            {VfxParameterTarget::Wind, "Wind"},
            {VfxParameterTarget::BeamEnd, "BeamEnd", "Beam End"},
            {VfxParameterTarget::Enabled, "Enabled"},
            {VfxParameterTarget::Turbulence, "Turbulence"},
        });
    Reflection::RegisterEnum<VfxBindingMode>("VfxBindingMode", {
                                                                   {VfxBindingMode::Multiply, "Multiply"},
                                                                   {VfxBindingMode::Override, "Override"},
                                                               });
    Reflection::RegisterEnum<VfxEventTrigger>(
        "VfxEventTrigger", {
                               {VfxEventTrigger::OnSpawn, "OnSpawn", "On Spawn"},
                               {VfxEventTrigger::OnDeath, "OnDeath", "On Death"},
                               {VfxEventTrigger::OnCollision, "OnCollision", "On Collision"},
                           });
    Reflection::RegisterEnum<VfxEventAction>(
        "VfxEventAction", {
                              {VfxEventAction::SpawnEffect, "SpawnEffect", "Spawn Effect"},
                              {VfxEventAction::SpawnParticles, "SpawnParticles", "Spawn Particles"},
                              {VfxEventAction::NotifyScript, "NotifyScript", "Notify Script"},
                          });

    Reflection::RegisterValue<VfxParameterDefinition>("VfxParameterDefinition", "VFX Parameter", "Rendering")
        .Field("id", &VfxParameterDefinition::id, Label("Id"))
        .Field("name", &VfxParameterDefinition::name, Label("Name"))
        .Field("type", &VfxParameterDefinition::type, Label("Type"))
        .Field("defaultValue", &VfxParameterDefinition::defaultValue, Label("Default"))
        .Field("minimum", &VfxParameterDefinition::minimum, Label("Minimum"))
        .Field("maximum", &VfxParameterDefinition::maximum, Label("Maximum"))
        .Field("description", &VfxParameterDefinition::description, Label("Description"))
        .Field("graphPosition", &VfxParameterDefinition::graphPosition, Label("Graph Position"));

    Reflection::RegisterValue<VfxParameterBinding>("VfxParameterBinding", "VFX Parameter Binding",
                                                   "Rendering")
        .Field("parameter", &VfxParameterBinding::parameter, Label("Parameter"))
        .Field("emitter", &VfxParameterBinding::emitter, Label("Emitter"))
        .Field("target", &VfxParameterBinding::target, Label("Target"))
        .Field("mode", &VfxParameterBinding::mode, Label("Mode"));

    Reflection::RegisterValue<VfxEventDefinition>("VfxEventDefinition", "VFX Event", "Rendering")
        .Field("id", &VfxEventDefinition::id, Label("Id"))
        .Field("name", &VfxEventDefinition::name, Label("Name"))
        .Field("emitter", &VfxEventDefinition::emitter, Label("Emitter"))
        .Field("trigger", &VfxEventDefinition::trigger, Label("Trigger"))
        .Field("action", &VfxEventDefinition::action, Label("Action"))
        .Field("effect", &VfxEventDefinition::effect, Label("Effect").Asset("VfxEffect"))
        .Field("targetEmitter", &VfxEventDefinition::targetEmitter, Label("Target Emitter"))
        .Field("count", &VfxEventDefinition::count, Label("Count"))
        .Field("probability", &VfxEventDefinition::probability, Label("Probability").Range(0, 1))
        .Field("maxPerSecond", &VfxEventDefinition::maxPerSecond, Label("Max Per Second").Range(0, 1000))
        .Field("graphPosition", &VfxEventDefinition::graphPosition, Label("Graph Position"));

    Reflection::RegisterValue<VfxParameterValue>("VfxParameterValue", "VFX Parameter Value", "Rendering")
        .Field("name", &VfxParameterValue::name, Label("Name"))
        .Field("value", &VfxParameterValue::value, Label("Value"));

    Reflection::RegisterValue<VfxGraphNodeLayout>("VfxGraphNodeLayout", "VFX Graph Node", "Rendering")
        .Field("emitter", &VfxGraphNodeLayout::emitter, Label("Emitter"))
        .Field("position", &VfxGraphNodeLayout::position, Label("Position"));

    RegisterComponent<VfxEffectDefinitionComponent>("VfxEffectDefinitionComponent", "VFX Effect Definition",
                                                    "Rendering", ComponentFlags::Serialized)
        .Description("Parameters, events and graph layout of a .vvfx effect; edited in VFX Studio.")
        .Field("description", &VfxEffectDefinitionComponent::description, Label("Description"))
        .Field("tags", &VfxEffectDefinitionComponent::tags, Label("Tags"))
        .Field("effectNodePosition", &VfxEffectDefinitionComponent::effectNodePosition,
               Label("Effect Node Position"))
        .Field("parameters", &VfxEffectDefinitionComponent::parameters, Label("Parameters"))
        .Field("bindings", &VfxEffectDefinitionComponent::bindings, Label("Bindings"))
        .Field("events", &VfxEffectDefinitionComponent::events, Label("Events"))
        .Field("layout", &VfxEffectDefinitionComponent::layout, Label("Layout"));

    RegisterComponent<VfxEffectComponent>("VfxEffectComponent", "VFX Effect", "Rendering", kAddable)
        .Description("Plays a .vvfx effect attached to this entity.")
        .Field("effect", &VfxEffectComponent::effect, Label("Effect").Asset("VfxEffect"))
        .Field("autoPlay", &VfxEffectComponent::autoPlay, Label("Auto Play"))
        .Field("loop", &VfxEffectComponent::loop, Label("Loop"))
        .Field("intensity", &VfxEffectComponent::intensity, Label("Intensity").Range(0, 10))
        .Field("tint", &VfxEffectComponent::tint, Label("Tint"))
        .Field("sizeScale", &VfxEffectComponent::sizeScale, Label("Size").Range(0, 10))
        .Field("speedScale", &VfxEffectComponent::speedScale, Label("Speed").Range(0, 10))
        .Field("parameters", &VfxEffectComponent::parameters, Label("Parameters"));

    RegisterComponent<VfxEmitterBaseline>("VfxEmitterBaseline", "VFX Emitter Baseline", "Rendering",
                                          ComponentFlags::RuntimeOnly)
        .Description(
            "Authored values of one emitter of a playing effect, so its parameters can be reapplied.");
}

} // namespace Vornu::Scene
