// The engine's global LFO: one per engine, advanced once per sub-block. Free running, it moves at
// its rate knob's frequency and notes never restart it; synced ("GLOBAL LFO: Sync" on), its rate
// knob picks one of 24 note lengths and its phase is locked to the host's song position, so it
// stands while the transport stands and lands on the beat when the transport moves or jumps.
// Audio thread only.
#pragma once

#include "engine/modulation/lfo.h"
#include "engine/parameter.h"

namespace ziv {

class GlobalLfo {
 public:
  // Advances by dt seconds (free) or to the song position (synced) and shapes the output, with
  // the parameters' global values.
  void advance(const Parameter* params, float dt, double songPositionBeats);

  // The routing source: "GLOBAL LFO: Depth" times the output.
  float source(const Parameter* params) const;

  // The output for a meter: its positive half.
  float display() const { return state_.output > 0.0f ? state_.output : 0.0f; }

  const LfoState& state() const { return state_; }

 private:
  LfoState state_;
};

}  // namespace ziv
