#include "editor/program_box.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "editor/drawing.h"
#include "editor/look.h"
#include "editor/text_fit.h"
#include "plugin/vst_test.h"

namespace ziv {
namespace {

constexpr int kTitleCapacity = 40;
constexpr int kTextDy = 7;
constexpr int kTextMargin = 6;
constexpr int kGlyphDy = 6;
// The rename field lies over the name button, inset this much.
constexpr int kFieldInsetX = 7;
constexpr int kFieldInsetY = 18;
constexpr FontId kNameFont = fontSmall;
constexpr int kFieldSeparator = 7;  // imgField24's 1-pixel separator, the caret

// One of the two stepping tabs; answers whether it was clicked.
bool tab(WidgetContext& context, WidgetId id, const Placement& placement, const char* glyph) {
  const Rect area = context.place(id, placement, kProgramTabWidth, kProgramBoxHeight);
  const bool hovered = context.hovered(area);
  const bool clicked = hovered && context.input().left.pressed;
  const int state = clicked ? look::kStateOn : hovered ? look::kStateHover : look::kStateNormal;
  queuePicture(context.drawList(), look::kLayerControl, area.x, area.y, imageTable::image(imgTab, state));
  queueLabel(context, look::kLayerText, area.x + kProgramTabWidth / 2, area.y + kGlyphDy, glyph, fontLabel,
             look::kFieldColour, kProgramTabWidth, Align::kCentre);
  context.present(id, area, static_cast<std::uint32_t>(state));
  return clicked;
}

// The rename field: opened on request over the name button with the current name; Enter names
// the program, Escape or a press outside the button leaves it as it was. While it is open the
// button shows the edited text, cut so that the character before the caret stays visible, and
// the caret as a thin line. Answers the look of the open field, or 0 when none is open.
std::uint32_t renameField(WidgetContext& context, VstTest& instance, const Rect& name, int current) {
  EditorPlatform* platform = context.platform();
  if (platform == nullptr) return 0;
  if (context.takeRenameRequest()) {
    const Rect field{name.x + kFieldInsetX, name.y + kFieldInsetY, name.width - 2 * kFieldInsetX,
                     std::max(0, name.height - 2 * kFieldInsetY)};
    platform->openTextField(field, instance.program(current).name, ProgramRecord::kNameLength,
                            imageTable::font(kNameFont));
  }
  if (!platform->textFieldOpen()) return 0;
  const InputFrame& input = context.input();
  const bool pressedOutside =
      (input.left.pressed || input.right.pressed) && !WidgetContext::contains(name, input.x, input.y);
  std::string text = platform->textFieldText();
  if (platform->textFieldCommitted()) instance.setProgramName(text.data());
  if (platform->textFieldCommitted() || platform->textFieldCancelled() || pressedOutside) {
    platform->closeTextField();
    return 0;
  }

  int selectionStart = 0, caret = 0;
  platform->textFieldSelection(selectionStart, caret);
  caret = std::clamp(caret, 0, static_cast<int>(text.size()));
  const FontHandle font = imageTable::font(kNameFont);
  const int width = name.width - 2 * kTextMargin;
  std::string& shown = context.fittedScratch();
  fitText(context.canvas(), text, font, width, false, caret - 1, shown);
  // The text's head when the caret lies inside it, else the window of text ending at the caret.
  const std::size_t caretIndex = static_cast<std::size_t>(caret);
  const bool head = shown.size() >= caretIndex && text.compare(0, shown.size(), shown) == 0;
  const std::size_t caretInShown = head ? caretIndex : shown.size();
  const Rect textArea{name.x + kTextMargin, name.y + kTextDy, width,
                      imageTable::fontSpec(kNameFont).pixelHeight};
  const int caretX = textArea.x + context.canvas().measureText(shown.substr(0, caretInShown), font).width;
  context.drawList().queueText(look::kLayerText, textArea, shown, font, look::kValueColour);
  queueStretched(context.drawList(), look::kLayerText, Rect{caretX, textArea.y, 1, textArea.height},
                 imageTable::image(imgField24, kFieldSeparator));
  return mixLook(mixLook(textLook(text.c_str()), static_cast<std::uint32_t>(caret)), 1u);
}

}  // namespace

void formatProgramTitle(int program, const char* name, char* out, std::size_t capacity) {
  std::snprintf(out, capacity, "%02d. %s", program, name);
}

void programBox(WidgetContext& context, VstTest& instance, WidgetId id, const Placement& placement,
                int width) {
  context.place(id, placement, width, kProgramBoxHeight);
  const Placement self{static_cast<int>(id), 0, 0};
  const int current = instance.getProgram();
  const int count = VstTest::kProgramCount;
  if (tab(context, id | kFirstPartBit, self, "<")) context.setPendingProgram((current + count - 1) % count);
  if (tab(context, id | kSecondPartBit, Placement{self.anchor, width - kProgramTabWidth, 0}, ">")) {
    context.setPendingProgram((current + 1) % count);
  }

  const Rect name = context.place(id | kThirdPartBits, Placement{self.anchor, kProgramTabWidth, 0},
                                  width - 2 * kProgramTabWidth, kProgramBoxHeight);
  if (context.hovered(name) && context.input().left.pressed) {
    context.requestPopup(kPopupProgramMenu, -1, name.x, name.y + name.height, name.width);
  }
  const bool menuOpen = context.popup().kind == kPopupProgramMenu;
  const std::uint32_t fieldLook = renameField(context, instance, name, current);
  queueThreePiece(context.drawList(), look::kLayerControl, name, imgField24,
                  menuOpen || fieldLook != 0 ? look::kPiecesPerState : 0);
  if (fieldLook != 0) {
    context.present(id | kThirdPartBits, name, fieldLook);
    return;
  }
  char title[kTitleCapacity];
  formatProgramTitle(current, instance.program(current).name, title, sizeof title);
  queueLabel(context, look::kLayerText, name.x + kTextMargin, name.y + kTextDy, title, kNameFont,
             look::kFieldColour, name.width - 2 * kTextMargin);
  context.present(id | kThirdPartBits, name, textLook(title) ^ static_cast<std::uint32_t>(menuOpen));
}

}  // namespace ziv
