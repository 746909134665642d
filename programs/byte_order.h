// Little- and big-endian words over byte spans, for the program and bank formats.
//
// Chunks are little-endian and file headers big-endian, whatever the machine's own order, so
// every word is assembled byte by byte. `ByteReader` never reads outside the span it was
// given: a read past the end fails and leaves the target untouched, which is how the loaders
// take truncated data without ever touching memory beyond it. The append functions grow a
// byte vector; callers that must not allocate reserve its capacity first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace ziv {

using Bytes = std::vector<std::uint8_t>;

inline std::uint32_t floatBits(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, sizeof(bits));
  return bits;
}

inline float bitsToFloat(std::uint32_t bits) {
  float value = 0.0f;
  std::memcpy(&value, &bits, sizeof(value));
  return value;
}

inline void appendLittle32(Bytes& out, std::uint32_t word) {
  for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<std::uint8_t>(word >> shift));
}

inline void appendBig32(Bytes& out, std::uint32_t word) {
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<std::uint8_t>(word >> shift));
}

// Appends `length` bytes: `text` up to its terminator or `length` characters, then zero bytes.
inline void appendPaddedText(Bytes& out, const char* text, std::size_t length) {
  std::size_t used = 0;
  while (used < length && text[used] != '\0') out.push_back(static_cast<std::uint8_t>(text[used++]));
  out.insert(out.end(), length - used, 0);
}

class ByteReader {
 public:
  ByteReader(const std::uint8_t* data, std::size_t size) : data_(data), size_(data != nullptr ? size : 0) {}

  std::size_t position() const { return position_; }
  std::size_t remaining() const { return size_ - position_; }
  const std::uint8_t* here() const { return data_ + position_; }

  // Each read advances past the word and returns true, or returns false at the end of the span.
  bool little32(std::uint32_t& word) { return read32(word, false); }
  bool big32(std::uint32_t& word) { return read32(word, true); }
  bool littleInt(std::int32_t& value) {
    std::uint32_t word = 0;
    if (!little32(word)) return false;
    value = static_cast<std::int32_t>(word);
    return true;
  }
  bool littleFloat(float& value) {
    std::uint32_t word = 0;
    if (!little32(word)) return false;
    value = bitsToFloat(word);
    return true;
  }
  bool bigFloat(float& value) {
    std::uint32_t word = 0;
    if (!big32(word)) return false;
    value = bitsToFloat(word);
    return true;
  }
  // Copies `length` bytes into `text` (which holds length + 1) and terminates it there.
  bool text(char* text, std::size_t length) {
    if (remaining() < length) return false;
    std::memcpy(text, here(), length);
    text[length] = '\0';
    position_ += length;
    return true;
  }
  // Moves past `count` bytes, or to the end when fewer remain.
  void skip(std::size_t count) { position_ += count < remaining() ? count : remaining(); }

 private:
  bool read32(std::uint32_t& word, bool bigEndian) {
    if (remaining() < 4) return false;
    const std::uint8_t* bytes = here();
    word = 0;
    for (int i = 0; i < 4; ++i) {
      const int shift = bigEndian ? 24 - 8 * i : 8 * i;
      word |= static_cast<std::uint32_t>(bytes[i]) << shift;
    }
    position_ += 4;
    return true;
  }

  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t position_ = 0;
};

}  // namespace ziv
