// The plug-in instance that a VST 2.4 host creates: the synth engine, the bank of programs,
// and the translation of the host's MIDI events into engine calls at their place in the
// audio block.
//
// The bank starts as the factory bank, sorted by category; the chunk calls and the program and
// bank files go through the loaders and writers of programs/.
//
// Threads: `processReplacing` and `processEvents` run on the host's audio thread and take no
// locks; inside them the only host callback is the time query (display and latency notices wait
// for the next host call made outside processing). Program, name, parameter, chunk and file
// operations come from the host's user-interface thread (also while audio runs); they write the
// engine's atomic values, the current program index is atomic, and program records have a fixed
// size, so neither side waits for the other and nothing the audio thread touches is ever
// reallocated. Program values are shared floats that both sides may write (a MIDI program change
// or learned controller on the audio thread, a load on the user-interface thread); the last write
// wins.
#pragma once

#include <array>
#include <atomic>
#include <bitset>
#include <memory>
#include <string>

#include "midi/midi_learn.h"
#include "plugin/midi_event_queue.h"
#include "plugin/plugin_editor.h"
#include "plugin/vst_test_module.h"
#include "programs/byte_order.h"
#include "programs/program_bank.h"
#include "programs/program_target.h"

namespace ziv {

class VstTest : public VstTestModule, private ProgramTarget {
 public:
  static constexpr int kProgramCount = kBankProgramCount;
  // Sent by a host through vendorSpecific to switch MIDI program changes off for good.
  static constexpr vst2::VstInt32 kNoProgramChangeCode = 0x73486921;
  // Asked by a host through vendorSpecific: the answer is 1 when the audio kernels run their
  // baseline code, 2 when they run the AVX2/FMA code (engine/isa.h).
  static constexpr vst2::VstInt32 kCodePathCode = 0x7a495341;
  static constexpr vst2::VstInt32 kVersion = 0x0002000C;

  VstTest(vst2::AudioMasterCallback audioMaster, std::unique_ptr<SynthEngine> engine);
  // Destroys the editor (closing its window) while the instance is still whole.
  ~VstTest() override;

  // Gives the instance its editor, which it owns from then on and reports to the host
  // (effFlagsHasEditor). Called once, by the entry point, before the host sees the instance.
  void attachEditor(std::unique_ptr<PluginEditor> editor);

  // Host operations.
  void suspend() override;
  void resume() override;
  void processReplacing(float** inputs, float** outputs, vst2::VstInt32 frames) override;
  vst2::VstInt32 processEvents(vst2::VstEvents* events) override;
  // Keeps the last usable rate (user-interface thread, or the audio thread between blocks).
  void setSampleRate(float sampleRate) override;
  // Sends the callbacks held back during processing, then handles the opcode (any thread).
  vst2::VstIntPtr dispatcher(vst2::VstInt32 opcode, vst2::VstInt32 index, vst2::VstIntPtr value, void* ptr,
                             float opt) override;

  void setProgram(vst2::VstInt32 program) override;
  vst2::VstInt32 getProgram() override { return currentProgram_.load(std::memory_order_relaxed); }
  void setProgramName(char* name) override;
  void getProgramName(char* name) override;
  bool getProgramNameIndexed(vst2::VstInt32 category, vst2::VstInt32 index, char* text) override;
  bool beginSetProgram() override;
  bool endSetProgram() override;

  // The host's state chunk (user-interface thread). getChunk hands out the program chunk of the
  // current program (isPreset) or the bank chunk; the bytes stay valid until the next getChunk.
  // setChunk loads the same forms, whatever their condition, and always answers 1.
  vst2::VstInt32 getChunk(void** data, bool isPreset) override;
  vst2::VstInt32 setChunk(void* data, vst2::VstInt32 byteSize, bool isPreset) override;

  bool getEffectName(char* name) override;
  bool getProductString(char* text) override;
  bool getVendorString(char* text) override;
  vst2::VstInt32 getVendorVersion() override { return 0; }
  vst2::VstInt32 canDo(const char* text) override;
  vst2::VstInt32 getGetTailSize() override;
  vst2::VstIntPtr vendorSpecific(vst2::VstInt32 lArg, vst2::VstIntPtr lArg2, void* ptrArg,
                                 float floatArg) override;

  // Host automation begin/end around a user's gesture; -1 is no parameter.
  bool beginEdit(vst2::VstInt32 index);
  bool endEdit(vst2::VstInt32 index);

