// The bank check's measurements on signals whose answers are known: the band-picture distance,
// the power share above a frequency and the pitch heard, including the octave errors that the
// bass check exists to catch.
#include "tools/bankcheck/measures.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tools/bankcheck/phrases.h"

namespace bankcheck {
namespace {

constexpr int kRate = 44100;

// Stereo audio of `seconds` whose both channels are sum of sines (frequency, amplitude).
Audio sines(std::initializer_list<std::pair<double, double>> partials, double seconds) {
  Audio audio;
  audio.sampleRate = kRate;
  const auto frames = static_cast<std::size_t>(seconds * kRate);
  audio.samples.assign(2 * frames, 0.0f);
  for (std::size_t i = 0; i < frames; ++i) {
    double x = 0.0;
    for (const auto& [hz, amplitude] : partials) x += amplitude * std::sin(2.0 * M_PI * hz * i / kRate);
    audio.samples[2 * i] = audio.samples[2 * i + 1] = static_cast<float>(x);
  }
  return audio;
}

// A band-limited saw's first partials at `hz`.
Audio saw(double hz, double seconds, double subOctaveLevel = 0.0) {
  Audio audio = sines({{hz, 0.5}, {2 * hz, 0.25}, {3 * hz, 0.167}, {4 * hz, 0.125}, {5 * hz, 0.1}}, seconds);
  if (subOctaveLevel > 0.0) {
    const Audio sub = sines({{hz / 2, subOctaveLevel}}, seconds);
    for (std::size_t i = 0; i < audio.samples.size(); ++i) audio.samples[i] += sub.samples[i];
  }
  return audio;
}

TEST(BandPicture, DistanceIsZeroForTheSameSoundAndGrowsWithLevelAndTimbre) {
  const Audio a = saw(220.0, 1.0);
  EXPECT_EQ(pictureDistance(bandPicture(a), bandPicture(a)), 0.0);
  EXPECT_NEAR(pictureDistance(bandPicture(a), bandPicture(a, 0.5)), 6.02, 0.05) << "half the level: 6 dB";
  const Audio brighter = sines({{220.0, 0.5}, {880.0, 0.5}, {1760.0, 0.5}}, 1.0);
  EXPECT_GT(pictureDistance(bandPicture(a), bandPicture(brighter)), 3.0);
}

TEST(PowerShare, SplitsAtTheFrequency) {
  // Equal amplitudes at 100 Hz and 400 Hz: half the power lies above 200 Hz.
  EXPECT_NEAR(powerShareAbove(sines({{100.0, 0.3}, {400.0, 0.3}}, 1.0), 200.0), 0.5, 0.02);
  EXPECT_LT(powerShareAbove(sines({{50.0, 0.5}}, 1.0), 200.0), 0.01);
}

TEST(PeriodPitch, HearsTheKeyAndCatchesOctaveErrors) {
  for (double note : {24.0, 36.0, 60.0}) {
    const double hz = noteHz(note);
    const Audio tone = saw(hz, 0.6);
    EXPECT_NEAR(periodPitchHz(tone, 0, kRate / 4, hz / 2.2, hz * 2.2), hz, hz * 0.01) << note;
  }
  const double c2 = noteHz(36.0);
  const Audio withSub = saw(c2, 0.6, 0.5);
  EXPECT_NEAR(periodPitchHz(withSub, 0, kRate / 4, c2 / 2.2, c2 * 2.2), c2 / 2, c2 * 0.01)
      << "a strong tone an octave down is what the ear takes for the pitch";
  EXPECT_EQ(periodPitchHz(withSub, 0, withSub.frames(), c2 / 2.2, c2 * 2.2), 0.0)
      << "no room past the span to compare with";
}

TEST(Phrases, CategoriesAndTheirPhrases) {
  EXPECT_EQ(categoryOf("BASS - Saw Bass"), Category::kBass);
  EXPECT_EQ(categoryOf("Init Patch"), Category::kNone);
  EXPECT_EQ(categoryOf("bass - lower case"), Category::kNone);
  const Phrase wheel = categoryPhrase(Category::kLead, 100, true, kRate);
  EXPECT_EQ(wheel.events.front().bytes, (vrnhost::MidiBytes{0xB0, 1, 127}))
      << "the wheel is up before any note";
  for (Category category :
       {Category::kLead, Category::kBass, Category::kPoly, Category::kPad, Category::kFx}) {
    const Phrase phrase = categoryPhrase(category, 30, false, kRate);
    int held = 0;
    for (const vrnhost::FrameMidi& event : phrase.events) {
      held += event.bytes[0] == 0x90 ? 1 : event.bytes[0] == 0x80 ? -1 : 0;
      if (event.bytes[0] == 0x90) {
        EXPECT_EQ(event.bytes[2], 30);
      }
    }
    EXPECT_EQ(held, 0) << categoryWord(category) << ": every note ends";
    EXPECT_GE(phrase.frames, phrase.events.back().frame + kRate) << "a tail follows the last note";
  }
}

}  // namespace
}  // namespace bankcheck
