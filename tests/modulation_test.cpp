// Envelope gain segments, LFO shapes and phase laws, and the rules of the modulation routing.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "engine/envelope.h"
#include "engine/modulation/global_lfo.h"
#include "engine/modulation/lfo.h"
#include "engine/modulation/mod_routing.h"
#include "engine/modulation/voice_modulation.h"
#include "engine/parameter.h"
#include "plugin/parameter_display.h"
#include "test_host.h"

namespace ziv {
namespace {

constexpr float kRate = 44100.0f;

EnvelopeTimes times(float attack, float decay, float sustain, float release, bool linear = false) {
  EnvelopeTimes t;
  t.attack = attack;
  t.decay = decay;
  t.sustain = sustain;
  t.release = release;
  t.linear = linear;
  return t;
}

// Runs an envelope over ones in blocks of `block` samples and returns the gain of every sample.
std::vector<float> envelopeGains(EnvelopeState& state, const EnvelopeTimes& t, int frames, int block) {
  std::vector<float> gains(frames, 1.0f);
  EnvelopeGain gain;
  gain.jumpTo(state);
  for (int start = 0; start < frames; start += block) {
    const int n = std::min(block, frames - start);
    gain.aim(state, t, n, kRate);
    gain.apply(gains.data() + start, n);
  }
  return gains;
}

TEST(EnvelopeGain, StageChangesLandOnTheirSampleWhateverTheBlock) {
  // A 10 ms linear attack peaks at sample 441 (the first sample whose time reaches 10 ms), then
  // the decay turns down; block boundaries must not move the peak.
  for (int block : {1, 7, 64, 128}) {
    EnvelopeState state;
    state.clear();
    const std::vector<float> gains = envelopeGains(state, times(0.01f, 0.2f, 0.25f, 0.1f), 2000, block);
    const int peak = static_cast<int>(std::max_element(gains.begin(), gains.end()) - gains.begin());
    EXPECT_NEAR(peak, 441, 1) << "block " << block;
    EXPECT_NEAR(gains[peak], 1.0f, 1e-3f);
    EXPECT_NEAR(gains[220], 0.5f, 0.01f) << "straight attack";
  }
}

TEST(EnvelopeGain, NeverStepsThroughAWholeNote) {
  EnvelopeState state;
  state.clear();
  const EnvelopeTimes t = times(0.005f, 0.05f, 0.5f, 0.02f);
  std::vector<float> gains = envelopeGains(state, t, 4410, 100);
  releaseEnvelope(state);
  const std::vector<float> tail = envelopeGains(state, t, 2205, 100);
  gains.insert(gains.end(), tail.begin(), tail.end());
  float largestStep = 0.0f;
  for (std::size_t i = 1; i < gains.size(); ++i)
    largestStep = std::max(largestStep, std::fabs(gains[i] - gains[i - 1]));
  // The steepest part is the 5 ms attack: 1 / 220.5 per sample.
  EXPECT_LT(largestStep, 1.0f / 220.0f);
  EXPECT_EQ(state.stage, kStageFinished);
  EXPECT_EQ(gains.back(), 0.0f);
}

TEST(EnvelopeGain, ZeroAttackAndDecayReachSustainInTheFirstSample) {
  EnvelopeState state;
  state.clear();
  const std::vector<float> gains = envelopeGains(state, times(0.0f, 0.0f, 0.6f, 0.1f), 16, 16);
  EXPECT_FLOAT_EQ(gains[0], 0.6f);
  EXPECT_FLOAT_EQ(gains[15], 0.6f);
  EXPECT_EQ(state.stage, kStageSustain);
}

TEST(EnvelopeGain, ReleaseDuringAttackStartsFromTheCurrentLevel) {
  EnvelopeState state;
  state.clear();
  envelopeGains(state, times(0.1f, 0.1f, 1.0f, 0.1f), 2205, 128);  // half the attack
  releaseEnvelope(state);
  EXPECT_NEAR(state.releaseLevel, 0.5f, 0.01f);
  const std::vector<float> gains = envelopeGains(state, times(0.1f, 0.1f, 1.0f, 0.1f), 64, 64);
  EXPECT_NEAR(gains[0], 0.5f, 0.01f);
  EXPECT_LT(gains[63], gains[0]);
}

TEST(Lfo, ShapesStartWhereTheirNamesSay) {
  LfoState lfo;
  auto at = [&lfo](int shape, float phase) {
    lfo.phase = phase;
    shapeLfo(lfo, shape, 0.0f);
    return lfo.output;
  };
  EXPECT_NEAR(at(kLfoSine, 0.25f), 1.0f, 1e-6f);
  EXPECT_NEAR(at(kLfoTriangle, 0.0f), 0.0f, 1e-6f);
  EXPECT_NEAR(at(kLfoTriangle, 0.125f), 0.5f, 1e-6f) << "rising from 0";
  EXPECT_NEAR(at(kLfoTriangle, 0.5f), 0.0f, 1e-6f);
  EXPECT_NEAR(at(kLfoSaw, 0.0f), 0.0f, 1e-6f);
  EXPECT_NEAR(at(kLfoSaw, 0.25f), 0.5f, 1e-6f) << "rising from 0";
  EXPECT_EQ(at(kLfoSquare, 0.49f), 1.0f);
  EXPECT_EQ(at(kLfoSquare, 0.51f), -1.0f);
  // A phase offset of half a cycle turns a square over.
  lfo.phase = 0.1f;
  shapeLfo(lfo, kLfoSquare, 0.5f);
  EXPECT_EQ(lfo.output, -1.0f);
}

TEST(Lfo, RandomShapesShareFourPointsPerCycle) {
  LfoState lfo;
  lfo.cycle = 7;
  for (int point = 0; point < 4; ++point) {
    const float value = lfoRandomValue(4 * 7 + point);
    for (float within : {0.0f, 0.1f, 0.24f}) {
      lfo.phase = (point + within) / 4.0f;
      shapeLfo(lfo, kLfoSteppedRandom, 0.0f);
      EXPECT_FLOAT_EQ(lfo.output, value) << "stepped holds a point for a quarter cycle";
    }
    lfo.phase = point / 4.0f;
    shapeLfo(lfo, kLfoSmoothRandom, 0.0f);
    EXPECT_NEAR(lfo.output, value, 1e-6f) << "smooth passes through the same point";
  }
  // The table is fixed, uniform in -1..1.
  double sum = 0.0;
  float lowest = 1.0f, highest = -1.0f;
  for (int i = 0; i < kLfoRandomTableSize; ++i) {
    sum += lfoRandomValue(i);
    lowest = std::min(lowest, lfoRandomValue(i));
    highest = std::max(highest, lfoRandomValue(i));
  }
  EXPECT_NEAR(sum / kLfoRandomTableSize, 0.0, 0.06);
  EXPECT_GE(lowest, -1.0f);
  EXPECT_LE(highest, 1.0f);
  EXPECT_LT(lowest, -0.95f);
  EXPECT_GT(highest, 0.95f);
}

TEST(Lfo, PhaseLawsAndSongPositionLock) {
  EXPECT_NEAR(lfoRateHz(0.0f), 0.301f, 0.001f);
  EXPECT_NEAR(lfoRateHz(1.0f), 16.44f, 0.01f);
  EXPECT_NEAR(voiceLfoRateHz(0.5f, 1.0f, 64.0f) / voiceLfoRateHz(0.5f, 1.0f, 52.0f), 1.985f, 0.001f);
  EXPECT_FLOAT_EQ(voiceLfoRateHz(0.5f, 0.0f, 90.0f), lfoRateHz(0.5f));

  LfoState lfo;
  advanceLfo(lfo, 2.25);
  EXPECT_FLOAT_EQ(lfo.phase, 0.25f);
  EXPECT_EQ(lfo.cycle, 2u);
  lfo.cycle = 254;
  advanceLfo(lfo, 1.0);
  EXPECT_EQ(lfo.cycle, 0u) << "the cycle counter wraps at 255";

  // Locked to the song position: a standing position holds the phase, a moving one advances it.
  lockLfoToSongPosition(lfo, 9.0, 2.0f);
  EXPECT_FLOAT_EQ(lfo.phase, 0.5f);
  EXPECT_EQ(lfo.cycle, 4u);
  lockLfoToSongPosition(lfo, 9.0, 2.0f);
  EXPECT_FLOAT_EQ(lfo.phase, 0.5f);
  lockLfoToSongPosition(lfo, 9.5, 2.0f);
  EXPECT_FLOAT_EQ(lfo.phase, 0.75f);
  lockLfoToSongPosition(lfo, 2.0 * 300, 2.0f);
  EXPECT_EQ(lfo.cycle, 300u & 0xffu);
}

class Modulation : public ::testing::Test {
 protected:
  Modulation() {
    for (const ParamInfo& row : paramTable()) params[row.index].describe(row);
  }

