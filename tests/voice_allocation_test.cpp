// How notes are given voices: polyphony and unison limits, unison placement, stealing order,
// key reuse, monophonic legato and last-note priority, glide.
#include <gtest/gtest.h>

#include <cmath>

#include "engine/synth_engine.h"

namespace ziv {
namespace {

class Allocation : public ::testing::Test {
 protected:
  void set(int index, float physical) {
    const ParamInfo& row = paramTable()[index];
    engine.setParameter(index, (physical - row.lo) / static_cast<float>(row.hi - row.lo), false);
    engine.smoothParameters(1.0f);
  }
  void render(float seconds) {
    float left[kMaxBlock], right[kMaxBlock];
    const int blocks = static_cast<int>(seconds * engine.sampleRate() / kMaxBlock + 0.5f);
    for (int b = 0; b < blocks; ++b) engine.renderBlock(left, right, kMaxBlock, 0.0, 120.0);
  }
  int voicesPlaying(int note) const {
    int count = 0;
    for (int slot = 0; slot < kVoiceCount; ++slot) {
      if (!engine.voice(slot).isSilent() && engine.voice(slot).note == note) ++count;
    }
    return count;
  }

  SynthEngine engine;
};

TEST_F(Allocation, PolyphonyTimesUnisonNeverPassesThePool) {
  set(kPolyphony, 24);
  set(kUnisonVoices, 8);  // asks for 192 voices
  for (int note = 60; note < 68; ++note) engine.noteOn(note, 1.0f);
  EXPECT_EQ(engine.soundingVoiceCount(), kVoiceCount);
  for (int note = 60; note < 68; ++note) EXPECT_EQ(voicesPlaying(note), 8) << note;
  render(0.01f);
  engine.noteOn(80, 1.0f);  // steals inside the pool
  EXPECT_EQ(voicesPlaying(80), 8);
  EXPECT_EQ(engine.soundingVoiceCount(), kVoiceCount);
}

TEST_F(Allocation, UnisonVoicesSpreadOverTheStack) {
  set(kPolyphony, 4);
  set(kUnisonVoices, 4);
  engine.noteOn(60, 1.0f);
  const float places[4] = {-1.0f, -1.0f / 3.0f, 1.0f / 3.0f, 1.0f};
  const float pans[4] = {1.0f, -1.0f / 3.0f, 1.0f / 3.0f, -1.0f};  // |x|, odd indices negated
  for (int k = 0; k < 4; ++k) {
    const Voice& v = engine.voice(k);
    EXPECT_NEAR(v.unisonPosition, places[k], 0.5f / 4 + 1e-6f) << "at most half a slot off";
    EXPECT_FLOAT_EQ(v.panPosition, pans[k]);
    EXPECT_FLOAT_EQ(v.unisonGain, 0.5f);
  }
  set(kUnisonVoices, 3);
  engine.noteOn(62, 1.0f);
  EXPECT_FLOAT_EQ(engine.voice(4).panPosition, -1.0f);
  EXPECT_FLOAT_EQ(engine.voice(5).panPosition, 0.0f);
  EXPECT_FLOAT_EQ(engine.voice(6).panPosition, 1.0f);
  set(kUnisonVoices, 1);
  engine.noteOn(64, 1.0f);
  EXPECT_EQ(engine.voice(7).unisonPosition, 0.0f);
  EXPECT_EQ(engine.voice(7).panPosition, 0.0f);
}

TEST_F(Allocation, StealingPrefersReleasingThenOlderVoices) {
  set(kPolyphony, 3);
  engine.noteOn(60, 1.0f);  // slot 0
  render(0.1f);
  engine.noteOn(62, 1.0f);  // slot 1
  render(0.1f);
  engine.noteOn(64, 1.0f);  // slot 2
  render(0.01f);

  engine.noteOn(65, 1.0f);  // all held: the oldest goes
  EXPECT_EQ(engine.lastVoice(), 0);
  engine.noteOff(64);  // slot 2 releases, still sounding
  render(0.01f);
  engine.noteOn(67, 1.0f);  // the releasing voice goes before older held ones
  EXPECT_EQ(engine.lastVoice(), 2);
}

TEST_F(Allocation, AnOlderHeldVoiceCanDisplaceAReleasingChoice) {
  // The comparison runs slot by slot: a releasing slot 0 is the first choice, but a held slot
  // that is older replaces it.
  set(kPolyphony, 2);
  engine.noteOn(60, 1.0f);  // slot 0
  engine.noteOn(62, 1.0f);  // slot 1
  render(0.1f);
  engine.noteOn(60, 1.0f);  // retriggers slot 0: young again
  engine.noteOff(60);       // and releasing
  render(0.01f);
  engine.noteOn(64, 1.0f);
  EXPECT_EQ(engine.lastVoice(), 1);
}

TEST_F(Allocation, EqualAgesKeepTheLowerSlot) {
  set(kPolyphony, 2);
  engine.noteOn(60, 1.0f);
  engine.noteOn(62, 1.0f);
  engine.noteOn(64, 1.0f);
  EXPECT_EQ(engine.lastVoice(), 0);
}

TEST_F(Allocation, ARepeatedKeyReusesItsOwnVoices) {
  set(kPolyphony, 2);
  engine.noteOn(60, 1.0f);
  engine.noteOn(62, 1.0f);
  render(0.05f);
  engine.noteOn(62, 0.5f);
  EXPECT_EQ(engine.lastVoice(), 1);
  EXPECT_EQ(voicesPlaying(60), 1);
  EXPECT_EQ(engine.voice(1).age, 0);
  EXPECT_FLOAT_EQ(engine.voice(1).velocity, 0.5f);
}

TEST_F(Allocation, MonophonicLegatoKeepsEnvelopesRunning) {
  set(kPolyphony, 1);
  set(kUnisonVoices, 4);
  set(kLegatoMode, 1);
  engine.noteOn(60, 0.8f);
  render(0.05f);
  const float level = engine.voice(0).ampEnvelope.level;
  ASSERT_GT(level, 0.0f);
  engine.noteOn(64, 0.3f);
  for (int k = 0; k < 4; ++k) {
    EXPECT_EQ(engine.voice(k).note, 64);
    EXPECT_EQ(engine.voice(k).ampEnvelope.level, level) << "legato: no retrigger";
  }
  // Releasing the newer key returns to the older one, with its own velocity.
  engine.noteOff(64);
  for (int k = 0; k < 4; ++k) {
    EXPECT_EQ(engine.voice(k).note, 60);
    EXPECT_FLOAT_EQ(engine.voice(k).velocity, 0.8f);
    EXPECT_TRUE(engine.voice(k).held());
  }
  EXPECT_EQ(engine.heldNoteCount(), 1);
}

TEST_F(Allocation, MonophonicWithoutLegatoRetriggers) {
  set(kPolyphony, 1);
  set(kUnisonVoices, 2);
  engine.noteOn(60, 1.0f);
  render(0.05f);
  engine.noteOn(64, 1.0f);
  EXPECT_EQ(engine.voice(0).ampEnvelope.level, 0.0f);
  EXPECT_EQ(engine.voice(0).stage(), kStageAttack);
  EXPECT_EQ(engine.voice(1).note, 64);
  engine.noteOff(64);
  engine.noteOff(60);
  EXPECT_EQ(engine.heldNoteCount(), 0);
  EXPECT_EQ(engine.voice(0).stage(), kStageRelease);
}

TEST_F(Allocation, AutoGlideGlidesOnlyFromHeldNotes) {
  set(kPolyphony, 1);
  set(kGlideTime, 0.5f);  // every glide lasts 0.25 s
  engine.noteOn(48, 1.0f);
  engine.noteOn(60, 1.0f);  // 48 still held: glide
  EXPECT_FLOAT_EQ(engine.voice(0).pitch, 48.0f);
  render(0.125f);
  EXPECT_NEAR(engine.voice(0).pitch, 54.0f, 0.5f) << "halfway after half the glide time";
  render(0.2f);
  EXPECT_FLOAT_EQ(engine.voice(0).pitch, 60.0f);

  engine.noteOff(60);
  engine.noteOff(48);
  render(0.05f);
  engine.noteOn(67, 1.0f);  // nothing held: starts on its own pitch
  EXPECT_FLOAT_EQ(engine.voice(0).pitch, 67.0f);
}

TEST_F(Allocation, WithoutAutoGlideEveryNoteGlidesFromThePreviousOne) {
  set(kPolyphony, 4);
  set(kAutoGlide, 0);
  set(kGlideTime, 0.5f);
  engine.noteOn(48, 1.0f);
  engine.noteOff(48);
  render(0.05f);
  engine.noteOn(60, 1.0f);
  EXPECT_FLOAT_EQ(engine.voice(engine.lastVoice()).pitch, 48.0f);
  EXPECT_FLOAT_EQ(engine.voice(engine.lastVoice()).glideDistance, 12.0f);
}

TEST_F(Allocation, AllNotesOffSoftReleasesHardSilences) {
  set(kPolyphony, 8);
  engine.noteOn(60, 1.0f);
  engine.noteOn(64, 1.0f);
  engine.allNotesOff(false);
  EXPECT_EQ(engine.heldNoteCount(), 0);
  EXPECT_EQ(engine.soundingVoiceCount(), 2);
  EXPECT_EQ(engine.voice(0).stage(), kStageRelease);
  engine.allNotesOff(true);
  EXPECT_EQ(engine.soundingVoiceCount(), 0);
}

TEST_F(Allocation, VoicesEndAfterTheirRelease) {
  set(kPolyphony, 4);
  set(kAmpEnvRelease, 0.1f);  // 10 r^2 = 0.1 s
  engine.noteOn(60, 1.0f);
  render(0.05f);
  engine.noteOff(60);
  render(0.09f);
  EXPECT_EQ(engine.soundingVoiceCount(), 1);
  render(0.02f);
  EXPECT_EQ(engine.soundingVoiceCount(), 0);
}

}  // namespace
}  // namespace ziv
