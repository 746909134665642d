// The host's form of MIDI input: short (at most 3-byte) channel messages with a time stamp, first
// in seconds as the event sources produce them, then in sample frames as a render job needs them.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace vrnhost {

using MidiBytes = std::array<std::uint8_t, 3>;

struct TimedMidi {
  double seconds = 0.0;
  MidiBytes bytes{};
};

struct FrameMidi {
  std::int64_t frame = 0;
  MidiBytes bytes{};
};

// What an event source yields: messages in time order, and the tempo the material was written
// at (0 when it states none) so that the host transport can run at the same speed.
struct MidiSequence {
  std::vector<TimedMidi> messages;
  double tempo = 0.0;
};

// Converts to frame positions (rounded to the nearest frame), keeping the order of equal times.
std::vector<FrameMidi> toFrames(const std::vector<TimedMidi>& messages, int sampleRate);

// Number of frames to render: up to the last message plus a tail in which sounds die away, and
// always long enough that the last message is delivered.
std::int64_t renderLength(const std::vector<FrameMidi>& events, std::int64_t tailFrames);

}  // namespace vrnhost
