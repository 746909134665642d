// The editor's immediate-mode widgets. Each call handles the control's share of this pass's
// input (its behaviour: hit test, drag, value change) and queues its drawing; nothing of a
// widget lives between passes except its state record in the context. The placement gives the
// widget's top-left corner; the rectangle stored for its id starts there.
//
// Every value change goes through the context's ParameterView inside one beginEdit/endEdit
// gesture. A parameter of -1 draws the widget at value 0 and ignores input.
//
// Threads: the host's user-interface thread, inside an editor frame.
#pragma once

#include "editor/widget_context.h"

namespace ziv {

// Sizes that the layout and the tests rely on.
constexpr int kKnobSize = 48;
constexpr int kSmallKnobSize = 24;
constexpr int kKnobSpriteOffset = 8;        // below the placement, large knob
constexpr int kSmallKnobSpriteOffset = 16;  // small knob
constexpr int kKnobCaptionOffset = 48;
constexpr int kSmallKnobCaptionOffset = 38;
constexpr int kKnobFrameCount = 128;
constexpr int kKnobFrameColumns = 16;
constexpr int kKnobFrameRows = 8;
constexpr float kKnobDragPerPixel = 0.0075f;  // full range in 133 1/3 pixels
constexpr float kFineDragPerPixel = 0.001f;   // with Shift: 1000 pixels

constexpr int kSliderWidth = 21;
constexpr int kSliderTrackTop = 22;  // the thumb's range starts this far below the placement
constexpr int kSliderThumbHeight = 18;
constexpr int kLearnMenuWidth = 120;
constexpr int kLearnHighlightGap = 4;  // around a slider waiting for MIDI learn

constexpr int kToggleWidth = 16;  // the LED
constexpr int kToggleHeight = 14;
constexpr int kModeButtonWidth = 24;
constexpr int kModeButtonHeight = 21;
constexpr int kTargetButtonOffset = 13;
constexpr int kTargetButtonHeight = 16;
constexpr int kStepBoxCaptionHeight = 12;
constexpr int kStepBoxFieldHeight = 24;
constexpr int kStepArrowWidth = 16;
constexpr int kLevelLightWidth = 9;
constexpr int kLevelLightHeight = 105;

// The film-strip frame that shows a knob at `value` (0..1): 0..127.
int knobFrame(float value);

// Knob: vertical drag (Shift fine), double-click resets to the default, right-click asks for
// the MIDI-learn menu.
void knob(WidgetContext& context, WidgetId id, const Placement& placement, const char* caption, bool small,
          int parameter);
// Vertical slider of track height trackHeight: absolute drag of the thumb, Shift fine.
void verticalSlider(WidgetContext& context, WidgetId id, const Placement& placement, int trackHeight,
                    const char* caption, int parameter);
// An LED lit while the parameter's integer value is 1; a click toggles it.
void toggleButton(WidgetContext& context, WidgetId id, const Placement& placement, const char* caption,
                  int parameter);
// The value with an up and a down arrow: arrows step (and repeat while held), the value field
// drags vertically.
void stepBox(WidgetContext& context, WidgetId id, const Placement& placement, int width, const char* caption,
             int parameter);
// A column of buttons, one per choice name; a click picks one.
void modeSelector(WidgetContext& context, WidgetId id, const Placement& placement, int parameter);
// A button naming the current modulation target; a click asks for the list of targets.
void targetSelector(WidgetContext& context, WidgetId id, const Placement& placement, int width,
                    int parameter);
// Text centred on the placement point: `text` while idle, the parameter's value while not.
void caption(WidgetContext& context, WidgetId id, const Placement& placement, const char* text, int parameter,
             bool idle);
// A panel's title over its frame in the background; hovering it makes `help` the help text
// unless a control holds the mouse.
void panel(WidgetContext& context, WidgetId id, const Placement& placement, int width, int height,
           const char* title, const char* help);
// A horizontal rule inside a panel.
void divider(WidgetContext& context, WidgetId id, const Placement& placement, int width);
// A meter lit by `level` (a peak magnitude, 1 = full scale).
void levelLight(WidgetContext& context, WidgetId id, const Placement& placement, float level);
// A plain text line (the help line, the version label), redrawn only when the text changes.
void textLine(WidgetContext& context, WidgetId id, const Placement& placement, int width, const char* text,
              int colour);

}  // namespace ziv
