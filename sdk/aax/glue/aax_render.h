// The algorithm context the AAX host fills for each instance, and the native render callback
// that turns it into the wrapped instance's VST 2.4 processing calls.
//
// Threads: the callback runs on the host's real-time thread; it allocates nothing, takes no lock
// and lets no exception out.
#pragma once

#include <cstdint>

#include "AAX.h"
#include "AAX_IMIDINode.h"
#include "plugin/vst_test.h"

namespace ziv {

struct AAXRenderContext {
  float** outputs;               // two output channels
  int32_t* bufferLength;         // frames in this call
  AAX_CTimestamp* clock;         // the host's sample clock (not read)
  AAX_IMIDINode* midiIn;         // "Vrn ZIV MIDI In"
  AAX_IMIDINode* transport;      // "Transport"
  VstTest** instance;            // private data: the wrapped instance
  void** spare;                  // private data: unused
  vst2::VstTimeInfo** timeInfo;  // private data: the time record
};

void AAX_CALLBACK renderAAX(AAXRenderContext* const instancesBegin[], const void* instancesEnd);

}  // namespace ziv
