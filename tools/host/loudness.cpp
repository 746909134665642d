// libebur128 in gated-integrated mode, which is all the loudness the host needs.
#include "tools/host/loudness.h"

#include <ebur128.h>

#include <cmath>
#include <limits>
#include <memory>

namespace vrnhost {

namespace {

struct StateDeleter {
  void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
};

constexpr double kMinusInfinity = -std::numeric_limits<double>::infinity();

}  // namespace

double integratedLoudness(const std::vector<float>& interleaved, int channels, int sampleRate) {
  if (channels <= 0 || sampleRate <= 0 || interleaved.empty()) return kMinusInfinity;
  std::unique_ptr<ebur128_state, StateDeleter> state(
      ebur128_init(static_cast<unsigned>(channels), static_cast<unsigned long>(sampleRate), EBUR128_MODE_I));
  double loudness = kMinusInfinity;
  if (!state ||
      ebur128_add_frames_float(state.get(), interleaved.data(), interleaved.size() / channels) !=
          EBUR128_SUCCESS ||
      ebur128_loudness_global(state.get(), &loudness) != EBUR128_SUCCESS) {
    return kMinusInfinity;
  }
  return loudness;
}

double samplePeakDb(const std::vector<float>& interleaved) {
  float peak = 0.0f;
  for (float sample : interleaved) peak = std::max(peak, std::fabs(sample));
  return peak > 0.0f ? 20.0 * std::log10(peak) : kMinusInfinity;
}

}  // namespace vrnhost
