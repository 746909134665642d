// Modulation routing: five sources (mod wheel, global LFO, velocity, mod envelope, voice LFO),
// each with three slots of a target selector and an amount (-1..+1).
//
// A selector picks its target from the source's list; the lists grow from the voice LFO's (sound
// settings of one voice) through the mod envelope's, velocity's and the global LFO's (adding the
// LFO's own settings, envelope times, the effects) to the mod wheel's (adding the global LFO's
// depth and rate), so each list is the head of one shared list. Entry 0 of every list is "no
// target". The order is stored in programs and shown in menus, so it never changes.
//
// Modulation adds to a target's normalised value: for pitch targets the cube of the amount (fine
// control near zero, full range at the ends), for gain-like targets a shift that a unipolar
// source at full level leaves alone, otherwise clamped to 0..1. Global modulation writes
// `globalValue`, a voice's own modulation its `voiceValue`. Audio thread; no allocation.
#pragma once

#include "engine/parameter.h"

namespace ziv {

enum class ModSource { kModWheel, kGlobalLfo, kVelocity, kModEnvelope, kVoiceLfo };
enum class ModStage { kGlobal, kVoice };

constexpr int kModSlots = 3;
constexpr int kNoModTarget = -1;

// The target list of a source: `count` entries, entry 0 being kNoModTarget.
struct ModTargetList {
  const int* targets;
  int count;
};
ModTargetList modTargets(ModSource source);

// The list that a target selector parameter (such as "VELOCITY: Target 2") picks from; false for
// any other parameter. Any thread.
bool selectorTargets(int parameterIndex, ModTargetList& list);

// The index into the source's list that a selector value (normalised 0..1) picks: the selector's
// range spreads evenly over the list.
int modTargetPosition(float selectorValue, int listCount);

// Applies one slot: adds amount x source to the target's value in the given stage.
void applyModulation(Parameter* params, int target, float source, float amount, bool bipolarSource,
                     ModStage stage);

// Applies a source's three slots in order, reading selectors from their stored values and
// amounts from globalValue (mod wheel, global LFO) or voiceValue (the voice's own sources).
void applyModSource(Parameter* params, ModSource source, float value, ModStage stage);

}  // namespace ziv
