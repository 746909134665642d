// A minimal in-process host for tests: creates a VstTest with a recording host callback and
// feeds it blocks and MIDI events the way a DAW does.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "plugin/vst_test.h"

namespace ziv::testing {

// One parameter callback of the plug-in, in the order they came.
struct HostCall {
  int opcode;
  int index;
  float value;
};

struct HostRecord {
  vst2::VstTimeInfo time{};
  bool answerTime = true;
  int automateCount = 0;
  int lastAutomatedIndex = -1;
  float lastAutomatedValue = 0.0f;
  int updateDisplayCount = 0;
  int ioChangedCount = 0;
  // Every audioMasterBeginEdit, audioMasterAutomate and audioMasterEndEdit.
  std::vector<HostCall> parameterCalls;
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
  // Renders `seconds` of audio in blocks of `block` frames and returns the left channel.
  std::vector<float> play(double seconds, int block = 256);

  // Sets a host parameter from its physical value (lo..hi of its current bounds).
  void setPhysical(int index, float physical);

  std::vector<float> left, right;

 private:
  HostRecord record_;
  std::unique_ptr<VstTest> plugin_;
  std::vector<vst2::VstMidiEvent> pending_;
};

// Fundamental frequency of a steady tone, from the rising zero crossings of the second half of x.
double fundamentalHz(const std::vector<float>& x, double sampleRate = 44100.0);

}  // namespace ziv::testing
