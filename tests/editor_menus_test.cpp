// The editor's menus driven through mouse input: the program/bank menu with its factory-bank
// submenu, file actions and renaming over a scripted platform, and the MIDI-learn menu with a
// controller arriving through the instance while the menu is open.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "editor/image_table.h"
#include "editor/popup.h"
#include "editor_harness.h"
#include "plugin/parameter_table.h"
#include "plugin/vst_test.h"
#include "programs/data_folder.h"

namespace ziv::testing {
namespace {

constexpr WidgetId kNameButton = 4097 | kThirdPartBits;
constexpr int kMenuTop = 4;     // the list's padding above its first item
constexpr int kMenuTextDy = 5;  // a menu text's top below its item's (10-pixel font in 20-pixel rows)

// The platform's services with scripted answers; it records what the editor asked for.
class FakePlatform : public EditorPlatform {
 public:
  struct Dialog {
    std::string defaultName, description, extension, title;
  };

  std::string openFileDialog(const std::string& description, const std::string& extension,
                             const std::string& title) override {
    dialogs.push_back(Dialog{"", description, extension, title});
    return answer;
  }
  std::string saveFileDialog(const std::string& defaultName, const std::string& description,
                             const std::string& extension, const std::string& title) override {
    dialogs.push_back(Dialog{defaultName, description, extension, title});
    return answer;
  }
  void showError(const std::string& text) override { errors.push_back(text); }
  void openWebPage(const std::string&) override {}

  void openTextField(const Rect& area, const std::string& initial, int maxLength, FontHandle) override {
    fieldArea = area;
    text = initial;
    fieldMaxLength = maxLength;
    open = true;
    committed = cancelled = false;
  }
  void closeTextField() override { open = false; }
  bool textFieldOpen() const override { return open; }
  bool textFieldHasFocus() const override { return open; }
  std::string textFieldText() const override { return open ? text : ""; }
  void textFieldSelection(int& start, int& end) const override {
    start = end = open ? static_cast<int>(text.size()) : 0;
  }
  bool textFieldCommitted() const override { return committed; }
  bool textFieldCancelled() const override { return cancelled; }

  std::string answer;  // the path every file chooser returns ("" cancels)
  std::vector<Dialog> dialogs;
  std::vector<std::string> errors;
  Rect fieldArea;
  std::string text;
  int fieldMaxLength = 0;
  bool open = false;
  bool committed = false;
  bool cancelled = false;
};

struct MenuBench {
  MenuBench() {
    editor.ui.setPlatform(&platform);
    folder = ::testing::TempDir() + "ziv-menus-" + std::to_string(::getpid());
    std::filesystem::create_directories(folder);
  }
  ~MenuBench() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }

  // The program/bank menu's list once opened, and a click on its item `row`.
  Rect openProgramMenu() {
    editor.click(editor.centreX(kNameButton), editor.centreY(kNameButton));
    EXPECT_EQ(editor.context().popup().kind, kPopupProgramMenu);
    editor.frame(true);
    return editor.context().rect(kNameButton);
  }
  void chooseProgramMenuItem(const std::string& text) {
    const Rect name = openProgramMenu();
    const int row = rowOf(text, name.y + name.height + kMenuTop, kMenuItemHeight);
    ASSERT_GE(row, 0) << text << " not shown";
    editor.click(name.x + 20, name.y + name.height + kMenuTop + row * kMenuItemHeight + kMenuItemHeight / 2);
  }
  // The row of the menu item drawn with `text`, counted from `top`; -1 when not drawn.
  int rowOf(const std::string& text, int top, int itemHeight) const {
    for (const RecordingCanvas::TextCall& call : editor.canvas.texts) {
      if (call.text == text) return (call.y - top) / itemHeight;
    }
    return -1;
  }
  const char* programName() { return editor.host.plugin().program(editor.host.plugin().getProgram()).name; }
  void setProgramName(const char* name) {
    std::string copy = name;
    editor.host.plugin().setProgramName(copy.data());
  }

