// Loudness and peak of rendered audio: integrated loudness after ITU-R BS.1770 (EBU R 128) through
// libebur128, and the sample peak. Used to mix the host's multi-track renders to a target level and
// by the factory bank check. Not for the audio thread.
#pragma once

#include <vector>

namespace vrnhost {

// Integrated loudness in LUFS of interleaved audio; -inf for silence or an empty buffer.
double integratedLoudness(const std::vector<float>& interleaved, int channels, int sampleRate);

// The largest absolute sample, in dBFS; -inf for silence.
double samplePeakDb(const std::vector<float>& interleaved);

}  // namespace vrnhost
