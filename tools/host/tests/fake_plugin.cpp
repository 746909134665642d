// A stand-in VST 2.4 instrument for the host's own tests. It checks that the host calls it in a
// DAW's order and reports what it received through its audio, where a test can read it back:
//   left channel:  at each note-on's offset, velocity / 127 (applied sample-exactly, carrying
//                  events beyond the block over to the next one as a real plug-in must);
//   right channel: the song position the host reported for the block;
//   both channels: NaN when the host broke the protocol (wrong order, missing time info,
//                  block larger than announced).
// Parameters "Alpha", "Beta: Two", "Gamma"; 4 programs; Gamma's display text names the program.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

#include "sdk/vst2/aeffect.h"

namespace {

using namespace vst2;

constexpr int kParams = 3;
constexpr int kPrograms = 4;
const char* const kNames[kParams] = {"Alpha", "Beta: Two", "Gamma"};

struct FakeSynth {
  AEffect effect{};
  AudioMasterCallback host = nullptr;
  float values[kParams] = {0.0f, 0.0f, 0.0f};
  int program = 0;
  bool opened = false;
  float sampleRate = 0.0f;
  int blockSize = 0;
  bool mainsOn = false;
  bool processing = false;
  bool broken = false;
  std::vector<VstMidiEvent> queue;
};

FakeSynth* self(AEffect* effect) { return static_cast<FakeSynth*>(effect->object); }

void copyText(void* ptr, const char* text) { std::strcpy(static_cast<char*>(ptr), text); }

VstIntPtr VST_CALLBACK dispatcher(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr,
                                  float opt) {
  FakeSynth* synth = self(effect);
  switch (opcode) {
    case effOpen:
      synth->opened = true;
      return 0;
    case effClose:
      delete synth;
      return 0;
    case effSetSampleRate:
      synth->sampleRate = opt;
      return 0;
    case effSetBlockSize:
      synth->blockSize = static_cast<int>(value);
      return 0;
    case effMainsChanged:
      synth->mainsOn = value != 0;
      if (!synth->mainsOn && synth->processing) synth->broken = true;  // stopProcess must come first
      return 0;
    case effStartProcess:
      if (!synth->mainsOn) synth->broken = true;
      synth->processing = true;
      return 0;
    case effStopProcess:
      synth->processing = false;
      return 0;
    case effSetProgram:
      synth->program = static_cast<int>(value);
      return 0;
    case effGetProgram:
      return synth->program;
    case effGetParamName:
      if (index >= 0 && index < kParams) copyText(ptr, kNames[index]);
      return 0;
    case effGetParamDisplay:
      if (index == 2) {
        std::snprintf(static_cast<char*>(ptr), 16, "P%d", synth->program);
      } else if (index >= 0 && index < kParams) {
        std::snprintf(static_cast<char*>(ptr), 16, "%.3f", synth->values[index]);
      }
      return 0;
    case effGetEffectName:
      copyText(ptr, "Fake");
      return 1;
    case effProcessEvents: {
      auto* events = static_cast<VstEvents*>(ptr);
      for (int i = 0; i < events->numEvents; ++i) {
        if (events->events[i]->type == kVstMidiType) {
          synth->queue.push_back(*reinterpret_cast<VstMidiEvent*>(events->events[i]));
        }
      }
      std::stable_sort(synth->queue.begin(), synth->queue.end(),
                       [](const VstMidiEvent& a, const VstMidiEvent& b) { return a.deltaFrames < b.deltaFrames; });
      return 1;
    }
    default:
      return 0;
  }
}

void VST_CALLBACK processReplacing(AEffect* effect, float** /*inputs*/, float** outputs, VstInt32 frames) {
  FakeSynth* synth = self(effect);
  auto* time = reinterpret_cast<VstTimeInfo*>(synth->host(effect, audioMasterGetTime, 0, 0x600, nullptr, 0.0f));
  if (!time || (time->flags & 0x600) != 0x600 || time->sampleRate != synth->sampleRate) synth->broken = true;
  if (!synth->opened || synth->sampleRate <= 0.0f || !synth->processing || frames > synth->blockSize) {
    synth->broken = true;
  }
  float* left = outputs[0];
  float* right = outputs[1];
  for (int i = 0; i < frames; ++i) {
    left[i] = 0.0f;
    right[i] = time ? static_cast<float>(time->ppqPos) : 0.0f;
  }
  auto due = std::find_if(synth->queue.begin(), synth->queue.end(),
                          [frames](const VstMidiEvent& event) { return event.deltaFrames >= frames; });
  for (auto event = synth->queue.begin(); event != due; ++event) {
    auto status = static_cast<unsigned char>(event->midiData[0]) & 0xF0;
    if (status == 0x90 && event->midiData[2] > 0) left[event->deltaFrames] += event->midiData[2] / 127.0f;
  }
  synth->queue.erase(synth->queue.begin(), due);
  for (VstMidiEvent& event : synth->queue) event.deltaFrames -= frames;
  if (synth->broken) {
    std::fill(left, left + frames, std::numeric_limits<float>::quiet_NaN());
    std::fill(right, right + frames, std::numeric_limits<float>::quiet_NaN());
  }
}

void VST_CALLBACK setParameter(AEffect* effect, VstInt32 index, float value) {
  if (index >= 0 && index < kParams) self(effect)->values[index] = value;
}

float VST_CALLBACK getParameter(AEffect* effect, VstInt32 index) {
  return index >= 0 && index < kParams ? self(effect)->values[index] : 0.0f;
}

}  // namespace

VST_EXPORT AEffect* VSTPluginMain(AudioMasterCallback host) {
  if (!host || host(nullptr, audioMasterVersion, 0, 0, nullptr, 0.0f) == 0) return nullptr;
  auto* synth = new (std::nothrow) FakeSynth;
  if (!synth) return nullptr;
  synth->host = host;
  AEffect& effect = synth->effect;
  effect.magic = kEffectMagic;
  effect.dispatcher = dispatcher;
  effect.setParameter = setParameter;
  effect.getParameter = getParameter;
  effect.processReplacing = processReplacing;
  effect.numPrograms = kPrograms;
  effect.numParams = kParams;
  effect.numInputs = 0;
  effect.numOutputs = 2;
  effect.flags = effFlagsIsSynth | effFlagsCanReplacing;
  effect.object = synth;
  effect.uniqueID = fourCharCode('F', 'a', 'k', 'e');
  return &effect;
}
