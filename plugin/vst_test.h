// The plug-in instance that a VST 2.4 host creates: the synth engine, the bank of programs,
// and the translation of the host's MIDI events into engine calls at their place in the
// audio block.
//
// Threads: `processReplacing` and `processEvents` run on the host's audio thread and take no
// locks. Program, name and parameter operations come from the host's user-interface thread
// (also while audio runs); they write the engine's atomic values, and the current program
// index is atomic, so neither side waits for the other.
#pragma once

#include <array>
#include <atomic>
#include <bitset>
#include <memory>

#include "plugin/midi_event_queue.h"
#include "plugin/vst_test_module.h"
#include "programs/program_record.h"

namespace ziv {

class VstTest : public VstTestModule {
 public:
  static constexpr int kProgramCount = 100;
  // Sent by a host through vendorSpecific to switch MIDI program changes off for good.
  static constexpr vst2::VstInt32 kNoProgramChangeCode = 0x73486921;
  static constexpr vst2::VstInt32 kVersion = 0x0002000C;

  VstTest(vst2::AudioMasterCallback audioMaster, std::unique_ptr<SynthEngine> engine);

  // Host operations.
  void suspend() override;
  void resume() override;
  void processReplacing(float** inputs, float** outputs, vst2::VstInt32 frames) override;
  vst2::VstInt32 processEvents(vst2::VstEvents* events) override;

  void setProgram(vst2::VstInt32 program) override;
  vst2::VstInt32 getProgram() override { return currentProgram_.load(std::memory_order_relaxed); }
  void setProgramName(char* name) override;
  void getProgramName(char* name) override;
  bool getProgramNameIndexed(vst2::VstInt32 category, vst2::VstInt32 index, char* text) override;
  bool beginSetProgram() override;
  bool endSetProgram() override;

  bool getEffectName(char* name) override;
  bool getProductString(char* text) override;
  bool getVendorString(char* text) override;
  vst2::VstInt32 getVendorVersion() override { return 0; }
  vst2::VstInt32 canDo(const char* text) override;
  vst2::VstInt32 getGetTailSize() override;
  vst2::VstIntPtr vendorSpecific(vst2::VstInt32 lArg, vst2::VstIntPtr lArg2, void* ptrArg, float floatArg) override;

  // Host automation begin/end around a user's gesture; -1 is no parameter.
  bool beginEdit(vst2::VstInt32 index);
  bool endEdit(vst2::VstInt32 index);

  const ProgramRecord& program(int index) const { return programs_[index]; }

 private:
  void onParameterChanged(int index, float value, bool fromEditor) override;
  void writeProgramToEngine(const ProgramRecord& record);
  void dispatch(const vst2::VstMidiEvent& event);
  void releaseSustainedNotes();

  std::array<ProgramRecord, kProgramCount> programs_;
  ProgramRecord initProgram_;
  std::atomic<int> currentProgram_{0};

  MidiEventQueue eventQueue_;
  std::bitset<128> heldBySustain_;
  bool sustainDown_ = false;
  std::atomic<bool> noProgramChange_{false};
  std::atomic<bool> inSetProgram_{false};
  double lastHostPpq_ = 0.0;
  double blockPpq_ = 0.0;
};

}  // namespace ziv
