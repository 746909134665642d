// The VST 2.4 binary interface: the structures, opcodes and flags that a host and a plug-in
// exchange across the module boundary. Written from the publicly documented ABI; every layout
// here is fixed by existing hosts and must not change. Names follow the established ABI names
// so that host documentation can be read against this file.
//
// Only what Vrn ZIV and its headless host use is declared; deprecated opcodes keep their
// numbers as gaps in the enumerations.
#pragma once

#include <cstdint>

#if defined(_WIN32)
#define VST_CALLBACK __cdecl
#define VST_EXPORT extern "C" __declspec(dllexport)
#else
#define VST_CALLBACK
#define VST_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace vst2 {

using VstInt32 = std::int32_t;
using VstIntPtr = std::intptr_t;

// Builds the big-endian four-character codes used for magic words and unique IDs.
constexpr VstInt32 fourCharCode(char a, char b, char c, char d) {
  return static_cast<VstInt32>((static_cast<std::uint32_t>(static_cast<unsigned char>(a)) << 24) |
                               (static_cast<std::uint32_t>(static_cast<unsigned char>(b)) << 16) |
                               (static_cast<std::uint32_t>(static_cast<unsigned char>(c)) << 8) |
                               static_cast<std::uint32_t>(static_cast<unsigned char>(d)));
}

constexpr VstInt32 kEffectMagic = fourCharCode('V', 's', 't', 'P');

struct AEffect;

using AudioMasterCallback = VstIntPtr(VST_CALLBACK*)(AEffect* effect, VstInt32 opcode, VstInt32 index,
                                                      VstIntPtr value, void* ptr, float opt);
using AEffectDispatcherProc = VstIntPtr(VST_CALLBACK*)(AEffect* effect, VstInt32 opcode, VstInt32 index,
                                                        VstIntPtr value, void* ptr, float opt);
using AEffectProcessProc = void(VST_CALLBACK*)(AEffect* effect, float** inputs, float** outputs,
                                               VstInt32 sampleFrames);
using AEffectProcessDoubleProc = void(VST_CALLBACK*)(AEffect* effect, double** inputs, double** outputs,
                                                     VstInt32 sampleFrames);
using AEffectSetParameterProc = void(VST_CALLBACK*)(AEffect* effect, VstInt32 index, float parameter);
using AEffectGetParameterProc = float(VST_CALLBACK*)(AEffect* effect, VstInt32 index);

// The plug-in's description of itself, handed to the host by the entry point.
struct AEffect {
  VstInt32 magic;  // kEffectMagic
  AEffectDispatcherProc dispatcher;
  AEffectProcessProc process;  // deprecated accumulating process; kept for layout
  AEffectSetParameterProc setParameter;
  AEffectGetParameterProc getParameter;
  VstInt32 numPrograms;
  VstInt32 numParams;
  VstInt32 numInputs;
  VstInt32 numOutputs;
  VstInt32 flags;
  VstIntPtr resvd1;
  VstIntPtr resvd2;
  VstInt32 initialDelay;  // latency in samples
  VstInt32 realQualities;
  VstInt32 offQualities;
  float ioRatio;
  void* object;  // the plug-in's own instance
  void* user;    // free for the host
  VstInt32 uniqueID;
  VstInt32 version;
  AEffectProcessProc processReplacing;
  AEffectProcessDoubleProc processDoubleReplacing;
  char future[56];
};

enum VstAEffectFlags : VstInt32 {
  effFlagsHasEditor = 1 << 0,
  effFlagsCanReplacing = 1 << 4,
  effFlagsProgramChunks = 1 << 5,
  effFlagsIsSynth = 1 << 8,
  effFlagsNoSoundInStop = 1 << 9,
  effFlagsCanDoubleReplacing = 1 << 12,
};

// Host → plug-in operations, passed to AEffect::dispatcher.
enum AEffectOpcodes : VstInt32 {
  effOpen = 0,
  effClose = 1,
  effSetProgram = 2,
  effGetProgram = 3,
  effSetProgramName = 4,
  effGetProgramName = 5,
  effGetParamLabel = 6,
  effGetParamDisplay = 7,
  effGetParamName = 8,
  effSetSampleRate = 10,
  effSetBlockSize = 11,
  effMainsChanged = 12,
  effEditGetRect = 13,
  effEditOpen = 14,
  effEditClose = 15,
  effEditIdle = 19,
  effGetChunk = 23,
  effSetChunk = 24,
  effProcessEvents = 25,
  effCanBeAutomated = 26,
  effString2Parameter = 27,
  effGetProgramNameIndexed = 29,
  effGetInputProperties = 33,
  effGetOutputProperties = 34,
  effGetPlugCategory = 35,
  effOfflineNotify = 38,
  effOfflinePrepare = 39,
  effOfflineRun = 40,
  effProcessVarIo = 41,
  effSetSpeakerArrangement = 42,
  effSetBypass = 44,
  effGetEffectName = 45,
  effGetVendorString = 47,
  effGetProductString = 48,
  effGetVendorVersion = 49,
  effVendorSpecific = 50,
  effCanDo = 51,
  effGetTailSize = 52,
  effGetParameterProperties = 56,
  effGetVstVersion = 58,
  effEditKeyDown = 59,
  effEditKeyUp = 60,
  effSetEditKnobMode = 61,
  effGetMidiProgramName = 62,
  effGetCurrentMidiProgram = 63,
  effGetMidiProgramCategory = 64,
  effHasMidiProgramsChanged = 65,
  effGetMidiKeyName = 66,
  effBeginSetProgram = 67,
  effEndSetProgram = 68,
  effGetSpeakerArrangement = 69,
  effShellGetNextPlugin = 70,
  effStartProcess = 71,
  effStopProcess = 72,
  effSetTotalSampleToProcess = 73,
  effSetPanLaw = 74,
  effBeginLoadBank = 75,
  effBeginLoadProgram = 76,
  effSetProcessPrecision = 77,
  effGetNumMidiInputChannels = 78,
  effGetNumMidiOutputChannels = 79,
};

