// What the AAX parameters object decides, without the AAX SDK: the wrapped VST 2.4 instance
// (created through VSTPluginMain with this adapter's host callback, exactly as a VST 2.4 host
// would), the time record the instance reads, the private-data fields of the algorithm context,
// the relative parameter update, the host's parameter changes and the state chunk.
//
// The host callback finds its adapter through the instance's first reserved field. Editor edits
// (audioMasterAutomate), gestures (begin/end edit) and the time query come through it; the first
// three go to the AAX parameter objects through ParameterHost.
//
// Threads: creation, parameters and chunks on the host's main thread; the time record is written
// by the render callback on the real-time thread and read by the instance on that same thread.
#pragma once

#include <cstdint>
#include <optional>

#include "plugin/vst_test.h"
#include "sdk/aax/aax_constants.h"
#include "sdk/aax/state_chunk.h"

namespace ziv::aax {

// The AAX side of the parameters: the SDK's parameter objects, identified by their text id.
class ParameterHost {
 public:
  // Sets the AAX parameter's normalised value (and so tells the AAX host), if it exists.
  virtual void setNormalised(const char* id, double value) = 0;
  virtual void touch(const char* id) = 0;
  virtual void release(const char* id) = 0;

 protected:
  ~ParameterHost() = default;
};

class Adapter {
 public:
  static constexpr std::int32_t kHostVersion = 2400;
  // The time record's sample rate until the host tells the real one.
  static constexpr double kUnknownSampleRate = 1.0;

  explicit Adapter(ParameterHost& parameters) : parameters_(parameters) {}
  ~Adapter();
  Adapter(const Adapter&) = delete;
  Adapter& operator=(const Adapter&) = delete;

  // Replaces the wrapped instance with a new one running at `sampleRate` (0 or less: unknown, the
  // instance keeps its default) and clears the time record. False when creation failed.
  bool createInstance(double sampleRate);
  VstTest* instance() const { return instance_; }
  int parameterCount() const { return effect_ != nullptr ? effect_->numParams : 0; }
  vst2::VstTimeInfo& timeInfo() { return time_; }

  // Fills the private-data fields 5 (instance) and 7 (time record); nothing for other fields,
  // which take the SDK's default reset.
  std::optional<Result> resetFieldData(std::int32_t field, void* data, std::uint32_t size) const;

  // The AAX host changed a parameter: it reaches the instance's setParameter.
  void applyHostValue(const char* id, double value);
  // Moves parameter `id` by `delta` from the instance's current value, then updates the AAX
  // parameter to match.
  Result updateRelative(const char* id, double delta);

  StateChunk& chunk() { return chunk_; }

  // The VST 2.4 host callback the wrapped instance calls.
  static vst2::VstIntPtr VST_CALLBACK hostCallback(vst2::AEffect* effect, vst2::VstInt32 opcode,
                                                   vst2::VstInt32 index, vst2::VstIntPtr value, void* ptr,
                                                   float opt);

 private:
  vst2::VstIntPtr answer(vst2::VstInt32 opcode, vst2::VstInt32 index, float opt);
  void closeInstance();

  ParameterHost& parameters_;
  vst2::AEffect* effect_ = nullptr;
  VstTest* instance_ = nullptr;
  vst2::VstTimeInfo time_{};
  StateChunk chunk_;
};

}  // namespace ziv::aax
