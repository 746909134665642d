// The state that immediate-mode widgets share across one editor: where each widget was placed in
// this pass (so later widgets may be placed relative to earlier ones), a small state record per
// widget id that survives between frames (a drag in progress), the input frame sampled once per
// pass, the help text, the popup request, and what was last drawn per widget, so that a widget
// marks its area dirty only when its look changed.
//
// Ids: panel k is k x 256 and its controls follow it; a widget's own parts take derived ids with
// bit 28 (its caption or first button), bit 29 (a slider's value label, a second button) or
// both (a third part) set.
//
// Threads: the host's user-interface thread only. Nothing here allocates once every id has been
// seen (the first pass); the maps are reserved for the whole layout up front.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "editor/canvas.h"
#include "editor/draw_list.h"
#include "editor/editor_platform.h"
#include "editor/image.h"
#include "editor/parameter_view.h"

namespace ziv {

using WidgetId = std::uint32_t;

// The editor's size in pixels.
constexpr int kEditorWidth = 1040;
constexpr int kEditorHeight = 472;

constexpr WidgetId kFirstPartBit = 0x10000000;   // caption, or a widget's first button
constexpr WidgetId kSecondPartBit = 0x20000000;  // a slider's value label, or a second button
constexpr WidgetId kThirdPartBits = 0x30000000;  // a step box's value field, the program name
// A mode selector's button i has the id (i << kChoiceShift) | the selector's id.
constexpr int kChoiceShift = 24;
constexpr int kEditorAnchor = -1;

// A widget's top-left corner: the anchor's top-left plus (dx, dy); anchor -1 is the editor's
// top-left corner.
struct Placement {
  int anchor = kEditorAnchor;
  int dx = 0;
  int dy = 0;
};

// The mouse as the window layer reports it between two frames.
struct MouseState {
  struct Button {
    bool down = false;
    bool pressLatch = false;  // pressed since the last frame, so a click shorter than a frame counts
    bool doubleClick = false;
  };
  int x = 0;
  int y = 0;
  bool shift = false;
  Button buttons[2];  // left, right
};

// One button in one pass.
struct ButtonInput {
  bool held = false;             // down now, or pressed since the last pass
  bool pressed = false;          // the press edge
  bool repeated = false;         // an auto-repeat fired in this pass while held
  int repeatCount = 0;           // auto-repeats since the press; 0 again on release
  bool doubleClick = false;      // the button's double-click message arrived since the last pass
  std::uint32_t lastFireMs = 0;  // the press or the latest auto-repeat

  bool pressedOrRepeated() const { return pressed || repeated; }
};

struct InputFrame {
  int x = 0;
  int y = 0;
  int dx = 0;
  int dy = 0;
  bool shift = false;  // fine adjustment
  ButtonInput left;
  ButtonInput right;
};

// Holding a button repeats its press: first after this long, then ever faster (the k-th further
// repeat after kRepeatFirstMs / (kRepeatAcceleration x k + 1)).
constexpr std::uint32_t kRepeatFirstMs = 250;
constexpr float kRepeatAcceleration = 0.25f;

// The next input frame from the previous one and the mouse state at `nowMs`.
InputFrame sampleInput(const InputFrame& previous, const MouseState& mouse, std::uint32_t nowMs);

struct WidgetState {
  bool active = false;      // this control holds the mouse
  bool editing = false;     // its drag has changed the value: a host gesture is open
  float startValue = 0.0f;  // the value (or integer) at the press
  float workingValue = 0.0f;
  int pressY = 0;
};

enum PopupKind : int {
  kPopupNone = 0,
  kPopupTargetList = 1,  // a target selector's choices
  kPopupChoiceList = 2,  // the choices of another selector, served like kind 1
  kPopupMidiLearn = 3,
  kPopupProgramMenu = 4,
};

// A menu a control asked for; it is served at the end of the pass, above everything else.
struct PopupRequest {
  int kind = kPopupNone;
  int parameter = -1;
  Placement position;  // anchor -1: editor pixels
  int width = 0;
  bool keepOpen = false;  // opened in this pass: the press that opened it is not the popup's
};

class WidgetContext {
 public:
  WidgetContext(VstTest& instance, DrawList& drawList);

  // Starts a pass: takes the input frame and the canvas text is measured with. `fullRedraw`
  // tells the CPU-drawn pictures to draw themselves again.
  void beginPass(const InputFrame& input, Canvas& canvas, bool fullRedraw);
  const InputFrame& input() const { return input_; }
  ParameterView& params() { return params_; }
  DrawList& drawList() { return drawList_; }
  Canvas& canvas() { return *canvas_; }
  bool fullRedraw() const { return fullRedraw_; }

