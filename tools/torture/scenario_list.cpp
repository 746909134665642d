// The scenario table and the helpers every scenario file shares.
#include <cmath>
#include <limits>

#include "tools/torture/scenario.h"

namespace torture {

const std::vector<Scenario>& allScenarios() {
  static const std::vector<Scenario> scenarios = {
      {"block-sizes", blockSizes},
      {"garbage-midi", garbageMidi},
      {"bad-time-info", badTimeInfo},
      {"bad-sample-rates", badSampleRates},
      {"filter-mode-flips", filterModeFlips},
      {"suspend-resume", suspendResumeStorm},
      {"automation-thread", automationThread},
      {"program-thread", programThread},
      {"instance-churn", instanceChurn},
      {"opcode-sweep", opcodeSweep},
  };
  return scenarios;
}

vst2::VstMidiEvent midiEvent(int offset, int status, int data1, int data2) {
  vst2::VstMidiEvent event{};
  event.type = vst2::kVstMidiType;
  event.byteSize = sizeof(event);
  event.deltaFrames = offset;
  event.midiData[0] = static_cast<char>(status);
  event.midiData[1] = static_cast<char>(data1);
  event.midiData[2] = static_cast<char>(data2);
  return event;
}

std::vector<vst2::VstMidiEvent> randomNotes(Random& random, int frames, int count) {
  std::vector<vst2::VstMidiEvent> events;
  for (int i = 0; i < count; ++i) {
    const int offset = frames > 0 ? random.between(0, frames - 1) : 0;
    const int status = random.chance(0.6f) ? 0x90 : 0x80;
    events.push_back(midiEvent(offset, status, random.between(24, 100), random.between(1, 127)));
  }
  return events;
}

float hostileValue(Random& random) {
  static const float values[] = {-1.0f,
                                 2.0f,
                                 -1e30f,
                                 1e30f,
                                 std::numeric_limits<float>::quiet_NaN(),
                                 std::numeric_limits<float>::infinity(),
                                 -std::numeric_limits<float>::infinity(),
                                 std::numeric_limits<float>::denorm_min(),
                                 std::numeric_limits<float>::max(),
                                 -0.0f};
  return random.pick(values);
}

}  // namespace torture
