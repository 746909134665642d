#include "test_host.h"

#include <cstring>
#include <string>

namespace ziv::testing {
namespace {

// The record of the host whose plug-in is being constructed: its AEffect cannot point back to
// the host before the constructor returns.
HostRecord* constructingRecord = nullptr;

vst2::VstIntPtr hostCallback(vst2::AEffect* effect, vst2::VstInt32 opcode, vst2::VstInt32 index,
                             vst2::VstIntPtr, void*, float opt) {
  HostRecord* record = effect != nullptr && effect->user != nullptr ? static_cast<HostRecord*>(effect->user)
                                                                    : constructingRecord;
  if (record == nullptr) return 0;
  HostRecord& r = *record;
  switch (opcode) {
    case vst2::audioMasterVersion:
      return 2400;
    case vst2::audioMasterGetTime:
      return r.answerTime ? reinterpret_cast<vst2::VstIntPtr>(&r.time) : 0;
    case vst2::audioMasterAutomate:
      ++r.automateCount;
      r.lastAutomatedIndex = index;
      r.lastAutomatedValue = opt;
      r.parameterCalls.push_back({opcode, index, opt});
      return 0;
    case vst2::audioMasterBeginEdit:
    case vst2::audioMasterEndEdit:
      r.parameterCalls.push_back({opcode, index, 0.0f});
      return 1;
    case vst2::audioMasterUpdateDisplay:
      ++r.updateDisplayCount;
      return 1;
    case vst2::audioMasterIOChanged:
      ++r.ioChangedCount;
      return 1;
    default:
      return 0;
  }
}

}  // namespace

TestHost::TestHost() {
  record_.time.sampleRate = 44100.0;
  record_.time.tempo = 120.0;
  record_.time.flags = vst2::kVstPpqPosValid | vst2::kVstTempoValid;
  constructingRecord = &record_;
  plugin_ = std::make_unique<VstTest>(hostCallback, std::make_unique<SynthEngine>());
  constructingRecord = nullptr;
  plugin_->getAeffect()->user = &record_;
  plugin_->setSampleRate(44100.0f);
  plugin_->resume();
}

TestHost::~TestHost() = default;

void TestHost::midi(int offset, int status, int data1, int data2) {
  vst2::VstMidiEvent event{};
  event.type = vst2::kVstMidiType;
  event.byteSize = sizeof(event);
  event.deltaFrames = offset;
  event.midiData[0] = static_cast<char>(status);
  event.midiData[1] = static_cast<char>(data1);
  event.midiData[2] = static_cast<char>(data2);
  pending_.push_back(event);
}

void TestHost::process(int frames) {
  if (!pending_.empty()) {
    std::vector<char> storage(sizeof(vst2::VstEvents) + pending_.size() * sizeof(vst2::VstEvent*));
    auto* events = reinterpret_cast<vst2::VstEvents*>(storage.data());
    events->numEvents = static_cast<vst2::VstInt32>(pending_.size());
    for (std::size_t i = 0; i < pending_.size(); ++i) {
      events->events[i] = reinterpret_cast<vst2::VstEvent*>(&pending_[i]);
    }
    plugin_->processEvents(events);
    pending_.clear();
  }
  left.assign(frames > 0 ? frames : 1, 0.0f);
  right.assign(frames > 0 ? frames : 1, 0.0f);
  float* outputs[2] = {left.data(), right.data()};
  plugin_->processReplacing(nullptr, outputs, frames);
}

std::vector<float> TestHost::play(double seconds, int block) {
  std::vector<float> out;
  const int blocks = static_cast<int>(seconds * 44100.0 / block);
  for (int b = 0; b < blocks; ++b) {
    process(block);
    out.insert(out.end(), left.begin(), left.end());
  }
  return out;
}

void TestHost::setPhysical(int index, float physical) {
  const Parameter& p = engine().parameter(index);
  const float lo = static_cast<float>(p.lo.load()), hi = static_cast<float>(p.hi.load());
  plugin_->setParameter(index, (physical - lo) / (hi - lo));
}

double fundamentalHz(const std::vector<float>& x, double sampleRate) {
  double first = -1.0, last = -1.0;
  int crossings = 0;
  for (std::size_t i = x.size() / 2; i + 1 < x.size(); ++i) {
    if (x[i] < 0.0f && x[i + 1] >= 0.0f) {
      const double t = i + x[i] / static_cast<double>(x[i] - x[i + 1]);
      if (first < 0.0) first = t;
      last = t;
      ++crossings;
    }
  }
  return crossings > 1 ? (crossings - 1) * sampleRate / (last - first) : 0.0;
}

}  // namespace ziv::testing
