// Conversion of time-stamped messages to frame positions.
#include "tools/host/midi_events.h"

#include <algorithm>
#include <cmath>

namespace vrnhost {

std::vector<FrameMidi> toFrames(const std::vector<TimedMidi>& messages, int sampleRate) {
  std::vector<FrameMidi> events;
  events.reserve(messages.size());
  for (const TimedMidi& message : messages) {
    auto frame = static_cast<std::int64_t>(std::llround(std::max(0.0, message.seconds) * sampleRate));
    events.push_back({frame, message.bytes});
  }
  // Sources deliver sorted lists; a stable sort keeps note-off-before-note-on at equal times.
  std::stable_sort(events.begin(), events.end(),
                   [](const FrameMidi& a, const FrameMidi& b) { return a.frame < b.frame; });
  return events;
}

std::int64_t renderLength(const std::vector<FrameMidi>& events, std::int64_t tailFrames) {
  std::int64_t last = events.empty() ? 0 : events.back().frame;
  return std::max(last + tailFrames, events.empty() ? tailFrames : last + 1);
}

}  // namespace vrnhost
