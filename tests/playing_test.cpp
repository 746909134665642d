// What a player hears at the edges of notes: notes start on their own frame and renders do not
// depend on the host's block size, a voice taken over by a new note fades out instead of
// clicking, and a wheel moved on a note's frame is in force from the note's first sample.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <vector>

#include "engine/dsp.h"
#include "engine/modulation/mod_routing.h"
#include "test_host.h"

namespace ziv::testing {
namespace {

// Routes slot 1 of `source` to `target` with `amount`.
void setModulation(TestHost& host, ModSource source, int target, float amount) {
  static const struct {
    ModSource source;
    int selector;
  } kSelectors[] = {{ModSource::kModWheel, kModWheelTarget1},
                    {ModSource::kGlobalLfo, kGlobalLfoTarget1},
                    {ModSource::kVoiceLfo, kVoiceLfoTarget1}};
  for (const auto& s : kSelectors) {
    if (s.source != source) continue;
    const ModTargetList list = modTargets(source);
    const int position =
        static_cast<int>(std::find(list.targets, list.targets + list.count, target) - list.targets);
    host.plugin().setParameter(s.selector, static_cast<float>(position) / (list.count - 1));
    host.setPhysical(s.selector + 1, amount);
  }
}

// Starts from the factory "Init Patch", applies `patch`, and resets the engine so the settings
// hold from the first frame instead of ramping in.
void preparePatch(TestHost& host, const std::function<void(TestHost&)>& patch) {
  host.plugin().initProgram();
  patch(host);
  host.plugin().resume();
}

// A plain sawtooth with an instant attack: its first sample after the chain's delay is loud.
void sawPatch(TestHost& host) {
  host.setPhysical(kOsc1Gain, 1.0f);
  host.setPhysical(kAmpEnvAttack, 0.0f);
  host.setPhysical(kAmpEnvSustain, 1.0f);
}

// A sine-like tone: the sub oscillator alone at its sine shape, at the note's own octave,
// through open filters, with a 4 ms attack and a long release.
void sinePatch(TestHost& host, int polyphony) {
  host.setPhysical(kOsc1Gain, 0.0f);
  host.setPhysical(kOsc2Gain, 0.0f);
  host.setPhysical(kSubGain, 1.0f);
  host.setPhysical(kSubShape, 0.25f);
  host.setPhysical(kSubOctave, 0.0f);
  host.setPhysical(kFilter1Cutoff, 1.0f);
  host.setPhysical(kFilter1EnvAmt, 0.0f);
  host.setPhysical(kAmpEnvSustain, 1.0f);
  host.setPhysical(kAmpEnvRelease, 0.5f);
  host.setPhysical(kPolyphony, static_cast<float>(polyphony));
}

// Everything that moves while a note plays: a fast filter envelope, a voice LFO on the cutoff, a
// global LFO on the pitch, glide, unison, chorus and delay.
void busyPatch(TestHost& host) {
  host.setPhysical(kPolyphony, 8.0f);
  host.setPhysical(kUnisonVoices, 2.0f);
  host.setPhysical(kOsc2Gain, 0.5f);
  host.setPhysical(kOsc2Cents, 7.0f);
  host.setPhysical(kGlideTime, 0.2f);
  host.setPhysical(kFilter1Q, 0.6f);
  host.setPhysical(kFilter1Cutoff, 0.3f);
  host.setPhysical(kFilter1EnvAmt, 0.8f);
  host.setPhysical(kFilterEnvAttack, 0.05f);
  host.setPhysical(kFilterEnvDecay, 0.2f);
  host.setPhysical(kFilterEnvSustain, 0.2f);
  host.setPhysical(kAmpEnvDecay, 0.4f);
  host.setPhysical(kAmpEnvSustain, 0.5f);
  host.setPhysical(kVoiceLfoDepth, 1.0f);
  host.setPhysical(kGlobalLfoDepth, 1.0f);
  host.setPhysical(kChorusMix, 0.5f);
  host.setPhysical(kDelaySend, 0.3f);
  setModulation(host, ModSource::kVoiceLfo, kFilter1Cutoff, 0.4f);
  setModulation(host, ModSource::kGlobalLfo, kVoicePitch, 0.3f);
  setModulation(host, ModSource::kModWheel, kFilter2Cutoff, -0.5f);
}

int firstSounding(const std::vector<float>& x) {
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (x[i] != 0.0f) return static_cast<int>(i);
  }
  return -1;
}

float largestStep(const std::vector<float>& x, std::size_t from, std::size_t to) {
  float step = 0.0f;
  for (std::size_t i = std::max<std::size_t>(from, 1); i < std::min(to, x.size()); ++i) {
    step = std::max(step, std::fabs(x[i] - x[i - 1]));
  }
  return step;
}

// Renders `total` frames in host blocks of `block`; `events(host, blockStart, frames)` queues the
// MIDI of each block before it is processed.
std::vector<float> render(TestHost& host, int total, int block,
                          const std::function<void(TestHost&, int, int)>& events) {
  std::vector<float> out;
  for (int start = 0; start < total; start += block) {
    const int frames = std::min(block, total - start);
    events(host, start, frames);
    host.process(frames);
    out.insert(out.end(), host.left.begin(), host.left.begin() + frames);
  }
  return out;
}

TEST(Playing, NotesStartOnTheirOwnFrame) {
  // Every offset of a block of two sub-blocks: the onset moves frame by frame with the offset,
  // behind it by the chain's fixed delay only.
  constexpr int kBlock = 130;
  constexpr int kMaxChainDelay = 16;
  int delay = -1;
  for (int offset = 0; offset < kBlock; ++offset) {
    TestHost host;
    preparePatch(host, sawPatch);
    const std::vector<float> out = render(host, 2 * kBlock, kBlock, [offset](TestHost& h, int start, int) {
      if (start == 0) h.noteOn(offset, 60);
    });
    const int onset = firstSounding(out);
    if (offset == 0) delay = onset;
    ASSERT_EQ(onset - offset, delay) << "offset " << offset;
  }
  EXPECT_GE(delay, 0);
  EXPECT_LE(delay, kMaxChainDelay);
}

// A phrase of overlapping notes with a pitch bend and a mod wheel move in between, each on a frame
// of its own, played through `program` (a factory program, or -1 for busyPatch) at host blocks of
// `block` frames, with the host's song position moving (programs with tempo-synced LFOs follow it).
std::vector<float> playPhrase(int program, int block) {
  struct Event {
    int frame, status, data1, data2;
  };
  static const std::vector<Event> kPhrase = {
      {0, 0x90, 48, 100},   {3001, 0x90, 55, 90},   {7777, 0xE0, 0, 80},    {9950, 0x90, 60, 110},
      {12345, 0x80, 48, 0}, {15000, 0xB0, 1, 90},   {17777, 0x90, 64, 70},  {20000, 0x80, 55, 0},
      {25001, 0x80, 60, 0}, {25001, 0x90, 67, 127}, {28000, 0xE0, 0, 64},   {31313, 0x80, 64, 0},
      {33333, 0xB0, 1, 0},  {38000, 0x80, 67, 0},   {40123, 0x90, 52, 100}, {47000, 0x80, 52, 0}};
  constexpr int kFrames = 66150;  // 1.5 s, past the last release's start
  constexpr double kBeatsPerFrame = 2.0 / 44100.0;
  TestHost host;
  if (program >= 0) {
    host.plugin().setProgram(program);
    host.plugin().resume();
  } else {
    preparePatch(host, busyPatch);
  }
  return render(host, kFrames, block, [&](TestHost& h, int start, int frames) {
    h.record().time.ppqPos = start * kBeatsPerFrame;  // a playing transport at 120 BPM
    for (const Event& e : kPhrase) {
      if (e.frame >= start && e.frame < start + frames) h.midi(e.frame - start, e.status, e.data1, e.data2);
    }
  });
}

TEST(Playing, RendersAreIdenticalAtEveryHostBlockSize) {
  // Envelopes, LFOs, glide and every unit's ramps run on a grid of their own, not the host's
  // blocks: whatever the block size, the same MIDI renders the same samples, through a busy patch
  // and every factory program. The one exception is where a sound dies away: the effects' idle
  // tests look at each piece of audio, so the piece that sees the tail fall silent may differ,
  // but only in samples at the silence threshold.
  constexpr float kQuiet = 4.0f * kSilence;
  int identical = 0, renders = 0;
  for (int program = -1; program < VstTest::kProgramCount; ++program) {
    const std::vector<float> reference = playPhrase(program, kMaxBlock);
    ASSERT_GT(*std::max_element(reference.begin(), reference.end()), 0.01f) << "program " << program;
    for (int block : {16, 64, 100, 1000, 4096}) {
      const std::vector<float> other = playPhrase(program, block);
      int loudDifferences = 0;
      for (std::size_t i = 0; i < reference.size(); ++i) {
        const bool quiet = std::fabs(reference[i]) <= kQuiet && std::fabs(other[i]) <= kQuiet;
        if (other[i] != reference[i] && !quiet) ++loudDifferences;
      }
      EXPECT_EQ(loudDifferences, 0) << "program " << program << ", block " << block;
      identical += other == reference ? 1 : 0;
      ++renders;
    }
  }
  std::printf("%d of %d renders identical to the render at blocks of %d\n", identical, renders, kMaxBlock);
}

TEST(Playing, TakenOverVoicesFadeInsteadOfClicking) {
  // A 110 Hz sine (note 45) is taken over by note 33 on frame 11025 of a block: a polyphonic
  // steal of the held voice, a monophonic retrigger, and a monophonic note during the release.
  // Around the takeover the largest one-sample step stays within twice the sine's own.
  struct Case {
    const char* name;
    int polyphony;
    bool releaseFirst;
  };
  constexpr int kTakeover = 11025;
  constexpr int kFrames = 22050;
  constexpr int kBlock = 256;
  for (const Case& c : {Case{"steal", 2, false}, Case{"retrigger", 1, false}, Case{"in release", 1, true}}) {
    TestHost host;
    preparePatch(host, [&c](TestHost& h) { sinePatch(h, c.polyphony); });
    const std::vector<float> out = render(host, kFrames, kBlock, [&](TestHost& h, int start, int frames) {
      auto at = [&](int frame) { return frame >= start && frame < start + frames; };
      if (at(0)) h.noteOn(0, 45);
      if (c.polyphony > 1 && at(1000)) h.noteOn(1000 - start, 21);  // a low second voice
      if (c.releaseFirst && at(kTakeover - 2000)) h.noteOff(kTakeover - 2000 - start, 45);
      if (at(kTakeover)) h.noteOn(kTakeover - start, 33);
    });
    const float own = largestStep(out, 4000, kTakeover - 2000);
    const float around = largestStep(out, kTakeover - 100, kTakeover + 2000);
    EXPECT_GT(own, 0.0f) << c.name;
    EXPECT_LE(around, 2.0f * own) << c.name;
  }

  // A hard all-notes-off still cuts at once, the fading copies included.
  TestHost host;
  preparePatch(host, [](TestHost& h) { sinePatch(h, 1); });
  host.noteOn(0, 45);
  host.process(4096);
  host.noteOn(0, 33);
  host.controller(10, 120, 0);
  host.process(256);
  EXPECT_EQ(host.engine().soundingVoiceCount(), 0);
  EXPECT_EQ(host.engine().fadingVoiceCount(), 0);
}

TEST(Playing, WheelsSentWithANoteAreInForceFromItsFirstSample) {
  // A wheel moved on a note's own frame, whichever comes first in the queue, must sound exactly as
  // one moved a block earlier: a +12 bend, and a mod wheel that lengthens the attack (which then
  // starts from zero).
  struct Case {
    const char* name;
    int status, data1, data2;
  };
  auto patch = [](TestHost& h) {
    sawPatch(h);
    h.setPhysical(kPitchBendRange, 12.0f);
    const ModTargetList list = modTargets(ModSource::kModWheel);
    const int attack =
        static_cast<int>(std::find(list.targets, list.targets + list.count, kAmpEnvAttack) - list.targets);
    h.plugin().setParameter(kModWheelTarget1, static_cast<float>(attack) / (list.count - 1));
    h.setPhysical(kModWheelAmt1, 0.5f);
  };
  constexpr int kBlock = 1000;  // eight sub-blocks: the note falls inside the fifth
  constexpr int kNoteFrame = kBlock + 555;
  for (const Case& c : {Case{"bend", 0xE0, 0x7f, 0x7f}, Case{"mod wheel", 0xB0, 1, 127}}) {
    // The wheel on its own, early, or on the note's frame, queued before or after the note.
    auto play = [&](int wheelFrame, bool afterNote) {
      TestHost host;
      preparePatch(host, patch);
      return render(host, 3 * kBlock, kBlock, [&](TestHost& h, int start, int frames) {
        const bool wheelHere = wheelFrame >= start && wheelFrame < start + frames;
        if (wheelHere && !afterNote) h.midi(wheelFrame - start, c.status, c.data1, c.data2);
        if (start == kBlock) h.noteOn(kNoteFrame - start, 57);
        if (wheelHere && afterNote) h.midi(wheelFrame - start, c.status, c.data1, c.data2);
      });
    };
    const std::vector<float> early = play(0, false);
    for (bool afterNote : {false, true}) {
      const std::vector<float> withNote = play(kNoteFrame, afterNote);
      float peak = 0.0f, difference = 0.0f;
      for (std::size_t i = 0; i < early.size(); ++i) {
        peak = std::max(peak, std::fabs(early[i]));
        difference = std::max(difference, std::fabs(early[i] - withNote[i]));
      }
      EXPECT_GT(peak, 0.01f) << c.name;
      EXPECT_LE(difference, 1e-6f * peak) << c.name << (afterNote ? ", queued after the note" : "");
    }
  }
}

}  // namespace
}  // namespace ziv::testing
