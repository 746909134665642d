#include "editor/widget_context.h"

namespace ziv {
namespace {

// Room for every id of the layout and its derived parts, so the maps never rehash mid-frame.
constexpr std::size_t kExpectedIds = 1024;

bool sameRect(const Rect& a, const Rect& b) {
  return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
}

ButtonInput sampleButton(const ButtonInput& previous, const MouseState::Button& button, std::uint32_t nowMs) {
  ButtonInput next;
  next.held = button.down || button.pressLatch;
  next.pressed = button.pressLatch;
  next.doubleClick = button.doubleClick;
  if (next.pressed) {
    next.lastFireMs = nowMs;
    return next;
  }
  if (!next.held) return next;
  next.lastFireMs = previous.lastFireMs;
  next.repeatCount = previous.repeatCount;
  // The first repeat waits the full delay; the k-th further one a shorter interval.
  const float interval = static_cast<float>(kRepeatFirstMs) /
                         (kRepeatAcceleration * static_cast<float>(next.repeatCount) + 1.0f);
  if (static_cast<float>(nowMs - next.lastFireMs) > interval) {
    next.repeated = true;
    ++next.repeatCount;
    next.lastFireMs = nowMs;
  }
  return next;
}

}  // namespace

InputFrame sampleInput(const InputFrame& previous, const MouseState& mouse, std::uint32_t nowMs) {
  InputFrame next;
  next.x = mouse.x;
  next.y = mouse.y;
  next.dx = mouse.x - previous.x;
  next.dy = mouse.y - previous.y;
  next.shift = mouse.shift;
  next.left = sampleButton(previous.left, mouse.buttons[0], nowMs);
  next.right = sampleButton(previous.right, mouse.buttons[1], nowMs);
  return next;
}

std::uint32_t textLook(const char* text) {
  std::uint32_t look = kFirstLook;
  for (const char* c = text; c != nullptr && *c != '\0'; ++c)
    look = mixLook(look, static_cast<unsigned char>(*c));
  return look;
}

WidgetContext::WidgetContext(VstTest& instance, DrawList& drawList) : params_(instance), drawList_(drawList) {
  rects_.reserve(kExpectedIds);
  states_.reserve(kExpectedIds);
  shown_.reserve(kExpectedIds);
}

void WidgetContext::beginPass(const InputFrame& input, Canvas& canvas, bool fullRedraw) {
  input_ = input;
  canvas_ = &canvas;
  fullRedraw_ = fullRedraw;
  controlHeldMouse_ = controlActiveThisPass_;
  controlActiveThisPass_ = false;
  popupOpenAtStart_ = popup_.kind != kPopupNone;
  controlsCovered_ = false;
}

Rect WidgetContext::place(WidgetId id, const Placement& placement, int width, int height) {
  int x = placement.dx, y = placement.dy;
  if (placement.anchor != kEditorAnchor) {
    const Rect anchor = rect(static_cast<WidgetId>(placement.anchor));
    x += anchor.x;
    y += anchor.y;
  }
  const Rect placed{x, y, width, height};
  rects_[id] = placed;
  return placed;
}

Rect WidgetContext::rect(WidgetId id) const {
  const auto found = rects_.find(id);
  return found == rects_.end() ? Rect{} : found->second;
}

void WidgetContext::dragChange(WidgetState& state, int parameter) {
  if (state.editing) return;
  state.editing = true;
  params_.beginEdit(parameter);
}

void WidgetContext::endDragOnRelease(WidgetState& state, int parameter) {
  if (!state.active || input_.left.held) return;
  state.active = false;
  if (state.editing) params_.endEdit(parameter);
  state.editing = false;
}

bool WidgetContext::contains(const Rect& area, int x, int y) {
  return area.x < x && x < area.x + area.width && area.y < y && y < area.y + area.height;
}

bool WidgetContext::hovered(const Rect& area) const {
  return !popupOpenAtStart_ && !controlsCovered_ && contains(area, input_.x, input_.y);
}

bool WidgetContext::requestPopup(int kind, int parameter, int x, int y, int width) {
  if (popup_.kind != kPopupNone) return false;
  popup_.kind = kind;
  popup_.parameter = parameter;
  popup_.position = Placement{kEditorAnchor, x, y};
  popup_.width = width;
  popup_.keepOpen = true;
  return true;
}

bool WidgetContext::present(WidgetId id, const Rect& area, std::uint32_t look) {
  Shown& shown = shown_[id];
  if (shown.look == look && sameRect(shown.area, area)) return false;
  drawList_.markDirty(shown.area);
  drawList_.markDirty(area);
  shown.area = area;
  shown.look = look;
  return true;
}

}  // namespace ziv