  // Points slot `slot` of `source` at `target` with `amount` (physical -1..1).
  void route(int firstSelector, ModSource source, int slot, int target, float amount) {
    const ModTargetList list = modTargets(source);
    const int position =
        static_cast<int>(std::find(list.targets, list.targets + list.count, target) - list.targets);
    ASSERT_LT(position, list.count);
    params[firstSelector + 2 * slot].base.store(static_cast<float>(position) / (list.count - 1));
    params[firstSelector + 2 * slot + 1].base.store((amount + 1.0f) * 0.5f);
  }
  // The values a sub-block starts from: every stage at the stored value.
  void resetValues() {
    for (Parameter& p : params) p.globalValue = p.voiceValue = p.baseValue();
  }

  std::array<Parameter, kParamCount> params;
};

// Gain-like targets take every source unclamped; the voice's output gain still stops at the top of
// "VOICE: Gain" (physical 2, a gain of 4), where five stacked sources once reached hundreds.
TEST(VoiceGain, StackedModulationStopsAtTheRangesTop) {
  testing::TestHost host;
  VstTest& plugin = host.plugin();
  for (int slot = 0; slot < kModSlots; ++slot) {
    for (auto [selector, source] : {std::pair{kVoiceLfoTarget1, ModSource::kVoiceLfo},
                                    std::pair{kGlobalLfoTarget1, ModSource::kGlobalLfo},
                                    std::pair{kModWheelTarget1, ModSource::kModWheel}}) {
      const ModTargetList list = modTargets(source);
      const int position =
          static_cast<int>(std::find(list.targets, list.targets + list.count, kVoiceGain) - list.targets);
      plugin.setParameter(selector + 2 * slot, static_cast<float>(position) / (list.count - 1));
      plugin.setParameter(selector + 2 * slot + 1, 1.0f);
    }
  }
  host.setPhysical(kVoiceLfoWaveform, static_cast<float>(kLfoSquare));
  host.setPhysical(kGlobalLfoWaveform, static_cast<float>(kLfoSquare));
  host.controller(0, 1, 127);
  host.noteOn(0, 60);
  float loudest = 0.0f;
  for (int block = 0; block < 200; ++block) {
    host.process(128);
    loudest = std::max(loudest, host.engine().voice(host.engine().lastVoice()).output.gain);
  }
  EXPECT_GT(loudest, 1.0f) << "the sources reach above the gain's default";
  EXPECT_LE(loudest, 4.0f);
}

TEST_F(Modulation, PitchTargetsTakeTheCubeOfTheAmount) {
  route(kVelocityTarget1, ModSource::kVelocity, 0, kOsc1Pitch, 0.5f);
  resetValues();
  const float before = params[kOsc1Pitch].voiceValue;
  applyModSource(params.data(), ModSource::kVelocity, 1.0f, ModStage::kVoice);
  EXPECT_NEAR(params[kOsc1Pitch].voiceValue - before, 0.125f, 1e-6f);

  route(kVelocityTarget1, ModSource::kVelocity, 0, kOsc1Pitch, -1.0f);
  resetValues();
  applyModSource(params.data(), ModSource::kVelocity, 1.0f, ModStage::kVoice);
  EXPECT_NEAR(params[kOsc1Pitch].voiceValue - before, -1.0f, 1e-6f) << "not clamped";
}

TEST_F(Modulation, GainLikeTargetsAreLeftAloneByAFullUnipolarSource) {
  route(kVelocityTarget2, ModSource::kVelocity, 1, kVoiceGain, 1.0f);
  resetValues();
  const float gain = params[kVoiceGain].voiceValue;
  applyModSource(params.data(), ModSource::kVelocity, 1.0f, ModStage::kVoice);
  EXPECT_FLOAT_EQ(params[kVoiceGain].voiceValue, gain);
  resetValues();
  applyModSource(params.data(), ModSource::kVelocity, 0.0f, ModStage::kVoice);
  EXPECT_FLOAT_EQ(params[kVoiceGain].voiceValue, gain - 1.0f)
      << "velocity 0 lowers it by the amount, unclamped";
}

TEST_F(Modulation, OrdinaryTargetsClampAfterEachAdditionAndStagesStayApart) {
  route(kModWheelTarget1, ModSource::kModWheel, 0, kFilter1Cutoff, 1.0f);
  route(kModWheelTarget1, ModSource::kModWheel, 1, kFilter1Cutoff, -1.0f);
  resetValues();
  params[kFilter1Cutoff].globalValue = 0.75f;
  applyModSource(params.data(), ModSource::kModWheel, 1.0f, ModStage::kGlobal);
  // +1 clamps at 1, then -1 takes it to 0: without the clamp in between it would end at 0.75.
  EXPECT_FLOAT_EQ(params[kFilter1Cutoff].globalValue, 0.0f);
  EXPECT_FLOAT_EQ(params[kFilter1Cutoff].voiceValue, params[kFilter1Cutoff].baseValue())
      << "voice stage untouched";
}

TEST_F(Modulation, NoTargetAndSelectorsBeyondTheListDoNothing) {
  resetValues();
  std::vector<float> values;
  for (const Parameter& p : params) values.push_back(p.voiceValue);
  applyModSource(params.data(), ModSource::kVoiceLfo, 1.0f, ModStage::kVoice);  // all slots at "none"
  EXPECT_EQ(modTargetPosition(1.2f, 23), 26) << "a damaged value points past the list";
  applyModulation(params.data(), kParamCount + 3, 1.0f, 1.0f, true, ModStage::kVoice);
  for (int i = 0; i < kParamCount; ++i) EXPECT_EQ(params[i].voiceValue, values[i]) << i;
  // Each list extends the one before it.
  EXPECT_EQ(modTargets(ModSource::kVoiceLfo).count, 23);
  EXPECT_EQ(modTargets(ModSource::kModWheel).count, 48);
  EXPECT_EQ(modTargets(ModSource::kModWheel).targets[0], kNoModTarget);
}

TEST_F(Modulation, GlobalLfoFollowsTheSongPositionWhenSynced) {
  // Synced to one bar (division 8: four quarter notes), square wave: the first half bar is +1.
  params[kGlobalLfoSync].base.store(1.0f);
  params[kGlobalLfoRate].hi.store(kTempoDivisionCount - 1);
  params[kGlobalLfoRate].base.store(8.0f / 23.0f);
  params[kGlobalLfoWaveform].base.store(kLfoSquare / 5.0f);
  params[kGlobalLfoDepth].base.store(1.0f);
  resetValues();
  GlobalLfo lfo;
  lfo.advance(params.data(), 0.01f, 16.5);
  EXPECT_FLOAT_EQ(lfo.state().phase, 0.125f);
  EXPECT_EQ(lfo.source(params.data()), 1.0f);
  lfo.advance(params.data(), 0.01f, 16.5);
  EXPECT_FLOAT_EQ(lfo.state().phase, 0.125f) << "a standing transport holds the phase";
  lfo.advance(params.data(), 0.01f, 19.0);
  EXPECT_FLOAT_EQ(lfo.state().phase, 0.75f);
  EXPECT_EQ(lfo.source(params.data()), -1.0f);

  // Free running at rate 0 (0.301 Hz): a second moves it by 0.301 of a cycle.
  params[kGlobalLfoSync].base.store(0.0f);
  params[kGlobalLfoRate].hi.store(1);
  params[kGlobalLfoRate].base.store(0.0f);
  resetValues();
  GlobalLfo free;
  free.advance(params.data(), 1.0f, 0.0);
  EXPECT_NEAR(free.state().phase, 0.3012f, 1e-4f);
}

TEST_F(Modulation, VelocityActsBeforeTheModEnvelopeReadsItsDepth) {
  // Velocity pulls "MOD ENV: Depth" down (amount -1, gain-like), the mod envelope opens the cutoff.
  route(kVelocityTarget1, ModSource::kVelocity, 0, kModEnvDepth, -1.0f);
  route(kModEnvTarget1, ModSource::kModEnvelope, 0, kFilter1Cutoff, 1.0f);
  params[kModEnvAttack].base.store(0.0f);
  params[kModEnvDecay].base.store(0.0f);
  params[kModEnvSustain].base.store(1.0f);
  params[kFilter1Cutoff].base.store(0.25f);
  params[kModEnvDepth].base.store(0.5f);  // physical 1

  for (float velocity : {0.0f, 0.25f, 1.0f}) {
    resetValues();
    VoiceModulation voice;
    voice.modEnvelope.clear();
    voice.apply(params.data(), velocity, 60.0f, 0.001f);
    // Depth's normalised value falls by the velocity, so its physical value (0..2) by twice that.
    const float depth = 2.0f * (0.5f - velocity);
    EXPECT_NEAR(params[kFilter1Cutoff].voiceValue, std::clamp(0.25f + depth, 0.0f, 1.0f), 1e-6f)
        << "velocity " << velocity;
  }
}

}  // namespace
}  // namespace ziv
