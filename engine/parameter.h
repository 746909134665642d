// The engine's runtime record of one parameter: the stored value and the values derived from
// it for the current sub-block.
//
// `base` is written by any thread (host automation, editor, program loads) and read by the
// audio thread once per sub-block, so it is atomic; relaxed order is enough because each value
// stands alone. `lo`, `hi`, `display` and `constant` are atomic because the "GLOBAL LFO: Rate"
// entry is re-described when its sync switch moves, on whichever thread moved it. Everything
// else belongs to the audio thread.
#pragma once

#include <atomic>
#include <cmath>

#include "plugin/parameter_table.h"

namespace ziv {

struct Parameter {
  const ParamInfo* info = nullptr;
  std::atomic<float> base{0.0f};
  std::atomic<int> lo{0};
  std::atomic<int> hi{1};
  std::atomic<DisplayRule> display{DisplayRule::kPlain};
  std::atomic<float> constant{0.0f};

  float previous = 0.0f;     // base at the end of the previous host block
  float smoothed = 0.0f;     // previous → base, stepped per sub-block
  float globalValue = 0.0f;  // smoothed plus global modulation
  float voiceValue = 0.0f;   // globalValue plus the rendering voice's own modulation

  // Takes a table row's bounds, display rule and constant, and its default as every value.
  void describe(const ParamInfo& row) {
    info = &row;
    lo.store(row.lo, std::memory_order_relaxed);
    hi.store(row.hi, std::memory_order_relaxed);
    display.store(row.display, std::memory_order_relaxed);
    constant.store(row.constant, std::memory_order_relaxed);
    const float value = normalisedDefault(row);
    base.store(value, std::memory_order_relaxed);
    previous = smoothed = globalValue = voiceValue = value;
  }

  float baseValue() const { return base.load(std::memory_order_relaxed); }

  // Stores `value` and puts it in force at once: no ramp towards it, no wait for the next
  // smoothing. Audio thread.
  void hold(float value) {
    base.store(value, std::memory_order_relaxed);
    previous = smoothed = globalValue = value;
  }

  float physical(float normalised) const {
    const int low = lo.load(std::memory_order_relaxed);
    const int high = hi.load(std::memory_order_relaxed);
    return static_cast<float>(low) + static_cast<float>(high - low) * normalised;
  }
  // Stepped entries (choices, octaves, counts) round the physical value half up.
  int stepped(float normalised) const { return static_cast<int>(std::floor(physical(normalised) + 0.5f)); }

  float globalPhysical() const { return physical(globalValue); }
  float voicePhysical() const { return physical(voiceValue); }
  int globalStepped() const { return stepped(globalValue); }
  int voiceStepped() const { return stepped(voiceValue); }
};

}  // namespace ziv
