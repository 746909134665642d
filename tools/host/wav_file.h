// WAV files through libsndfile: the host writes its renders with it and the integration tests
// read them back. Samples are interleaved floats in both directions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vrnhost {

enum class SampleFormat { kFloat32, kPcm24 };

struct WavData {
  int sampleRate = 0;
  int channels = 0;
  std::int64_t frames = 0;
  std::vector<float> samples;
};

// 24-bit files clip overs at full scale rather than wrapping around.
bool writeWav(const std::string& path, const std::vector<float>& interleaved, int channels, int sampleRate,
              SampleFormat format, std::string& error);
bool readWav(const std::string& path, WavData& data, std::string& error);

}  // namespace vrnhost
