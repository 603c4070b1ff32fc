#include "engine/scene/components/Registration.h"

#include "engine/scene/components/AiComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

namespace Vornu::Scene
{

void RegisterAiComponents()
{
    Reflection::RegisterEnum<BlackboardValueType>("BlackboardValueType",
                                                  {
                                                      {BlackboardValueType::Bool, "Bool"},
                                                      {BlackboardValueType::Float, "Float"},
                                                      {BlackboardValueType::Vec3, "Vec3", "Vector 3"},
                                                      {BlackboardValueType::String, "String"},
                                                  });

    Reflection::RegisterValue<BlackboardValue>("BlackboardValue", "Blackboard Value", "AI")
        .Field("key", &BlackboardValue::key, Label("Key"))
        .Field("type", &BlackboardValue::type, Label("Type"))
        .Field("boolValue", &BlackboardValue::boolValue, Label("Bool Value"))
        .Field("floatValue", &BlackboardValue::floatValue, Label("Float Value"))
        .Field("vec3Value", &BlackboardValue::vec3Value, Label("Vector Value"))
        .Field("stringValue", &BlackboardValue::stringValue, Label("String Value"));

    RegisterComponent<BlackboardComponent>("BlackboardComponent", "Blackboard", "AI", kAddable)
        .Description("Stores named Bool, Float, Vector 3, and String values used by Behavior Trees.")
        .Field("values", &BlackboardComponent::values, Label("Values"));

    RegisterComponent<AIControllerComponent>("AIControllerComponent", "AI Controller", "AI", kAddable)
        .Description("Evaluates an assigned Behavior Tree during Play mode.")
        .Field("enabled", &AIControllerComponent::enabled, Label("Enabled"))
        .Field("behaviorTree", &AIControllerComponent::behaviorTree,
               Label("Behavior Tree").Asset("BehaviorTree"))
        .Field("restartOnTreeChange", &AIControllerComponent::restartOnTreeChange,
               Label("Restart On Tree Change"))
        .Field("debugState", &AIControllerComponent::debugState,
               Label("Debug State").With(PropertyFlags::Runtime));

    RegisterComponent<AIPerceptionComponent>("AIPerceptionComponent", "AI Perception", "AI", kAddable)
        .Description(
            "Sight cone with line-of-sight raycasts and hearing of noise events; writes the blackboard.")
        .Field("enabled", &AIPerceptionComponent::enabled, Label("Enabled"))
        .Field("sightRange", &AIPerceptionComponent::sightRange, Label("Sight Range").Range(0, 1000))
        .Field("sightAngleDegrees", &AIPerceptionComponent::sightAngleDegrees,
               Label("Sight Angle").Range(0, 360))
        .Field("eyeHeight", &AIPerceptionComponent::eyeHeight, Label("Eye Height").Range(0, 10))
        .Field("requireLineOfSight", &AIPerceptionComponent::requireLineOfSight,
               Label("Require Line Of Sight"))
        .Field("hearingRange", &AIPerceptionComponent::hearingRange, Label("Hearing Range").Range(0, 1000))
        .Field("updateIntervalSeconds", &AIPerceptionComponent::updateIntervalSeconds,
               Label("Update Interval").Range(0, 10))
        .Field("memorySeconds", &AIPerceptionComponent::memorySeconds, Label("Memory").Range(0, 600))
        .Field("team", &AIPerceptionComponent::team, Label("Team"))
        .Field("targetKey", &AIPerceptionComponent::targetKey, Label("Target Key"));

    RegisterComponent<AIPerceivableComponent>("AIPerceivableComponent", "AI Perceivable", "AI", kAddable)
        .Description("Can be seen by AI Perception.")
        .Field("enabled", &AIPerceivableComponent::enabled, Label("Enabled"))
        .Field("team", &AIPerceivableComponent::team, Label("Team"))
        .Field("targetHeight", &AIPerceivableComponent::targetHeight, Label("Target Height").Range(0, 10));
}

} // namespace Vornu::Scene