  // Stores and returns the absolute rectangle of `id` at `placement`, width x height.
  Rect place(WidgetId id, const Placement& placement, int width, int height);
  // The rectangle placed for `id` (in this pass or an earlier one); empty when never placed.
  Rect rect(WidgetId id) const;
  WidgetState& state(WidgetId id) { return states_[id]; }
  // Drags: a control takes the mouse on a press; the host's gesture on `parameter` begins with
  // the drag's first change (so a click that changes nothing tells the host nothing) and ends
  // when the left button is up.
  void beginDrag(WidgetState& state) { state.active = true; }
  void dragChange(WidgetState& state, int parameter);
  void endDragOnRelease(WidgetState& state, int parameter);

  // The pointer lies strictly inside `area` (the outermost pixel row and column never hit) and
  // neither a popup nor the information view covers the controls.
  bool hovered(const Rect& area) const;
  // The information view lies over the controls for the rest of this pass: they take no input
  // and the panels leave the help text alone.
  void coverControls() { controlsCovered_ = true; }
  bool controlsCovered() const { return controlsCovered_; }
  static bool contains(const Rect& area, int x, int y);

  // The help line's text; a string literal that lives as long as the program.
  const char* helpText() const { return helpText_; }
  void setHelpText(const char* text) { helpText_ = text; }
  // A control held the mouse in the previous pass: panels leave the help text alone.
  bool controlHeldMouse() const { return controlHeldMouse_; }
  void setControlActive() { controlActiveThisPass_ = true; }

  // The popup requested in this or an earlier pass; while one is open when a pass begins, its
  // clicks belong to it, not to the controls.
  const PopupRequest& popup() const { return popup_; }
  // Records a request unless another one is pending; answers whether it was taken.
  bool requestPopup(int kind, int parameter, int x, int y, int width);
  void closePopup() { popup_ = PopupRequest{}; }
  void popupServed() { popup_.keepOpen = false; }

  // A program to select once the pass has drawn; -1 for none.
  int pendingProgram() const { return pendingProgram_; }
  void setPendingProgram(int program) { pendingProgram_ = program; }
  // The maker's web page is to be opened once the pass has drawn.
  bool webPageRequested() const { return webPageRequested_; }
  void setWebPageRequested(bool requested) { webPageRequested_ = requested; }

  // "Rename" asks the program box to open its name field on the next pass; taking the request
  // clears it.
  void requestRename() { renameRequested_ = true; }
  bool takeRenameRequest() { return std::exchange(renameRequested_, false); }

  // The system services of the open window (dialogs, text entry); null when there are none.
  EditorPlatform* platform() const { return platform_; }
  void setPlatform(EditorPlatform* platform) { platform_ = platform; }

  // Marks `area` dirty (with the area drawn before) when `look` differs from what `id` showed
  // last, or when it moved; every widget calls it once per pass with its own look. Answers
  // whether it did.
  bool present(WidgetId id, const Rect& area, std::uint32_t look);

  // A picture that the editor draws on the CPU, kept per id; its bitmap belongs to the canvas.
  Image& picture(WidgetId id) { return pictures_[id]; }
  // Scratch pixels for the CPU drawing (the shadow's copy), grown once.
  std::vector<std::uint8_t>& scratch() { return scratch_; }
  // Scratch strings for a label's text and its fitted form on their way to the draw list, so that
  // labels do not allocate once these have grown.
  std::string& labelScratch() { return labelScratch_; }
  std::string& fittedScratch() { return fittedScratch_; }

 private:
  struct Shown {
    Rect area;
    std::uint32_t look = 0;
  };

  ParameterView params_;
  DrawList& drawList_;
  Canvas* canvas_ = nullptr;
  InputFrame input_;
  bool fullRedraw_ = false;
  std::unordered_map<WidgetId, Rect> rects_;
  std::unordered_map<WidgetId, WidgetState> states_;
  std::unordered_map<WidgetId, Shown> shown_;
  std::unordered_map<WidgetId, Image> pictures_;
  std::vector<std::uint8_t> scratch_;
  std::string labelScratch_;
  std::string fittedScratch_;
  const char* helpText_ = "";
  bool controlHeldMouse_ = false;
  bool controlActiveThisPass_ = false;
  bool popupOpenAtStart_ = false;
  bool controlsCovered_ = false;
  PopupRequest popup_;
  int pendingProgram_ = -1;
  bool webPageRequested_ = false;
  bool renameRequested_ = false;
  EditorPlatform* platform_ = nullptr;
};

// Looks made of several values are digests (FNV-1a): start from kFirstLook and mix in each value.
constexpr std::uint32_t kFirstLook = 2166136261u;
constexpr std::uint32_t mixLook(std::uint32_t look, std::uint32_t value) {
  return (look ^ value) * 16777619u;
}
// The digest of a text's bytes.
std::uint32_t textLook(const char* text);

}  // namespace ziv
