// The small screens that picture a sound setting: an oscillator's waveform (with its shape and
// sync), an LFO's waveform (with its phase) or the shaper's transfer curve (with its drive).
// The curve is drawn on the CPU with anti-aliased lines and a drop shadow into a picture of the
// display's own, again whenever its parameters change and on every full redraw.
//
// Threads: the host's user-interface thread, inside an editor frame.
#pragma once

#include "editor/widget_context.h"

namespace ziv {

constexpr int kShapeDisplayHeight = 36;

enum class ShapeKind { kOscillator, kLfo, kShaper };

// The parameters a display reads, by kind: oscillator (waveform, shape, sync), LFO (waveform,
// phase), shaper (mode, drive); unused slots are -1.
struct ShapeParameters {
  int first = -1;
  int second = -1;
  int third = -1;
};

// The curve's level (-1..1, up positive) at t (0..1 across the display), for the parameter values
// the view holds now.
float shapeCurve(ShapeKind kind, const ParameterView& params, const ShapeParameters& parameters, float t);

// A left click on the display steps its first parameter to the next choice (after the last: the
// first) as one edit gesture; a right click asks for the MIDI-learn menu of that parameter.
void shapeDisplay(WidgetContext& context, WidgetId id, const Placement& placement, int width,
                  const char* caption, ShapeKind kind, const ShapeParameters& parameters);

}  // namespace ziv
