// One plug-in instance driven the way a careless or hostile host would: created through the
// module's entry point, it hands over whatever the scenario chooses (block sizes, time info,
// events, opcodes) and checks every answer. Each process call is checked for non-finite or
// runaway output, writes past the block, heap allocations and host callbacks other than the
// time query; each check that fails is a finding on the scenario's scoreboard.
//
// Threads: `process`, `sendEvents` and `setTimeInfo` belong to the thread that plays the audio
// role; the other calls may come from any thread, as a host's would.
#pragma once

#include <string>
#include <vector>

#include "sdk/vst2/aeffect.h"
#include "tools/torture/scoreboard.h"

namespace torture {

// Output at or above this magnitude (+30 dBFS) counts as a blow-up.
constexpr float kOutputBound = 32.0f;
// The largest block any scenario asks for; the buffers hold it plus a guard zone.
constexpr int kMaxFrames = 16384;

class TortureInstance {
 public:
  TortureInstance(vst2::PluginEntryProc entry, Scoreboard& board);
  ~TortureInstance();
  TortureInstance(const TortureInstance&) = delete;
  TortureInstance& operator=(const TortureInstance&) = delete;

  bool valid() const { return effect_ != nullptr; }
  vst2::AEffect* effect() { return effect_; }

  vst2::VstIntPtr dispatch(vst2::VstInt32 opcode, vst2::VstInt32 index = 0, vst2::VstIntPtr value = 0,
                           void* ptr = nullptr, float opt = 0.0f);
  void setParameter(int index, float value);
  float getParameter(int index);
  // The index of the parameter with this name, -1 when there is none.
  int parameterIndex(const std::string& name);
  // effOpen, sample rate, block size, then switched on, as hosts start an instance.
  void start(float sampleRate, int blockSize);

  // The answer to audioMasterGetTime from now on; null makes the host answer 0.
  void setTimeInfo(const vst2::VstTimeInfo* time);
  void sendEvents(const std::vector<vst2::VstMidiEvent>& events, bool withNullEntry = false);
  // Renders `frames` (0..kMaxFrames) and checks the output; returns the block's peak.
  float process(int frames);

 private:
  static vst2::VstIntPtr VST_CALLBACK hostCallback(vst2::AEffect* effect, vst2::VstInt32 opcode,
                                                   vst2::VstInt32 index, vst2::VstIntPtr value, void* ptr,
                                                   float opt);
  vst2::VstIntPtr answer(vst2::VstInt32 opcode);
  void checkOutput(int frames, float& peak);

  Scoreboard& board_;
  vst2::AEffect* effect_ = nullptr;
  vst2::VstTimeInfo time_{};
  bool answerTime_ = true;
  std::vector<float> left_;
  std::vector<float> right_;
  std::vector<vst2::VstMidiEvent> events_;
  std::vector<vst2::VstIntPtr> eventList_;
};

}  // namespace torture
