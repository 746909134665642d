// Split invariance of the units whose control (aim a span) and audio (render it) are apart: a
// script of aimed spans with random settings is rendered twice, each span once in one render call
// and once cut at random points into pieces, one-frame pieces among them, with a re-aim partway
// through some spans; then both units render past an aimed span, which must hold its targets. The
// two renders must match bit for bit, sample by sample to the end, so a difference in the state a
// split leaves behind shows in the spans after it.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "engine/dsp.h"
#include "engine/random.h"

namespace ziv::testing {

// Two copies of `unit` render. `input` is what the buffer holds before rendering (zeros for the
// sources, which add into it; a signal for units that work in place). aim(unit, frames, settings)
// aims a unit with settings drawn from `settings`; both copies get the same draws. Returns the
// index of the first sample where the two renders differ, or -1.
template <class Unit, class Aim>
int firstSplitDifference(const Unit& unit, const std::vector<float>& input, Aim aim) {
  constexpr std::uint32_t kScriptSeed = 2024;
  constexpr int kReaimEvery = 3;  // on average, one span in this many is re-aimed partway through
  Unit whole = unit, cut = unit;
  Random script(kScriptSeed);
  std::vector<float> a = input, b = input;
  const int length = static_cast<int>(input.size());
  auto aimBoth = [&](int frames, std::uint32_t seed) {
    Random forWhole(seed), forCut(seed);
    aim(whole, frames, forWhole);
    aim(cut, frames, forCut);
  };
  auto renderBoth = [&](int at, int frames) {
    whole.render(a.data() + at, frames);
    for (int done = 0; done < frames;) {
      const int piece = script.next() % 2 == 0 ? 1 : 1 + script.next() % (frames - done);
      cut.render(b.data() + at + done, piece);
      done += piece;
    }
  };

  // The frames rendered past the last span's end.
  constexpr int kHeld = kMaxBlock;
  int at = 0;
  while (at + 2 * kMaxBlock + kHeld < length) {
    const int frames = 1 + script.next() % kMaxBlock;
    aimBoth(frames, static_cast<std::uint32_t>(script.next()));
    const int used = script.next() % kReaimEvery == 0 ? script.next() % frames : frames;
    renderBoth(at, used);
    at += used;
  }
  // Past its end a span holds the targets of its aim: the same as aiming them again.
  const std::uint32_t seed = static_cast<std::uint32_t>(script.next());
  aimBoth(kMaxBlock, seed);
  whole.render(a.data() + at, kMaxBlock);
  cut.render(b.data() + at, kMaxBlock + kHeld);
  Random again(seed);
  aim(whole, kHeld, again);
  whole.render(a.data() + at + kMaxBlock, kHeld);

  for (int i = 0; i < length; ++i) {
    if (std::memcmp(&a[i], &b[i], sizeof(float)) != 0) return i;
  }
  return -1;
}

}  // namespace ziv::testing
