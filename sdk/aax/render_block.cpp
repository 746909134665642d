#include "sdk/aax/render_block.h"

#include <algorithm>

namespace ziv::aax {

namespace {

constexpr int kOutputCount = 2;

}  // namespace

double ticksToQuarterNotes(std::int64_t ticks) {
  return static_cast<double>(ticks) / kTicksPerQuarter;
}

void MidiEventList::add(std::uint32_t timestamp, const unsigned char (&data)[4]) {
  vst2::VstMidiEvent& event = midi_[list_.numEvents];
  event = vst2::VstMidiEvent{};
  event.type = vst2::kVstMidiType;
  event.byteSize = sizeof(vst2::VstMidiEvent);
  event.deltaFrames = static_cast<vst2::VstInt32>(std::min<std::uint32_t>(timestamp, INT32_MAX));
  for (int i = 0; i < 4; ++i) event.midiData[i] = static_cast<char>(data[i]);
  list_.events[list_.numEvents++] = reinterpret_cast<vst2::VstEvent*>(&event);
}

void MidiEventList::deliver(vst2::AudioEffectX& instance) {
  instance.processEvents(reinterpret_cast<vst2::VstEvents*>(&list_));
  list_.numEvents = 0;
}

bool beginBlock(vst2::AudioEffectX* instance, vst2::VstTimeInfo* time, float* const* outputs,
                std::int32_t frames, const TransportState& transport) {
  if (outputs == nullptr || frames <= 0) return false;
  bool complete = true;
  for (int channel = 0; channel < kOutputCount; ++channel) {
    if (outputs[channel] == nullptr) {
      complete = false;
    } else {
      std::fill(outputs[channel], outputs[channel] + frames, 0.0f);
    }
  }
  if (instance == nullptr || !complete) return false;
  if (time != nullptr) {
    // A value the transport could not give this block is marked unknown, not left stale.
    if (transport.hasTicks) time->ppqPos = ticksToQuarterNotes(transport.ticks);
    if (transport.hasTempo) time->tempo = transport.tempo;
    time->flags = (time->flags & ~(vst2::kVstPpqPosValid | vst2::kVstTempoValid)) |
                  (transport.hasTicks ? vst2::kVstPpqPosValid : 0) |
                  (transport.hasTempo ? vst2::kVstTempoValid : 0);
  }
  return true;
}

}  // namespace ziv::aax
