#include "sdk/aax/glue/aax_parameters.h"

#include <cstring>
#include <new>

#include "AAX_CParameter.h"
#include "AAX_CString.h"
#include "sdk/aax/glue/aax_delegates.h"
#include "sdk/aax/guarded.h"
#include "sdk/aax/parameter_id.h"

namespace ziv {

AAX_CEffectParameters* AAX_CALLBACK AAXParameters::Create() {
  try {
    return new AAXParameters;
  } catch (...) {
    return nullptr;
  }
}

AAX_Result AAXParameters::EffectInit() {
  return aax::guarded([&] {
    AAX_CSampleRate sampleRate = 0.0f;
    if (Controller() == nullptr || Controller()->GetSampleRate(&sampleRate) != AAX_SUCCESS) sampleRate = 0.0f;
    if (!adapter_.createInstance(sampleRate)) return aax::kNotInitialized;

    VstTest* instance = adapter_.instance();
    for (int index = 0; index < adapter_.parameterCount(); ++index) {
      char name[kParamTextCapacity] = "";
      instance->getParameterName(index, name);
      mParameterManager.AddParameter(new AAX_CParameter<float>(
          AAX_CString(aax::parameterId(index).text), AAX_CString(name), instance->getParameter(index),
          MapperWrapper<float>(), FormatterWrapper<float>(instance, index), true));
    }
    return aax::kSuccess;
  });
}

AAX_Result AAXParameters::ResetFieldData(AAX_CFieldIndex fieldIndex, void* data, uint32_t dataSize) const {
  return aax::guarded([&] {
    const std::optional<aax::Result> result = adapter_.resetFieldData(fieldIndex, data, dataSize);
    return result ? *result : AAX_CEffectParameters::ResetFieldData(fieldIndex, data, dataSize);
  });
}

AAX_Result AAXParameters::GetChunkIDFromIndex(int32_t index, AAX_CTypeID* chunkId) const {
  return aax::guarded([&] { return aax::StateChunk::idFromIndex(index, chunkId); });
}

AAX_Result AAXParameters::GetChunkSize(AAX_CTypeID chunkId, uint32_t* size) const {
  return aax::guarded([&] { return adapter_.chunk().size(chunkId, adapter_.instance(), size); });
}

AAX_Result AAXParameters::GetChunk(AAX_CTypeID chunkId, AAX_SPlugInChunk* chunk) const {
  return aax::guarded([&] {
    aax::ChunkBytes bytes;
    const aax::Result result = adapter_.chunk().bytes(chunkId, adapter_.instance(), &bytes);
    if (result != aax::kSuccess) return result;
    if (chunk == nullptr) return aax::kNullArgument;
    chunk->fVersion = aax::kChunkVersion;
    aax::StateChunk::writeName(reinterpret_cast<char*>(chunk->fName), sizeof chunk->fName);
    if (bytes.size > 0) std::memcpy(chunk->fData, bytes.data, static_cast<std::size_t>(bytes.size));
    chunk->fSize = bytes.size;
    return aax::kSuccess;
  });
}

AAX_Result AAXParameters::SetChunk(AAX_CTypeID chunkId, const AAX_SPlugInChunk* chunk) {
  return aax::guarded([&] {
    return adapter_.chunk().load(chunkId, adapter_.instance(), chunk != nullptr ? chunk->fData : nullptr,
                                 chunk != nullptr ? chunk->fSize : 0);
  });
}

AAX_Result AAXParameters::CompareActiveChunk(const AAX_SPlugInChunk* chunk, AAX_CBoolean* isEqual) const {
  return aax::guarded([&] {
    if (chunk == nullptr || isEqual == nullptr) return aax::kNullArgument;
    bool equal = false;
    const aax::Result result =
        adapter_.chunk().compare(chunk->fChunkID, adapter_.instance(), chunk->fData, chunk->fSize, &equal);
    *isEqual = equal;
    return result;
  });
}

AAX_Result AAXParameters::UpdateParameterNormalizedValue(AAX_CParamID id, double value,
                                                         AAX_EUpdateSource source) {
  return aax::guarded([&] {
    const AAX_Result result = AAX_CEffectParameters::UpdateParameterNormalizedValue(id, value, source);
    if (result != AAX_ERROR_INVALID_PARAMETER_ID) adapter_.applyHostValue(id, value);
    return result;
  });
}

AAX_Result AAXParameters::UpdateParameterNormalizedRelative(AAX_CParamID id, double delta) {
  return aax::guarded([&] { return adapter_.updateRelative(id, delta); });
}

void AAXParameters::setNormalised(const char* id, double value) {
  if (AAX_IParameter* parameter = mParameterManager.GetParameterByID(id))
    parameter->SetNormalizedValue(value);
}

void AAXParameters::touch(const char* id) {
  TouchParameter(id);
}

void AAXParameters::release(const char* id) {
  ReleaseParameter(id);
}

}  // namespace ziv
