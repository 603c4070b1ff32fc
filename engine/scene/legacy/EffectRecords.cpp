// What an entity shows and sounds: particles, audio, user interfaces.

#include "engine/scene/legacy/Records.h"

#include <array>

namespace Vornu::Scene::Legacy
{
namespace
{

void ReadParticleEmitter(RecordLine& line, RecordContext& context)
{
    auto emitter = BeginComponent<ParticleEmitterComponent>(context, "Duplicate particle emitter record.");
    line.Read(emitter.enabled, emitter.playing, emitter.playOnAwake, emitter.loop, emitter.prewarm,
              emitter.visible, emitter.allowOcclusion, emitter.debugDraw, emitter.duration,
              emitter.emissionRate, emitter.simulationSpeed, emitter.startLifetimeMin,
              emitter.startLifetimeMax, emitter.startSpeedMin, emitter.startSpeedMax, emitter.startSizeMin,
              emitter.startSizeMax, emitter.endSizeMultiplier, emitter.shapeRadius, emitter.coneAngleDegrees,
              emitter.drag, emitter.maxDrawDistance, emitter.sortBias, emitter.maxParticles,
              emitter.randomSeed, CutField{emitter.shape, ParticleEmitterShape::Circle},
              CutField{emitter.simulationSpace, ParticleSimulationSpace::World},
              CutField{emitter.facingMode, BillboardFacingMode::WorldUp}, AssetField{emitter.material},
              emitter.boxExtents, emitter.gravity, emitter.startColor, emitter.endColor);
    line.ReadTogether(emitter.followPrimaryCamera, emitter.followOffset);
    emitter.runtimeSeed = emitter.randomSeed;
    context.entity.components.Set(std::move(emitter));
}

void ReadAudioSource(RecordLine& line, RecordContext& context)
{
    auto source = BeginComponent<AudioSourceComponent>(context, "Duplicate audio_source component.");
    line.Read(AssetField{source.clip}, source.enabled, source.playOnAwake, source.loop, source.spatial,
              source.muted, source.playing, source.previewInEditor, source.volume, source.pitch,
              source.minDistance, source.maxDistance, source.rolloff, source.dopplerScale);
    context.entity.components.Set(std::move(source));
}

void ReadAudioListener(RecordLine& line, RecordContext& context)
{
    auto listener = BeginComponent<AudioListenerComponent>(context, "Duplicate audio_listener component.");
    line.Read(listener.enabled, listener.gain);
    context.entity.components.Set(listener);
}

void ReadCanvas(RecordLine& line, RecordContext& context)
{
    auto canvas = BeginComponent<UICanvasComponent>(context, "Duplicate UI canvas component.");
    line.Read(AssetField{canvas.document}, CutField{canvas.space, UICanvasSpace::WorldBillboard},
              canvas.visible, canvas.receiveInput, canvas.sortOrder, canvas.screenOffset, canvas.worldSize,
              canvas.pivot, canvas.maxDistance);
    context.entity.components.Set(canvas);
}

constexpr std::array kRecords = {
    EntityRecord{"particle_emitter", &ReadParticleEmitter},
    EntityRecord{"audio_source", &ReadAudioSource},
    EntityRecord{"audio_listener", &ReadAudioListener},
    EntityRecord{"ui_canvas", &ReadCanvas},
};

} // namespace

std::span<const EntityRecord> EffectRecords() noexcept
{
    return kRecords;
}

} // namespace Vornu::Scene::Legacy
