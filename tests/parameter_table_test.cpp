// The parameter table as hosts and programs see it, and the display texts.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "engine/synth_engine.h"
#include "plugin/parameter_display.h"
#include "plugin/parameter_table.h"

namespace ziv {
namespace {

std::string display(const SynthEngine& engine, int index) {
  char text[kParamTextCapacity];
  engine.parameterDisplay(index, text, sizeof(text));
  return text;
}

TEST(ParameterTable, HostSeesExactly108NamedParameters) {
  SynthEngine engine;
  EXPECT_EQ(engine.parameterCount(), 108);
  std::set<std::string> names;
  for (int i = 0; i < kHostParamCount; ++i) {
    const ParamInfo& row = paramTable()[i];
    EXPECT_EQ(row.index, i);
    EXPECT_STRNE(row.name, "") << i;
    EXPECT_LT(std::string(row.name).size(), kParamTextCapacity) << row.name;
    names.insert(row.name);
  }
  EXPECT_EQ(names.size(), 108u) << "names are unique";
  EXPECT_EQ(findParam("Pitch Wheel"), kPitchWheel);
  EXPECT_EQ(findParam("Mod Wheel"), kModWheel);
  EXPECT_GE(kPitchWheel, kHostParamCount);
  EXPECT_GE(kModWheel, kHostParamCount);
}

TEST(ParameterTable, StoredIndicesAreTheFormat) {
  // A few fixed points of the stored order; the build order differs from it.
  EXPECT_EQ(findParam("OSC 1: Waveform"), 0);
  EXPECT_EQ(findParam("FILTER 1: Cutoff"), 23);
  EXPECT_EQ(findParam("DELAY: Sync"), 45);
  EXPECT_EQ(findParam("MASTER: Gain"), 98);
  EXPECT_EQ(findParam("OSC 1: Sync"), 106);
  EXPECT_EQ(findParam("OSC 2: Sync"), 107);
  EXPECT_EQ(paramBuildOrder()[6], kOsc1Sync) << "built right after OSC 1: Cents";
  std::set<int> built(paramBuildOrder().begin(), paramBuildOrder().end());
  EXPECT_EQ(built.size(), static_cast<std::size_t>(kParamCount));
}

TEST(ParameterTable, DefaultsInNormalisedUnits) {
  SynthEngine engine;
  EXPECT_FLOAT_EQ(engine.parameter(kMasterGain).baseValue(), 0.81632656f);
  EXPECT_EQ(display(engine, kDelaySync), "16th");
  EXPECT_EQ(display(engine, kOsc1Waveform), "Saw");
  EXPECT_EQ(display(engine, kFilter1Mode), "LP");
  EXPECT_EQ(display(engine, kShaperMode), "Clip");
  EXPECT_EQ(engine.parameter(kSubOctave).globalStepped(), -1);
  EXPECT_EQ(display(engine, kSubOctave), "-1");
  EXPECT_EQ(display(engine, kDelayTime), "3");
  EXPECT_EQ(paramTable()[kDelayTime].hi, 24);
  EXPECT_FLOAT_EQ(engine.parameter(kFilter1KeyTracking).baseValue(), 1.0f);
  EXPECT_FLOAT_EQ(engine.parameter(kMasterEqFreqHigh).constant, -0.5f);
}

TEST(ParameterDisplay, IntegerChoiceSemitonesAndRate) {
  SynthEngine engine;
  engine.setParameter(kOsc1Octave, 0.55f, false);  // physical 0.5 rounds up
  EXPECT_EQ(display(engine, kOsc1Octave), "1");
  engine.setParameter(kOsc1Waveform, 1.0f, false);
  EXPECT_EQ(display(engine, kOsc1Waveform), "Noise");
  engine.setParameter(kOsc1Sync, 0.5f, false);
  EXPECT_EQ(display(engine, kOsc1Sync), "15.00 st");
  engine.setParameter(kVoiceLfoRate, 0.0f, false);
  EXPECT_EQ(display(engine, kVoiceLfoRate), "0.30 Hz");
  engine.setParameter(kVoiceLfoRate, 1.0f, false);
  EXPECT_EQ(display(engine, kVoiceLfoRate), "16.44 Hz");

  char text[kParamTextCapacity];
  const ChoiceList& waveforms = paramTable()[kOsc1Waveform].choices;
  formatParamValue(DisplayRule::kChoice, 0, 4, waveforms, 1.0f, text, sizeof(text));
  EXPECT_STREQ(text, "") << "an index past the list shows nothing";
}

TEST(ParameterDisplay, PlainNumbersReadEasily) {
  char text[kParamTextCapacity];
  const ChoiceList none;
  formatParamValue(DisplayRule::kPlain, 0, 1, none, 0.25f, text, sizeof(text));
  EXPECT_STREQ(text, "0.25");
  formatParamValue(DisplayRule::kPlain, -1, 1, none, 0.5f, text, sizeof(text));
  EXPECT_STREQ(text, "0.00");
  formatParamValue(DisplayRule::kPlain, -1, 1, none, 0.499999f, text, sizeof(text));
  EXPECT_STREQ(text, "0.00") << "no negative zero";
  formatParamValue(DisplayRule::kPlain, 0, 100, none, 0.125f, text, sizeof(text));
  EXPECT_STREQ(text, "12.5");
  formatParamValue(DisplayRule::kPlain, 0, 1000, none, 0.44f, text, sizeof(text));
  EXPECT_STREQ(text, "440");
  formatParamValue(DisplayRule::kPlain, 0, 1, none, 0.25f, text, 3);
  EXPECT_STREQ(text, "0.") << "cut to the buffer";
}

TEST(ParameterDisplay, GlobalLfoRateFollowsItsSyncSwitch) {
  SynthEngine engine;
  engine.setParameter(kGlobalLfoRate, 0.0f, false);
  EXPECT_EQ(display(engine, kGlobalLfoRate), "0.30 Hz");
  engine.setParameter(kGlobalLfoSync, 1.0f, false);
  EXPECT_EQ(display(engine, kGlobalLfoRate), "4/1D");
  EXPECT_FLOAT_EQ(engine.parameter(kGlobalLfoRate).constant, 0.04347826f);

  const char* expected[kTempoDivisionCount] = {"4/1D", "8/1T", "4/1",  "2/1D",  "4/1T",  "2/1",
                                               "1/1D", "2/1T", "1/1",  "1/2D",  "1/1T",  "1/2",
                                               "1/4D", "1/2T", "1/4",  "1/8D",  "1/4T",  "1/8",
                                               "1/16D", "1/8T", "1/16", "1/32D", "1/16T", "1/32"};
  for (int division = 0; division < kTempoDivisionCount; ++division) {
    engine.setParameter(kGlobalLfoRate, division / 23.0f, false);
    EXPECT_EQ(display(engine, kGlobalLfoRate), expected[division]) << division;
  }
  engine.setParameter(kGlobalLfoSync, 0.0f, false);
  EXPECT_EQ(display(engine, kGlobalLfoRate), "16.44 Hz") << "same knob position, free rate";
}

}  // namespace
}  // namespace ziv