  // Bank operations of the program menu (user-interface thread). Initialize Program copies the
  // template (the factory "Init Patch") into the current program, Initialize Bank into all.
  void initProgram();
  void initBank();

  // Byte forms (user-interface thread); the index -1 means the current program.
  void makeProgramChunk(int programIndex, Bytes& out) const;
  void makeBankChunk(Bytes& out) const;
  std::string loadProgramChunk(const std::uint8_t* data, std::size_t size);
  std::string loadBankChunk(const std::uint8_t* data, std::size_t size);
  std::string loadProgramImage(const std::uint8_t* data, std::size_t size);
  std::string loadBankImage(const std::uint8_t* data, std::size_t size);

  // Files (user-interface thread); results are messages, empty for success.
  std::string loadProgramFile(const std::string& path);
  std::string loadBankFile(const std::string& path);
  std::string saveProgramFile(const std::string& path) const;
  std::string saveBankFile(const std::string& path) const;

  // MIDI learn: what the learn menu starts, cancels, removes and shows; midi/midi_learn.h says
  // which thread may call each operation.
  MidiLearn& midiLearn() { return midiLearn_; }

  const ProgramRecord& program(int index) const { return programs_[index]; }
  const ProgramRecord& initialProgram() const { return initProgram_; }
  bool inSetProgram() const { return inSetProgram_; }
  // The peak magnitude of the last rendered block on output 0 (left) or 1 (right), for the
  // editor's level lights. Published by the audio thread with relaxed stores; any thread reads.
  float outputLevel(int channel) const {
    return channel == 0 || channel == 1 ? outputLevel_[channel].load(std::memory_order_relaxed) : 0.0f;
  }

 private:
  // ProgramTarget: what the loaders drive.
  int parameterCount() const override { return kHostParamCount; }
  int currentProgramIndex() const override { return currentProgram_.load(std::memory_order_relaxed); }
  void selectProgram(int index) override { setProgram(index); }
  void renameProgram(const char* name) override;
  void loadValue(int index, float value) override { setParameter(index, value); }
  int loadVersion() override { return engine().loadVersion; }
  void setLoadVersion(int version) override { engine().loadVersion = version; }
  void beginProgramLoad() override { beginSetProgram(); }
  void endProgramLoad() override { endSetProgram(); }

  void onParameterChanged(int index, float value, bool fromEditor) override;
  void writeProgramToEngine(const ProgramRecord& record);
  void dispatch(const vst2::VstMidiEvent& event);
  void releaseSustainedNotes();
  // Host notices that hosts do not take from their audio thread: made at once outside processing,
  // held back until the next host call made outside it when requested inside. Any thread.
  void requestDisplayUpdate();
  void requestLatencyRefresh();
  void sendDeferredCallbacks();
  // Brings the reported latency up to date and tells the host when it moved (see vst_test.cpp).
  void refreshLatency();
  // Program and name changes show on the editor's next frame (unless a host's set-program
  // bracket is open: its end redraws once).
  void redrawEditor();

  ProgramList programs_;
  ProgramRecord initProgram_;
  std::atomic<int> currentProgram_{0};
  // The bytes last handed out by getChunk; reserved for a whole bank so it never reallocates.
  Bytes chunkBuffer_;

  MidiEventQueue eventQueue_;
  MidiLearn midiLearn_;
  std::bitset<128> heldBySustain_;
  bool sustainDown_ = false;
  std::atomic<bool> noProgramChange_{false};
  std::atomic<bool> inSetProgram_{false};
  double lastHostPpq_ = 0.0;  // the host's song position at the last block's start
  double blockPpq_ = 0.0;     // the song position at the last block's end
  double tempo_;              // the host's last usable tempo
  // Up while processReplacing or processEvents runs (hosts run audio on pools of threads, so
  // this says "inside processing", not "on the audio thread").
  std::atomic<bool> processing_{false};
  std::atomic<bool> displayPending_{false};
  std::atomic<bool> latencyPending_{false};
  // Taken by the thread sending the held-back callbacks, so two threads never send at once.
  std::atomic_flag sending_ = ATOMIC_FLAG_INIT;
  std::array<std::atomic<float>, 2> outputLevel_{};
  bool announceLatency_ = false;          // false while constructing: the host is not listening yet
  PluginEditor* pluginEditor_ = nullptr;  // the SDK base owns it; null where there is no editor
};

}  // namespace ziv
