// A ring of float samples for the chorus and the delay, allocated once and re-sized in place.
//
// The storage is allocated at construction, off the audio thread, for the longest ring the
// owner will ever use (its maximum delay time at kMaxRingSampleRate). A sample-rate change only
// changes the used length and zeroes that part, so no allocation happens while audio runs. At
// rates above kMaxRingSampleRate the used length is capped at the capacity and the owners limit
// their delays to it (shorter maximum times there).
#pragma once

#include <algorithm>
#include <vector>

namespace ziv {

// The highest sample rate at which the rings still hold their full delay times.
constexpr float kMaxRingSampleRate = 192000.0f;

class DelayRing {
 public:
  // Allocates `capacity` samples. Not real-time: call where the engine is created.
  explicit DelayRing(int capacity) : data_(static_cast<std::size_t>(std::max(capacity, 1)), 0.0f) {}

  // Uses the first `length` samples (clamped to 1..capacity), zeroed; the write position
  // restarts at 0. Real-time safe (no allocation); the owner's thread.
  void setLength(int length) {
    length_ = std::clamp(length, 1, static_cast<int>(data_.size()));
    clear();
  }

  // Zeroes the used part. Real-time safe; the owner's thread.
  void clear() {
    std::fill(data_.begin(), data_.begin() + length_, 0.0f);
    write_ = 0;
  }

  // Appends `count` samples at the write position, which advances past them. Real-time safe;
  // the owner's thread.
  void write(const float* samples, int count) {
    while (count > 0) {
      const int run = std::min(count, length_ - write_);
      std::copy(samples, samples + run, data_.begin() + write_);
      samples += run;
      count -= run;
      write_ += run;
      if (write_ == length_) write_ = 0;
    }
  }

  int length() const { return length_; }
  float* samples() { return data_.data(); }
  // Index of the slot the next sample goes into; the owner copies it to a local in its sample
  // loop and stores it back with setWritePosition.
  int writePosition() const { return write_; }
  void setWritePosition(int position) { write_ = position; }

 private:
  std::vector<float> data_;
  int length_ = 1;
  int write_ = 0;
};

}  // namespace ziv
