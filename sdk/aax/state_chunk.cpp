#include "sdk/aax/state_chunk.h"

#include <algorithm>
#include <cstring>

namespace ziv::aax {

Result StateChunk::idFromIndex(std::int32_t index, TypeId* id) {
  if (index != 0) return kInvalidChunkIndex;
  if (id != nullptr) *id = kChunkId;
  return kSuccess;
}

ChunkBytes StateChunk::current(vst2::AudioEffect* instance) {
  void* data = nullptr;
  ChunkBytes chunk;
  chunk.size = instance->getChunk(&data, false);
  chunk.data = static_cast<const std::uint8_t*>(data);
  if (chunk.data == nullptr || chunk.size < 0) chunk = ChunkBytes{};
  return chunk;
}

Result StateChunk::size(TypeId id, vst2::AudioEffect* instance, std::uint32_t* outSize) {
  if (id != kChunkId) return kInvalidChunkId;
  if (instance == nullptr) return kNotInitialized;
  lastSize_ = current(instance).size;
  if (outSize != nullptr) *outSize = static_cast<std::uint32_t>(lastSize_);
  return kSuccess;
}

Result StateChunk::bytes(TypeId id, vst2::AudioEffect* instance, ChunkBytes* out) const {
  if (id != kChunkId) return kInvalidChunkId;
  if (instance == nullptr) return kNotInitialized;
  const ChunkBytes chunk = current(instance);
  if (chunk.size != lastSize_) return kIncorrectChunkSize;
  if (out != nullptr) *out = chunk;
  return kSuccess;
}

Result StateChunk::load(TypeId id, vst2::AudioEffect* instance, const void* data, std::int32_t size) {
  if (id != kChunkId) return kInvalidChunkId;
  if (instance == nullptr) return kNotInitialized;
  instance->setChunk(const_cast<void*>(data), size, false);
  return kSuccess;
}

Result StateChunk::compare(TypeId id, vst2::AudioEffect* instance, const void* data, std::int32_t size,
                           bool* equal) const {
  if (equal == nullptr) return kSuccess;
  if (id != kChunkId) {
    *equal = true;
    return kSuccess;
  }
  if (instance == nullptr) return kNotInitialized;
  const ChunkBytes chunk = current(instance);
  *equal =
      chunk.size == size &&
      (size == 0 || (data != nullptr && std::memcmp(chunk.data, data, static_cast<std::size_t>(size)) == 0));
  return kSuccess;
}

void StateChunk::writeName(char* name, std::size_t capacity) {
  if (name == nullptr || capacity == 0) return;
  std::memset(name, 0, capacity);
  std::memcpy(name, kChunkName, std::min(std::strlen(kChunkName), capacity - 1));
}

}  // namespace ziv::aax
