// Guards the sound while the engine is reworked for speed: a fixed phrase is rendered through six
// factory programs, and each render must stay within -80 dB of the render stored for it.
//
// A render (2 s of stereo) is too large to keep in the tree, so tests/data/render_fingerprints.txt
// keeps a fingerprint of each: its energy and kProjections random projections per channel (dot
// products with fixed pseudo-random +/-1 sequences). After a change that is meant to alter the
// sound, rewrite that file with
//
//   VRNZIV_WRITE_FINGERPRINTS=1 build/tests/ziv_tests --gtest_filter='RenderFingerprint.*'
//
// and commit it with the change. Two renders made in one process (the two code paths of the
// engine, for one) need no fingerprint: differenceDb(render(c), other) compares them exactly.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "engine/isa.h"
#include "engine/voice_filter.h"
#include "test_host.h"

namespace ziv::testing {
namespace {

constexpr int kHostBlock = 256;
constexpr int kRenderFrames = 345 * kHostBlock;  // 2.003 s at 44.1 kHz
// A render that moved by more than this, relative to its energy, fails.
constexpr double kMaxDifferenceDb = -80.0;
constexpr int kProjections = 128;
constexpr std::uint32_t kProjectionSeed = 0x2545F491u;
constexpr const char* kWriteVariable = "VRNZIV_WRITE_FINGERPRINTS";

constexpr int kNoteOn = 0x90, kNoteOff = 0x80, kController = 0xB0, kPitchBend = 0xE0;
constexpr int kModWheel = 1, kSustain = 64, kBendCentre = 64;

// One MIDI message of the phrase, at `frame` frames from the start of the render.
struct PhraseEvent {
  int frame;
  int status, data1, data2;
};

// A triad with its seventh held by the pedal, a line of overlapping notes (legato, so gliding
// programs glide) with a wheel move and a bend up and back, and a second chord that is released
// in time for its tails to be heard. Each event has a frame of its own, and most fall inside a
// host block, so sub-block boundaries are exercised.
constexpr PhraseEvent kPhrase[] = {
    {17, kController, kModWheel, 40},
    {300, kNoteOn, 48, 96},
    {307, kNoteOn, 52, 80},
    {315, kNoteOn, 55, 112},
    {322, kNoteOn, 59, 70},
    {13000, kController, kSustain, 127},
    {17640, kNoteOff, 48, 0},
    {17650, kNoteOff, 52, 0},
    {17660, kNoteOff, 55, 0},
    {17670, kNoteOff, 59, 0},
    {30870, kController, kSustain, 0},
    {33075, kNoteOn, 60, 100},
    {41013, kNoteOn, 64, 90},
    {41895, kNoteOff, 60, 0},
    {48951, kNoteOn, 67, 110},
    {49833, kNoteOff, 64, 0},
    {52000, kController, kModWheel, 100},
    {56889, kNoteOn, 65, 85},
    {57771, kNoteOff, 67, 0},
    {58212, kPitchBend, 0, 72},
    {58800, kPitchBend, 0, 80},
    {59400, kPitchBend, 0, 96},
    {63000, kPitchBend, 0, 80},
    {63600, kPitchBend, 0, kBendCentre},
    {64827, kNoteOff, 65, 0},
    {67032, kNoteOn, 53, 100},
    {67040, kNoteOn, 57, 60},
    {67047, kNoteOn, 60, 127},
    {67055, kNoteOn, 64, 90},
    {79380, kNoteOff, 53, 0},
    {79390, kNoteOff, 57, 0},
    {79400, kNoteOff, 60, 0},
    {79410, kNoteOff, 64, 0},
};

constexpr bool framesStrictlyRise() {
  for (std::size_t i = 1; i < std::size(kPhrase); ++i) {
    if (kPhrase[i].frame <= kPhrase[i - 1].frame) return false;
  }
  return kPhrase[std::size(kPhrase) - 1].frame < kRenderFrames;
}
static_assert(framesStrictlyRise(),
              "the phrase's events are in frame order, one per frame, inside the render");

// A program setting changed from the factory program, in the parameter's own units.
struct Override {
  int index;
  float physical;
};

// A factory program and what the test changes in it to reach a unit the bank leaves unused.
struct RenderCase {
  const char* program;
  std::vector<Override> overrides;
};

// Together the cases run every unit: saw, pulse (with its width modulated), hard sync, sub and
// noise; the voice filter in all four modes (both filters share one implementation); every
// shaper mode; unison, glide, both LFOs, chorus, delay, the master EQ and the limiter.
const RenderCase kCases[] = {
    // Synced saw and a pulse, Clip, resonant low-pass; glide and a vowel filter 2 added.
    {"LEAD - Sync Scream", {{kGlideTime, 0.3f}, {kFilter2Mode, static_cast<float>(kFilterVox)}}},
    // Pulse and sub, Sine shaper, filter 2 low-pass, master EQ.
    {"BASS - Round Sub", {}},
    // Detuned saws in unison, Crush, a global LFO on pitch, chorus.
    {"PAD - Lo-Fi Pad", {}},
    // Sub in unison, Fold.
    {"POLY - Folded Keys", {}},
    // Pulses in unison, high-pass, chorus, delay; the limiter pushed into action.
    {"PAD - Glass Pad", {{kMasterLimiter, 1.0f}, {kMasterGain, 1.0f}}},
    // Noise through a band-pass moved by a random voice LFO, chorus.
    {"FX - Wind", {}},
};

// Both output channels of one render, one sample per frame.
struct StereoRender {
  std::vector<float> left, right;
};

int factoryProgramIndex(VstTest& plugin, const char* name) {
  char text[vst2::kVstMaxProgNameLen + 1] = {};
  for (int i = 0; i < VstTest::kProgramCount; ++i) {
    if (plugin.getProgramNameIndexed(0, i, text) && std::strcmp(text, name) == 0) return i;
  }
  return -1;
}

// Renders the phrase through a new instance on the case's program, in host blocks of
// kHostBlock frames. Empty (and a test failure) when the bank has no such program.
StereoRender render(const RenderCase& c) {
  TestHost host;
  const int program = factoryProgramIndex(host.plugin(), c.program);
  if (program < 0) {
    ADD_FAILURE() << "no factory program named \"" << c.program << "\"";
    return {};
  }
  host.plugin().setProgram(program);
  for (const Override& o : c.overrides) host.setPhysical(o.index, o.physical);
  // Settings hold from the first frame instead of ramping in from the previous program's.
  host.plugin().resume();

  StereoRender out;
  std::size_t next = 0;
  for (int start = 0; start < kRenderFrames; start += kHostBlock) {
    const int frames = std::min(kHostBlock, kRenderFrames - start);
    for (; next < std::size(kPhrase) && kPhrase[next].frame < start + frames; ++next) {
      const PhraseEvent& e = kPhrase[next];
      host.midi(e.frame - start, e.status, e.data1, e.data2);
    }
    host.process(frames);
    out.left.insert(out.left.end(), host.left.begin(), host.left.begin() + frames);
    out.right.insert(out.right.end(), host.right.begin(), host.right.begin() + frames);
  }
  return out;
}

// `power` relative to `energy` in dB: -inf when power is 0, NaN when energy is 0 or either is NaN.
double ratioDb(double power, double energy) {
  return 10.0 * std::log10(power / energy);
}

// How far `other` is from `reference`: the energy of their difference relative to the
// reference's energy, in dB, exactly. NaN when their lengths differ.
double differenceDb(const StereoRender& reference, const StereoRender& other) {
  if (reference.left.size() != other.left.size() || reference.right.size() != other.right.size()) {
    return std::nan("");
  }
  double difference = 0.0, energy = 0.0;
  const auto add = [&](const std::vector<float>& a, const std::vector<float>& b) {
    for (std::size_t i = 0; i < a.size(); ++i) {
      const double x = a[i], d = static_cast<double>(b[i]) - x;
      difference += d * d;
      energy += x * x;
    }
  };
  add(reference.left, other.left);
  add(reference.right, other.right);
  return ratioDb(difference, energy);
}

// A render's energy and its dot products with kProjections pseudo-random +/-1 sequences per
// channel. The projections are linear, so two fingerprints' difference is the fingerprint of the
// renders' difference d; for a sequence r of independent, equally likely +/-1 values,
// E[(r.d)^2] = sum_i d_i^2 = |d|^2 (the cross terms d_i d_j r_i r_j, i != j, average to 0). The
// mean of the kProjections squared differences of a channel therefore estimates that channel's
// |d|^2 without bias, and Var[(r.d)^2] = 2|d|^4 - 2 sum_i d_i^4 <= 2|d|^4 bounds its relative
// spread by sqrt(2 / kProjections): 0.125, about +/-0.5 dB, for 128, whatever d is. The
// sequences come from xorshift32, whose bits are near enough independent for this.
struct Fingerprint {
  double energy = 0.0;
  std::array<std::array<double, kProjections>, 2> projections{};
};

std::uint32_t xorshift32(std::uint32_t& state) {
  state ^= state << 13;
  state ^= state >> 17;
  state ^= state << 5;
  return state;
}

Fingerprint fingerprint(const StereoRender& r) {
  constexpr int kBitsPerWord = 32;
  Fingerprint f;
  // One generator runs on through both channels, so their sequences are independent.
  std::uint32_t state = kProjectionSeed;
  const std::vector<float>* channels[] = {&r.left, &r.right};
  for (int c = 0; c < 2; ++c) {
    for (const float sample : *channels[c]) {
      const double x = sample;
      f.energy += x * x;
      for (int word = 0; word < kProjections / kBitsPerWord; ++word) {
        const std::uint32_t signs = xorshift32(state);
        for (int bit = 0; bit < kBitsPerWord; ++bit) {
          f.projections[c][word * kBitsPerWord + bit] += (signs >> bit) & 1u ? x : -x;
        }
      }
    }
  }
  return f;
}

// differenceDb estimated from fingerprints alone (see Fingerprint for how close it comes).
double estimatedDifferenceDb(const Fingerprint& reference, const Fingerprint& other) {
  double squares = 0.0;
  for (int c = 0; c < 2; ++c) {
    for (int k = 0; k < kProjections; ++k) {
      const double d = other.projections[c][k] - reference.projections[c][k];
      squares += d * d;
    }
  }
  return ratioDb(squares / kProjections, reference.energy);
}

// The stored file: comment lines, then per case a line "program NAME", a line "energy E" and the
// lines "left P..." and "right P..." with kProjections numbers each, printed to round-trip.
using FingerprintFile = std::map<std::string, Fingerprint>;
const char* const kChannelKeys[] = {"left", "right"};

bool writeFingerprints(const char* path, const FingerprintFile& prints) {
  std::FILE* out = std::fopen(path, "w");
  if (out == nullptr) return false;
  std::fprintf(out,
               "# Fingerprints of the renders that tests/render_fingerprint_test.cpp compares against.\n"
               "# Rewrite with: %s=1 build/tests/ziv_tests --gtest_filter='RenderFingerprint.*'\n",
               kWriteVariable);
  for (const auto& [name, f] : prints) {
    std::fprintf(out, "program %s\nenergy %.17g\n", name.c_str(), f.energy);
    for (int c = 0; c < 2; ++c) {
      std::fprintf(out, "%s", kChannelKeys[c]);
      for (const double p : f.projections[c]) std::fprintf(out, " %.17g", p);
      std::fprintf(out, "\n");
    }
  }
  return std::fclose(out) == 0;
}

// Reads `path` into `prints`; the empty string on success, else what is wrong with it.
std::string readFingerprints(const char* path, FingerprintFile& prints) {
  std::ifstream in(path);
  if (!in) return std::string("cannot open ") + path;
  Fingerprint* current = nullptr;
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::string key;
    fields >> key;
    if (key == "program") {
      std::string name;
      std::getline(fields >> std::ws, name);
      current = &prints[name];
    } else if (current != nullptr && key == "energy") {
      fields >> current->energy;
    } else if (current != nullptr && (key == kChannelKeys[0] || key == kChannelKeys[1])) {
      for (double& p : current->projections[key == kChannelKeys[0] ? 0 : 1]) fields >> p;
    } else {
      fields.setstate(std::ios::failbit);
    }
    if (fields.fail() || !(fields >> std::ws).eof()) {
      return std::string(path) + ":" + std::to_string(number) + ": malformed line";
    }
  }
  return "";
}

TEST(RenderFingerprint, RendersStayWithinMinus80DbOfTheStoredOnes) {
  FingerprintFile fresh;
  for (const RenderCase& c : kCases) fresh[c.program] = fingerprint(render(c));

  if (std::getenv(kWriteVariable) != nullptr) {
    ASSERT_FALSE(::testing::Test::HasFailure()) << "nothing written";
    ASSERT_TRUE(writeFingerprints(ZIV_RENDER_FINGERPRINTS_FILE, fresh))
        << "cannot write " << ZIV_RENDER_FINGERPRINTS_FILE;
    std::printf("wrote the fingerprints of %zu renders to %s\n", fresh.size(), ZIV_RENDER_FINGERPRINTS_FILE);
    GTEST_SKIP() << kWriteVariable << " is set: fingerprints rewritten, not compared";
  }

  FingerprintFile stored;
  const std::string problem = readFingerprints(ZIV_RENDER_FINGERPRINTS_FILE, stored);
  ASSERT_EQ(problem, "") << "rewrite the file with " << kWriteVariable << "=1";
  for (const RenderCase& c : kCases) {
    const auto found = stored.find(c.program);
    if (found == stored.end()) {
      ADD_FAILURE() << "no stored fingerprint for \"" << c.program << "\": rewrite the file with "
                    << kWriteVariable << "=1";
      continue;
    }
    const double db = estimatedDifferenceDb(found->second, fresh[c.program]);
    std::printf("%-24s moved %7.1f dB from its stored render\n", c.program, db);
    EXPECT_LT(db, kMaxDifferenceDb) << c.program;
  }
}

// The estimate follows the exact figure for differences of different shapes: a level change
// (the difference is the render itself, scaled) at the threshold and well above it, and a shift
// by one frame (a high-passed difference).
TEST(RenderFingerprint, EstimateFollowsTheExactDifference) {
  // Three standard deviations of the estimate's spread, sqrt(2 / kProjections), in dB.
  const double toleranceDb = 10.0 * std::log10(1.0 + 3.0 * std::sqrt(2.0 / kProjections));
  const StereoRender reference = render(kCases[0]);
  const Fingerprint referencePrint = fingerprint(reference);
  for (const double gain : {1.0001, 1.01}) {
    StereoRender louder = reference;
    for (float& x : louder.left) x = static_cast<float>(x * gain);
    for (float& x : louder.right) x = static_cast<float>(x * gain);
    EXPECT_NEAR(estimatedDifferenceDb(referencePrint, fingerprint(louder)), differenceDb(reference, louder),
                toleranceDb)
        << "gain " << gain;
  }
  StereoRender shifted = reference;
  std::rotate(shifted.left.begin(), shifted.left.end() - 1, shifted.left.end());
  std::rotate(shifted.right.begin(), shifted.right.end() - 1, shifted.right.end());
  EXPECT_NEAR(estimatedDifferenceDb(referencePrint, fingerprint(shifted)), differenceDb(reference, shifted),
              toleranceDb);
}

// Two instances render the same program identically: nothing an instance leaves behind in the
// process (tables, generators) changes the next one's sound. A comparison of two code paths
// relies on this. The noise program has the most random state: noise seeds, a random LFO.
TEST(RenderFingerprint, RendersRepeatExactly) {
  const RenderCase& c = kCases[5];
  EXPECT_EQ(differenceDb(render(c), render(c)), -std::numeric_limits<double>::infinity());
}

// The baseline and the AVX2/FMA kernels (engine/isa.h) compute the same samples, bit for bit:
// both are built without fused multiply-adds, and vectorising reorders no arithmetic.
TEST(RenderFingerprint, BothCodePathsRenderTheSame) {
  if (!isa::avx2Supported()) GTEST_SKIP() << "this processor has no AVX2 and FMA";
  const isa::Path chosen = isa::chosen();
  for (const RenderCase& c : kCases) {
    isa::choose(isa::Path::kBaseline);
    const StereoRender baseline = render(c);
    isa::choose(isa::Path::kAvx2);
    EXPECT_EQ(isa::chosen(), isa::Path::kAvx2);
    EXPECT_EQ(differenceDb(baseline, render(c)), -std::numeric_limits<double>::infinity()) << c.program;
  }
  isa::choose(chosen);
}

}  // namespace
}  // namespace ziv::testing
