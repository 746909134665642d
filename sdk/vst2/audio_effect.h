// Base classes for a VST 2.4 plug-in: `AudioEffect` owns the `AEffect` that the host sees and
// turns the host's calls into virtual operations; `AudioEffectX` adds the 2.x operations
// (events, names, categories, chunks, set-program brackets) and the host requests a plug-in
// makes. A plug-in derives from `AudioEffectX` and overrides what it supports; every default
// answers as a plug-in that does not support the operation.
//
// Threads: the host calls `processReplacing` and `processEvents` on its audio thread and
// everything else from its user-interface or main thread; the base adds no locking. Host
// requests (`getTimeInfo`, `setParameterAutomated`, `updateDisplay`, ...) may be made from the
// thread the host documents for each; `getTimeInfo` from the audio thread.
//
// Robustness: hosts pass null pointers, out-of-range indices and odd sizes. The dispatcher
// checks pointers before handing them on; subclasses check indices.
#pragma once

#include <cstddef>

#include "sdk/vst2/aeffect.h"

namespace vst2 {

// The editor interface a plug-in may register; the host opens it in a window of its own.
class AEffEditor {
 public:
  virtual ~AEffEditor() = default;
  virtual bool getRect(ERect** rect) {
    *rect = nullptr;
    return false;
  }
  virtual bool open(void* parentWindow) {
    (void)parentWindow;
    return false;
  }
  virtual void close() {}
  virtual void idle() {}
};

class AudioEffect {
 public:
  AudioEffect(AudioMasterCallback audioMaster, VstInt32 numPrograms, VstInt32 numParams);
  virtual ~AudioEffect();
  AudioEffect(const AudioEffect&) = delete;
  AudioEffect& operator=(const AudioEffect&) = delete;

  AEffect* getAeffect() { return &cEffect_; }
  AudioMasterCallback audioMaster() const { return audioMaster_; }

  // Host operations.
  virtual void open() {}
  virtual void close() {}
  virtual void suspend() {}
  virtual void resume() {}
  virtual void setSampleRate(float sampleRate) { sampleRate_ = sampleRate; }
  virtual void setBlockSize(VstInt32 blockSize) { blockSize_ = blockSize; }
  virtual void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) = 0;
  virtual void setParameter(VstInt32 index, float value) {
    (void)index;
    (void)value;
  }
  virtual float getParameter(VstInt32 index) {
    (void)index;
    return 0.0f;
  }
  virtual void setProgram(VstInt32 program) { curProgram_ = program; }
  virtual VstInt32 getProgram() { return curProgram_; }
  virtual void setProgramName(char* name) { (void)name; }
  virtual void getProgramName(char* name) {
    if (name != nullptr) *name = '\0';
  }
  virtual void getParameterLabel(VstInt32 index, char* label);
  virtual void getParameterDisplay(VstInt32 index, char* text);
  virtual void getParameterName(VstInt32 index, char* text);
  virtual VstInt32 getChunk(void** data, bool isPreset) {
    (void)data;
    (void)isPreset;
    return 0;
  }
  virtual VstInt32 setChunk(void* data, VstInt32 byteSize, bool isPreset) {
    (void)data;
    (void)byteSize;
    (void)isPreset;
    return 0;
  }

  // The opcode dispatcher; AudioEffectX extends it.
  virtual VstIntPtr dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt);

  // Properties, usually set in the constructor.
  void setUniqueID(VstInt32 id) { cEffect_.uniqueID = id; }
  void setNumInputs(VstInt32 inputs) { cEffect_.numInputs = inputs; }
  void setNumOutputs(VstInt32 outputs) { cEffect_.numOutputs = outputs; }
  void canProcessReplacing(bool state = true) { setFlag(effFlagsCanReplacing, state); }
  void programsAreChunks(bool state = true) { setFlag(effFlagsProgramChunks, state); }
  void setInitialDelay(VstInt32 delay) { cEffect_.initialDelay = delay; }
  void setEditor(AEffEditor* editor);
  AEffEditor* getEditor() const { return editor_; }

  float getSampleRate() const { return sampleRate_; }
  VstInt32 getBlockSize() const { return blockSize_; }

  // Host requests.
  VstInt32 getMasterVersion();
  virtual void setParameterAutomated(VstInt32 index, float value);

 protected:
  void setFlag(VstInt32 flag, bool state);
  VstIntPtr callHost(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr,
                     float opt = 0.0f);

  AudioMasterCallback audioMaster_;
  AEffEditor* editor_ = nullptr;  // owned
  float sampleRate_ = 44100.0f;
  VstInt32 blockSize_ = 1024;
  VstInt32 numPrograms_;
  VstInt32 numParams_;
  VstInt32 curProgram_ = 0;
  AEffect cEffect_;
};

class AudioEffectX : public AudioEffect {
 public:
  AudioEffectX(AudioMasterCallback audioMaster, VstInt32 numPrograms, VstInt32 numParams);

  // 2.x host operations.
  virtual VstInt32 processEvents(VstEvents* events) {
    (void)events;
    return 0;
  }
  virtual bool canParameterBeAutomated(VstInt32 index) {
    (void)index;
    return true;
  }
  virtual bool getProgramNameIndexed(VstInt32 category, VstInt32 index, char* text) {
    (void)category;
    (void)index;
    (void)text;
    return false;
  }
  virtual bool getOutputProperties(VstInt32 index, VstPinProperties* properties);
  virtual VstPlugCategory getPlugCategory();
  virtual bool getEffectName(char* name) {
    (void)name;
    return false;
  }
  virtual bool getVendorString(char* text) {
    (void)text;
    return false;
  }
  virtual bool getProductString(char* text) {
    (void)text;
    return false;
  }
  virtual VstInt32 getVendorVersion() { return 0; }
  virtual VstIntPtr vendorSpecific(VstInt32 lArg, VstIntPtr lArg2, void* ptrArg, float floatArg) {
    (void)lArg;
    (void)lArg2;
    (void)ptrArg;
    (void)floatArg;
    return 0;
  }
  virtual VstInt32 canDo(const char* text) {
    (void)text;
    return 0;
  }
  virtual VstInt32 getGetTailSize() { return 0; }
  // The MIDI program in force on `channel`, described into `program` (a MidiProgramName); -1
  // says the plug-in names no MIDI programs, and hosts then ask no further.
  virtual VstInt32 getCurrentMidiProgram(VstInt32 channel, void* program) {
    (void)channel;
    (void)program;
    return -1;
  }
  virtual VstInt32 getVstVersion() { return 2400; }
  virtual bool beginSetProgram() { return false; }
  virtual bool endSetProgram() { return false; }
  virtual VstInt32 startProcess() { return 0; }
  virtual VstInt32 stopProcess() { return 0; }

  VstIntPtr dispatcher(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt) override;

  // Properties.
  void isSynth(bool state = true) { setFlag(effFlagsIsSynth, state); }
  void noTail(bool state = true) { setFlag(effFlagsNoSoundInStop, state); }

  // Host requests.
  VstTimeInfo* getTimeInfo(VstInt32 filter);
  bool ioChanged();
  bool updateDisplay();
  bool beginEdit(VstInt32 index);
  bool endEdit(VstInt32 index);
};

// Copies at most `capacity - 1` characters of `source` and terminates; a null destination or
// zero capacity is ignored, a null source writes the empty string.
void copyString(char* destination, const char* source, std::size_t capacity);

}  // namespace vst2
