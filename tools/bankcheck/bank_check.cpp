// Rendering, measuring and the thresholds of bank_check.h.
#include "tools/bankcheck/bank_check.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "tools/bankcheck/measures.h"
#include "tools/host/loudness.h"
#include "tools/host/render_session.h"

namespace bankcheck {

namespace {

constexpr int kSampleRate = 44100;
constexpr int kBlockSize = 512;
// Every render starts from the same random seed, so that noise and unison phases, which the
// plug-in draws from the C library's generator, come out the same from run to run.
constexpr unsigned kRandomSeed = 1;
constexpr int kPhraseVelocity = 100;
constexpr int kSoftVelocity = 30;
constexpr int kHardVelocity = 127;
// Pictures for the nearest-program distance are compared at this common loudness.
constexpr double kReferenceLoudness = -23.0;

// The thresholds a factory bank meets.
constexpr double kMedianLowest = -18.0;     // LUFS
constexpr double kMedianHighest = -14.0;    // LUFS
constexpr double kLoudnessTolerance = 2.0;  // LU either side of the median
constexpr double kPeakCeilingDb = -1.0;     // dBFS
constexpr double kMinWheelEffect = 1.0;     // dB of band-picture distance
constexpr double kMinVelocityEffect = 1.0;  // dB of band-picture distance
constexpr double kMinBassShareAbove200 = 0.2;
constexpr double kMaxFundamentalCents = 50.0;
// A bass's pitch is searched within a little more than an octave either side of its key.
constexpr double kPitchSearchRange = 2.2;
constexpr int kPitchWindows = 5;
// A glide's pitch is searched between its two notes, with a semitone to spare on either side.
constexpr double kGlideSearchMargin = 1.06;
constexpr double kMinGlideSemitones = 1.0;
constexpr double kMinNearestDistance = 3.0;  // dB of band-picture distance at equal loudness
// The master gain's normalised value moves the level by 49 dB over its range (its law is
// 10^(2.45 g - 2)), so a level error converts directly into a gain move.
constexpr double kMasterGainDbPerUnit = 49.0;

constexpr const char* kLimiterName = "MASTER: Limiter";
constexpr const char* kInitPatchName = "Init Patch";

// Renders the phrase on the program; with `parameters`, also lists the program's parameter displays.
bool render(const std::string& pluginPath, int program, const Phrase& phrase, Audio& audio,
            std::string& error, std::vector<vrnhost::ParameterInfo>* parameters = nullptr) {
  vrnhost::RenderJob job;
  job.pluginPath = pluginPath;
  job.sampleRate = kSampleRate;
  job.blockSize = kBlockSize;
  job.program = program;
  job.events = phrase.events;
  job.frames = phrase.frames;
  job.listParameters = parameters != nullptr;
  std::srand(kRandomSeed);
  vrnhost::RenderResult result;
  if (!vrnhost::runRenderJob(job, result, error)) return false;
  audio.samples = std::move(result.samples);
  audio.sampleRate = kSampleRate;
  if (parameters) *parameters = std::move(result.parameters);
  return true;
}

bool titleSaysGlide(const std::string& name) {
  return name.find("Glide") != std::string::npos || name.find("Legato") != std::string::npos;
}

double cents(double hz, double referenceHz) {
  return 1200.0 * std::log2(hz / referenceHz);
}

struct Measured {
  ProgramFigures figures;
  BandPicture picture;  // at the reference loudness
};

bool measureProgram(const std::string& plugin, int index, const std::string& name, Measured& measured,
                    std::string& error) {
  ProgramFigures& f = measured.figures;
  f.index = index;
  f.name = name;
  f.category = categoryOf(name);
  Audio base, wheel, soft, hard;
  std::vector<vrnhost::ParameterInfo> parameters;
  auto phrase = [&](int velocity, bool wheelUp) {
    return categoryPhrase(f.category, velocity, wheelUp, kSampleRate);
  };
  if (!render(plugin, index, phrase(kPhraseVelocity, false), base, error, &parameters) ||
      !render(plugin, index, phrase(kPhraseVelocity, true), wheel, error) ||
      !render(plugin, index, phrase(kSoftVelocity, false), soft, error) ||
      !render(plugin, index, phrase(kHardVelocity, false), hard, error)) {
    return false;
  }
  for (const vrnhost::ParameterInfo& info : parameters) {
    if (info.name == kLimiterName) f.limiter = std::atof(info.display.c_str()) >= 0.5;
  }
  f.loudness = vrnhost::integratedLoudness(base.samples, 2, kSampleRate);
  f.peakDb = std::max({vrnhost::samplePeakDb(base.samples), vrnhost::samplePeakDb(wheel.samples),
                       vrnhost::samplePeakDb(soft.samples), vrnhost::samplePeakDb(hard.samples)});
  f.wheelEffect = pictureDistance(bandPicture(base), bandPicture(wheel));
  f.velocityEffect = pictureDistance(bandPicture(soft), bandPicture(hard));
  const double gain =
      std::isfinite(f.loudness) ? std::pow(10.0, (kReferenceLoudness - f.loudness) / 20.0) : 1.0;
  measured.picture = bandPicture(base, gain);

  if (f.category == Category::kPoly || f.category == Category::kPad) {
    Audio chord;
    if (!render(plugin, index, fullChord(kSampleRate), chord, error)) return false;
    f.chordPeakDb = vrnhost::samplePeakDb(chord.samples);
    f.peakDb = std::max(f.peakDb, f.chordPeakDb);
  }
  if (f.category == Category::kBass) {
    f.shareAbove200 = powerShareAbove(base, 200.0);
    Audio held;
    if (!render(plugin, index, heldBassNotes(kSampleRate), held, error)) return false;
    for (int i = 0; i < 2; ++i) {
      const NoteSpan& span = kBassNoteSpans[i];
      const double key = noteHz(span.note);
      // The median over a few short windows, so that a sweeping filter cannot mislead one long one.
      std::vector<double> heard;
      const double step = (span.toSeconds - span.fromSeconds) / kPitchWindows;
      for (int w = 0; w < kPitchWindows; ++w) {
        const double from = span.fromSeconds + w * step;
        heard.push_back(periodPitchHz(held, static_cast<std::size_t>(from * kSampleRate),
                                      static_cast<std::size_t>((from + step) * kSampleRate),
                                      key / kPitchSearchRange, key * kPitchSearchRange));
      }
      std::nth_element(heard.begin(), heard.begin() + kPitchWindows / 2, heard.end());
      const double hz = heard[kPitchWindows / 2];
      f.fundamentalCents[i] = hz > 0.0 ? cents(hz, key) : NAN;
    }
  }
  if (titleSaysGlide(name)) {
    Audio pair;
    if (!render(plugin, index, overlappingPair(kSampleRate), pair, error)) return false;
    // 30 to 70 ms after the second key: a glide is on its way, a jump has long arrived.
    const auto from = static_cast<std::size_t>((kPairSecondStartSeconds + 0.03) * kSampleRate);
    const auto to = static_cast<std::size_t>((kPairSecondStartSeconds + 0.07) * kSampleRate);
    const double hz = periodPitchHz(pair, from, to, noteHz(kPairFirstNote) / kGlideSearchMargin,
                                    noteHz(kPairSecondNote) * kGlideSearchMargin);
    f.glideSemitones = hz > 0.0 ? -cents(hz, noteHz(kPairSecondNote)) / 100.0 : 0.0;
  }
  return true;
}

void findNearest(std::vector<Measured>& measured) {
  for (Measured& a : measured) {
    for (const Measured& b : measured) {
      if (&a == &b || a.figures.category != b.figures.category || a.figures.category == Category::kNone)
        continue;
      const double distance = pictureDistance(a.picture, b.picture);
      if (!(distance >= a.figures.nearestDistance)) {
        a.figures.nearestDistance = distance;
        a.figures.nearestName = b.figures.name;
      }
    }
  }
}

std::string format(const char* pattern, double a, double b = 0.0, double c = 0.0) {
  char text[200];
  std::snprintf(text, sizeof(text), pattern, a, b, c);
  return text;
}

}  // namespace

bool measureBank(const std::string& pluginPath, std::vector<ProgramFigures>& figures, std::string& error,
                 const CheckProgress& progress) {
  vrnhost::RenderJob listing;
  listing.pluginPath = pluginPath;
  listing.listPrograms = true;
  vrnhost::RenderResult names;
  if (!vrnhost::runRenderJob(listing, names, error)) return false;
  std::vector<Measured> measured(names.programNames.size());
  for (std::size_t i = 0; i < measured.size(); ++i) {
    if (!measureProgram(pluginPath, static_cast<int>(i), names.programNames[i], measured[i], error))
      return false;
    if (progress) progress(static_cast<int>(i + 1), static_cast<int>(measured.size()));
  }
  findNearest(measured);
  figures.clear();
  for (const Measured& m : measured) figures.push_back(m.figures);
  return true;
}

double medianLoudness(const std::vector<ProgramFigures>& figures) {
  std::vector<double> values;
  for (const ProgramFigures& f : figures) {
    if (f.name != kInitPatchName) values.push_back(f.loudness);
  }
  if (values.empty()) return NAN;
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 ? values[middle] : 0.5 * (values[middle - 1] + values[middle]);
}

std::vector<std::string> failedThresholds(const std::vector<ProgramFigures>& figures) {
  std::vector<std::string> failures;
  const double median = medianLoudness(figures);
  if (!(median >= kMedianLowest && median <= kMedianHighest)) {
    failures.push_back(
        format("bank: median loudness %.1f LUFS, outside %.0f..%.0f", median, kMedianLowest, kMedianHighest));
  }
  for (const ProgramFigures& f : figures) {
    auto fail = [&](const std::string& what) { failures.push_back(f.name + ": " + what); };
    if (!(f.peakDb <= kPeakCeilingDb))
      fail(format("peaks at %.1f dBFS, above %.0f", f.peakDb, kPeakCeilingDb));
    if (f.name == kInitPatchName) continue;
    const double offset = f.loudness - median;
    if (!(std::fabs(offset) <= kLoudnessTolerance)) {
      fail(format("%.1f LUFS, %+.1f LU from the median (move MASTER: Gain by %+.3f)", f.loudness, offset,
                  -offset / kMasterGainDbPerUnit));
    }
    if (!(f.wheelEffect >= kMinWheelEffect))
      fail(format("the mod wheel changes only %.2f dB", f.wheelEffect));
    if (!(f.velocityEffect >= kMinVelocityEffect)) {
      fail(format("velocity changes only %.2f dB", f.velocityEffect));
    }
    if (!(f.nearestDistance >= kMinNearestDistance)) {
      fail(format("only %.2f dB from ", f.nearestDistance) + f.nearestName);
    }
    if (f.category == Category::kBass) {
      if (!(f.shareAbove200 >= kMinBassShareAbove200)) {
        fail(format("%.0f %% of its power above 200 Hz, below %.0f %%", 100.0 * f.shareAbove200,
                    100.0 * kMinBassShareAbove200));
      }
      for (int i = 0; i < 2; ++i) {
        if (!(std::fabs(f.fundamentalCents[i]) <= kMaxFundamentalCents)) {
          fail(format("held key %.0f sounds %+.0f cents away from its pitch", kBassNoteSpans[i].note,
                      f.fundamentalCents[i]));
        }
      }
    }
    if (!std::isnan(f.glideSemitones) && !(f.glideSemitones >= kMinGlideSemitones)) {
      fail(format("its title says glide, but 30 to 70 ms into a slide it is %.2f semitones from the note",
                  f.glideSemitones));
    }
  }
  return failures;
}

}  // namespace bankcheck
