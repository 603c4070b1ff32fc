#include "engine/scene/components/Registration.h"

#include "engine/scene/components/AudioComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"

namespace Vornu::Scene
{

void RegisterAudioComponents()
{
    Reflection::RegisterEnum<AudioAttenuationModel>("AudioAttenuationModel",
                                                    {
                                                        {AudioAttenuationModel::Smooth, "Smooth"},
                                                        {AudioAttenuationModel::Linear, "Linear"},
                                                        {AudioAttenuationModel::Inverse, "Inverse"},
                                                        {AudioAttenuationModel::Custom, "Custom"},
                                                    });

    RegisterComponent<AudioSourceComponent>("AudioSourceComponent", "Audio Source", "Audio", kAuthored)
        .Description("Plays an audio clip from this entity.")
        .Field("clip", &AudioSourceComponent::clip, Label("Clip").Asset("AudioClip"))
        .Field("enabled", &AudioSourceComponent::enabled, Label("Enabled"))
        .Field("playOnAwake", &AudioSourceComponent::playOnAwake, Label("Play On Awake"))
        .Field("loop", &AudioSourceComponent::loop, Label("Loop"))
        .Field("spatial", &AudioSourceComponent::spatial, Label("Spatial"))
        .Field("volume", &AudioSourceComponent::volume, Label("Volume").Range(0, 1))
        .Field("pitch", &AudioSourceComponent::pitch, Label("Pitch").Range(0.01f, 4))
        .Field("muted", &AudioSourceComponent::muted, Label("Muted"))
        .Field("playing", &AudioSourceComponent::playing, Label("Playing"))
        .Field("previewInEditor", &AudioSourceComponent::previewInEditor, Label("Preview in Editor"))
        .Field("minDistance", &AudioSourceComponent::minDistance, Label("Min Distance"))
        .Field("maxDistance", &AudioSourceComponent::maxDistance, Label("Max Distance"))
        .Field("rolloff", &AudioSourceComponent::rolloff, Label("Rolloff"))
        .Field("dopplerScale", &AudioSourceComponent::dopplerScale, Label("Doppler Scale"))
        .Field("bus", &AudioSourceComponent::bus, Label("Bus"))
        .Field("priority", &AudioSourceComponent::priority, Label("Priority").Range(0, 255))
        .Field("attenuation", &AudioSourceComponent::attenuation, Label("Attenuation"))
        .Field("customCurve", &AudioSourceComponent::customCurve, Label("Custom Curve"))
        .Field("spread", &AudioSourceComponent::spread, Label("Spread").Range(0, 1))
        .Field("coneInnerAngle", &AudioSourceComponent::coneInnerAngle,
               Label("Cone Inner Angle").Range(0, 360))
        .Field("coneOuterAngle", &AudioSourceComponent::coneOuterAngle,
               Label("Cone Outer Angle").Range(0, 360))
        .Field("coneOuterVolume", &AudioSourceComponent::coneOuterVolume,
               Label("Cone Outer Volume").Range(0, 1))
        .Field("lowPassCutoff", &AudioSourceComponent::lowPassCutoff, Label("Low-Pass Cutoff"));

    RegisterComponent<AudioListenerComponent>("AudioListenerComponent", "Audio Listener", "Audio", kAuthored)
        .Description("Receives spatial audio, usually on the active camera.")
        .Field("enabled", &AudioListenerComponent::enabled, Label("Enabled"))
        .Field("gain", &AudioListenerComponent::gain, Label("Gain").Range(0, 4));
}

} // namespace Vornu::Scene
