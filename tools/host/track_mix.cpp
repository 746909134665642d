// The multi-track render and the mixer's gain rules; see track_mix.h.
#include "tools/host/track_mix.h"

#include <algorithm>
#include <cmath>

#include "tools/host/loudness.h"
#include "tools/host/peak_limiter.h"

namespace vrnhost {

namespace {

constexpr std::uint8_t kStatusMask = 0xF0;
constexpr std::uint8_t kNoteOn = 0x90;
constexpr std::uint8_t kController = 0xB0;
constexpr std::uint8_t kChannelVolume = 7;
constexpr double kFullVolume = 127.0;

bool hasNotes(const MidiSequence& sequence) {
  return std::any_of(sequence.messages.begin(), sequence.messages.end(), [](const TimedMidi& m) {
    return (m.bytes[0] & kStatusMask) == kNoteOn && m.bytes[2] > 0;
  });
}

// The track's fader as a linear gain: its first channel volume, or unity.
double faderGain(const MidiSequence& sequence) {
  for (const TimedMidi& m : sequence.messages) {
    if ((m.bytes[0] & kStatusMask) == kController && m.bytes[1] == kChannelVolume) {
      return std::pow(10.0, 40.0 * std::log10(std::max(1, int{m.bytes[2]}) / kFullVolume) / 20.0);
    }
  }
  return 1.0;
}

}  // namespace

bool renderTrackMix(const RenderJob& job, const std::vector<MidiTrack>& tracks, const JobRunner& run,
                    RenderResult& result, std::vector<std::string>& programs, std::string& error) {
  result.frames = job.frames;
  result.samples.assign(static_cast<std::size_t>(job.frames) * 2, 0.0f);
  result.pluginCpuSeconds = 0.0;
  programs.clear();
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    const MidiTrack& track = tracks[i];
    if (!hasNotes(track.sequence)) continue;
    if (track.name.empty()) {
      error = "track " + std::to_string(i + 1) + " has notes but no name to choose its program by";
      return false;
    }
    RenderJob trackJob = job;
    trackJob.program = -1;
    trackJob.programName = track.name;
    trackJob.events = toFrames(track.sequence.messages, job.sampleRate);
    RenderResult rendered;
    if (!run(trackJob, rendered, error)) {
      error = "track " + std::to_string(i + 1) + " ('" + track.name + "'): " + error;
      return false;
    }
    const auto gain = static_cast<float>(faderGain(track.sequence));
    const std::size_t count = std::min(rendered.samples.size(), result.samples.size());
    for (std::size_t s = 0; s < count; ++s) result.samples[s] += gain * rendered.samples[s];
    result.pluginCpuSeconds += rendered.pluginCpuSeconds;
    result.codePath = rendered.codePath;
    programs.push_back(track.name);
  }
  if (programs.empty()) {
    error = "the MIDI file has no track with notes";
    return false;
  }
  return true;
}

void normaliseLoudness(std::vector<float>& interleaved, int sampleRate, double targetLufs, double ceilingDb) {
  // Limiting takes a little loudness away, so further passes make up for what the last one lost.
  constexpr int kMostPasses = 4;
  constexpr double kCloseEnoughLu = 0.05;
  for (int pass = 0; pass < kMostPasses; ++pass) {
    const double loudness = integratedLoudness(interleaved, 2, sampleRate);
    if (!std::isfinite(loudness) || std::fabs(loudness - targetLufs) < kCloseEnoughLu) return;
    const auto gain = static_cast<float>(std::pow(10.0, (targetLufs - loudness) / 20.0));
    for (float& sample : interleaved) sample *= gain;
    limitPeaks(interleaved, sampleRate, ceilingDb);
  }
}

}  // namespace vrnhost
