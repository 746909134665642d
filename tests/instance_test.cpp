// The instance as a host drives it: what it reports, where MIDI events land in a block, the
// sustain pedal, controllers, program changes and the guards against bad host input.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "test_host.h"

namespace ziv::testing {
namespace {

const Voice* voicePlaying(SynthEngine& engine, int note) {
  for (int slot = 0; slot < kVoiceCount; ++slot) {
    const Voice& v = engine.voice(slot);
    if (!v.isSilent() && v.note == note) return &v;
  }
  return nullptr;
}

bool held(SynthEngine& engine, int note) {
  const Voice* v = voicePlaying(engine, note);
  return v != nullptr && v->held();
}

// Sets the polyphony and resets, so that it holds from the first frame: the events of a block's
// first frame are dispatched before its smoothing step.
void setPolyphony(TestHost& host, int voices) {
  host.plugin().setParameter(kPolyphony, (voices - 1) / 23.0f);
  host.plugin().resume();
}

TEST(Instance, ReportsItselfToTheHost) {
  TestHost host;
  vst2::AEffect* effect = host.plugin().getAeffect();
  EXPECT_EQ(effect->magic, vst2::kEffectMagic);
  EXPECT_EQ(effect->numPrograms, 100);
  EXPECT_EQ(effect->numParams, 108);
  EXPECT_EQ(effect->numInputs, 0);
  EXPECT_EQ(effect->numOutputs, 2);
  EXPECT_EQ(effect->uniqueID, vst2::fourCharCode('V', 'r', 'n', '1'));
  EXPECT_EQ(effect->version, 0x0002000C);
  EXPECT_TRUE(effect->flags & vst2::effFlagsIsSynth);
  EXPECT_TRUE(effect->flags & vst2::effFlagsProgramChunks);
  EXPECT_TRUE(effect->flags & vst2::effFlagsCanReplacing);
  EXPECT_FALSE(effect->flags & vst2::effFlagsNoSoundInStop);

  auto call = [&](vst2::VstInt32 opcode, vst2::VstInt32 index, vst2::VstIntPtr value, void* ptr) {
    return effect->dispatcher(effect, opcode, index, value, ptr, 0.0f);
  };
  char text[80] = {};
  EXPECT_EQ(call(vst2::effGetEffectName, 0, 0, text), 1);
  EXPECT_STREQ(text, "Vrn ZIV");
  EXPECT_EQ(call(vst2::effGetVendorString, 0, 0, text), 1);
  EXPECT_STREQ(text, "Quorvantis");
  EXPECT_EQ(call(vst2::effGetProductString, 0, 0, text), 1);
  EXPECT_STREQ(text, "Vrn ZIV");
  EXPECT_EQ(call(vst2::effGetEffectName, 0, 0, nullptr), 0);
  EXPECT_EQ(call(vst2::effGetPlugCategory, 0, 0, nullptr), vst2::kPlugCategSynth);
  EXPECT_EQ(call(vst2::effGetCurrentMidiProgram, 0, 0, nullptr), -1);
  EXPECT_EQ(call(vst2::effGetVstVersion, 0, 0, nullptr), 2400);
  EXPECT_EQ(call(vst2::effGetTailSize, 0, 0, nullptr), 3 * 44100 + 1);
  EXPECT_EQ(call(vst2::effCanDo, 0, 0, const_cast<char*>("receiveVstMidiEvent")), 1);
  EXPECT_EQ(call(vst2::effCanDo, 0, 0, const_cast<char*>("receiveVstEvents")), 1);
  EXPECT_EQ(call(vst2::effCanDo, 0, 0, const_cast<char*>("sendVstMidiEvent")), 0);
  EXPECT_EQ(call(vst2::effCanDo, 0, 0, nullptr), 0);
  EXPECT_EQ(call(vst2::effCanBeAutomated, 5, 0, nullptr), 1);
  EXPECT_EQ(call(vst2::effVendorSpecific, 0x73486921, 0, nullptr), 0);

  call(vst2::effGetParamName, 23, 0, text);
  EXPECT_STREQ(text, "FILTER 1: Cutoff");
  call(vst2::effGetParamDisplay, 45, 0, text);
  EXPECT_STREQ(text, "16th");
  std::strcpy(text, "x");
  call(vst2::effGetParamLabel, 23, 0, text);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(call(vst2::effGetProgramNameIndexed, 99, 0, text), 1);
  EXPECT_STREQ(text, "Init Patch");
  EXPECT_EQ(call(vst2::effGetProgramNameIndexed, 100, 0, text), 0);
}

TEST(Instance, BadHostInputIsIgnored) {
  TestHost host;
  VstTest& plugin = host.plugin();
  vst2::AEffect* effect = plugin.getAeffect();
  const float before = plugin.getParameter(0);
  effect->setParameter(effect, 108, 0.3f);
  effect->setParameter(effect, -1, 0.3f);
  EXPECT_EQ(effect->getParameter(effect, 108), 0.0f);
  EXPECT_EQ(effect->getParameter(effect, -5), 0.0f);
  EXPECT_EQ(plugin.getParameter(0), before);
  char text[40] = "untouched";
  plugin.getParameterName(200, text);
  plugin.getParameterDisplay(-1, text);
  EXPECT_STREQ(text, "untouched");
  for (int opcode : {vst2::effGetParamName, vst2::effGetParamDisplay, vst2::effGetProgramName,
                     vst2::effSetProgramName, vst2::effGetProgramNameIndexed, vst2::effProcessEvents,
                     vst2::effGetChunk, vst2::effEditGetRect, vst2::effGetOutputProperties}) {
    effect->dispatcher(effect, opcode, 0, 0, nullptr, 0.0f);  // null pointers: no crash
  }
  effect->dispatcher(effect, 9999, 0, 0, nullptr, 0.0f);
  plugin.setParameter(1, std::nanf(""));
  EXPECT_EQ(plugin.getParameter(1), 0.0f) << "NaN is stored as 0";
  plugin.setParameter(1, 7.0f);
  EXPECT_EQ(plugin.getParameter(1), 1.0f);

  // Null outputs, negative and huge blocks.
  host.noteOn(0, 60);
  host.process(0);
  float* noOutputs[2] = {nullptr, nullptr};
  plugin.processReplacing(nullptr, nullptr, 64);
  plugin.processReplacing(nullptr, noOutputs, 64);
  plugin.processReplacing(nullptr, noOutputs, -3);
  host.process(4096);
  for (float x : host.left) EXPECT_TRUE(std::isfinite(x));
  host.midi(0, 0xF0, 1, 2);  // system messages and unknown statuses are dropped
  host.midi(0, 0xA0, 60, 10);
  host.process(64);
}

TEST(Instance, ParameterChangesMirrorIntoTheCurrentProgram) {
  TestHost host;
  VstTest& plugin = host.plugin();
  plugin.setParameter(kFilter1Cutoff, 0.25f);
  EXPECT_FLOAT_EQ(plugin.program(0).values[kFilter1Cutoff], 0.25f);
  EXPECT_EQ(host.record().automateCount, 0) << "host changes are not echoed to the host";
  host.engine().setParameter(kFilter1Q, 0.75f, true);
  EXPECT_EQ(host.record().automateCount, 1) << "editor changes are";
  EXPECT_EQ(host.record().lastAutomatedIndex, kFilter1Q);
  EXPECT_FLOAT_EQ(host.record().lastAutomatedValue, 0.75f);
  EXPECT_FLOAT_EQ(plugin.program(0).values[kFilter1Q], 0.75f);
  EXPECT_FALSE(plugin.beginEdit(-1));
}

TEST(Instance, EventsApplyOnTheirOwnFrame) {
  // 129 frames are two sub-blocks of 64 and 65; notes start where they were played, not where
  // their sub-block starts.
  TestHost late;
  late.noteOn(100, 60);
  late.process(129);
  ASSERT_NE(voicePlaying(late.engine(), 60), nullptr);
  EXPECT_EQ(voicePlaying(late.engine(), 60)->age, 29);

  TestHost early;
  early.noteOn(63, 60);
  early.process(129);
  EXPECT_EQ(voicePlaying(early.engine(), 60)->age, 66);
}

TEST(Instance, EventsBeyondTheBlockWaitForALaterOne) {
  TestHost host;
  host.noteOn(300, 60);
  host.process(0);  // a zero-frame block dispatches nothing and keeps offsets
  host.process(256);
  EXPECT_EQ(voicePlaying(host.engine(), 60), nullptr);
  host.process(128);  // offset now 44
  ASSERT_NE(voicePlaying(host.engine(), 60), nullptr);
  EXPECT_EQ(voicePlaying(host.engine(), 60)->age, 128 - 44);
}

TEST(Instance, EqualOffsetsKeepTheirArrivalOrder) {
  // Enough events to go past the insertion sort: pairs of on/off at shared offsets, sent out
  // of offset order.
  TestHost host;
  setPolyphony(host, 24);
  for (int i = 0; i < 20; ++i) {
    const int offset = (19 - i) * 5;
    host.noteOn(offset, 40 + i);
    host.noteOff(offset, 40 + i);  // same offset, after the note on: released
  }
  host.noteOff(7, 90);
  host.noteOn(7, 90);  // off then on: sounding
  host.process(128);
  for (int i = 0; i < 20; ++i) EXPECT_FALSE(held(host.engine(), 40 + i)) << i;
  EXPECT_TRUE(held(host.engine(), 90));
}

TEST(Instance, SustainPedalDefersNoteOffs) {
  TestHost host;
  setPolyphony(host, 8);
  host.noteOn(0, 60);
  host.noteOn(0, 64);
  host.controller(1, 64, 127);
  host.noteOff(2, 60);
  host.midi(3, 0x90, 64, 0);  // velocity 0 is a note off, also for the pedal
  host.process(128);
  EXPECT_TRUE(held(host.engine(), 60));
  EXPECT_TRUE(held(host.engine(), 64));

  host.noteOn(0, 60);  // the key again while sustained: it keeps sounding after the pedal
  host.controller(1, 64, 0);
  host.process(128);
  EXPECT_TRUE(held(host.engine(), 60));
  EXPECT_FALSE(held(host.engine(), 64));
}

TEST(Instance, AllNotesOffControllers) {
  TestHost host;
  setPolyphony(host, 8);
  host.noteOn(0, 60);
  host.controller(1, 64, 127);
  host.noteOff(2, 60);
  host.controller(3, 123, 0);  // soft: release, forget sustained notes
  host.process(64);
  const Voice* v = voicePlaying(host.engine(), 60);
  ASSERT_NE(v, nullptr);
  EXPECT_EQ(v->stage(), kStageRelease);
  host.noteOn(0, 62);
  host.controller(1, 120, 0);  // hard: silent at once
  host.process(64);
  EXPECT_EQ(host.engine().soundingVoiceCount(), 0);
}

TEST(Instance, ProgramChangesAndTheirSwitch) {
  TestHost host;
  VstTest& plugin = host.plugin();
  host.midi(0, 0xC0, 127, 0);
  host.process(32);
  EXPECT_EQ(plugin.getProgram(), 99) << "clamped to the last program";
  host.midi(0, 0xC0, 3, 0);
  host.process(32);
  EXPECT_EQ(plugin.getProgram(), 3);
  plugin.vendorSpecific(VstTest::kNoProgramChangeCode, 0, nullptr, 0.0f);
  host.midi(0, 0xC0, 5, 0);
  host.process(32);
  EXPECT_EQ(plugin.getProgram(), 3) << "program changes stay off";
  plugin.setProgram(-4);
  EXPECT_EQ(plugin.getProgram(), 0);
}

TEST(Instance, ProgramsKeepTheirEditsAndNames) {
  TestHost host;
  VstTest& plugin = host.plugin();
  plugin.setProgram(2);
  plugin.setParameter(kOsc1Gain, 0.125f);
  char name[] = "A name that is longer than twenty-four";
  plugin.setProgramName(name);
  plugin.setProgram(3);
  EXPECT_NE(plugin.getParameter(kOsc1Gain), 0.125f);
  plugin.setProgram(2);
  EXPECT_EQ(plugin.getParameter(kOsc1Gain), 0.125f);
  char text[32];
  plugin.getProgramName(text);
  EXPECT_STREQ(text, "A name that is longer th");

  const int updates = host.record().updateDisplayCount;
  plugin.beginSetProgram();
  plugin.setProgram(4);
  plugin.setProgramName(name);
  EXPECT_EQ(host.record().updateDisplayCount, updates) << "no refresh inside the bracket";
  plugin.endSetProgram();
  EXPECT_EQ(host.record().updateDisplayCount, updates + 1);
}

TEST(Instance, PitchWheelAndModWheel) {
  TestHost host;
  host.midi(0, 0xE0, 0x00, 0x40);  // centre
  host.process(16);
  EXPECT_FLOAT_EQ(host.engine().parameter(kPitchWheel).baseValue(), 0.5f);
  host.midi(0, 0xE0, 0x7f, 0x7f);
  host.controller(0, 1, 127);
  host.process(16);
  EXPECT_NEAR(host.engine().parameter(kPitchWheel).baseValue(), 1.0f, 1e-4f);
  EXPECT_FLOAT_EQ(host.engine().parameter(kModWheel).baseValue(), 1.0f);
  EXPECT_FLOAT_EQ(host.plugin().program(0).values[kOsc1Waveform], 0.0f) << "wheels never reach programs";
}

TEST(Instance, SmoothingRampsAcrossSubBlocks) {
  TestHost host;
  host.plugin().setParameter(kFilter1Cutoff, 0.5f);
  host.process(128);
  host.plugin().setParameter(kFilter1Cutoff, 1.0f);
  host.engine().smoothParameters(0.25f);
  EXPECT_FLOAT_EQ(host.engine().parameter(kFilter1Cutoff).smoothed, 0.625f);
  host.process(512);  // four sub-blocks: the last reaches the new value
  EXPECT_FLOAT_EQ(host.engine().parameter(kFilter1Cutoff).smoothed, 1.0f);
  EXPECT_FLOAT_EQ(host.engine().parameter(kFilter1Cutoff).previous, 1.0f);
}

TEST(Instance, HostLifecycleVariations) {
  // Never resumed, resumed twice, rate changed between blocks: always finite output.
  TestHost host;
  host.plugin().resume();
  host.plugin().resume();
  host.noteOn(0, 60);
  host.process(256);
  host.plugin().setSampleRate(96000.0f);
  host.process(256);
  EXPECT_EQ(host.engine().sampleRate(), 96000.0f);
  host.plugin().suspend();
  EXPECT_EQ(host.engine().soundingVoiceCount(), 0);
  host.process(256);
  for (float x : host.left) EXPECT_TRUE(std::isfinite(x));
}

TEST(Instance, SettingsMadeWhileSwitchedOffHoldFromTheFirstFrame) {
  // A host picks a patch, switches the plug-in on and plays a chord on the very first frame: the
  // chord gets the new polyphony and unison, not values half-way from the old ones.
  TestHost host;
  host.plugin().suspend();
  host.setPhysical(kPolyphony, 24.0f);
  host.setPhysical(kUnisonVoices, 4.0f);
  host.plugin().resume();
  for (int i = 0; i < 16; ++i) host.noteOn(0, 36 + 3 * i);
  host.process(256);
  EXPECT_EQ(host.engine().soundingVoiceCount(), 64);
}

TEST(Instance, PublishesTheLastBlocksOutputPeak) {
  TestHost host;
  host.process(256);
  EXPECT_EQ(host.plugin().outputLevel(0), 0.0f);
  host.noteOn(0, 60, 127);
  host.play(0.2);
  float peak = 0.0f;
  for (float sample : host.left) peak = std::max(peak, std::fabs(sample));
  EXPECT_GT(host.plugin().outputLevel(0), 0.0f);
  EXPECT_FLOAT_EQ(host.plugin().outputLevel(0), peak);
  EXPECT_EQ(host.plugin().outputLevel(2), 0.0f) << "no third output";
}

}  // namespace
}  // namespace ziv::testing
