#include "tools/torture/torture_instance.h"

#include <cmath>
#include <cstring>

#include "tools/torture/allocation_counter.h"

namespace torture {
namespace {

// The guard zone after the requested frames: the plug-in must leave it as the host wrote it.
constexpr int kGuardFrames = 64;
constexpr float kGuardValue = 1234.5f;
constexpr int kHostVersion = 2400;
constexpr int kTextBytes = 256;

// The instance being created, for callbacks made from inside the entry point.
thread_local TortureInstance* tCreating = nullptr;
// Set while this thread is inside processReplacing or effProcessEvents.
thread_local bool tProcessing = false;

const char* callbackName(vst2::VstInt32 opcode) {
  switch (opcode) {
    case vst2::audioMasterAutomate:
      return "audioMasterAutomate";
    case vst2::audioMasterIOChanged:
      return "audioMasterIOChanged";
    case vst2::audioMasterUpdateDisplay:
      return "audioMasterUpdateDisplay";
    case vst2::audioMasterBeginEdit:
      return "audioMasterBeginEdit";
    case vst2::audioMasterEndEdit:
      return "audioMasterEndEdit";
    default:
      return "a host callback";
  }
}

class ProcessingScope {
 public:
  ProcessingScope() { tProcessing = true; }
  ~ProcessingScope() { tProcessing = false; }
};

}  // namespace

TortureInstance::TortureInstance(vst2::PluginEntryProc entry, Scoreboard& board)
    : board_(board), left_(kMaxFrames + kGuardFrames), right_(kMaxFrames + kGuardFrames) {
  time_.sampleRate = 44100.0;
  time_.tempo = 120.0;
  time_.flags = vst2::kVstPpqPosValid | vst2::kVstTempoValid | vst2::kVstTransportPlaying;
  tCreating = this;
  effect_ = entry(&TortureInstance::hostCallback);
  tCreating = nullptr;
  board_.countCalls(1);
  if (effect_ == nullptr || effect_->magic != vst2::kEffectMagic) {
    board_.addFinding("the entry point created no usable instance");
    effect_ = nullptr;
    return;
  }
  effect_->user = this;
}

TortureInstance::~TortureInstance() {
  if (effect_ != nullptr) dispatch(vst2::effClose);
}

vst2::VstIntPtr TortureInstance::dispatch(vst2::VstInt32 opcode, vst2::VstInt32 index, vst2::VstIntPtr value,
                                          void* ptr, float opt) {
  board_.countCalls(1);
  return effect_->dispatcher(effect_, opcode, index, value, ptr, opt);
}

void TortureInstance::setParameter(int index, float value) {
  board_.countCalls(1);
  effect_->setParameter(effect_, index, value);
}

float TortureInstance::getParameter(int index) {
  board_.countCalls(1);
  const float value = effect_->getParameter(effect_, index);
  if (index >= 0 && index < effect_->numParams && !(value >= 0.0f && value <= 1.0f)) {
    board_.addFinding("getParameter(" + std::to_string(index) + ") answered " + std::to_string(value));
  }
  return value;
}

int TortureInstance::parameterIndex(const std::string& name) {
  for (int i = 0; i < effect_->numParams; ++i) {
    char text[kTextBytes] = {};
    dispatch(vst2::effGetParamName, i, 0, text);
    if (name == text) return i;
  }
  board_.addFinding("no parameter named '" + name + "'");
  return -1;
}

void TortureInstance::start(float sampleRate, int blockSize) {
  dispatch(vst2::effOpen);
  dispatch(vst2::effSetSampleRate, 0, 0, nullptr, sampleRate);
  dispatch(vst2::effSetBlockSize, 0, blockSize);
  dispatch(vst2::effMainsChanged, 0, 1);
  dispatch(vst2::effStartProcess);
}

void TortureInstance::setTimeInfo(const vst2::VstTimeInfo* time) {
  answerTime_ = time != nullptr;
  if (time != nullptr) time_ = *time;
}

void TortureInstance::sendEvents(const std::vector<vst2::VstMidiEvent>& events, bool withNullEntry) {
  events_ = events;
  const std::size_t count = events_.size() + (withNullEntry ? 1 : 0);
  eventList_.assign(sizeof(vst2::VstEvents) / sizeof(vst2::VstIntPtr) + count, 0);
  auto* list = reinterpret_cast<vst2::VstEvents*>(eventList_.data());
  list->numEvents = static_cast<vst2::VstInt32>(count);
  // The list runs past the two entries the structure declares.
  vst2::VstEvent** entries = list->events;
  for (std::size_t i = 0; i < events_.size(); ++i)
    entries[i] = reinterpret_cast<vst2::VstEvent*>(&events_[i]);
  if (withNullEntry) entries[count - 1] = nullptr;
  long long allocations = 0;
  {
    ProcessingScope processing;
    AllocationScope counting;
    dispatch(vst2::effProcessEvents, 0, 0, list);
    allocations = counting.count();
  }
  if (allocations > 0) {
    board_.countAllocations(allocations);
    board_.addFinding("processEvents allocated " + std::to_string(allocations) + " times");
  }
}

float TortureInstance::process(int frames) {
  std::fill(left_.begin(), left_.end(), kGuardValue);
  std::fill(right_.begin(), right_.end(), kGuardValue);
  float* outputs[2] = {left_.data(), right_.data()};
  long long allocations = 0;
  board_.countCalls(1);
  {
    ProcessingScope processing;
    AllocationScope counting;
    effect_->processReplacing(effect_, nullptr, outputs, frames);
    allocations = counting.count();
  }
  if (allocations > 0) {
    board_.countAllocations(allocations);
    board_.addFinding("processReplacing(" + std::to_string(frames) + " frames) allocated " +
                      std::to_string(allocations) + " times");
  }
  float peak = 0.0f;
  checkOutput(frames, peak);
  board_.notePeak(peak);
  return peak;
}

void TortureInstance::checkOutput(int frames, float& peak) {
  bool reported = false;
  for (const std::vector<float>* channel : {&left_, &right_}) {
    for (int i = 0; i < frames; ++i) {
      const float sample = (*channel)[i];
      const float magnitude = std::fabs(sample);
      if (std::isfinite(sample) && magnitude > peak) peak = magnitude;
      if (!reported && !(magnitude < kOutputBound)) {
        board_.addFinding("output sample " + std::to_string(sample) + " at frame " + std::to_string(i) +
                          " of a " + std::to_string(frames) + "-frame block");
        reported = true;
      }
    }
    for (int i = frames; i < frames + kGuardFrames; ++i) {
      if ((*channel)[i] != kGuardValue) {
        board_.addFinding("wrote past a " + std::to_string(frames) + "-frame block");
        break;
      }
    }
  }
}

vst2::VstIntPtr VST_CALLBACK TortureInstance::hostCallback(vst2::AEffect* effect, vst2::VstInt32 opcode,
                                                           vst2::VstInt32 index, vst2::VstIntPtr value,
                                                           void* ptr, float opt) {
  (void)index;
  (void)value;
  (void)ptr;
  (void)opt;
  if (opcode == vst2::audioMasterVersion) return kHostVersion;
  TortureInstance* self =
      effect != nullptr && effect->user != nullptr ? static_cast<TortureInstance*>(effect->user) : tCreating;
  return self != nullptr ? self->answer(opcode) : 0;
}

vst2::VstIntPtr TortureInstance::answer(vst2::VstInt32 opcode) {
  if (opcode == vst2::audioMasterGetTime) {
    return answerTime_ ? reinterpret_cast<vst2::VstIntPtr>(&time_) : 0;
  }
  // Inside the process calls the time query is the only callback a host has to answer.
  AllocationPause hostWork;
  if (tProcessing) board_.addFinding(std::string(callbackName(opcode)) + " called from inside processing");
  return 0;
}

}  // namespace torture
