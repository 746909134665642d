// The AAX state chunk "vrnd": the wrapped instance's bank chunk (every program and the current
// program index), handed to the host in the size-then-get order AAX uses.
//
// Without an instance (its creation failed) every request for "vrnd" answers kNotInitialized.
//
// Threads: the host's main thread only (the instance's chunk calls are user-interface-thread
// operations). One object per wrapped instance; it remembers the size it last reported.
#pragma once

#include <cstddef>
#include <cstdint>

#include "sdk/aax/aax_constants.h"
#include "sdk/vst2/audio_effect.h"

namespace ziv::aax {

// The bytes of the current bank chunk: valid until the instance's next getChunk.
struct ChunkBytes {
  const std::uint8_t* data = nullptr;
  std::int32_t size = 0;
};

class StateChunk {
 public:
  static Result idFromIndex(std::int32_t index, TypeId* id);

  // Reports the bank chunk's size and remembers it for the get that follows.
  Result size(TypeId id, vst2::AudioEffect* instance, std::uint32_t* outSize);
  // The chunk's bytes, provided the state still has the size last reported.
  Result bytes(TypeId id, vst2::AudioEffect* instance, ChunkBytes* out) const;
  Result load(TypeId id, vst2::AudioEffect* instance, const void* data, std::int32_t size);
  // A foreign chunk counts as equal: it never marks the host's session as changed.
  Result compare(TypeId id, vst2::AudioEffect* instance, const void* data, std::int32_t size,
                 bool* equal) const;

  // Writes the chunk's name into the host record's name field (cleared, then at most
  // capacity - 1 characters).
  static void writeName(char* name, std::size_t capacity);

 private:
  static ChunkBytes current(vst2::AudioEffect* instance);

  std::int32_t lastSize_ = 0;
};

}  // namespace ziv::aax
