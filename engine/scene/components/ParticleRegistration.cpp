#include "engine/scene/components/Registration.h"

#include "engine/scene/components/ParticleComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

namespace Vornu::Scene
{

namespace
{

void RestartSequence(ParticleEmitterComponent& emitter)
{
    emitter.runtimeSeed = emitter.randomSeed;
}

} // namespace

void RegisterParticleComponents()
{
    Reflection::RegisterEnum<ParticleEmitterShape>(
        "ParticleEmitterShape", {
                                    {ParticleEmitterShape::Point, "Point"},
                                    {ParticleEmitterShape::Sphere, "Sphere"},
                                    {ParticleEmitterShape::Box, "Box"},
                                    {ParticleEmitterShape::Cone, "Cone"},
                                    {ParticleEmitterShape::Circle, "Circle"},
                                    {ParticleEmitterShape::Line, "Line"},
                                    {ParticleEmitterShape::Cylinder, "Cylinder"},
                                    {ParticleEmitterShape::MeshSurface, "MeshSurface", "Mesh Surface"},
                                    {ParticleEmitterShape::MeshVolume, "MeshVolume", "Mesh Volume"},
                                });
    Reflection::RegisterEnum<ParticleSimulationSpace>("ParticleSimulationSpace",
                                                      {
                                                          {ParticleSimulationSpace::Local, "Local"},
                                                          {ParticleSimulationSpace::World, "World"},
                                                      });
    Reflection::RegisterEnum<ParticleSimulationBackend>("ParticleSimulationBackend",
                                                        {
                                                            {ParticleSimulationBackend::Cpu, "Cpu", "CPU"},
                                                            {ParticleSimulationBackend::Gpu, "Gpu", "GPU"},
                                                        });
    Reflection::RegisterEnum<ParticleFlipbookPlayback>(
        "ParticleFlipbookPlayback",
        {
            {ParticleFlipbookPlayback::OverLifetime, "OverLifetime", "Over Lifetime"},
            {ParticleFlipbookPlayback::Loop, "Loop"},
            {ParticleFlipbookPlayback::PingPong, "PingPong", "Ping Pong"},
        });
    Reflection::RegisterEnum<ParticleCollisionShape>(
        "ParticleCollisionShape", {
                                      {ParticleCollisionShape::None, "None"},
                                      {ParticleCollisionShape::Plane, "Plane"},
                                      {ParticleCollisionShape::Sphere, "Sphere"},
                                      {ParticleCollisionShape::SceneDepth, "SceneDepth", "Scene Depth"},
                                  });
    Reflection::RegisterEnum<ParticleRenderMode>(
        "ParticleRenderMode", {
                                  {ParticleRenderMode::Billboard, "Billboard"},
                                  {ParticleRenderMode::Ribbon, "Ribbon"},
                                  {ParticleRenderMode::Stretched, "Stretched"},
                                  {ParticleRenderMode::AxisLocked, "AxisLocked", "Axis Locked"},
                                  {ParticleRenderMode::Mesh, "Mesh"},
                                  {ParticleRenderMode::Beam, "Beam"},
                              });

    RegisterComponent<ParticleEmitterComponent>("ParticleEmitterComponent", "Particle Emitter", "Rendering",
                                                kAuthored)
        .Description("Emits billboarded particles using the renderer particle path.")
        .Field("enabled", &ParticleEmitterComponent::enabled, Label("Enabled"))
        .Field("playing", &ParticleEmitterComponent::playing, Label("Playing"))
        .Field("loop", &ParticleEmitterComponent::loop, Label("Loop"))
        .Field("visible", &ParticleEmitterComponent::visible, Label("Visible"))
        .Field("duration", &ParticleEmitterComponent::duration, Label("Duration").Range(0, 100000))
        .Field("emissionRate", &ParticleEmitterComponent::emissionRate,
               Label("Emission Rate").Range(0, 100000))
        .Field("maxParticles", &ParticleEmitterComponent::maxParticles, Label("Max Particles"))
        .Field("material", &ParticleEmitterComponent::material, Label("Material").Asset("Material"))
        .Field("startColor", &ParticleEmitterComponent::startColor,
               Label("Start Color").With(PropertyFlags::Color))
        .Field("endColor", &ParticleEmitterComponent::endColor, Label("End Color").With(PropertyFlags::Color))
        .Field("playOnAwake", &ParticleEmitterComponent::playOnAwake, Label("Play On Awake"))
        .Field("prewarm", &ParticleEmitterComponent::prewarm, Label("Prewarm"))
        .Field("allowOcclusion", &ParticleEmitterComponent::allowOcclusion, Label("Allow Occlusion"))
        .Field("debugDraw", &ParticleEmitterComponent::debugDraw, Label("Debug Draw"))
        .Field("followPrimaryCamera", &ParticleEmitterComponent::followPrimaryCamera,
               Label("Follow Primary Camera"))
        .Field("simulationSpeed", &ParticleEmitterComponent::simulationSpeed, Label("Simulation Speed"))
        .Field("startLifetimeMin", &ParticleEmitterComponent::startLifetimeMin, Label("Start Lifetime Min"))
        .Field("startLifetimeMax", &ParticleEmitterComponent::startLifetimeMax, Label("Start Lifetime Max"))
        .Field("startSpeedMin", &ParticleEmitterComponent::startSpeedMin, Label("Start Speed Min"))
        .Field("startSpeedMax", &ParticleEmitterComponent::startSpeedMax, Label("Start Speed Max"))
        .Field("startSizeMin", &ParticleEmitterComponent::startSizeMin, Label("Start Size Min"))
        .Field("startSizeMax", &ParticleEmitterComponent::startSizeMax, Label("Start Size Max"))
        .Field("endSizeMultiplier", &ParticleEmitterComponent::endSizeMultiplier,
               Label("End Size Multiplier"))
        .Field("shapeRadius", &ParticleEmitterComponent::shapeRadius, Label("Shape Radius"))
        .Field("coneAngleDegrees", &ParticleEmitterComponent::coneAngleDegrees, Label("Cone Angle Degrees"))
        .Field("drag", &ParticleEmitterComponent::drag, Label("Drag"))
        .Field("maxDrawDistance", &ParticleEmitterComponent::maxDrawDistance, Label("Max Draw Distance"))
        .Field("sortBias", &ParticleEmitterComponent::sortBias, Label("Sort Bias"))
        .Field("randomSeed", &ParticleEmitterComponent::randomSeed, Label("Random Seed"))
        .Field("shape", &ParticleEmitterComponent::shape, Label("Shape"))
        .Field("simulationSpace", &ParticleEmitterComponent::simulationSpace, Label("Simulation Space"))
        .Field("facingMode", &ParticleEmitterComponent::facingMode, Label("Facing Mode"))
        .Field("boxExtents", &ParticleEmitterComponent::boxExtents, Label("Box Extents"))
        .Field("followOffset", &ParticleEmitterComponent::followOffset, Label("Follow Offset"))
        .Field("gravity", &ParticleEmitterComponent::gravity, Label("Gravity"))
        .Field("simulationBackend", &ParticleEmitterComponent::simulationBackend, Label("Simulation Backend"))
        .Field("flipbookColumns", &ParticleEmitterComponent::flipbookColumns, Label("Flipbook Columns"))
        .Field("flipbookRows", &ParticleEmitterComponent::flipbookRows, Label("Flipbook Rows"))
        .Field("flipbookFrames", &ParticleEmitterComponent::flipbookFrames, Label("Flipbook Frames"))
        .Field("flipbookFramesPerSecond", &ParticleEmitterComponent::flipbookFramesPerSecond,
               Label("Flipbook Frames Per Second"))
        .Field("flipbookPlayback", &ParticleEmitterComponent::flipbookPlayback, Label("Flipbook Playback"))
        .Field("flipbookRandomStart", &ParticleEmitterComponent::flipbookRandomStart,
               Label("Flipbook Random Start"))
        .Field("burstCount", &ParticleEmitterComponent::burstCount, Label("Burst Count"))
        .Field("burstInterval", &ParticleEmitterComponent::burstInterval, Label("Burst Interval"))
        .Field("emissionPerMeter", &ParticleEmitterComponent::emissionPerMeter, Label("Emission Per Meter"))
        .Field("sortParticles", &ParticleEmitterComponent::sortParticles, Label("Sort Particles"))
        .Field("wind", &ParticleEmitterComponent::wind, Label("Wind"))
        .Field("turbulenceStrength", &ParticleEmitterComponent::turbulenceStrength,
               Label("Turbulence Strength"))
        .Field("turbulenceFrequency", &ParticleEmitterComponent::turbulenceFrequency,
               Label("Turbulence Frequency"))
        .Field("turbulenceSpeed", &ParticleEmitterComponent::turbulenceSpeed, Label("Turbulence Speed"))
        .Field("attractorOffset", &ParticleEmitterComponent::attractorOffset, Label("Attractor Offset"))
        .Field("attractorStrength", &ParticleEmitterComponent::attractorStrength, Label("Attractor Strength"))
        .Field("attractorRadius", &ParticleEmitterComponent::attractorRadius, Label("Attractor Radius"))
        .Field("vortexOffset", &ParticleEmitterComponent::vortexOffset, Label("Vortex Offset"))
        .Field("vortexAxis", &ParticleEmitterComponent::vortexAxis, Label("Vortex Axis"))
        .Field("vortexStrength", &ParticleEmitterComponent::vortexStrength, Label("Vortex Strength"))
        .Field("vortexPull", &ParticleEmitterComponent::vortexPull, Label("Vortex Pull"))
        .Field("vortexRadius", &ParticleEmitterComponent::vortexRadius, Label("Vortex Radius"))
        .Field("startRotationMinDegrees", &ParticleEmitterComponent::startRotationMinDegrees,
               Label("Start Rotation Min"))
        .Field("startRotationMaxDegrees", &ParticleEmitterComponent::startRotationMaxDegrees,
               Label("Start Rotation Max"))
        .Field("angularVelocityMinDegrees", &ParticleEmitterComponent::angularVelocityMinDegrees,
               Label("Angular Velocity Min"))
        .Field("angularVelocityMaxDegrees", &ParticleEmitterComponent::angularVelocityMaxDegrees,
               Label("Angular Velocity Max"))
        .Field("collisionShape", &ParticleEmitterComponent::collisionShape, Label("Collision Shape"))
        .Field("collisionCenter", &ParticleEmitterComponent::collisionCenter, Label("Collision Center"))
        .Field("collisionNormal", &ParticleEmitterComponent::collisionNormal, Label("Collision Normal"))
        .Field("collisionRadius", &ParticleEmitterComponent::collisionRadius, Label("Collision Radius"))
        .Field("collisionBounce", &ParticleEmitterComponent::collisionBounce, Label("Collision Bounce"))
        .Field("collisionFriction", &ParticleEmitterComponent::collisionFriction, Label("Collision Friction"))
        .Field("collisionLifetimeLoss", &ParticleEmitterComponent::collisionLifetimeLoss,
               Label("Collision Lifetime Loss"))
        .Field("collisionDepthThickness", &ParticleEmitterComponent::collisionDepthThickness,
               Label("Collision Depth Thickness"))
        .Field("sizeOverLifetime", &ParticleEmitterComponent::sizeOverLifetime, Label("Size Over Lifetime"))
        .Field("speedOverLifetime", &ParticleEmitterComponent::speedOverLifetime,
               Label("Speed Over Lifetime"))
        .Field("alphaOverLifetime", &ParticleEmitterComponent::alphaOverLifetime,
               Label("Alpha Over Lifetime"))
        .Field("colorOverLifetime", &ParticleEmitterComponent::colorOverLifetime,
               Label("Color Over Lifetime"))
        .Field("velocityXOverLifetime", &ParticleEmitterComponent::velocityXOverLifetime,
               Label("Velocity X Over Lifetime"))
        .Field("velocityYOverLifetime", &ParticleEmitterComponent::velocityYOverLifetime,
               Label("Velocity Y Over Lifetime"))
        .Field("velocityZOverLifetime", &ParticleEmitterComponent::velocityZOverLifetime,
               Label("Velocity Z Over Lifetime"))
        .Field("subEmitterGuid", &ParticleEmitterComponent::subEmitterGuid,
               Label("Sub Emitter").With(PropertyFlags::EntityGuid))
        .Field("deathSpawnCount", &ParticleEmitterComponent::deathSpawnCount, Label("Death Spawn Count"))
        .Field("collisionSpawnCount", &ParticleEmitterComponent::collisionSpawnCount,
               Label("Collision Spawn Count"))
        .Field("subEmitterInheritVelocity", &ParticleEmitterComponent::subEmitterInheritVelocity,
               Label("Sub Emitter Inherit Velocity"))
        .Field("renderMode", &ParticleEmitterComponent::renderMode, Label("Render Mode"))
        .Field("ribbonMaxSegment", &ParticleEmitterComponent::ribbonMaxSegment, Label("Ribbon Max Segment"))
        .Field("stretchFactor", &ParticleEmitterComponent::stretchFactor, Label("Stretch Factor"))
        .Field("lockedAxis", &ParticleEmitterComponent::lockedAxis, Label("Locked Axis"))
        .Field("renderMesh", &ParticleEmitterComponent::renderMesh, Label("Render Mesh").Asset("Mesh"))
        .Field("beamTargetGuid", &ParticleEmitterComponent::beamTargetGuid,
               Label("Beam Target").With(PropertyFlags::EntityGuid))
        .Field("beamEndOffset", &ParticleEmitterComponent::beamEndOffset, Label("Beam End Offset"))
        .Field("beamSegments", &ParticleEmitterComponent::beamSegments, Label("Beam Segments"))
        .Field("beamNoiseAmplitude", &ParticleEmitterComponent::beamNoiseAmplitude,
               Label("Beam Noise Amplitude"))
        .Field("beamNoiseFrequency", &ParticleEmitterComponent::beamNoiseFrequency,
               Label("Beam Noise Frequency"))
        .Field("lightsEnabled", &ParticleEmitterComponent::lightsEnabled, Label("Lights"))
        .Field("lightUseParticleColor", &ParticleEmitterComponent::lightUseParticleColor,
               Label("Light Uses Particle Color"))
        .Field("lightFadeWithAlpha", &ParticleEmitterComponent::lightFadeWithAlpha,
               Label("Light Fades With Alpha"))
        .Field("lightScaleWithSize", &ParticleEmitterComponent::lightScaleWithSize,
               Label("Light Scales With Size"))
        .Field("lightRatio", &ParticleEmitterComponent::lightRatio, Label("Light Ratio"))
        .Field("lightMaxCount", &ParticleEmitterComponent::lightMaxCount, Label("Light Max Count"))
        .Field("lightRange", &ParticleEmitterComponent::lightRange, Label("Light Range"))
        .Field("lightIntensity", &ParticleEmitterComponent::lightIntensity, Label("Light Intensity"))
        .Field("lightColor", &ParticleEmitterComponent::lightColor,
               Label("Light Color").With(PropertyFlags::Color))
        .Field("vectorField", &ParticleEmitterComponent::vectorField,
               Label("Vector Field").Asset("VectorField"))
        .Field("vectorFieldOffset", &ParticleEmitterComponent::vectorFieldOffset,
               Label("Vector Field Offset"))
        .Field("vectorFieldSize", &ParticleEmitterComponent::vectorFieldSize, Label("Vector Field Size"))
        .Field("vectorFieldStrength", &ParticleEmitterComponent::vectorFieldStrength,
               Label("Vector Field Strength"))
        .Field("vectorFieldFollow", &ParticleEmitterComponent::vectorFieldFollow,
               Label("Vector Field Follow"))
        .Field("spawnMesh", &ParticleEmitterComponent::spawnMesh, Label("Spawn Mesh").Asset("Mesh"))
        .Field("customAttributeMin", &ParticleEmitterComponent::customAttributeMin,
               Label("Custom Attribute Min"))
        .Field("customAttributeMax", &ParticleEmitterComponent::customAttributeMax,
               Label("Custom Attribute Max"))
        .Field("custom1OverLifetime", &ParticleEmitterComponent::custom1OverLifetime,
               Label("Custom 1 Over Lifetime"))
        .Field("custom2OverLifetime", &ParticleEmitterComponent::custom2OverLifetime,
               Label("Custom 2 Over Lifetime"))
        .AddTransient(&ParticleEmitterComponent::runtimeSeed)
        .OnCopy([](ParticleEmitterComponent& emitter, ComponentCopyKind) { RestartSequence(emitter); })
        .OnLoad([](ParticleEmitterComponent& emitter, const ComponentLoadContext&)
                { RestartSequence(emitter); });
}

} // namespace Vornu::Scene
