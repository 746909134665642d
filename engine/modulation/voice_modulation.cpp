// Velocity, mod envelope and voice LFO in their order; see voice_modulation.h.
#include "engine/modulation/voice_modulation.h"

#include "engine/modulation/mod_routing.h"

namespace ziv {
namespace {

// The phase offset knob (-1..1) reaches half a cycle either way.
constexpr float kPhaseOffsetScale = 0.5f;

}  // namespace

void VoiceModulation::apply(Parameter* params, float velocity, float pitch, float dt) {
  applyModSource(params, ModSource::kVelocity, velocity, ModStage::kVoice);

  const float envelope = advanceEnvelope(modEnvelope, dt, modEnvelopeTimes(params));
  applyModSource(params, ModSource::kModEnvelope, envelope * params[kModEnvDepth].voicePhysical(),
                 ModStage::kVoice);

  const float rate =
      voiceLfoRateHz(params[kVoiceLfoRate].voiceValue, params[kVoiceLfoKeyTracking].voicePhysical(), pitch);
  advanceLfo(lfo, static_cast<double>(rate) * dt);
  shapeLfo(lfo, params[kVoiceLfoWaveform].voiceStepped(),
           kPhaseOffsetScale * params[kVoiceLfoPhase].voicePhysical());
  applyModSource(params, ModSource::kVoiceLfo, lfo.output * params[kVoiceLfoDepth].voicePhysical(),
                 ModStage::kVoice);
}

}  // namespace ziv
