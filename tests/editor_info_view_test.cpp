// The information view: the INFO button opens it, it holds the controls under it off, its WEB
// button opens the maker's page through the platform, and CLOSE or a click beside it closes it.
#include <gtest/gtest.h>

#include "editor/info_view.h"
#include "editor/layout.h"
#include "editor/program_box.h"
#include "editor_harness.h"

namespace ziv::testing {
namespace {

// Records the pages it is asked to open; the view needs nothing else of the platform.
class BrowserOnly : public EditorPlatform {
 public:
  std::string openFileDialog(const std::string&, const std::string&, const std::string&) override {
    return {};
  }
  std::string saveFileDialog(const std::string&, const std::string&, const std::string&,
                             const std::string&) override {
    return {};
  }
  void showError(const std::string&) override {}
  void openWebPage(const std::string& address) override { opened.push_back(address); }
  void openTextField(const Rect&, const std::string&, int, FontHandle) override {}
  void closeTextField() override {}
  bool textFieldOpen() const override { return false; }
  bool textFieldHasFocus() const override { return false; }
  std::string textFieldText() const override { return {}; }
  void textFieldSelection(int& start, int& end) const override { start = end = 0; }
  bool textFieldCommitted() const override { return false; }
  bool textFieldCancelled() const override { return false; }

  std::vector<std::string> opened;
};

bool viewOpen(EditorHarness& editor) {
  editor.frame(true);
  return editor.canvas.drewText("Made by Quorvantis");
}

int centreOf(const Rect& area, bool vertical) {
  return vertical ? area.y + area.height / 2 : area.x + area.width / 2;
}

void clickOn(EditorHarness& editor, WidgetId id) {
  const Rect area = editor.context().rect(id);
  editor.click(centreOf(area, false), centreOf(area, true));
}

TEST(EditorInfoView, InfoButtonSitsInTheUntitledPanelClearOfItsOtherParts) {
  EditorHarness editor;
  const Rect button = editor.context().rect(kInfoButtonId);
  const Rect panel = editor.context().rect(4096);
  EXPECT_GE(button.x, panel.x);
  EXPECT_LE(button.x + button.width, panel.x + panel.width);
  EXPECT_GE(button.y, editor.context().rect(kProgramBoxId).y + kProgramBoxHeight);
  EXPECT_LE(button.y + button.height, editor.context().rect(kVersionLabelId).y);
  EXPECT_FALSE(viewOpen(editor));
}

TEST(EditorInfoView, OpensOverTheControlsAndClosesWithoutTouchingThem) {
  EditorHarness editor;
  BrowserOnly platform;
  editor.ui.setPlatform(&platform);
  clickOn(editor, kInfoButtonId);
  ASSERT_TRUE(viewOpen(editor));
  EXPECT_TRUE(editor.canvas.drewText("Ver. 2.0.12"));

  // "FILTER 1: Mode" "BP" at (416, 109) and the "VOICE LFO: Rate" knob below CLOSE at (576, 375) lie under
  // the view's panel: a click and a drag reach neither, and the view stays.
  editor.calls().clear();
  editor.click(416, 109);
  editor.press(576, 375);
  editor.moveTo(576, 300);
  editor.release();
  EXPECT_TRUE(editor.calls().empty());
  EXPECT_TRUE(viewOpen(editor));
  // Nor does the pointer over it change the help text.
  editor.moveTo(420, 200);
  EXPECT_STREQ(editor.context().helpText(), "");

  clickOn(editor, kWebButtonId);
  ASSERT_EQ(platform.opened.size(), 1u);
  EXPECT_EQ(platform.opened[0], "https://quorvantis.com/vrn-ziv");
  EXPECT_TRUE(viewOpen(editor));

  // CLOSE lies over the VOICE LFO rate knob: its click closes the view and nothing else.
  const float rate = editor.value(kVoiceLfoRate);
  clickOn(editor, kCloseButtonId);
  EXPECT_FALSE(viewOpen(editor));
  EXPECT_TRUE(editor.calls().empty());
  EXPECT_FLOAT_EQ(editor.value(kVoiceLfoRate), rate);

  // Closed, the controls take clicks again.
  editor.click(416, 109);
  EXPECT_NEAR(editor.value(kFilter1Mode), 2.0f / 3.0f, 1e-6);
}

TEST(EditorInfoView, ClickBesideThePanelClosesItAndWebNeedsNoPlatform) {
  EditorHarness editor;
  clickOn(editor, kInfoButtonId);
  clickOn(editor, kWebButtonId);  // no window, no browser: nothing happens
  ASSERT_TRUE(viewOpen(editor));
  // The OSC 1 gain knob at (184, 52) lies beside the panel.
  const float gain = editor.value(kOsc1Gain);
  editor.calls().clear();
  editor.click(184, 52);
  EXPECT_FALSE(viewOpen(editor));
  EXPECT_FLOAT_EQ(editor.value(kOsc1Gain), gain);
  EXPECT_TRUE(editor.calls().empty());
}

}  // namespace
}  // namespace ziv::testing
