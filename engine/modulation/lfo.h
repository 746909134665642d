// The two low-frequency oscillators: the voice LFO (one per voice, restarted with the note, its
// rate following the key) and the global LFO (one per engine, free running or locked to the
// host's song position).
//
// Both share one state and six shapes: sine, triangle, saw, square and two random shapes that
// read a fixed table of 1024 values, four points per cycle, joined by straight lines (smooth) or
// held (stepped). The cycle counter picks the points, so a patch replays identically. Outputs
// are -1..+1; the caller scales them by the LFO's depth. Everything here runs on the audio
// thread once per sub-block and allocates nothing.
#pragma once

#include <cstdint>

namespace ziv {

enum LfoShape { kLfoSine = 0, kLfoTriangle, kLfoSaw, kLfoSquare, kLfoSmoothRandom, kLfoSteppedRandom };
constexpr int kLfoShapeCount = 6;

struct LfoState {
  float phase = 0.0f;       // 0..1
  std::uint32_t cycle = 0;  // completed cycles, modulo kLfoCycleWrap; selects the random points
  float output = 0.0f;      // -1..+1

  void restart() { phase = 0.0f, cycle = 0, output = 0.0f; }
};

// The cycle counter wraps here, so the random shapes repeat every 255 cycles.
constexpr std::uint32_t kLfoCycleWrap = 255;
constexpr int kLfoRandomTableSize = 1024;

// Rate in Hz of an LFO rate knob (normalised 0..1): 0.301 Hz to 16.44 Hz, exponentially.
float lfoRateHz(float rate);

// Voice LFO rate: as lfoRateHz, times exp((pitch - 52) x keyTracking / 17.5), so full tracking
// nearly doubles the rate per octave around note 52.
float voiceLfoRateHz(float rate, float keyTracking, float pitch);

// Moves the phase on by `cycles`, counting the whole cycles passed.
void advanceLfo(LfoState& state, double cycles);

// Locks the phase to a song position: `cycleQuarters` is the length of one cycle in quarter
// notes. A standing song position holds the phase.
void lockLfoToSongPosition(LfoState& state, double songPositionBeats, float cycleQuarters);

// Writes state.output for the current phase plus phaseOffset (in cycles, -0.5..0.5) and shape
// 0..5 (out-of-range shapes are clamped).
void shapeLfo(LfoState& state, int shape, float phaseOffset);

// The random table's values, fixed for every run and build.
float lfoRandomValue(int index);

}  // namespace ziv
