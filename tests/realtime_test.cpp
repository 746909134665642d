// The audio path allocates nothing: after the first block, processEvents and processReplacing
// are run with every heap allocation of this thread counted. Nor do the editor's frames, once
// they have seen every control and popup once.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "editor/editor_ui.h"
#include "measuring_canvas.h"
#include "test_host.h"

namespace {

thread_local bool countingAllocations = false;
thread_local int allocationCount = 0;

void* allocate(std::size_t size) {
  if (countingAllocations) ++allocationCount;
  if (void* p = std::malloc(size > 0 ? size : 1)) return p;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

namespace ziv::testing {
namespace {

TEST(RealTime, AudioCallsAllocateNothing) {
  // The counter itself works.
  countingAllocations = true;
  delete new int(1);
  countingAllocations = false;
  ASSERT_EQ(allocationCount, 1);
  allocationCount = 0;

  TestHost host;
  VstTest& plugin = host.plugin();
  // Everything that has state on: all voices, both sources and noise, the shaper, every effect,
  // modulation from both LFOs, and a sample-rate change on the way.
  plugin.setParameter(kPolyphony, 1.0f);
  plugin.setParameter(kUnisonVoices, 1.0f);
  host.setPhysical(kOsc2Waveform, 2.0f);
  host.setPhysical(kOsc2Gain, 0.5f);
  host.setPhysical(kSubGain, 0.5f);
  host.setPhysical(kShaperMix, 0.7f);
  host.setPhysical(kFilter1Mode, 3.0f);
  host.setPhysical(kChorusMix, 0.5f);
  host.setPhysical(kDelaySend, 0.5f);
  host.setPhysical(kMasterLimiter, 1.0f);
  plugin.setParameter(kVoiceLfoTarget1, 0.5f);
  plugin.setParameter(kGlobalLfoTarget1, 0.5f);
  plugin.setParameter(kGlobalLfoSync, 1.0f);

  // Events prepared up front, as a host would hold them.
  std::vector<vst2::VstMidiEvent> midi;
  for (int i = 0; i < 64; ++i) {
    vst2::VstMidiEvent e{};
    e.type = vst2::kVstMidiType;
    e.byteSize = sizeof(e);
    e.deltaFrames = (i * 37) % 600;
    const int kind = i % 4;
    e.midiData[0] = static_cast<char>(kind == 0 ? 0x90 : kind == 1 ? 0x80 : kind == 2 ? 0xB0 : 0xE0);
    e.midiData[1] = static_cast<char>(kind == 2 ? 64 : 36 + i);
    e.midiData[2] = static_cast<char>(kind == 2 ? (i % 8 < 4 ? 127 : 0) : 100);
    midi.push_back(e);
  }
  std::vector<char> storage(sizeof(vst2::VstEvents) + midi.size() * sizeof(vst2::VstEvent*));
  auto* events = reinterpret_cast<vst2::VstEvents*>(storage.data());
  events->numEvents = static_cast<int>(midi.size());
  for (std::size_t i = 0; i < midi.size(); ++i) events->events[i] = reinterpret_cast<vst2::VstEvent*>(&midi[i]);
  std::vector<float> left(4096), right(4096);
  float* outputs[2] = {left.data(), right.data()};

  host.process(256);  // first block: anything lazy happens here
  countingAllocations = true;
  for (int block = 0; block < 50; ++block) {
    if (block == 25) plugin.setSampleRate(96000.0f);
    // A learn that the pedal completes: the settings file is written, then read back.
    if (block % 10 == 5) plugin.midiLearn().startLearn(kFilter1Cutoff);
    plugin.processEvents(events);
    plugin.processReplacing(nullptr, outputs, block % 3 == 0 ? 4096 : 129);
    plugin.processReplacing(nullptr, outputs, 0);
  }
  countingAllocations = false;
  EXPECT_EQ(allocationCount, 0);
  EXPECT_GT(host.engine().soundingVoiceCount(), 0);
  EXPECT_EQ(plugin.midiLearn().state(kFilter1Cutoff).controller, 64);
  plugin.midiLearn().removeMapping(kFilter1Cutoff);  // later tests start without it
}

// The user's gestures, one frame per mouse message: hovering panels, dragging a knob and a
// slider, stepping and dragging a step box, opening a target list and closing it outside.
void playGestures(EditorUi& editor, Canvas& canvas, std::uint32_t& now) {
  const auto frame = [&] { editor.runFrame(canvas, false, now += 50); };
  const auto move = [&](int x, int y) {
    editor.setMousePosition(x, y);
    frame();
  };
  const auto button = [&](bool down) {
    down ? editor.buttonDown(0) : editor.buttonUp(0);
    frame();
  };
  for (int x = 0; x < 1040; x += 40) move(x, 200);
  for (const auto& [x, y] : {std::pair{184, 52}, {256, 160}, {72, 94}, {44, 100}}) {
    move(x, y);
    button(true);
    for (int i = 0; i < 8; ++i) frame();  // a held step-box arrow repeats
    for (int dy = 0; dy < 60; dy += 6) move(x, y - dy);
    button(false);
  }
  move(288, 393);
  button(true);
  button(false);
  move(600, 40);
  button(true);
  button(false);
  editor.runFrame(canvas, true, now += 50);
}

TEST(RealTime, EditorFramesAllocateNothingOnceWarm) {
  TestHost host;
  host.record().parameterCalls.reserve(4096);
  EditorUi editor(host.plugin());
  MeasuringCanvas canvas;
  std::uint32_t now = 0;
  editor.runFrame(canvas, true, now);
  playGestures(editor, canvas, now);

  allocationCount = 0;
  countingAllocations = true;
  playGestures(editor, canvas, now);
  countingAllocations = false;
  EXPECT_EQ(allocationCount, 0);
  EXPECT_GT(host.record().parameterCalls.size(), 0u);
}

}  // namespace
}  // namespace ziv::testing
