// The instance's queue of MIDI events waiting to be applied at their place in the audio block.
//
// Events are 32-byte copies of the host's VstMidiEvents, kept in arrival order and sorted
// stably by their offset, so that events at the same offset keep the order the host sent them
// in. Storage is fixed: when a host sends more than kCapacity events before they are played,
// the excess is dropped rather than allocating on the audio thread. Audio thread only.
#pragma once

#include <array>

#include "sdk/vst2/aeffect.h"

namespace ziv {

class MidiEventQueue {
 public:
  static constexpr int kCapacity = 2048;

  int size() const { return tail_ - head_; }
  bool empty() const { return head_ == tail_; }
  const vst2::VstMidiEvent& front() const { return events_[head_]; }
  void popFront() { ++head_; }

  // Appends a copy; returns false (dropping it) when the queue is full.
  bool pushBack(const vst2::VstMidiEvent& event);

  // Sorts the queued events by deltaFrames, keeping the arrival order of equal offsets.
  void sortStable();

  // Moves the events still queued to the front and shifts their offsets back by `frames`, so
  // an event beyond this block plays in a later one.
  void carryOver(int frames);

  void clear() { head_ = tail_ = 0; }

 private:
  // Below this many events an insertion sort beats merging.
  static constexpr int kInsertionSortLimit = 33;

  void mergeSort(int begin, int end);

  std::array<vst2::VstMidiEvent, kCapacity> events_{};
  std::array<vst2::VstMidiEvent, kCapacity> scratch_{};
  int head_ = 0;
  int tail_ = 0;
};

}  // namespace ziv
