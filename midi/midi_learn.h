// MIDI learn: binding a parameter to whichever controller the musician moves next, and the
// controller messages that move bound parameters.
//
// A learn waits for one parameter at a time. The parameter's learn menu starts it; the next
// controller message of any number on any channel binds that controller to it and ends the
// learn; the menu ends a learn that is still waiting when it closes, so a learn lives only
// while its menu is open and never outlives the instance.
//
// The menu shows, per parameter, one of three states: mapped to controller n ("Mapped to
// CC#n", action "Remove MIDI CC"), waiting for a controller ("Waiting for MIDI...", action
// "Cancel MIDI learn"), or idle (action "MIDI learn").
#pragma once

#include <atomic>
#include <string>

#include "midi/midi_learn_map.h"

namespace ziv {

enum class LearnStatus { kIdle, kWaiting, kMapped };

struct LearnState {
  LearnStatus status = LearnStatus::kIdle;
  int controller = -1;  // the bound controller when kMapped, else -1
};

class MidiLearn {
 public:
  // Reads the learned map from the settings file at `settingsPath`. Constructing thread.
  explicit MidiLearn(std::string settingsPath) : map_(std::move(settingsPath)) {}

  // --- Audio thread ---

  // Picks up bindings another instance has written; called at the start of every processEvents.
  void refresh() { map_.readIfChanged(); }

  // Called for every controller message after the engine's own controller handling, before
  // the fixed meanings of controllers 64, 120 and 123 (which a binding never replaces).
  // Completes a waiting learn with `controller` (writing the settings file), then answers the
  // parameter that `controller` moves, or -1. Never allocates.
  int onController(int controller);

  // --- User-interface thread (the learn menu) ---

  // The menu's state for `parameter`; a mapping shows even while a learn waits.
  LearnState state(int parameter) const;
  // "MIDI learn": `parameter` waits for the next controller. Ignored for an invalid parameter.
  void startLearn(int parameter);
  // "Cancel MIDI learn", and the closing of the menu: no parameter waits any more.
  void cancelLearn() { learnTarget_.store(-1, std::memory_order_relaxed); }
  // "Remove MIDI CC": unbinds the controller that moves `parameter` and writes the settings file.
  void removeMapping(int parameter);

  // The map itself (any thread, read-only).
  const MidiLearnMap& map() const { return map_; }

 private:
  MidiLearnMap map_;
  // The parameter waiting for a controller, -1 when none.
  std::atomic<int> learnTarget_{-1};
};

}  // namespace ziv
