// The host's mastering limiter for a finished mix (interleaved stereo, whole buffer at once, not
// real-time): holds every sample at or below a ceiling with a gain that falls smoothly over a short
// look-ahead before each peak and recovers exponentially after it, the same gain on both channels
// so the stereo image stays put.
#pragma once

#include <vector>

namespace vrnhost {

// Limits interleaved stereo in place to ceilingDb (dBFS).
void limitPeaks(std::vector<float>& interleaved, int sampleRate, double ceilingDb);

}  // namespace vrnhost
