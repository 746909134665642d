// Drives one VST 2.4 plug-in instance the way a DAW does: creates it through the entry point with
// a host callback, opens it, configures rate and block size, switches it on, feeds it MIDI events
// and asks for audio, and takes it down again in the reverse order. The driver answers the
// plug-in's callbacks (version, time info, automation notices) and owns the audio buffers.
// Apart from the module loader it is platform-neutral.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sdk/vst2/aeffect.h"
#include "tools/host/plugin_module.h"

namespace vrnhost {

// What the plug-in asked of the host, for diagnostics and tests.
struct HostCallbackCounts {
  int getTime = 0;
  int automate = 0;
  int beginEdit = 0;
  int endEdit = 0;
  int updateDisplay = 0;
  int ioChanged = 0;
};

// One host callback of the kinds an editor causes, in the order the plug-in made them.
struct HostCallbackRecord {
  vst2::VstInt32 opcode = 0;  // audioMasterAutomate, BeginEdit, EndEdit or UpdateDisplay
  vst2::VstInt32 index = 0;
  float value = 0.0f;
};

class PluginDriver {
 public:
  static constexpr vst2::VstInt32 kHostVstVersion = 2400;

  PluginDriver() = default;
  ~PluginDriver();
  PluginDriver(const PluginDriver&) = delete;
  PluginDriver& operator=(const PluginDriver&) = delete;

  // Loads the module and creates the instance; checks the AEffect is a usable instrument.
  bool load(const std::string& path, std::string& error);

  // effOpen, effSetSampleRate, effSetBlockSize; allocates buffers for maxBlockSize frames.
  void open(int sampleRate, int maxBlockSize);
  // effMainsChanged(1) then effStartProcess, as hosts do before the first block.
  void start();
  // effStopProcess then effMainsChanged(0).
  void stop();
  // effClose; the AEffect must not be used afterwards. Also done by the destructor.
  void close();

  int parameterCount() const { return effect_ ? effect_->numParams : 0; }
  int programCount() const { return effect_ ? effect_->numPrograms : 0; }
  int outputCount() const { return effect_ ? effect_->numOutputs : 0; }
  std::string parameterName(int index);
  std::string parameterDisplay(int index);
  void setParameter(int index, float value);
  float parameterValue(int index) { return effect_->getParameter(effect_, index); }
  // Selects a program inside effBeginSetProgram / effEndSetProgram, as hosts do.
  void setProgram(int index);
  std::string effectName();
  // Which build of its audio code a Vrn ZIV plug-in runs ("baseline" or "AVX2/FMA"); empty for
  // a plug-in that does not say.
  std::string codePath();

  // Programs and state, as a DAW moves them for program and bank files.
  int uniqueId() const { return effect_ ? effect_->uniqueID : 0; }
  bool keepsChunks() const { return effect_ && (effect_->flags & vst2::effFlagsProgramChunks) != 0; }
  std::string programName(int index);  // effGetProgramNameIndexed
  int currentProgram();                // effGetProgram
  std::string currentProgramName();    // effGetProgramName
  void setCurrentProgramName(const std::string& name);
  void beginSetProgram();
  void endSetProgram();
  // effGetChunk: copies the plug-in's bytes, which stay valid only until its next call.
  std::vector<std::uint8_t> chunk(bool program);
  // effSetChunk with the bytes as given.
  void setChunk(bool program, const std::uint8_t* data, std::size_t size);

  // The time info handed to the plug-in when it calls audioMasterGetTime during the next calls.
  void setTimeInfo(const vst2::VstTimeInfo& info) { timeInfo_ = info; }

  // effProcessEvents with these events; skipped when there are none, as most hosts do.
  void sendEvents(const std::vector<vst2::VstMidiEvent>& events);
  // processReplacing into the driver's buffers; frames may be 0.
  void processReplacing(int frames);
  const float* output(int channel) const { return outputs_[channel].data(); }

  const HostCallbackCounts& callbackCounts() const { return counts_; }
  // With recording on, the driver keeps every automate, beginEdit, endEdit and updateDisplay call
  // until taken. Only for hosts that make every plug-in call from one thread (the editor mode):
  // the list is not locked.
  void recordCallbacks(bool on) { recording_ = on; }
  std::vector<HostCallbackRecord> takeCallbackRecords();

  // The editor (user-interface thread). hasEditor: effFlagsHasEditor. editorRect: effEditGetRect,
  // false when the plug-in gives no rectangle. openEditor: effEditOpen in the native parent window.
  bool hasEditor() const { return effect_ && (effect_->flags & vst2::effFlagsHasEditor) != 0; }
  bool editorRect(vst2::ERect& rect);
  bool openEditor(void* parentWindow);
  void closeEditor();
  void editorIdle();

 private:
  static vst2::VstIntPtr VST_CALLBACK hostCallback(vst2::AEffect* effect, vst2::VstInt32 opcode,
                                                   vst2::VstInt32 index, vst2::VstIntPtr value, void* ptr,
                                                   float opt);
  vst2::VstIntPtr answer(vst2::VstInt32 opcode, vst2::VstInt32 index, vst2::VstIntPtr value, void* ptr,
                         float opt);
  vst2::VstIntPtr dispatch(vst2::VstInt32 opcode, vst2::VstInt32 index = 0, vst2::VstIntPtr value = 0,
                           void* ptr = nullptr, float opt = 0.0f);

  PluginModule module_;
  vst2::AEffect* effect_ = nullptr;
  bool opened_ = false;
  bool running_ = false;
  int sampleRate_ = 44100;
  int maxBlockSize_ = 0;
  vst2::VstTimeInfo timeInfo_{};
  HostCallbackCounts counts_;
  bool recording_ = false;
  std::vector<HostCallbackRecord> records_;
  std::vector<std::vector<float>> inputs_;
  std::vector<std::vector<float>> outputs_;
  std::vector<float*> inputPointers_;
  std::vector<float*> outputPointers_;
  // VstEvents declares room for two pointers; larger lists need a bigger, pointer-aligned block.
  std::vector<vst2::VstIntPtr> eventsStorage_;
  std::vector<vst2::VstMidiEvent> pendingEvents_;
};

}  // namespace vrnhost
