// Split invariance of the units whose control (aim a span) and audio (render it) are apart: a
// script of aimed spans is rendered twice, each span once whole and once cut at random points
// into pieces, one-frame pieces among them; some spans are re-aimed before they are used up
// (some before their first frame), some are rendered past their end, and now and then the unit
// restarts. Every render call is 1..kMaxBlock frames, as the engine makes them. After each span
// the two renders must agree sample by sample, and so must the state the rig reports, so that a
// difference a split leaves behind shows in the spans after it.
//
// A rig wraps one unit, mono or stereo, derives from SplitRig (mostly through UnitRig or MonoRig)
// and has:
//   void restart();                          a voice start or a reset, as the engine makes it
//   void aim(int frames, Random& settings);  aims a span at settings drawn from `settings`
//   void render(float* left, float* right, int frames, bool idle);
//       the next frames of the span in place; idle: the input is silent in these frames, as the
//       engine tells the effects when no voice sounded
// and may hide SplitRig's kHoldsTargets and state().
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <vector>

#include "engine/dsp.h"
#include "engine/random.h"

namespace ziv::testing {

struct SplitRig {
  // True when past a span's end the unit holds the aim's targets, exactly as if aimed at them
  // again: the whole render then re-aims at the span's end where the cut one runs on.
  static constexpr bool kHoldsTargets = false;
  // What else must agree after each span (a silence or bypass flag); anything gtest can print.
  int state() const { return 0; }
};

constexpr float kSplitRate = 44100.0f;

// The rig of one unit at kSplitRate, restarted by its reset().
template <class Unit>
struct UnitRig : SplitRig {
  Unit unit;
  UnitRig() { unit.setSampleRate(kSplitRate); }
  void restart() { unit.reset(); }
};

// The rig of a mono unit, which renders the left channel.
template <class Unit>
struct MonoRig : UnitRig<Unit> {
  void render(float* left, float*, int frames, bool) { this->unit.render(left, frames); }
};

// A value drawn from `r`, lo..hi: for the rigs' settings.
inline float uniform(Random& r, float lo, float hi) {
  return lo + (hi - lo) * static_cast<float>(r.next()) / Random::kMax;
}

// Both channels of the input, rendered in place (the sources add into it).
struct SplitInput {
  std::vector<float> left, right;
};

// The length of the standard inputs: 16 stretches of sound or silence, some 9400 spans.
constexpr int kSplitFrames = 1 << 19;

// Zeros, for the sources.
inline SplitInput silentInput(int length = kSplitFrames) {
  return {std::vector<float>(length), std::vector<float>(length)};
}

// Stretches of sound and of silence, long enough for tails to ring out and for the units' quiet
// and idle paths to be reached: a DC blocker's state takes half a second to fall below its flush
// threshold (restarts, which cut such decays short, are rare). The sound is a sine under noise at
// 0.5, or in one block of seven at 2, above full scale; the right channel has the sine squared.
inline SplitInput soundAndSilence() {
  constexpr int kStretch = 1 << 15;
  constexpr int kLoudEvery = 7;  // blocks
  Random noise(99);
  SplitInput input = silentInput();
  for (int i = 0; i < kSplitFrames; ++i) {
    if ((i / kStretch) % 2 == 1) continue;
    const float level = (i / kMaxBlock) % kLoudEvery == 0 ? 2.0f : 0.5f;
    const float tone = std::sin(0.05f * static_cast<float>(i));
    input.left[i] = level * (0.7f * tone + uniform(noise, -0.3f, 0.3f));
    input.right[i] = level * (0.7f * tone * tone + uniform(noise, -0.3f, 0.3f));
  }
  return input;
}

struct BitIdentical {
  bool operator()(float a, float b) const { return std::memcmp(&a, &b, sizeof a) == 0; }
};

// Restarts `whole` and renders the script over `input` with it in whole spans and with a copy of
// it in cut ones; same(wholeSample, cutSample) says whether two samples agree. Afterwards `whole`
// is as its run left it, for the caller's checks of what the script reached.
template <class Rig, class Same = BitIdentical>
::testing::AssertionResult rendersTheSameWhateverTheCuts(Rig& whole, const SplitInput& input,
                                                         Same same = {}) {
  constexpr std::uint32_t kScriptSeed = 2024;
  constexpr int kRestartEvery = 1000;    // spans, on average
  constexpr int kNewSettingsEvery = 4;   // spans, on average; else the last settings are aimed again
  constexpr int kSingleFrameEvery = 10;  // spans aimed at one frame, on average
  constexpr int kSinglePieceEvery = 3;   // pieces of one frame, on average
  whole.restart();
  Rig cut = whole;
  SplitInput w = input, c = input;
  Random script(kScriptSeed);
  std::uint32_t settings = static_cast<std::uint32_t>(script.next());
  auto aim = [&settings](Rig& rig, int frames) {
    Random drawn(settings);
    rig.aim(frames, drawn);
  };
  const int length = static_cast<int>(input.left.size());
  for (int span = 0, at = 0; at < length; ++span) {
    if (script.next() % kRestartEvery == 0) {
      whole.restart();
      cut.restart();
    }
    if (script.next() % kNewSettingsEvery == 0) settings = static_cast<std::uint32_t>(script.next());
    const int aimed = script.next() % kSingleFrameEvery == 0 ? 1 : 1 + script.next() % kMaxBlock;
    // Seven in ten spans are rendered to their end, two are re-aimed before it, one runs past it.
    const int kind = script.next() % 10;
    int rendered = kind < 7   ? aimed
                   : kind < 9 ? script.next() % aimed
                              : aimed + script.next() % (kMaxBlock + 1 - aimed);
    rendered = std::min(rendered, length - at);
    auto silent = [&](const std::vector<float>& x) {
      return std::all_of(x.begin() + at, x.begin() + at + rendered, [](float v) { return v == 0.0f; });
    };
    const bool idle = silent(input.left) && silent(input.right);
    float* wl = w.left.data() + at;
    float* wr = w.right.data() + at;
    float* cl = c.left.data() + at;
    float* cr = c.right.data() + at;

    aim(whole, aimed);
    const int first = Rig::kHoldsTargets ? std::min(aimed, rendered) : rendered;
    if (first > 0) whole.render(wl, wr, first, idle);
    if (first < rendered) {
      aim(whole, rendered - first);
      whole.render(wl + first, wr + first, rendered - first, idle);
    }
    aim(cut, aimed);
    for (int done = 0; done < rendered;) {
      const int piece = script.next() % kSinglePieceEvery == 0 ? 1 : 1 + script.next() % (rendered - done);
      cut.render(cl + done, cr + done, piece, idle);
      done += piece;
    }

    auto failure = [&] {
      return ::testing::AssertionFailure()
             << std::setprecision(9) << "span " << span << " (aimed " << aimed << ", rendered " << rendered
             << (idle ? ", idle" : "") << ") from frame " << at << ": ";
    };
    for (int i = 0; i < rendered; ++i) {
      if (!same(wl[i], cl[i]) || !same(wr[i], cr[i])) {
        return failure() << "frame " << at + i << " renders " << wl[i] << ", " << wr[i] << " whole but "
                         << cl[i] << ", " << cr[i] << " cut";
      }
    }
    if (!(whole.state() == cut.state())) {
      return failure() << "state " << ::testing::PrintToString(whole.state()) << " whole but "
                       << ::testing::PrintToString(cut.state()) << " cut";
    }
    at += rendered;
  }
  return ::testing::AssertionSuccess();
}

}  // namespace ziv::testing
