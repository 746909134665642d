// A voice's own modulation for one sub-block: velocity, then the modulation envelope, then the
// voice LFO, each adding into the parameters' voice values through its three slots.
//
// The order is part of the sound: the mod envelope's times and depth read values that velocity
// has already moved, and the voice LFO's rate, depth and phase read values that velocity and the
// mod envelope have moved. The voice LFO is triggered (restarted with its voice) and its rate
// follows the key. Audio thread only.
#pragma once

#include "engine/envelope.h"
#include "engine/modulation/lfo.h"
#include "engine/parameter.h"

namespace ziv {

struct VoiceModulation {
  EnvelopeState modEnvelope;
  LfoState lfo;

  // Applies velocity, advances and applies the mod envelope, advances and applies the voice LFO,
  // over dt seconds. `pitch` is the voice's glided note plus pitch bend, for the LFO's key
  // tracking.
  void apply(Parameter* params, float velocity, float pitch, float dt);
};

}  // namespace ziv