// Plug-in → host requests, passed to the host's AudioMasterCallback.
enum AudioMasterOpcodes : VstInt32 {
  audioMasterAutomate = 0,
  audioMasterVersion = 1,
  audioMasterCurrentId = 2,
  audioMasterIdle = 3,
  audioMasterGetTime = 7,
  audioMasterProcessEvents = 8,
  audioMasterIOChanged = 13,
  audioMasterSizeWindow = 15,
  audioMasterGetSampleRate = 16,
  audioMasterGetBlockSize = 17,
  audioMasterGetInputLatency = 18,
  audioMasterGetOutputLatency = 19,
  audioMasterGetCurrentProcessLevel = 23,
  audioMasterGetAutomationState = 24,
  audioMasterGetVendorString = 32,
  audioMasterGetProductString = 33,
  audioMasterGetVendorVersion = 34,
  audioMasterVendorSpecific = 35,
  audioMasterCanDo = 37,
  audioMasterGetLanguage = 38,
  audioMasterGetDirectory = 41,
  audioMasterUpdateDisplay = 42,
  audioMasterBeginEdit = 43,
  audioMasterEndEdit = 44,
  audioMasterOpenFileSelector = 45,
  audioMasterCloseFileSelector = 46,
};

enum VstPlugCategory : VstInt32 {
  kPlugCategUnknown = 0,
  kPlugCategEffect = 1,
  kPlugCategSynth = 2,
};

// String buffer sizes that hosts allocate (plus a terminator); longer texts overrun them.
constexpr int kVstMaxProgNameLen = 24;
constexpr int kVstMaxParamStrLen = 8;
constexpr int kVstMaxVendorStrLen = 64;
constexpr int kVstMaxProductStrLen = 64;
constexpr int kVstMaxEffectNameLen = 32;
constexpr int kVstMaxLabelLen = 64;
constexpr int kVstMaxShortLabelLen = 8;

enum VstEventTypes : VstInt32 {
  kVstMidiType = 1,
  kVstSysExType = 6,
};

// A generic event; every event starts with these fields and is byteSize long.
struct VstEvent {
  VstInt32 type;
  VstInt32 byteSize;
  VstInt32 deltaFrames;  // offset in samples from the start of the current block
  VstInt32 flags;
  char data[16];
};

struct VstMidiEvent {
  VstInt32 type;  // kVstMidiType
  VstInt32 byteSize;
  VstInt32 deltaFrames;
  VstInt32 flags;
  VstInt32 noteLength;
  VstInt32 noteOffset;
  char midiData[4];  // status and up to two data bytes, the fourth is zero
  char detune;
  char noteOffVelocity;
  char reserved1;
  char reserved2;
};

// A block's events. The array is declared with two entries but holds numEvents pointers.
struct VstEvents {
  VstInt32 numEvents;
  VstIntPtr reserved;
  VstEvent* events[2];
};

enum VstTimeInfoFlags : VstInt32 {
  kVstTransportChanged = 1,
  kVstTransportPlaying = 1 << 1,
  kVstTransportCycleActive = 1 << 2,
  kVstTransportRecording = 1 << 3,
  kVstAutomationWriting = 1 << 6,
  kVstAutomationReading = 1 << 7,
  kVstNanosValid = 1 << 8,
  kVstPpqPosValid = 1 << 9,
  kVstTempoValid = 1 << 10,
  kVstBarsValid = 1 << 11,
  kVstCyclePosValid = 1 << 12,
  kVstTimeSigValid = 1 << 13,
  kVstSmpteValid = 1 << 14,
  kVstClockValid = 1 << 15,
};

struct VstTimeInfo {
  double samplePos;
  double sampleRate;
  double nanoSeconds;
  double ppqPos;  // song position in quarter notes
  double tempo;   // beats per minute
  double barStartPos;
  double cycleStartPos;
  double cycleEndPos;
  VstInt32 timeSigNumerator;
  VstInt32 timeSigDenominator;
  VstInt32 smpteOffset;
  VstInt32 smpteFrameRate;
  VstInt32 samplesToNextClock;
  VstInt32 flags;
};

enum VstPinPropertiesFlags : VstInt32 {
  kVstPinIsActive = 1 << 0,
  kVstPinIsStereo = 1 << 1,
  kVstPinUseSpeaker = 1 << 2,
};

struct VstPinProperties {
  char label[kVstMaxLabelLen];
  VstInt32 flags;
  VstInt32 arrangementType;
  char shortLabel[kVstMaxShortLabelLen];
  char future[48];
};

// Editor rectangle in pixels, as returned by effEditGetRect.
struct ERect {
  std::int16_t top;
  std::int16_t left;
  std::int16_t bottom;
  std::int16_t right;
};

// The entry point every VST 2.4 module exports.
using PluginEntryProc = AEffect*(VST_CALLBACK*)(AudioMasterCallback audioMaster);

static_assert(sizeof(VstMidiEvent) == 32, "VstMidiEvent must be 32 bytes");
static_assert(sizeof(VstEvent) == 32, "VstEvent must be 32 bytes");
static_assert(sizeof(VstTimeInfo) == 88, "VstTimeInfo layout");
static_assert(sizeof(ERect) == 8, "ERect layout");
#if INTPTR_MAX == INT64_MAX
static_assert(sizeof(AEffect) == 192, "AEffect layout on 64-bit targets");
#endif

}  // namespace vst2
