// What careless and hostile hosts hand the instance: unusable time info and sample rates, data
// bytes with the top bit set, chunk calls without data, exceptions at the C boundary. Each
// once crashed, read past a buffer or reached the engine as a NaN.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

#include "test_host.h"

namespace ziv::testing {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

float blockPeak(const TestHost& host) {
  float peak = 0.0f;
  for (const std::vector<float>* channel : {&host.left, &host.right}) {
    for (float x : *channel) peak = std::isfinite(x) ? std::max(peak, std::fabs(x)) : INFINITY;
  }
  return peak;
}

// The synced global LFO and delay read the host's song position and tempo every block.
TEST(HostileHost, UnusableTimeInfoKeepsTheSoundFinite) {
  TestHost host;
  VstTest& plugin = host.plugin();
  plugin.setParameter(kGlobalLfoSync, 1.0f);
  plugin.setParameter(kGlobalLfoTarget1, 0.3f);
  plugin.setParameter(kGlobalLfoAmt1, 1.0f);
  plugin.setParameter(kDelaySync, 1.0f);
  plugin.setParameter(kDelaySend, 0.6f);
  plugin.setParameter(kChorusMix, 0.5f);
  for (int note : {48, 60, 67}) host.noteOn(0, note);
  const double values[] = {kNaN, kInfinity, -kInfinity, 1e300, -1e300, 0.0, -1.0, 4e-320, 1e12};
  for (double ppq : values) {
    for (double tempo : values) {
      host.record().time.ppqPos = ppq;
      host.record().time.tempo = tempo;
      host.process(300);
      ASSERT_LT(blockPeak(host), 8.0f) << "position " << ppq << ", tempo " << tempo;
    }
  }
  host.record().answerTime = false;
  host.process(300);
  EXPECT_LT(blockPeak(host), 8.0f);
}

TEST(HostileHost, UnusableSampleRatesKeepTheLastGoodOne) {
  TestHost host;
  VstTest& plugin = host.plugin();
  plugin.setParameter(kMasterLimiter, 1.0f);
  plugin.setSampleRate(48000.0f);
  const vst2::VstInt32 tail = plugin.getGetTailSize();
  host.noteOn(0, 60);
  for (float rate : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 0.0f,
                     -44100.0f, 1.0f, 1e9f}) {
    plugin.setSampleRate(rate);
    EXPECT_EQ(plugin.getSampleRate(), 48000.0f) << rate;
    EXPECT_EQ(plugin.getGetTailSize(), tail) << rate;
    plugin.resume();
    host.process(256);
    EXPECT_LT(blockPeak(host), 8.0f) << rate;
  }
  EXPECT_EQ(plugin.getAeffect()->initialDelay, host.engine().latencySamples(48000.0f));
}

TEST(HostileHost, DataBytesWithTheTopBitSet) {
  TestHost host;
  host.midi(0, 0xE0, 0xFF, 0xFF);  // the pitch wheel's bytes read as negative values
  host.midi(0, 0x90, 0x80, 0xFF);
  host.midi(0, 0xB0, 0xC0, 0x90);
  host.midi(0, 0xC0, 0xFF, 0);
  host.process(128);
  EXPECT_LT(blockPeak(host), 8.0f);
  EXPECT_GE(host.engine().parameter(kPitchWheel).baseValue(), 0.0f);
}

TEST(HostileHost, ChunkCallsWithoutDataLoadNothing) {
  TestHost host;
  VstTest& plugin = host.plugin();
  vst2::AEffect* effect = plugin.getAeffect();
  plugin.setParameter(kFilter1Cutoff, 0.25f);
  EXPECT_EQ(effect->dispatcher(effect, vst2::effSetChunk, 1, 4096, nullptr, 0.0f), 1);
  EXPECT_EQ(effect->dispatcher(effect, vst2::effSetChunk, 0, 50000, nullptr, 0.0f), 1);
  EXPECT_EQ(plugin.getParameter(kFilter1Cutoff), 0.25f);
}

// Every gain at its top (a full chord of resonant voices, the low shelf over the whole band, the
// master gain) stacks far past full scale; the host gets at most the output ceiling.
TEST(HostileHost, GainsStackedToTheTopStopAtTheOutputCeiling) {
  TestHost host;
  VstTest& plugin = host.plugin();
  plugin.setParameter(kPolyphony, 1.0f);
  plugin.setParameter(kFilter1Q, 1.0f);
  for (int gain : {kOsc1Gain, kOsc2Gain, kSubGain}) plugin.setParameter(gain, 1.0f);
  plugin.setParameter(kMasterGain, 1.0f);
  plugin.setParameter(kMasterEqGainLow, 1.0f);
  plugin.setParameter(kMasterEqFreqLow, 1.0f);
  plugin.resume();  // the settings hold from the first frame
  for (int note = 36; note < 84; note += 2) host.noteOn(0, note, 127);
  float peak = 0.0f;
  for (int block = 0; block < 100; ++block) {
    host.process(256);
    peak = std::max(peak, blockPeak(host));
  }
  EXPECT_EQ(peak, kOutputCeiling) << "held there, not beyond";
}

// An instance whose operations throw, driven through the C entry points a host calls.
class ThrowingEffect : public vst2::AudioEffectX {
 public:
  ThrowingEffect() : AudioEffectX(nullptr, 1, 1) {}
  void processReplacing(float**, float**, vst2::VstInt32) override { throw std::runtime_error("process"); }
  void setParameter(vst2::VstInt32, float) override { throw std::bad_alloc(); }
  float getParameter(vst2::VstInt32) override { throw 7; }
  vst2::VstInt32 getVendorVersion() override { throw std::logic_error("version"); }
  void close() override { throw std::runtime_error("close"); }
};

TEST(HostileHost, NoExceptionCrossesTheCBoundary) {
  vst2::AEffect* effect = (new ThrowingEffect)->getAeffect();
  float left[8] = {}, right[8] = {};
  float* outputs[2] = {left, right};
  EXPECT_NO_THROW(effect->processReplacing(effect, nullptr, outputs, 8));
  EXPECT_NO_THROW(effect->setParameter(effect, 0, 0.5f));
  EXPECT_EQ(effect->getParameter(effect, 0), 0.0f);
  EXPECT_EQ(effect->dispatcher(effect, vst2::effGetVendorVersion, 0, 0, nullptr, 0.0f), 0);
  EXPECT_EQ(effect->dispatcher(effect, vst2::effClose, 0, 0, nullptr, 0.0f), 1) << "and deleted";
}

}  // namespace
}  // namespace ziv::testing
