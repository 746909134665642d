// Gain computation in three passes over the per-frame gain that would just reach the ceiling:
// a minimum over the look-ahead window (so the gain is down before a peak arrives), an exponential
// release (so it comes back smoothly), and a moving average as long as the look-ahead (so it falls
// without a click). Every value the average takes in at a peak's frame is at most that peak's gain,
// so no sample passes the ceiling.
#include "tools/host/peak_limiter.h"

#include <algorithm>
#include <cmath>

namespace vrnhost {

namespace {

constexpr double kLookAheadSeconds = 0.005;
constexpr double kReleaseSeconds = 0.08;  // time constant of the recovery

}  // namespace

void limitPeaks(std::vector<float>& interleaved, int sampleRate, double ceilingDb) {
  const std::size_t frames = interleaved.size() / 2;
  if (frames == 0 || sampleRate <= 0) return;
  const double ceiling = std::pow(10.0, ceilingDb / 20.0);
  const std::size_t window =
      std::max<std::size_t>(1, static_cast<std::size_t>(kLookAheadSeconds * sampleRate));

  std::vector<double> needed(frames);
  for (std::size_t i = 0; i < frames; ++i) {
    const double peak = std::max(std::fabs(interleaved[2 * i]), std::fabs(interleaved[2 * i + 1]));
    needed[i] = peak > ceiling ? ceiling / peak : 1.0;
  }
  std::vector<double> held(frames);
  for (std::size_t i = 0; i < frames; ++i) {
    const std::size_t end = std::min(frames, i + window);
    held[i] = *std::min_element(needed.begin() + static_cast<std::ptrdiff_t>(i),
                                needed.begin() + static_cast<std::ptrdiff_t>(end));
  }
  const double recovery = std::exp(-1.0 / (kReleaseSeconds * sampleRate));
  double released = 1.0;
  for (std::size_t i = 0; i < frames; ++i) {
    released = std::min(held[i], 1.0 - (1.0 - released) * recovery);
    held[i] = released;
  }
  double sum = 0.0;
  for (std::size_t i = 0; i < frames; ++i) {
    sum += held[i] - (i >= window ? held[i - window] : 1.0);
    const double gain = (sum + static_cast<double>(window)) / static_cast<double>(window);
    interleaved[2 * i] = static_cast<float>(interleaved[2 * i] * gain);
    interleaved[2 * i + 1] = static_cast<float>(interleaved[2 * i + 1] * gain);
  }
}

}  // namespace vrnhost
