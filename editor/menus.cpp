#include "editor/menus.h"

#include <algorithm>
#include <cstdio>

#include "editor/look.h"
#include "plugin/parameter_table.h"
#include "plugin/vst_test.h"
#include "programs/data_folder.h"

namespace ziv {
namespace {

enum ProgramAction : int {
  kLoadFactoryBank,
  kLoadBank,
  kSaveBank,
  kInitializeBank,
  kLoadProgram,
  kSaveProgram,
  kInitializeProgram,
  kRename,
  kProgramActionCount
};

constexpr const char* kProgramActionText[kProgramActionCount] = {
    "Load Factory Bank", "Load Bank",    "Save Bank",          "Initialize Bank",
    "Load Program",      "Save Program", "Initialize Program", "Rename"};

constexpr const char* kBankDescription = "Vrn ZIV Bank";
constexpr const char* kBankExtension = "fxb";
constexpr const char* kProgramDescription = "Vrn ZIV Program";
constexpr const char* kProgramExtension = "fxp";
constexpr const char* kDefaultBankFileName = "New Bank.fxb";

// The submenu keeps clear of the editor's right edge by this much.
constexpr int kSubmenuEdgeMargin = 16;
// As many factory banks as fit the editor's height in submenu rows.
constexpr int kMaxFactoryBanks = (kEditorHeight - 2 * kPopupListPadding) / kSubmenuItemHeight;

constexpr int kLearnItemCount = 3;  // the name, an information line and the action

void reportError(EditorPlatform& platform, const std::string& message) {
  if (!message.empty()) platform.showError(message);
}

}  // namespace

void PopupMenus::serve(WidgetContext& context) {
  switch (context.popup().kind) {
    case kPopupTargetList:
    case kPopupChoiceList:
      serveChoiceList(context);
      break;
    case kPopupMidiLearn:
      serveLearnMenu(context);
      break;
    case kPopupProgramMenu:
      serveProgramMenu(context);
      break;
    case kPopupNone:
      break;
    default:
      context.closePopup();
      break;
  }
  if (context.popup().kind == kPopupNone) {
    submenuOpen_ = false;
    erasePopupList(context, kPopupListId);
  }
  if (!submenuOpen_) erasePopupList(context, kPopupSubmenuId);
}

void PopupMenus::close(WidgetContext& context) {
  if (context.popup().kind == kPopupMidiLearn) instance_.midiLearn().cancelLearn();
  context.closePopup();
  submenuOpen_ = false;
}

void PopupMenus::serveLearnMenu(WidgetContext& context) {
  const PopupRequest& request = context.popup();
  const int parameter = request.parameter;
  if (!context.params().valid(parameter)) {
    context.closePopup();
    return;
  }
  MidiLearn& learn = instance_.midiLearn();
  const LearnState state = learn.state(parameter);
  ListItem items[kLearnItemCount];
  int count = 0;
  items[count++] = ListItem{paramTable()[parameter].name, look::kCaptionColour, false};
  const char* action = "MIDI learn";
  if (state.status == LearnStatus::kMapped) {
    std::snprintf(learnInfo_, sizeof learnInfo_, "Mapped to CC#%d", state.controller);
    items[count++] = ListItem{learnInfo_, look::kPopupChosenColour, false};
    action = "Remove MIDI CC";
  } else if (state.status == LearnStatus::kWaiting) {
    items[count++] = ListItem{"Waiting for MIDI...", look::kPopupChosenColour, false};
    action = "Cancel MIDI learn";
  }
  items[count++] = ListItem{action, look::kPopupColour, true};
  const PopupList list =
      menuList(kPopupListId, count, request.width, request.position.dx, request.position.dy, kMenuItemHeight);

  const int chosen = listChoice(context, list, items);
  if (chosen == count - 1 && state.status == LearnStatus::kIdle) {
    learn.startLearn(parameter);
  } else if (chosen == count - 1 && state.status == LearnStatus::kMapped) {
    learn.removeMapping(parameter);
  }
  if (chosen == kListClickedOutside || (chosen >= 0 && state.status != LearnStatus::kIdle)) {
    close(context);
    return;
  }
  context.popupServed();
  // Drawn from the state before the click; the next pass shows the new one.
  drawPopupList(
      context, list, items,
      mixLook(mixLook(static_cast<std::uint32_t>(parameter), static_cast<std::uint32_t>(state.status)),
              static_cast<std::uint32_t>(state.controller)));
}

void PopupMenus::serveProgramMenu(WidgetContext& context) {
  const PopupRequest& request = context.popup();
  if (request.keepOpen) {
    factoryBanks_ = factoryBankNames(listFolder(factoryPresetFolder()));
    if (factoryBanks_.size() > static_cast<std::size_t>(kMaxFactoryBanks))
      factoryBanks_.resize(kMaxFactoryBanks);
    submenuItems_.clear();
    for (const std::string& name : factoryBanks_)
      submenuItems_.push_back(ListItem{name.c_str(), look::kPopupColour, true});
    submenuOpen_ = false;
  }
  const int first = factoryBanks_.empty() ? kLoadBank : kLoadFactoryBank;
  ListItem items[kProgramActionCount];
  const int count = kProgramActionCount - first;
  for (int i = 0; i < count; ++i) {
    const bool lit = first + i == kLoadFactoryBank && submenuOpen_;
    items[i] =
        ListItem{kProgramActionText[first + i], lit ? look::kPopupChosenColour : look::kPopupColour, true};
  }
  const PopupList menu =
      menuList(kPopupListId, count, request.width, request.position.dx, request.position.dy, kMenuItemHeight);
  const int submenuX =
      std::min(kEditorWidth - kSubmenuEdgeMargin, menu.area.x + menu.area.width) - 2 * menu.area.width;
  const PopupList submenu = menuList(kPopupSubmenuId, static_cast<int>(submenuItems_.size()), menu.area.width,
                                     submenuX, menu.area.y, kSubmenuItemHeight);

  // A press inside the open submenu is the submenu's; any other press is the menu's.
  const int bank = submenuOpen_ ? listChoice(context, submenu, submenuItems_.data()) : kListClickedOutside;
  if (bank >= 0) {
    loadFactoryBank(context, bank);
    context.closePopup();
    return;
  }
  const int chosen = bank == kListClickedOutside ? listChoice(context, menu, items) : kListNothingChosen;
  if (chosen == kListClickedOutside || (chosen >= 0 && !runProgramAction(context, first + chosen))) {
    context.closePopup();
    return;
  }
  context.popupServed();
  drawPopupList(context, menu, items, mixLook(static_cast<std::uint32_t>(first), submenuOpen_));
  if (submenuOpen_) drawPopupList(context, submenu, submenuItems_.data(), kFirstLook);
}

bool PopupMenus::runProgramAction(WidgetContext& context, int action) {
  EditorPlatform* platform = context.platform();
  const bool needsPlatform =
      action != kInitializeBank && action != kInitializeProgram && action != kLoadFactoryBank;
  if (needsPlatform && platform == nullptr) return false;
  std::string path;
  switch (action) {
    case kLoadFactoryBank:
      submenuOpen_ = !submenuOpen_;
      return true;
    case kLoadBank:
      path = platform->openFileDialog(kBankDescription, kBankExtension, kProgramActionText[action]);
      if (!path.empty()) reportError(*platform, instance_.loadBankFile(path));
      break;
    case kSaveBank:
      path = platform->saveFileDialog(kDefaultBankFileName, kBankDescription, kBankExtension,
                                      kProgramActionText[action]);
      if (!path.empty()) reportError(*platform, instance_.saveBankFile(path));
      break;
    case kInitializeBank:
      instance_.initBank();
      break;
    case kLoadProgram:
      path = platform->openFileDialog(kProgramDescription, kProgramExtension, kProgramActionText[action]);
      if (!path.empty()) reportError(*platform, instance_.loadProgramFile(path));
      break;
    case kSaveProgram: {
      const std::string proposed =
          std::string(instance_.program(instance_.getProgram()).name) + "." + kProgramExtension;
      path = platform->saveFileDialog(proposed, kProgramDescription, kProgramExtension,
                                      kProgramActionText[action]);
      if (!path.empty()) reportError(*platform, instance_.saveProgramFile(path));
      break;
    }
    case kInitializeProgram:
      instance_.initProgram();
      break;
    case kRename:
      context.requestRename();
      break;
    default:
      break;
  }
  return false;
}

void PopupMenus::loadFactoryBank(WidgetContext& context, int bank) {
  const std::string message =
      instance_.loadBankFile(factoryPresetFolder() + "/" + factoryBanks_[bank] + kFactoryBankExtension);
  if (context.platform() != nullptr) reportError(*context.platform(), message);
}

}  // namespace ziv
