// The AAX parameters object: the AAX SDK's parameter manager over the wrapped VST 2.4 instance.
// Every instance parameter is an AAX_CParameter<float> named by its index in decimal; every host
// change of one reaches the instance's setParameter; the state chunk "vrnd" is the instance's bank
// chunk. The decisions live in aax::Adapter; this class only speaks the SDK's types.
//
// Threads: the host's main thread, as the SDK prescribes for AAX_CEffectParameters. No exception
// leaves any of these operations.
#pragma once

#include "AAX_CEffectParameters.h"
#include "sdk/aax/aax_adapter.h"

namespace ziv {

class AAXParameters : public AAX_CEffectParameters, private aax::ParameterHost {
 public:
  // The creation procedure the description registers.
  static AAX_CEffectParameters* AAX_CALLBACK Create();

  AAXParameters() : adapter_(*this) {}

  // The wrapped instance (null before EffectInit or if it failed), for the editor view.
  VstTest* instance() const { return adapter_.instance(); }

  AAX_Result ResetFieldData(AAX_CFieldIndex fieldIndex, void* data, uint32_t dataSize) const override;
  AAX_Result GetChunkIDFromIndex(int32_t index, AAX_CTypeID* chunkId) const override;
  AAX_Result GetChunkSize(AAX_CTypeID chunkId, uint32_t* size) const override;
  AAX_Result GetChunk(AAX_CTypeID chunkId, AAX_SPlugInChunk* chunk) const override;
  AAX_Result SetChunk(AAX_CTypeID chunkId, const AAX_SPlugInChunk* chunk) override;
  AAX_Result CompareActiveChunk(const AAX_SPlugInChunk* chunk, AAX_CBoolean* isEqual) const override;
  AAX_Result UpdateParameterNormalizedValue(AAX_CParamID id, double value, AAX_EUpdateSource source) override;
  AAX_Result UpdateParameterNormalizedRelative(AAX_CParamID id, double delta) override;

 protected:
  AAX_Result EffectInit() override;

 private:
  // aax::ParameterHost: the instance's own edits, reported through its host callback.
  void setNormalised(const char* id, double value) override;
  void touch(const char* id) override;
  void release(const char* id) override;

  // The chunk calls are const in the SDK, yet asking for the size is remembered for the get.
  mutable aax::Adapter adapter_;
};

}  // namespace ziv
