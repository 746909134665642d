// Free and tempo-synced phase of the global LFO; see global_lfo.h.
#include "engine/modulation/global_lfo.h"

#include "plugin/parameter_display.h"

namespace ziv {
namespace {

// The phase offset knob (-1..1) reaches half a cycle either way.
constexpr float kPhaseOffsetScale = 0.5f;

}  // namespace

void GlobalLfo::advance(const Parameter* params, float dt, double songPositionBeats) {
  const Parameter& rate = params[kGlobalLfoRate];
  if (params[kGlobalLfoSync].baseValue() > 0.5f) {
    // The switch that re-describes the rate entry (bounds 0..23 while synced) decides the mode,
    // so the stepped rate is always a tempo division here.
    const float quarters = static_cast<float>(tempoDivisionQuarters(rate.globalStepped()));
    lockLfoToSongPosition(state_, songPositionBeats, quarters);
  } else {
    advanceLfo(state_, static_cast<double>(lfoRateHz(rate.globalValue)) * dt);
  }
  shapeLfo(state_, params[kGlobalLfoWaveform].globalStepped(),
           kPhaseOffsetScale * params[kGlobalLfoPhase].globalPhysical());
}

float GlobalLfo::source(const Parameter* params) const {
  return params[kGlobalLfoDepth].globalPhysical() * state_.output;
}

}  // namespace ziv
