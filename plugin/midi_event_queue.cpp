#include "plugin/midi_event_queue.h"

namespace ziv {

bool MidiEventQueue::pushBack(const vst2::VstMidiEvent& event) {
  if (tail_ == kCapacity) {
    if (head_ == 0) return false;
    carryOver(0);  // reclaim the space of events already played
  }
  events_[tail_++] = event;
  return true;
}

void MidiEventQueue::sortStable() {
  if (size() < kInsertionSortLimit) {
    for (int i = head_ + 1; i < tail_; ++i) {
      const vst2::VstMidiEvent moving = events_[i];
      int j = i;
      while (j > head_ && events_[j - 1].deltaFrames > moving.deltaFrames) {
        events_[j] = events_[j - 1];
        --j;
      }
      events_[j] = moving;
    }
    return;
  }
  mergeSort(head_, tail_);
}

void MidiEventQueue::mergeSort(int begin, int end) {
  if (end - begin < 2) return;
  const int middle = begin + (end - begin) / 2;
  mergeSort(begin, middle);
  mergeSort(middle, end);
  if (events_[middle - 1].deltaFrames <= events_[middle].deltaFrames) return;  // already in order
  // Merge through the scratch copy of the left half; taking from the left on ties keeps order.
  const int leftCount = middle - begin;
  for (int i = 0; i < leftCount; ++i) scratch_[i] = events_[begin + i];
  int left = 0;
  int right = middle;
  int out = begin;
  while (left < leftCount && right < end) {
    if (events_[right].deltaFrames < scratch_[left].deltaFrames) {
      events_[out++] = events_[right++];
    } else {
      events_[out++] = scratch_[left++];
    }
  }
  while (left < leftCount) events_[out++] = scratch_[left++];
}

void MidiEventQueue::carryOver(int frames) {
  int out = 0;
  for (int i = head_; i < tail_; ++i) {
    events_[out] = events_[i];
    events_[out].deltaFrames -= frames;
    ++out;
  }
  head_ = 0;
  tail_ = out;
}

}  // namespace ziv
