// What the widgets know of a parameter, by index: its normalised value, integer range, default,
// display text and choice names, and the one way they change it: through the engine with the
// editor flag, so the instance stores it in the current program and automates the host, inside
// beginEdit/endEdit gestures of the instance. Index -1 (no parameter) reads as 0 and ignores
// every change.
//
// Threads: the host's user-interface thread (inside an editor frame). Values are the engine's
// relaxed atomics, which the audio thread and host automation may change between two reads.
#pragma once

#include <cstddef>

namespace ziv {

class VstTest;

class ParameterView {
 public:
  explicit ParameterView(VstTest& instance);

  bool valid(int index) const;
  float value(int index) const;
  int rangeMin(int index) const;
  int rangeMax(int index) const;
  // The default in normalised units, (default - min) / (max - min) over the current range.
  float defaultValue(int index) const;
  // min + (max - min) x v.
  float physical(int index) const;
  // round(v x (max - min) + min), halves away from zero.
  int integerValue(int index) const;
  void text(int index, char* out, std::size_t capacity) const;

  // Choices: the names of a choice entry, or the modulation targets of a target selector
  // ("Off" first); 0 for any other parameter.
  int choiceCount(int index) const;
  const char* choiceName(int index, int choice) const;
  int currentChoice(int index) const;

  // The parameter waits for a controller in MIDI learn.
  bool waitingForLearn(int index) const;

  // Changes, reported to the host as edits made in the editor. `set` passes the value through
  // unclamped (the engine clamps it); `setInteger` keeps n inside the integer range.
  void set(int index, float normalised);
  void setInteger(int index, int n);
  void setChoice(int index, int choice);
  void beginEdit(int index);
  void endEdit(int index);
  // A one-off change (a click, a reset) as a whole gesture: `change` runs between beginEdit and
  // endEdit.
  template <typename Change>
  void gesture(int index, Change change) {
    beginEdit(index);
    change();
    endEdit(index);
  }

 private:
  VstTest& instance_;
};

}  // namespace ziv
