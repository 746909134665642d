#include "editor/shape_display.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "editor/drawing.h"
#include "editor/look.h"
#include "editor/pixel_drawing.h"
#include "editor/widgets.h"
#include "engine/modulation/lfo.h"
#include "engine/shaper.h"

namespace ziv {
namespace {

constexpr int kMaxDisplayWidth = 128;
constexpr float kCurveMargin = 4.0f;  // pixels kept free above and below the curve
constexpr int kCaptionGap = 1;
constexpr float kOscillatorCycles = 2.0f;
constexpr float kLfoCycles = 2.0f;
// How far full shape moves the second saw against the first, or the pulse width from 0.5, in cycles.
constexpr float kShapeSpread = 0.49f;
constexpr float kSemitonesPerOctave = 12.0f;
constexpr int kNoisePoints = 48;  // across the display
// The oscillator waveform's choices, "Saw", "Pulse", "Noise".
constexpr int kWaveformPulse = 1;
constexpr int kWaveformNoise = 2;

float fraction(float x) {
  return x - std::floor(x);
}
float saw(float phase) {
  return 2.0f * fraction(phase) - 1.0f;
}

// A fixed pseudo-random level in -1..1 for each integer (an integer hash of it, 16 bits kept).
float noiseLevel(int k) {
  std::uint32_t h = static_cast<std::uint32_t>(k) * 2654435761u;
  h ^= h >> 15;
  h *= 2246822519u;
  h ^= h >> 13;
  return static_cast<float>(h & 0xFFFF) / 32767.5f - 1.0f;
}

float oscillatorCurve(const ParameterView& params, const ShapeParameters& p, float t) {
  const float shape = params.physical(p.second);
  if (params.integerValue(p.first) == kWaveformNoise) {
    // Narrower noise bands move more slowly: blend towards the neighbour as the shape rises.
    const float x = t * kNoisePoints;
    const int k = static_cast<int>(x);
    const float smooth = 0.5f * (shape + 1.0f) * (x - static_cast<float>(k));
    return (1.0f - smooth) * noiseLevel(k) + smooth * noiseLevel(k + 1);
  }
  // The audible saw restarts with each cycle of its sync master.
  const float ratio = std::exp2(params.physical(p.third) / kSemitonesPerOctave);
  const float phase = fraction(fraction(t * kOscillatorCycles) * ratio);
  if (params.integerValue(p.first) == kWaveformPulse) {
    return phase < 0.5f + kShapeSpread * shape ? 1.0f : -1.0f;
  }
  return 0.5f * (saw(phase) + saw(phase + kShapeSpread * shape));
}

float lfoCurve(const ParameterView& params, const ShapeParameters& p, float t) {
  LfoState state;
  const float cycles = t * kLfoCycles;
  state.phase = fraction(cycles);
  state.cycle = static_cast<std::uint32_t>(cycles);
  shapeLfo(state, params.integerValue(p.first), 0.5f * params.physical(p.second));
  return state.output;
}

std::uint32_t valuesLook(const ParameterView& params, const ShapeParameters& p) {
  std::uint32_t look = kFirstLook;
  for (int index : {p.first, p.second, p.third}) {
    const float value = params.value(index);
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    look = mixLook(look, bits);
  }
  return look;
}

void drawCurve(WidgetContext& context, Image& picture, ShapeKind kind, const ShapeParameters& parameters) {
  std::array<float, 2 * kMaxDisplayWidth> points;
  const int count = static_cast<int>(picture.width);
  const float span = static_cast<float>(picture.height) - 2.0f * kCurveMargin;
  for (int i = 0; i < count; ++i) {
    const float level =
        shapeCurve(kind, context.params(), parameters, static_cast<float>(i) / static_cast<float>(count - 1));
    points[2 * i] = static_cast<float>(i);
    points[2 * i + 1] = kCurveMargin + 0.5f * (1.0f - level) * span;
  }
  context.canvas().beginPixels(picture);
  drawPolyline(picture, points.data(), count, look::kCurveRadius, look::kCurveColour);
  addShadow(picture, context.scratch());
  context.canvas().endPixels(picture);
}

}  // namespace

float shapeCurve(ShapeKind kind, const ParameterView& params, const ShapeParameters& parameters, float t) {
  switch (kind) {
    case ShapeKind::kOscillator:
      return oscillatorCurve(params, parameters, t);
    case ShapeKind::kLfo:
      return lfoCurve(params, parameters, t);
    case ShapeKind::kShaper:
    default:
      return static_cast<float>(Shaper::transfer(params.integerValue(parameters.first),
                                                 params.value(parameters.second), 2.0 * t - 1.0));
  }
}

void shapeDisplay(WidgetContext& context, WidgetId id, const Placement& placement, int width,
                  const char* caption, ShapeKind kind, const ShapeParameters& parameters) {
  width = std::clamp(width, 2, kMaxDisplayWidth);  // a curve needs two points
  const Rect area = context.place(id, placement, width, kShapeDisplayHeight);
  Image& picture = context.picture(id);
  picture.width = static_cast<std::uint32_t>(width);
  picture.height = static_cast<std::uint32_t>(kShapeDisplayHeight);
  // Displays also choose their setting: a left click steps to the next choice, a right click learns.
  ParameterView& params = context.params();
  const int chosen = parameters.first;
  if (params.valid(chosen) && context.hovered(area)) {
    const InputFrame& input = context.input();
    if (input.left.pressed) {
      const int n = params.integerValue(chosen);
      const int next = n < params.rangeMax(chosen) ? n + 1 : params.rangeMin(chosen);
      params.gesture(chosen, [&] { params.setInteger(chosen, next); });
    } else if (input.right.pressed) {
      context.requestPopup(kPopupMidiLearn, chosen, input.x, input.y, kLearnMenuWidth);
    }
  }
  const bool changed = context.present(id, area, valuesLook(params, parameters));
  if (changed || context.fullRedraw()) drawCurve(context, picture, kind, parameters);

  queueNineSlice(context.drawList(), look::kLayerControl, area, imgPanelSmall);
  queuePicture(context.drawList(), look::kLayerControlTop, area.x, area.y, picture);
  queueLabel(context, look::kLayerText, area.x + width / 2, area.y + kShapeDisplayHeight + kCaptionGap,
             caption, fontSmall, look::kCaptionColour, width, Align::kCentre);
}

}  // namespace ziv
