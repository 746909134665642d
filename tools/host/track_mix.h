// Multi-track rendering, as a DAW plays an arrangement: every track of a MIDI file that has notes
// is played through its own instance of the plug-in, on the program its track name names, and the
// tracks are summed on a mixer whose faders are the tracks' channel volume (controller 7, the
// General MIDI law: 40 log10(value / 127) dB; a track without one plays at 0 dB). The mix can then
// be brought to a target integrated loudness, its peaks held under a ceiling by a limiter. Not real-time
// code: each track is rendered whole, one after the other.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/host/midi_file.h"
#include "tools/host/render_job.h"

namespace vrnhost {

// Runs one render job (in this process, or under wine for a Windows plug-in).
using JobRunner = std::function<bool(const RenderJob& job, RenderResult& result, std::string& error)>;

// Renders the tracks with `job`'s settings (rate, block size, tempo, length: job.frames) and sums
// them into result.samples (result.pluginCpuSeconds adds up every track's); `programs` receives
// the program of each rendered track. Tracks without notes (a tempo track) are skipped; a track
// with notes must name a program. False with a reason.
bool renderTrackMix(const RenderJob& job, const std::vector<MidiTrack>& tracks, const JobRunner& run,
                    RenderResult& result, std::vector<std::string>& programs, std::string& error);

// Brings interleaved stereo to the target loudness, the mastering limiter (peak_limiter.h) holding
// its peaks at or below ceilingDb. Silence is left alone.
void normaliseLoudness(std::vector<float>& interleaved, int sampleRate, double targetLufs, double ceilingDb);

}  // namespace vrnhost
