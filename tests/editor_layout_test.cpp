// The editor's layout as a frame places and draws it: every panel and control at its position,
// drawn where it was placed, the help texts, the help line and the version label.
#include <gtest/gtest.h>

#include <cstring>

#include "editor/layout.h"
#include "editor/shape_display.h"
#include "editor/widgets.h"
#include "editor_harness.h"

namespace ziv::testing {
namespace {

struct PanelPosition {
  WidgetId id;
  int x, y, width, height;
};

const PanelPosition kPanels[] = {
    {256, 8, 12, 216, 112},    {512, 8, 124, 216, 112},    {768, 8, 236, 216, 72},
    {1024, 8, 308, 216, 152},  {1280, 224, 12, 160, 168},  {2048, 224, 180, 160, 280},
    {1792, 384, 12, 160, 168}, {1536, 384, 180, 160, 168}, {2304, 384, 348, 160, 112},
    {2816, 544, 12, 160, 80},  {2560, 544, 92, 160, 168},  {3072, 544, 260, 160, 200},
    {3328, 712, 12, 160, 128}, {3584, 712, 140, 160, 120}, {3840, 712, 260, 160, 200},
    {4096, 872, 12, 160, 168}, {4352, 872, 180, 160, 168}, {4608, 872, 348, 160, 112},
};

// Kinds: K large knob, k small knob, S slider, T toggle, B step box, M mode selector, G target
// selector, D shape display, V divider, L level light, P program box.
struct ControlPosition {
  WidgetId id;
  char kind;
  int dx, dy;
  int width;  // step boxes, selectors, displays, dividers, the program box
};

const ControlPosition kControls[] = {
    {257, 'k', 88, 13, 0},    {258, 'k', 124, 13, 0},   {259, 'D', 16, 16, 64},    {260, 'K', 152, 8, 0},
    {261, 'B', 16, 64, 56},   {262, 'B', 80, 64, 56},   {263, 'B', 144, 64, 56},   {513, 'k', 88, 13, 0},
    {514, 'k', 124, 13, 0},   {515, 'D', 16, 16, 64},   {516, 'K', 152, 8, 0},     {517, 'B', 16, 64, 56},
    {518, 'B', 80, 64, 56},   {519, 'B', 144, 64, 56},  {769, 'B', 16, 24, 56},    {770, 'k', 88, 21, 0},
    {771, 'K', 152, 16, 0},   {1025, 'B', 16, 32, 56},  {1026, 'B', 80, 16, 56},   {1027, 'k', 160, 13, 0},
    {1028, 'T', 80, 56, 0},   {1029, 'T', 152, 56, 0},  {1030, 'V', 8, 76, 184},   {1031, 'B', 16, 96, 56},
    {1032, 'K', 84, 88, 0},   {1033, 'K', 144, 88, 0},  {1281, 'S', 22, 32, 0},    {1282, 'S', 54, 32, 0},
    {1283, 'S', 86, 32, 0},   {1284, 'S', 118, 32, 0},  {2049, 'S', 22, 32, 0},    {2050, 'S', 54, 32, 0},
    {2051, 'S', 86, 32, 0},   {2052, 'S', 118, 32, 0},  {2053, 'V', 16, 164, 128}, {2054, 'G', 8, 192, 112},
    {2055, 'k', 128, 185, 0}, {2056, 'G', 8, 216, 112}, {2057, 'k', 128, 209, 0},  {2058, 'G', 8, 240, 112},
    {2059, 'k', 128, 233, 0}, {1793, 'S', 88, 32, 0},   {1794, 'S', 120, 32, 0},   {1795, 'M', 20, 24, 0},
    {1796, 'k', 18, 112, 0},  {1797, 'k', 50, 112, 0},  {1537, 'S', 22, 32, 0},    {1538, 'S', 54, 32, 0},
    {1539, 'S', 86, 32, 0},   {1540, 'S', 118, 32, 0},  {2305, 'G', 8, 24, 112},   {2306, 'k', 128, 17, 0},
    {2307, 'G', 8, 48, 112},  {2308, 'k', 128, 41, 0},  {2309, 'G', 8, 72, 112},   {2310, 'k', 128, 65, 0},
    {2817, 'k', 76, 25, 0},   {2818, 'D', 8, 28, 64},   {2819, 'K', 104, 21, 0},   {2561, 'S', 88, 32, 0},
    {2562, 'S', 120, 32, 0},  {2563, 'M', 20, 24, 0},   {2564, 'k', 18, 112, 0},   {2565, 'k', 50, 112, 0},
    {3073, 'K', 8, 64, 0},    {3074, 'K', 56, 64, 0},   {3075, 'K', 104, 64, 0},   {3076, 'k', 20, 23, 0},
    {3077, 'D', 88, 18, 64},  {3078, 'G', 8, 112, 112}, {3079, 'k', 128, 105, 0},  {3080, 'G', 8, 136, 112},
    {3081, 'k', 128, 129, 0}, {3082, 'G', 8, 160, 112}, {3083, 'k', 128, 153, 0},  {3329, 'K', 8, 24, 0},
    {3330, 'K', 56, 24, 0},   {3331, 'K', 8, 72, 0},    {3332, 'K', 56, 72, 0},    {3333, 'K', 104, 72, 0},
    {3585, 'M', 104, 9, 0},   {3586, 'B', 16, 16, 80},  {3587, 'K', 8, 64, 0},     {3588, 'K', 56, 64, 0},
    {3589, 'K', 104, 64, 0},  {3841, 'T', 12, 26, 0},   {3842, 'T', 12, 42, 0},    {3843, 'K', 8, 64, 0},
    {3844, 'K', 56, 64, 0},   {3845, 'K', 104, 64, 0},  {3846, 'D', 88, 18, 64},   {3847, 'G', 8, 112, 112},
    {3848, 'k', 128, 105, 0}, {3849, 'G', 8, 136, 112}, {3850, 'k', 128, 129, 0},  {3851, 'G', 8, 160, 112},
    {3852, 'k', 128, 153, 0}, {4097, 'P', 5, 80, 152},  {4353, 'L', 16, 32, 0},    {4354, 'L', 56, 32, 0},
    {4355, 'S', 30, 32, 0},   {4356, 'K', 70, 32, 0},   {4357, 'k', 122, 36, 0},   {4358, 'K', 70, 80, 0},
    {4359, 'k', 122, 84, 0},  {4360, 'T', 80, 136, 0},  {4609, 'G', 8, 24, 112},   {4610, 'k', 128, 17, 0},
    {4611, 'G', 8, 48, 112},  {4612, 'k', 128, 41, 0},  {4613, 'G', 8, 72, 112},   {4614, 'k', 128, 65, 0},
};

const PanelPosition& panelOf(WidgetId id) {
  for (const PanelPosition& panel : kPanels) {
    if (panel.id == (id & ~WidgetId{0xFF})) return panel;
  }
  return kPanels[0];
}

// Where a control of each kind draws its body, from its absolute top-left corner.
Rect bodyOf(const ControlPosition& control, int x, int y) {
  switch (control.kind) {
    case 'K':
      return Rect{x, y + 8, 48, 48};
    case 'k':
      return Rect{x, y + 16, 24, 24};
    case 'S':  // the track's top cap
      return Rect{x, y + 22, 21, 9};
    case 'T':
      return Rect{x, y, 16, 14};
    case 'B':  // the field's left cap
      return Rect{x, y + 12, 16, 24};
    case 'M':  // the first button, one button height below
      return Rect{x, y + 21, 24, 21};
    case 'G':  // the button's left cap
      return Rect{x, y + 13, 16, 16};
    case 'D':
      return Rect{x, y, control.width, kShapeDisplayHeight};
    case 'V':
      return Rect{x, y, control.width, 8};
    case 'L':
      return Rect{x, y, 9, 105};
    default:  // the program box's previous button
      return Rect{x, y, 19, 24};
  }
}

TEST(EditorLayout, PanelsTileTheEditorAtTheirPlaces) {
  EditorHarness editor;
  for (const PanelPosition& panel : kPanels) {
    SCOPED_TRACE(panel.id);
    const Rect r = editor.context().rect(panel.id);
    EXPECT_EQ(r.x, panel.x);
    EXPECT_EQ(r.y, panel.y);
    EXPECT_EQ(r.width, panel.width);
    EXPECT_EQ(r.height, panel.height);
    // The frame is the background's; a panel draws nothing over it but its title.
    EXPECT_EQ(editor.canvas.imageAt(Rect{panel.x, panel.y, 32, 32}), nullptr);
  }
  EXPECT_TRUE(editor.canvas.drewText("OSC 1"));
  EXPECT_TRUE(editor.canvas.drewText("MOD WHEEL"));
  const Rect background = editor.context().rect(kBackgroundId);
  EXPECT_EQ(background.width, 1040);
  EXPECT_EQ(background.height, 472);
}

TEST(EditorLayout, EveryControlIsPlacedAndDrawnAtItsPosition) {
  EditorHarness editor;
  for (const ControlPosition& control : kControls) {
    SCOPED_TRACE(control.id);
    const PanelPosition& panel = panelOf(control.id);
    const int x = panel.x + control.dx, y = panel.y + control.dy;
    // A mode selector's id is its first button's, one button height below the placement.
    const Rect placed = editor.context().rect(control.id);
    EXPECT_EQ(placed.x, x);
    EXPECT_EQ(placed.y, control.kind == 'M' ? y + 21 : y);
    if (control.width > 0) {
      EXPECT_EQ(placed.width, control.width);
    }
    EXPECT_NE(editor.canvas.imageAt(bodyOf(control, x, y)), nullptr);
  }
}

TEST(EditorLayout, DerivedPartsFollowTheirWidget) {
  EditorHarness editor;
  const WidgetContext& context = editor.context();
  // The OSC 1 octave box at (24, 76): arrows at its right edge, the field left of them.
  const Rect up = context.rect(261 | kFirstPartBit), down = context.rect(261 | kSecondPartBit);
  const Rect field = context.rect(261 | kThirdPartBits);
  EXPECT_EQ(up.x, 24 + 56 - 16);
  EXPECT_EQ(down.y, up.y + up.height);
  EXPECT_EQ(field.x, 24);
  EXPECT_EQ(field.width, 40);
  // The FILTER 1 mode buttons stack one button height apart: "LP", "HP", "BP", "VOX".
  for (int i = 0; i < 4; ++i)
    EXPECT_EQ(context.rect(static_cast<WidgetId>(i) << kChoiceShift | 1795).y, 36 + 21 * (i + 1));
  EXPECT_TRUE(context.rect(4u << kChoiceShift | 1795).empty());
  // A large knob's caption hangs 48 pixels below its top, centred; a small one's 38.
  EXPECT_EQ(context.rect(260 | kFirstPartBit).x, 160 + 24);
  EXPECT_EQ(context.rect(260 | kFirstPartBit).y, 20 + 48);
  EXPECT_EQ(context.rect(257 | kFirstPartBit).y, 25 + 38);
  // The help line runs along the bottom, as wide as the editor minus 14 pixels.
  const Rect help = context.rect(kHelpLineId);
  EXPECT_EQ(help.x, 8);
  EXPECT_EQ(help.y, 457);
  EXPECT_EQ(help.width, 1026);
  EXPECT_EQ(context.rect(kVersionLabelId).x, 876);
  EXPECT_EQ(context.rect(kVersionLabelId).y, 165);
  EXPECT_TRUE(editor.canvas.drewText("Ver. 2.0.12"));
  EXPECT_TRUE(editor.canvas.drewText("Gain"));
  EXPECT_TRUE(editor.canvas.drewText("VOX"));
  EXPECT_TRUE(editor.canvas.drewText("16th"));
}

TEST(EditorLayout, HelpTextFollowsThePointerButNotADrag) {
  EditorHarness editor;
  EXPECT_STREQ(editor.context().helpText(), "");
  editor.moveTo(100, 40);
  const char* osc1 = editor.context().helpText();
  EXPECT_EQ(std::strncmp(osc1, "Oscillator 1 is a multi mode oscillator", 39), 0);
  editor.moveTo(300, 100);
  EXPECT_EQ(std::strncmp(editor.context().helpText(), "The Amplitude Envelope", 22), 0);
  // The help line draws it.
  EXPECT_TRUE(editor.canvas.drewText(editor.context().helpText()));

  // The 8-pixel gap between SHAPER and CHORUS belongs to no panel.
  editor.moveTo(708, 40);
  EXPECT_EQ(std::strncmp(editor.context().helpText(), "The Amplitude Envelope", 22), 0);

  editor.moveTo(620, 150);
  EXPECT_STREQ(
      editor.context().helpText(),
      "Filter 2 is a multi mode filter (Low Pass/High Pass/Band Pass/Formant) which affects the output of "
      "the Shaper");

  // Dragging the OSC 1 gain knob across other panels keeps the text of where the drag began.
  editor.moveTo(184, 52);
  editor.press(184, 52);
  editor.moveTo(300, 100);
  editor.moveTo(620, 150);
  EXPECT_EQ(std::strncmp(editor.context().helpText(), "Oscillator 1", 12), 0);
  editor.release();
  editor.moveTo(621, 150);
  EXPECT_EQ(std::strncmp(editor.context().helpText(), "Filter 2", 8), 0);

  // The untitled panel has no help text.
  editor.moveTo(950, 40);
  EXPECT_STREQ(editor.context().helpText(), "");
}

TEST(EditorLayout, VersionTextUnpacksTheVersion) {
  EXPECT_EQ(versionText(0x2000C), "Ver. 2.0.12");
  EXPECT_EQ(versionText(0x10203), "Ver. 1.2.3");
}

}  // namespace
}  // namespace ziv::testing
