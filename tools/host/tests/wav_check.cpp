// wav_check: the integration tests' probe for rendered files.
//   wav_check FILE [--frames N] [--rate HZ] [--channels N] [--sound]
//     checks that every sample is finite (and the given shape, and some sound when asked) and
//     prints frames, rate, channels, peak and RMS;
//   wav_check --compare A B [--max-diff X]
//     checks that two renders have the same shape and differ by at most X per sample (default 0).
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tools/host/wav_file.h"

namespace {

using vrnhost::WavData;

// Anything below this peak counts as silence (about -120 dBFS).
constexpr double kSilencePeak = 1e-6;

int fail(const std::string& message) {
  std::fprintf(stderr, "wav_check: %s\n", message.c_str());
  return 1;
}

bool load(const std::string& path, WavData& data, std::string& error) {
  if (!vrnhost::readWav(path, data, error)) return false;
  for (std::size_t i = 0; i < data.samples.size(); ++i) {
    if (!std::isfinite(data.samples[i])) {
      error = path + ": sample " + std::to_string(i) + " is not finite";
      return false;
    }
  }
  return true;
}

int compare(const std::string& pathA, const std::string& pathB, double maxDiff) {
  WavData a, b;
  std::string error;
  if (!load(pathA, a, error) || !load(pathB, b, error)) return fail(error);
  if (a.frames != b.frames || a.channels != b.channels || a.sampleRate != b.sampleRate) {
    return fail("shapes differ: " + std::to_string(a.frames) + " vs " + std::to_string(b.frames) + " frames");
  }
  double worst = 0.0, sumSquares = 0.0;
  std::size_t worstAt = 0;
  for (std::size_t i = 0; i < a.samples.size(); ++i) {
    double diff = std::fabs(static_cast<double>(a.samples[i]) - b.samples[i]);
    sumSquares += diff * diff;
    if (diff > worst) {
      worst = diff;
      worstAt = i;
    }
  }
  double rms = a.samples.empty() ? 0.0 : std::sqrt(sumSquares / a.samples.size());
  std::printf("max-diff=%.3g at frame %zu, rms-diff=%.3g\n", worst, worstAt / (a.channels ? a.channels : 1), rms);
  if (worst > maxDiff) return fail("renders differ by " + std::to_string(worst) + " (allowed " + std::to_string(maxDiff) + ")");
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc >= 4 && std::string(argv[1]) == "--compare") {
    double maxDiff = 0.0;
    if (argc == 6 && std::string(argv[4]) == "--max-diff") maxDiff = std::atof(argv[5]);
    else if (argc != 4) return fail("usage: wav_check --compare A B [--max-diff X]");
    return compare(argv[2], argv[3], maxDiff);
  }
  if (argc < 2) return fail("usage: wav_check FILE [--frames N] [--rate HZ] [--channels N] [--sound]");
  long long wantFrames = -1, wantRate = -1, wantChannels = -1;
  bool wantSound = false;
  for (int i = 2; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "--sound") {
      wantSound = true;
    } else if (i + 1 < argc && (arg == "--frames" || arg == "--rate" || arg == "--channels")) {
      long long value = std::atoll(argv[++i]);
      (arg == "--frames" ? wantFrames : arg == "--rate" ? wantRate : wantChannels) = value;
    } else {
      return fail("unknown argument '" + arg + "'");
    }
  }
  WavData data;
  std::string error;
  if (!load(argv[1], data, error)) return fail(error);
  double peak = 0.0, sumSquares = 0.0;
  for (float sample : data.samples) {
    peak = std::fmax(peak, std::fabs(sample));
    sumSquares += static_cast<double>(sample) * sample;
  }
  double rms = data.samples.empty() ? 0.0 : std::sqrt(sumSquares / data.samples.size());
  std::printf("frames=%lld rate=%d channels=%d peak=%.6g rms=%.6g\n", static_cast<long long>(data.frames),
              data.sampleRate, data.channels, peak, rms);
  if (wantFrames >= 0 && data.frames != wantFrames) return fail("expected " + std::to_string(wantFrames) + " frames");
  if (wantRate >= 0 && data.sampleRate != wantRate) return fail("expected rate " + std::to_string(wantRate));
  if (wantChannels >= 0 && data.channels != wantChannels) return fail("expected " + std::to_string(wantChannels) + " channels");
  if (wantSound && peak < kSilencePeak) return fail("the render is silent");
  return 0;
}
