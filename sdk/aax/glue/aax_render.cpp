#include "sdk/aax/glue/aax_render.h"

#include "AAX_ITransport.h"
#include "sdk/aax/aax_constants.h"
#include "sdk/aax/render_block.h"

namespace ziv {

static_assert(AAX_FIELD_INDEX(AAXRenderContext, outputs) == aax::kFieldAudioOut);
static_assert(AAX_FIELD_INDEX(AAXRenderContext, bufferLength) == aax::kFieldBufferLength);
static_assert(AAX_FIELD_INDEX(AAXRenderContext, clock) == aax::kFieldClock);
static_assert(AAX_FIELD_INDEX(AAXRenderContext, midiIn) == aax::kFieldMidiIn);
static_assert(AAX_FIELD_INDEX(AAXRenderContext, transport) == aax::kFieldTransport);
static_assert(AAX_FIELD_INDEX(AAXRenderContext, instance) == aax::kFieldInstance);
static_assert(AAX_FIELD_INDEX(AAXRenderContext, spare) == aax::kFieldSpare);
static_assert(AAX_FIELD_INDEX(AAXRenderContext, timeInfo) == aax::kFieldTimeInfo);

namespace {

aax::TransportState readTransport(AAX_IMIDINode* node) {
  aax::TransportState state;
  const AAX_ITransport* transport = node != nullptr ? node->GetTransport() : nullptr;
  if (transport == nullptr) return state;
  state.hasTicks = transport->GetCurrentTickPosition(&state.ticks) == AAX_SUCCESS;
  state.hasTempo = transport->GetCurrentTempo(&state.tempo) == AAX_SUCCESS;
  return state;
}

void render(const AAXRenderContext& context) {
  const int32_t frames = context.bufferLength != nullptr ? *context.bufferLength : 0;
  VstTest* instance = context.instance != nullptr ? *context.instance : nullptr;
  vst2::VstTimeInfo* time = context.timeInfo != nullptr ? *context.timeInfo : nullptr;
  // The transport is read only for an instance that will render.
  const aax::TransportState transport =
      instance != nullptr ? readTransport(context.transport) : aax::TransportState{};
  const AAX_CMidiStream* midi = context.midiIn != nullptr ? context.midiIn->GetNodeBuffer() : nullptr;
  aax::renderBlock(instance, time, context.outputs, frames, transport,
                   midi != nullptr ? midi->mBuffer : nullptr, midi != nullptr ? midi->mBufferSize : 0);
}

}  // namespace

void AAX_CALLBACK renderAAX(AAXRenderContext* const instancesBegin[], const void* instancesEnd) {
  for (AAXRenderContext* const* context = instancesBegin; context < instancesEnd; ++context) {
    if (*context == nullptr) continue;
    try {
      render(**context);
    } catch (...) {
      // Nothing the instance throws may reach the host; the block stays as far as it got.
    }
  }
}

}  // namespace ziv