  EditorHarness editor;
  FakePlatform platform;
  std::string folder;
};

TEST(EditorProgramMenu, ItemsInOrderAndTheFactoryBankSubmenu) {
  MenuBench bench;
  bench.openProgramMenu();
  const char* const items[] = {"Load Bank",    "Save Bank",          "Initialize Bank", "Load Program",
                               "Save Program", "Initialize Program", "Rename"};
  const Rect name = bench.editor.context().rect(kNameButton);
  const int top = name.y + name.height + kMenuTop;
  for (int i = 0; i < 7; ++i) EXPECT_EQ(bench.rowOf(items[i], top, kMenuItemHeight), i) << items[i];
  EXPECT_EQ(bench.rowOf("Load Factory Bank", top, kMenuItemHeight), -1) << "no factory banks yet";
  bench.editor.click(5, 5);  // outside: closes
  EXPECT_EQ(bench.editor.context().popup().kind, kPopupNone);

  // A factory bank (and a file that is not one) in the factory folder.
  const std::string factory = factoryPresetFolder();
  std::filesystem::create_directories(factory);
  bench.setProgramName("Factory Sound");
  ASSERT_EQ(bench.editor.host.plugin().saveBankFile(factory + "/Bright.fxb"), "");
  std::ofstream(factory + "/notes.txt") << "not a bank";
  bench.setProgramName("Edited");

  bench.openProgramMenu();
  EXPECT_EQ(bench.rowOf("Load Factory Bank", top, kMenuItemHeight), 0);
  EXPECT_EQ(bench.rowOf("Rename", top, kMenuItemHeight), 7);
  bench.editor.click(name.x + 20, top + kMenuItemHeight / 2);
  ASSERT_EQ(bench.editor.context().popup().kind, kPopupProgramMenu) << "the submenu keeps the menu open";
  bench.editor.frame(true);
  EXPECT_FALSE(bench.editor.canvas.drewText("notes"));
  // Beside the menu: x = min(editor width - 16, menu x + width) - 2 x width, the menu's y.
  const int submenuX = std::min(kEditorWidth - 16, name.x + name.width) - 2 * name.width;
  ASSERT_EQ(bench.editor.canvas.textAt(submenuX + 20, top + 10), "Bright");
  bench.editor.click(submenuX + 20, top + kSubmenuItemHeight / 2);
  EXPECT_EQ(bench.editor.context().popup().kind, kPopupNone);
  EXPECT_STREQ(bench.programName(), "Factory Sound");
  EXPECT_TRUE(bench.platform.errors.empty());

  std::filesystem::remove_all(factory);
}

TEST(EditorProgramMenu, FileActionsAskTheChoosersAndReportErrors) {
  MenuBench bench;
  bench.setProgramName("Warm Pad");
  bench.platform.answer = bench.folder + "/saved.fxp";
  bench.editor.calls().clear();
  bench.chooseProgramMenuItem("Save Program");
  ASSERT_EQ(bench.platform.dialogs.size(), 1u);
  EXPECT_EQ(bench.platform.dialogs[0].defaultName, "Warm Pad.fxp");
  EXPECT_EQ(bench.platform.dialogs[0].description, "Vrn ZIV Program");
  EXPECT_EQ(bench.platform.dialogs[0].extension, "fxp");
  EXPECT_EQ(bench.platform.dialogs[0].title, "Save Program");
  EXPECT_EQ(bench.editor.context().popup().kind, kPopupNone);
  EXPECT_TRUE(std::filesystem::exists(bench.platform.answer));

  bench.chooseProgramMenuItem("Initialize Program");
  EXPECT_STREQ(bench.programName(), "Init Patch");
  bench.chooseProgramMenuItem("Load Program");
  EXPECT_EQ(bench.platform.dialogs.back().title, "Load Program");
  EXPECT_STREQ(bench.programName(), "Warm Pad");

  bench.platform.answer = bench.folder + "/saved.fxb";
  bench.chooseProgramMenuItem("Save Bank");
  EXPECT_EQ(bench.platform.dialogs.back().defaultName, "New Bank.fxb");
  EXPECT_EQ(bench.platform.dialogs.back().description, "Vrn ZIV Bank");
  EXPECT_EQ(bench.platform.dialogs.back().extension, "fxb");
  bench.chooseProgramMenuItem("Initialize Bank");
  EXPECT_STREQ(bench.editor.host.plugin().program(42).name, "Init Patch");
  bench.chooseProgramMenuItem("Load Bank");
  EXPECT_EQ(bench.platform.dialogs.back().title, "Load Bank");
  EXPECT_STREQ(bench.programName(), "Warm Pad");
  EXPECT_TRUE(bench.platform.errors.empty());

  // A broken file shows its message and closes the menu; a cancelled chooser does nothing.
  std::ofstream(bench.folder + "/broken.fxb") << "this is no bank at all, just text padding it out";
  bench.platform.answer = bench.folder + "/broken.fxb";
  bench.chooseProgramMenuItem("Load Bank");
  ASSERT_EQ(bench.platform.errors.size(), 1u);
  EXPECT_EQ(bench.platform.errors[0], "Invalid bank!");
  EXPECT_EQ(bench.editor.context().popup().kind, kPopupNone);
  bench.platform.answer = "";
  bench.chooseProgramMenuItem("Load Program");
  EXPECT_EQ(bench.platform.errors.size(), 1u);
  EXPECT_STREQ(bench.programName(), "Warm Pad");
}

TEST(EditorProgramMenu, RenameCommitsWithEnterAndCancelsWithEscape) {
  MenuBench bench;
  bench.setProgramName("Old Name");
  bench.chooseProgramMenuItem("Rename");
  bench.editor.frame();
  ASSERT_TRUE(bench.platform.open);
  const Rect name = bench.editor.context().rect(kNameButton);
  EXPECT_EQ(bench.platform.fieldArea.x, name.x + 7);
  EXPECT_EQ(bench.platform.fieldArea.width, name.width - 14);
  EXPECT_EQ(bench.platform.fieldArea.y, name.y + 18);
  EXPECT_EQ(bench.platform.fieldMaxLength, 24);
  EXPECT_EQ(bench.platform.text, "Old Name");

  // The caret at the end of a name wider than the button: the text shown ends at the caret
  // (20 characters of 5 pixels fit between the button's margins).
  const std::string longName = "A much longer name that scrolls";
  bench.platform.text = longName;
  bench.editor.frame(true);
  EXPECT_TRUE(bench.editor.canvas.drewText(longName.substr(longName.size() - 20)));
  bench.platform.text = "New Name";
  bench.platform.committed = true;
  bench.editor.frame();
  EXPECT_FALSE(bench.platform.open);
  EXPECT_STREQ(bench.programName(), "New Name");
  bench.editor.frame(true);
  EXPECT_TRUE(bench.editor.canvas.drewTextStartingWith("00. New Name"));

  bench.chooseProgramMenuItem("Rename");
  bench.editor.frame();
  bench.platform.text = "Discarded";
  bench.platform.cancelled = true;
  bench.editor.frame();
  EXPECT_FALSE(bench.platform.open);
  EXPECT_STREQ(bench.programName(), "New Name");
}

// The SHAPER drive knob; its learn menu opens at the pointer.
constexpr int kKnobX = 632;
constexpr int kKnobY = 65;
constexpr int kLearnController = 85;

struct LearnBench : MenuBench {
  // The menu's texts from the first row down.
  std::vector<std::string> menuTexts() {
    editor.frame(true);
    std::vector<std::string> rows;
    for (int row = 0; row < 3; ++row) {
      const std::string text =
          editor.canvas.textAt(kKnobX + 10, kKnobY + kMenuTop + row * kMenuItemHeight + kMenuTextDy);
      if (!text.empty()) rows.push_back(text);
    }
    return rows;
  }
  void clickRow(int row) {
    editor.click(kKnobX + 10, kKnobY + kMenuTop + row * kMenuItemHeight + kMenuItemHeight / 2);
  }
  LearnState state() { return editor.host.plugin().midiLearn().state(kShaperDrive); }
  bool highlightDrawn() {
    editor.frame(true);
    for (const RecordingCanvas::ImageCall& call : editor.canvas.images) {
      if (call.image == &imageTable::image(imgGlowFrame, 0)) return true;
    }
    return false;
  }
};

TEST(EditorLearnMenu, LearnsAControllerShowsItAndRemovesIt) {
  LearnBench bench;
  bench.editor.click(kKnobX, kKnobY, 1);
  ASSERT_EQ(bench.editor.context().popup().kind, kPopupMidiLearn);
  EXPECT_EQ(bench.menuTexts(), (std::vector<std::string>{"SHAPER: Drive", "MIDI learn"}));
  EXPECT_FALSE(bench.highlightDrawn());

  bench.clickRow(1);
  EXPECT_EQ(bench.editor.context().popup().kind, kPopupMidiLearn) << "stays open while waiting";
  EXPECT_EQ(bench.menuTexts(),
            (std::vector<std::string>{"SHAPER: Drive", "Waiting for MIDI...", "Cancel MIDI learn"}));
  EXPECT_TRUE(bench.highlightDrawn());

  bench.editor.host.controller(0, kLearnController, 64);
  bench.editor.host.process(64);
  EXPECT_EQ(bench.menuTexts(),
            (std::vector<std::string>{"SHAPER: Drive", "Mapped to CC#85", "Remove MIDI CC"}));
  EXPECT_FALSE(bench.highlightDrawn());

  bench.clickRow(2);
  EXPECT_EQ(bench.editor.context().popup().kind, kPopupNone);
  EXPECT_EQ(bench.state().status, LearnStatus::kIdle);
  bench.editor.click(kKnobX, kKnobY, 1);
  EXPECT_EQ(bench.menuTexts(), (std::vector<std::string>{"SHAPER: Drive", "MIDI learn"}));
  bench.editor.click(5, 5);
}

TEST(EditorLearnMenu, ClosingTheMenuEndsAWaitingLearn) {
  LearnBench bench;
  // Cancelled by a click outside before any controller arrives.
  bench.editor.click(kKnobX, kKnobY, 1);
  bench.clickRow(1);
  ASSERT_EQ(bench.state().status, LearnStatus::kWaiting);
  const float drive = bench.editor.value(kShaperDrive);
  bench.editor.click(5, 5);
  EXPECT_EQ(bench.editor.context().popup().kind, kPopupNone);
  EXPECT_EQ(bench.state().status, LearnStatus::kIdle);
  EXPECT_FALSE(bench.highlightDrawn());
  bench.editor.host.controller(0, kLearnController, 127);
  bench.editor.host.process(64);
  EXPECT_EQ(bench.state().status, LearnStatus::kIdle);
  EXPECT_FLOAT_EQ(bench.editor.value(kShaperDrive), drive) << "the click reached nothing under the menu";

  // Cancelled through its own item.
  bench.editor.click(kKnobX, kKnobY, 1);
  bench.clickRow(1);
  bench.clickRow(2);
  EXPECT_EQ(bench.editor.context().popup().kind, kPopupNone);
  EXPECT_EQ(bench.state().status, LearnStatus::kIdle);

  // And when the window closes with the menu open.
  bench.editor.click(kKnobX, kKnobY, 1);
  bench.clickRow(1);
  bench.editor.ui.closePopup();
  EXPECT_EQ(bench.state().status, LearnStatus::kIdle);
}

}  // namespace
}  // namespace ziv::testing
