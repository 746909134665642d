// The editor's popups, served once per pass after every control: the selectors' choice lists,
// the MIDI-learn menu of a knob or slider, and the program/bank menu of the program box with its
// factory-bank submenu. The menus call the instance's program, file and learn operations; the
// file choosers and the "Error" box come from the window's platform services, and a menu item
// that needs them does nothing while the editor has none.
//
// A menu stays open across passes until an item closes it or the user clicks outside it. The
// learn menu also ends any learn still waiting when it closes, so a learn lives only while its
// menu is open.
//
// Threads: the host's user-interface thread only.
#pragma once

#include <string>
#include <vector>

#include "editor/popup.h"

namespace ziv {

class VstTest;

class PopupMenus {
 public:
  explicit PopupMenus(VstTest& instance) : instance_(instance) {}

  // Serves the popup requested in this or an earlier pass; a request of an unknown kind is
  // closed unserved, and lists of a closed popup are erased.
  void serve(WidgetContext& context);
  // Closes whatever popup is open (the window is closing).
  void close(WidgetContext& context);

 private:
  void serveLearnMenu(WidgetContext& context);
  void serveProgramMenu(WidgetContext& context);
  // Answers whether the menu stays open.
  bool runProgramAction(WidgetContext& context, int action);
  void loadFactoryBank(WidgetContext& context, int bank);

  VstTest& instance_;
  std::vector<std::string> factoryBanks_;  // listed when the program/bank menu opens
  std::vector<ListItem> submenuItems_;
  bool submenuOpen_ = false;
  char learnInfo_[32] = {};
};

}  // namespace ziv
