// A minimal in-process host for tests: creates a VstTest with a recording host callback and
// feeds it blocks and MIDI events the way a DAW does.
#pragma once

#include <memory>
#include <vector>

#include "plugin/vst_test.h"

namespace ziv::testing {

struct HostRecord {
  vst2::VstTimeInfo time{};
  bool answerTime = true;
  int automateCount = 0;
  int lastAutomatedIndex = -1;
  float lastAutomatedValue = 0.0f;
  int updateDisplayCount = 0;
  int ioChangedCount = 0;
};

class TestHost {
 public:
  TestHost();
  ~TestHost();

  VstTest& plugin() { return *plugin_; }
  SynthEngine& engine() { return plugin_->engine(); }
  HostRecord& record() { return record_; }

  // Queues one MIDI message at `offset` frames into the next block.
  void midi(int offset, int status, int data1, int data2);
  void noteOn(int offset, int note, int velocity = 100) { midi(offset, 0x90, note, velocity); }
  void noteOff(int offset, int note) { midi(offset, 0x80, note, 0); }
  void controller(int offset, int number, int value) { midi(offset, 0xB0, number, value); }
  // Sends the queued messages with processEvents, then renders `frames` frames.
  void process(int frames);

  std::vector<float> left, right;

 private:
  HostRecord record_;
  std::unique_ptr<VstTest> plugin_;
  std::vector<vst2::VstMidiEvent> pending_;
};

}  // namespace ziv::testing
