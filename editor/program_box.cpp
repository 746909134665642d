#include "editor/program_box.h"

#include <cstdio>

#include "editor/drawing.h"
#include "editor/look.h"
#include "plugin/vst_test.h"

namespace ziv {
namespace {

constexpr int kTitleCapacity = 40;
constexpr int kTextDy = 7;
constexpr int kTextMargin = 6;
constexpr int kGlyphDy = 6;

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
  char title[kTitleCapacity];
  formatProgramTitle(current, instance.program(current).name, title, sizeof title);
  queueThreePiece(context.drawList(), look::kLayerControl, name, imgField24,
                  menuOpen ? look::kPiecesPerState : 0);
  queueLabel(context, look::kLayerText, name.x + kTextMargin, name.y + kTextDy, title, fontSmall,
             look::kFieldColour, name.width - 2 * kTextMargin);
  context.present(id | kThirdPartBits, name, textLook(title) ^ static_cast<std::uint32_t>(menuOpen));
}

}  // namespace ziv
