// One AAX render call for one instance, in VST 2.4 terms: the outputs are cleared, the transport's
// tick position and tempo go into the time record the instance asks for, the block's MIDI packets
// become a VstEvents list built on the stack and reach processEvents (an empty list when there are
// none), and processReplacing renders the block. A context without an instance stays silent.
//
// Threads: the host's real-time thread. Nothing here allocates, locks or waits.
#pragma once

#include <cstdint>

#include "sdk/aax/aax_constants.h"
#include "sdk/vst2/audio_effect.h"

namespace ziv::aax {

// What the transport node answered this block; a failed read leaves its field unknown.
struct TransportState {
  bool hasTicks = false;
  std::int64_t ticks = 0;
  bool hasTempo = false;
  double tempo = 0.0;
};

double ticksToQuarterNotes(std::int64_t ticks);

// MIDI events for one processEvents call, built on the caller's stack. A block with more packets
// than kCapacity is delivered in several lists; the instance queues them all before rendering.
class MidiEventList {
 public:
  static constexpr int kCapacity = 256;

  bool full() const { return list_.numEvents == kCapacity; }
  // Appends one packet as a 32-byte MIDI event at `timestamp` frames into the block.
  void add(std::uint32_t timestamp, const unsigned char (&data)[4]);
  // Hands the events to the instance and empties the list.
  void deliver(vst2::AudioEffectX& instance);

 private:
  // The VstEvents layout with room for kCapacity pointers.
  struct Events {
    vst2::VstInt32 numEvents;
    vst2::VstIntPtr reserved;
    vst2::VstEvent* events[kCapacity];
  };

  vst2::VstMidiEvent midi_[kCapacity];
  Events list_{0, 0, {}};
};

// Clears both outputs, then fills the time record from the transport; false when there is no
// instance to render (the outputs stay silent).
bool beginBlock(vst2::AudioEffectX* instance, vst2::VstTimeInfo* time, float* const* outputs,
                std::int32_t frames, const TransportState& transport);

// Renders one block. `Packet` is the host's MIDI packet record (mTimestamp, mData[4]).
template <class Packet>
void renderBlock(vst2::AudioEffectX* instance, vst2::VstTimeInfo* time, float** outputs, std::int32_t frames,
                 const TransportState& transport, const Packet* packets, std::uint32_t packetCount) {
  if (!beginBlock(instance, time, outputs, frames, transport)) return;
  MidiEventList list;
  for (std::uint32_t i = 0; packets != nullptr && i < packetCount; ++i) {
    if (list.full()) list.deliver(*instance);
    list.add(packets[i].mTimestamp, packets[i].mData);
  }
  list.deliver(*instance);
  instance->processReplacing(outputs, outputs, frames);
}

}  // namespace ziv::aax
