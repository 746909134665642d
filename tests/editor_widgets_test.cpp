// The widgets under the mouse, through the editor's entry points as the window drives them:
// drag laws, clicks, key repeat, popups, the program box, and the host's edit gestures.
#include <gtest/gtest.h>

#include "editor/popup.h"
#include "editor/program_box.h"
#include "editor/shape_display.h"
#include "editor/widgets.h"
#include "editor_harness.h"

namespace ziv::testing {
namespace {

using vst2::audioMasterAutomate;
using vst2::audioMasterBeginEdit;
using vst2::audioMasterEndEdit;

// The calls form whole gestures on `index`: begin, automations, end, and again.
void expectGestures(const std::vector<HostCall>& calls, int index, int gestures) {
  int begun = 0;
  bool open = false;
  for (const HostCall& call : calls) {
    EXPECT_EQ(call.index, index);
    if (call.opcode == audioMasterBeginEdit) {
      EXPECT_FALSE(open);
      open = true;
      ++begun;
    } else if (call.opcode == audioMasterEndEdit) {
      EXPECT_TRUE(open);
      open = false;
    } else {
      EXPECT_EQ(call.opcode, audioMasterAutomate);
      EXPECT_TRUE(open) << "automation outside a gesture";
    }
  }
  EXPECT_FALSE(open);
  EXPECT_EQ(begun, gestures);
}

int automations(const std::vector<HostCall>& calls) {
  int count = 0;
  for (const HostCall& call : calls) count += call.opcode == audioMasterAutomate;
  return count;
}

// "OSC 1: Gain", the large knob 260: sprite (160, 28, 48 x 48).
constexpr int kGainX = 184, kGainY = 52;

TEST(EditorKnob, DragsUpAcross134PixelsAndShiftDragsFinely) {
  EditorHarness editor;
  editor.setValue(kOsc1Gain, 0.0f);
  editor.calls().clear();
  editor.moveTo(kGainX, kGainY);
  editor.press(kGainX, kGainY);
  editor.moveTo(kGainX, kGainY - 134);
  EXPECT_FLOAT_EQ(editor.value(kOsc1Gain), 1.0f);
  editor.moveTo(kGainX, kGainY - 200);  // beyond the end it stays there
  EXPECT_FLOAT_EQ(editor.value(kOsc1Gain), 1.0f);
  editor.moveTo(kGainX, kGainY - 190);  // and turns back at once
  EXPECT_NEAR(editor.value(kOsc1Gain), 1.0f - 10 * 0.0075f, 1e-6);
  editor.release();
  expectGestures(editor.calls(), kOsc1Gain, 1);

  editor.setValue(kOsc1Gain, 0.0f);
  editor.moveTo(kGainX, kGainY, true);
  editor.press(kGainX, kGainY);
  editor.moveTo(kGainX, kGainY - 134, true);
  EXPECT_NEAR(editor.value(kOsc1Gain), 0.134f, 1e-6);
  editor.release();
}

TEST(EditorKnob, ShowsItsValueWhileHeldAndItsCaptionOtherwise) {
  EditorHarness editor;
  editor.setValue(kOsc1Gain, 0.5f);
  editor.frame(true);
  const int captionY = 20 + 48;
  EXPECT_EQ(editor.canvas.textAt(184, captionY), "Gain");
  editor.press(kGainX, kGainY);
  editor.frame(true);
  char text[32];
  editor.host.plugin().getParameterDisplay(kOsc1Gain, text);
  EXPECT_EQ(editor.canvas.textAt(184, captionY), text);
  editor.release();
  editor.frame(true);
  EXPECT_EQ(editor.canvas.textAt(184, captionY), "Gain");
}

TEST(EditorKnob, DoubleClickResetsToTheDefaultInOneGesture) {
  EditorHarness editor;
  editor.setValue(kOsc1Gain, 0.2f);
  editor.calls().clear();
  editor.doubleClick(kGainX, kGainY);
  EXPECT_FLOAT_EQ(editor.value(kOsc1Gain), 0.7f);
  // The first click changes nothing and tells the host nothing; the reset is one gesture.
  expectGestures(editor.calls(), kOsc1Gain, 1);
  EXPECT_EQ(automations(editor.calls()), 1);

  // A bipolar parameter resets to the middle: "OSC 1: Shape" (small knob 257, sprite at (96, 41)).
  editor.setValue(kOsc1Shape, 0.9f);
  editor.doubleClick(108, 53);
  EXPECT_FLOAT_EQ(editor.value(kOsc1Shape), 0.5f);
}

TEST(EditorKnob, HitTestIsStrictOnTheSpriteSquare) {
  EditorHarness editor;
  editor.setValue(kOsc1Gain, 0.0f);
  editor.calls().clear();
  for (int y : {28, 28 + 48}) {  // the top row and the row just below the square
    editor.press(kGainX, y);
    editor.moveTo(kGainX, y - 50);
    editor.release();
  }
  for (int x : {160, 160 + 48}) {
    editor.press(x, kGainY);
    editor.moveTo(x, kGainY - 50);
    editor.release();
  }
  EXPECT_TRUE(editor.calls().empty());
  EXPECT_FLOAT_EQ(editor.value(kOsc1Gain), 0.0f);
  editor.press(161, 29);
  editor.moveTo(161, 19);
  editor.release();
  EXPECT_GT(editor.value(kOsc1Gain), 0.0f);
}

TEST(EditorKnob, FrameIndexAndSourceRectangle) {
  EXPECT_EQ(knobFrame(0.0f), 0);
  EXPECT_EQ(knobFrame(0.5f), 64);
  EXPECT_EQ(knobFrame(0.999f), 127);
  EXPECT_EQ(knobFrame(1.0f), 127);
  EditorHarness editor;
  editor.setValue(kOsc1Gain, 1.0f);
  editor.frame();
  const RecordingCanvas::ImageCall* sprite = editor.canvas.imageAt(Rect{160, 28, 48, 48});
  ASSERT_NE(sprite, nullptr);
  EXPECT_EQ(sprite->source.x, 15 * 48);  // the bottom-right frame of the strip
  EXPECT_EQ(sprite->source.y, 7 * 48);
  EXPECT_FLOAT_EQ(sprite->alpha, 1.0f);
}

// A widget on its own, outside the layout: a context with one input frame.
struct WidgetBench {
  WidgetBench() : context(host.plugin(), drawList) {}
  void pass(const InputFrame& input) {
    context.beginPass(input, canvas, false);
    knob(context, 1, Placement{kEditorAnchor, 0, 0}, "Knob", false, parameter);
  }
  TestHost host;
  DrawList drawList;
  RecordingCanvas canvas;
  WidgetContext context;
  int parameter = kOsc1Gain;
};

TEST(EditorKnob, RightClickRequestsTheLearnMenuUnlessAPopupIsOpen) {
  WidgetBench bench;
  InputFrame input;
  input.x = 20;
  input.y = 30;
  input.right.pressed = input.right.held = true;
  bench.pass(input);
  EXPECT_EQ(bench.context.popup().kind, kPopupMidiLearn);
  EXPECT_EQ(bench.context.popup().parameter, kOsc1Gain);
  EXPECT_EQ(bench.context.popup().position.dx, 20);
  EXPECT_EQ(bench.context.popup().width, 120);

  // While it is open, a press on the knob belongs to the popup.
  bench.host.record().parameterCalls.clear();
  InputFrame press;
  press.x = 20;
  press.y = 30;
  press.left.pressed = press.left.held = true;
  bench.pass(press);
  EXPECT_TRUE(bench.host.record().parameterCalls.empty());
}

TEST(EditorKnob, NoParameterDrawsFrameZeroAndIgnoresInput) {
  WidgetBench bench;
  bench.parameter = -1;
  InputFrame input;
  input.x = 20;
  input.y = 30;
  input.left.pressed = input.left.held = input.left.doubleClick = true;
  bench.pass(input);
  EXPECT_FALSE(bench.context.state(1).active);
  ASSERT_EQ(bench.drawList.commandCount(3), 1);
  EXPECT_EQ(bench.drawList.command(3, 0).source.x, 0);
  EXPECT_EQ(bench.drawList.command(3, 0).source.y, 0);
  EXPECT_TRUE(bench.host.record().parameterCalls.empty());
}

TEST(EditorSlider, ThumbFollowsThePointerAndShiftDragsFinely) {
  // "AMP ENV: Attack", slider 1281 at (246, 44): track from y 66, 104 high, thumb 18.
  EditorHarness editor;
  editor.setValue(kAmpEnvAttack, 0.0f);
  editor.calls().clear();
  editor.press(256, 80);  // the track above the thumb does not take the left button
  editor.moveTo(256, 60);
  editor.release();
  EXPECT_TRUE(editor.calls().empty());
  editor.press(256, 160);  // 8 pixels into the thumb at 152
  editor.moveTo(256, 74);
  EXPECT_FLOAT_EQ(editor.value(kAmpEnvAttack), 1.0f);
  editor.moveTo(256, 74 + 43);
  EXPECT_FLOAT_EQ(editor.value(kAmpEnvAttack), 0.5f);
  editor.moveTo(256, 0);
  EXPECT_FLOAT_EQ(editor.value(kAmpEnvAttack), 1.0f);
  editor.moveTo(256, 74 + 43);
  editor.moveTo(256, 74 + 53, true);
  EXPECT_NEAR(editor.value(kAmpEnvAttack), 0.49f, 1e-6);
  editor.release();
  expectGestures(editor.calls(), kAmpEnvAttack, 1);
}

TEST(EditorButtons, ToggleAndModeClicksAreOneGestureEach) {
  EditorHarness editor;
  // "VOICE: Legato Mode", LED at (88, 364).
  editor.calls().clear();
  const float legato = editor.value(kLegatoMode);
  editor.click(96, 371);
  EXPECT_FLOAT_EQ(editor.value(kLegatoMode), 1.0f - legato);
  editor.click(96, 371);
  EXPECT_FLOAT_EQ(editor.value(kLegatoMode), legato);
  expectGestures(editor.calls(), kLegatoMode, 2);

  // "FILTER 1: Mode": its third button ("BP") at (404, 99).
  editor.calls().clear();
  editor.click(416, 109);
  EXPECT_NEAR(editor.value(kFilter1Mode), 2.0f / 3.0f, 1e-6);
  expectGestures(editor.calls(), kFilter1Mode, 1);
}

TEST(EditorShapeDisplay, LeftClickStepsToTheNextChoiceAndRightClickAsksToLearn) {
  // "OSC 1: Waveform" ("Saw", "Pulse", "Noise"), display 259 at (24, 28, 64 x 36).
  EditorHarness editor;
  editor.setValue(kOsc1Waveform, 0.0f);
  editor.calls().clear();
  editor.click(56, 46);
  EXPECT_FLOAT_EQ(editor.value(kOsc1Waveform), 0.5f);
  editor.click(56, 46);
  EXPECT_FLOAT_EQ(editor.value(kOsc1Waveform), 1.0f);
  editor.click(56, 46);  // after the last choice, the first
  EXPECT_FLOAT_EQ(editor.value(kOsc1Waveform), 0.0f);
  expectGestures(editor.calls(), kOsc1Waveform, 3);
  EXPECT_EQ(automations(editor.calls()), 3);
  // The edge row does not hit.
  editor.click(24, 46);
  EXPECT_FLOAT_EQ(editor.value(kOsc1Waveform), 0.0f);

  WidgetBench bench;
  InputFrame input;
  input.x = 10;
  input.y = 10;
  input.right.pressed = input.right.held = true;
  bench.context.beginPass(input, bench.canvas, false);
  shapeDisplay(bench.context, 1, Placement{}, 64, nullptr, ShapeKind::kShaper, {kShaperMode, kShaperDrive});
  EXPECT_EQ(bench.context.popup().kind, kPopupMidiLearn);
  EXPECT_EQ(bench.context.popup().parameter, kShaperMode);
  EXPECT_TRUE(bench.host.record().parameterCalls.empty());
}

// "OSC 1: Octave", step box 261 at (24, 76): up arrow (64, 88), down arrow (64, 100), field (24, 88).
int octave(EditorHarness& editor) {
  return static_cast<int>(std::lround(editor.value(kOsc1Octave) * 10.0f)) - 5;
}

TEST(EditorStepBox, ArrowsStepAndRepeatEverFasterWhileHeld) {
  EditorHarness editor;
  editor.calls().clear();
  editor.click(72, 94);
  EXPECT_EQ(octave(editor), 1);

  editor.press(72, 106);  // down: at once
  EXPECT_EQ(octave(editor), 0);
  // Frames every 50 ms: the first repeat after more than 250 ms (at 300), then after more than
  // 200 ms (at 550), 166.7 ms (at 750) and 142.9 ms (at 900).
  const int expected[] = {0, 0, 0, 0, 0, -1, -1, -1, -1, -1, -2, -2, -2, -2, -3, -3, -3, -4};
  for (int step : expected) {
    editor.frame();
    EXPECT_EQ(octave(editor), step);
  }
  editor.release();
  expectGestures(editor.calls(), kOsc1Octave, 2);

  // The count starts again with the next press; the range ends at -5.
  editor.press(72, 106);
  EXPECT_EQ(octave(editor), -5);
  for (int i = 0; i < 20; ++i) editor.frame();
  EXPECT_EQ(octave(editor), -5);
  editor.release();
}

TEST(EditorStepBox, FieldDragsTwentyPixelsPerOctaveWithoutDeadZone) {
  EditorHarness editor;
  editor.press(44, 100);
  editor.moveTo(44, 80);
  EXPECT_EQ(octave(editor), 1);
  editor.moveTo(44, 61);
  EXPECT_EQ(octave(editor), 1);
  editor.moveTo(44, 60);
  EXPECT_EQ(octave(editor), 2);
  editor.moveTo(44, -100);  // far beyond the top: 5
  EXPECT_EQ(octave(editor), 5);
  editor.moveTo(44, -120);  // twenty pixels back down: 4 at once
  EXPECT_EQ(octave(editor), 5);
  editor.moveTo(44, -100);
  EXPECT_EQ(octave(editor), 4);
  editor.release();

  // "OSC 1: Cents" (99 at most): 0.99 steps per pixel.
  editor.press(172, 100);
  editor.moveTo(172, 90);
  EXPECT_EQ(static_cast<int>(std::lround(editor.value(kOsc1Cents) * 198.0f)) - 99, 9);
  editor.release();
}

TEST(EditorPopup, TargetListPicksAndClosesAndHoldsOffTheControlsBelow) {
  // "MOD ENV: Target 1", selector 2054 at (232, 372): button (232, 385, 112 x 16).
  EditorHarness editor;
  editor.calls().clear();
  editor.click(288, 393);
  ASSERT_EQ(editor.context().popup().kind, kPopupTargetList);
  EXPECT_TRUE(editor.calls().empty());
  // 26 targets of 14 pixels, moved up to fit the editor: (232, 100).
  const Rect list = popupListArea(26, 112, 232, 385);
  EXPECT_EQ(list.y, 100);
  EXPECT_EQ(list.height, 26 * 14 + 8);
  editor.frame(true);
  EXPECT_TRUE(editor.canvas.drewText("Off"));
  EXPECT_TRUE(editor.canvas.drewText("VOICE: Gain"));

  editor.click(288, 104 + 3 * 14 + 7);  // the fourth item, "VOICE: Glide Time"
  EXPECT_EQ(editor.context().popup().kind, kPopupNone);
  EXPECT_NEAR(editor.value(kModEnvTarget1), 3.0f / 25.0f, 1e-6);
  expectGestures(editor.calls(), kModEnvTarget1, 1);
  editor.frame(true);
  EXPECT_TRUE(editor.canvas.drewText("VOICE: Glide Time"));

  // A click outside closes the list and reaches nothing else: not the SHAPER drive knob under it.
  editor.click(288, 393);
  editor.calls().clear();
  const float drive = editor.value(kShaperDrive);
  editor.press(632, 65);
  editor.moveTo(632, 20);
  editor.release();
  EXPECT_EQ(editor.context().popup().kind, kPopupNone);
  EXPECT_TRUE(editor.calls().empty());
  EXPECT_FLOAT_EQ(editor.value(kShaperDrive), drive);
}

TEST(EditorPopup, LongListsTakeColumnsAndStayInsideTheEditor) {
  const Rect list = popupListArea(48, 112, 880, 385);  // a mod wheel target list
  EXPECT_EQ(list.width, 2 * 112);
  EXPECT_LE(list.x + list.width, 1040);
  EXPECT_GE(list.y, 0);
  EXPECT_LE(list.y + list.height, 472);
}

TEST(EditorProgramBox, StepsWrapAndApplyOnceAfterTheFrame) {
  EditorHarness editor;
  char expected[40];
  formatProgramTitle(0, editor.host.plugin().program(0).name, expected, sizeof expected);
  EXPECT_EQ(std::string(expected, 4), "00. ");
  EXPECT_TRUE(editor.canvas.drewTextStartingWith(std::string(expected, 12)));

  editor.click(886, 104);  // previous, from the first program
  EXPECT_EQ(editor.host.plugin().getProgram(), 99);
  editor.frame(true);
  EXPECT_TRUE(editor.canvas.drewTextStartingWith("99. "));

  editor.click(1019, 104);  // next, from the last
  EXPECT_EQ(editor.host.plugin().getProgram(), 0);
  editor.click(1019, 104);
  EXPECT_EQ(editor.host.plugin().getProgram(), 1);
}

TEST(EditorFrame, RedrawsOnlyWhatChanged) {
  EditorHarness editor;
  editor.moveTo(700, 465);  // below the panels, over no control
  editor.frame();
  EXPECT_TRUE(editor.canvas.images.empty());
  EXPECT_TRUE(editor.canvas.invalidated.empty());

  // Host automation moves the knob on the next frame, and only its neighbourhood is redrawn.
  editor.setValue(kOsc1Gain, 0.3f);
  editor.frame();
  ASSERT_EQ(editor.canvas.invalidated.size(), 1u);
  const Rect dirty = editor.canvas.invalidated[0];
  EXPECT_LE(dirty.x, 160);
  EXPECT_GE(dirty.x + dirty.width, 208);
  EXPECT_LT(dirty.width, 100);
  EXPECT_NE(editor.canvas.imageAt(Rect{160, 28, 48, 48}), nullptr);
  EXPECT_EQ(editor.canvas.imageAt(Rect{1004, 28, 24, 24}), nullptr);
}

}  // namespace
}  // namespace ziv::testing
