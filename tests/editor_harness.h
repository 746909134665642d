// The editor's core without a screen: a canvas that records what a frame draws (measuring as
// MeasuringCanvas does), and an editor on a test host driven through the
// entry points the window layer calls, one frame per mouse message as the window does.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "editor/editor_ui.h"
#include "measuring_canvas.h"
#include "test_host.h"

namespace ziv::testing {

class RecordingCanvas : public MeasuringCanvas {
 public:
  struct ImageCall {
    Rect destination;
    const Image* image;
    Rect source;
    float alpha;
  };
  struct TextCall {
    std::string text;
    int x;
    int y;
  };

  void drawImage(const Rect& dst, const Image& image, const Rect& src, float alpha) override;
  void drawText(const std::string& text, int x, int y, FontHandle font, int colour) override;
  void invalidate(const Rect& area) override { invalidated.push_back(area); }
  void beginPixels(Image& image) override;
  void endPixels(Image& image) override;

  void clear();
  // The first image drawn exactly onto `destination`, or null.
  const ImageCall* imageAt(const Rect& destination) const;
  bool drewText(const std::string& text) const;
  bool drewTextStartingWith(const std::string& head) const;
  // The text drawn at height y across x, or "".
  std::string textAt(int x, int y) const;

  std::vector<ImageCall> images;
  std::vector<TextCall> texts;
  std::vector<Rect> invalidated;
  int pictures = 0;                                          // CPU pictures finished since the last clear
  std::map<const Image*, std::vector<std::uint8_t>> pixels;  // each picture's last pixels

 private:
  std::map<const Image*, std::vector<std::uint8_t>> drawing_;
};

class EditorHarness {
 public:
  static constexpr std::uint32_t kFrameMs = 50;

  EditorHarness();

  // One frame as after a mouse message or a timer tick (kFrameMs later than the last).
  void frame(bool fullRedraw = false, std::uint32_t elapsedMs = kFrameMs);
  void moveTo(int x, int y, bool shift = false);
  void press(int x, int y, int button = 0);
  void release(int button = 0);
  void click(int x, int y, int button = 0);
  // Two clicks, the second as the window reports a double-click: down, then double-click.
  void doubleClick(int x, int y);

  float value(int index) { return host.plugin().getParameter(index); }
  void setValue(int index, float value) { host.plugin().setParameter(index, value); }
  const WidgetContext& context() const { return ui.context(); }
  std::vector<HostCall>& calls() { return host.record().parameterCalls; }
  // The middle of the rectangle placed for `id`.
  int centreX(WidgetId id) const;
  int centreY(WidgetId id) const;

  TestHost host;
  EditorUi ui;
  RecordingCanvas canvas;
  std::uint32_t now = 1000;
};

}  // namespace ziv::testing
