// The editor's timer frame with nothing changing: the layout pass over every panel and control
// (input, parameter reads, queued drawing) and a flush that has nothing to draw. This is what an
// open editor costs 20 times a second while the user does not touch it.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>

#include "editor/editor_ui.h"
#include "editor/image_table.h"
#include "plugin/vst_test.h"

namespace {

// Measures text at a fixed width per character and draws nothing.
class NullCanvas : public ziv::Canvas {
 public:
  static constexpr int kCharWidth = 5;
  void drawImage(const ziv::Rect&, const ziv::Image&, const ziv::Rect&, float) override {}
  void drawText(const std::string&, int, int, ziv::FontHandle, int) override {}
  ziv::Rect measureText(const std::string& text, ziv::FontHandle) override {
    return ziv::Rect{0, 0, kCharWidth * static_cast<int>(text.size()), 9};
  }
  int fitCount(const std::string& text, ziv::FontHandle, int maxWidth, int* extents, int capacity) override {
    const int count = static_cast<int>(text.size());
    for (int i = 0; i < count && i < capacity; ++i) extents[i] = kCharWidth * (i + 1);
    return std::min(count, maxWidth / kCharWidth);
  }
  void setClip(const ziv::Rect&) override {}
  void clearClip() override {}
  void invalidate(const ziv::Rect&) override {}
  void beginPixels(ziv::Image&) override {}
  void endPixels(ziv::Image&) override {}
};

void BM_EditorIdleFrame(benchmark::State& state) {
  ziv::imageTable::acquire();
  ziv::VstTest instance(nullptr, std::make_unique<ziv::SynthEngine>());
  ziv::EditorUi editor(instance);
  NullCanvas canvas;
  std::uint32_t now = 0;
  editor.setMousePosition(700, 465);
  editor.runFrame(canvas, true, now);
  for (auto _ : state) {
    now += 50;
    editor.runFrame(canvas, false, now);
  }
  ziv::imageTable::drop();
}
BENCHMARK(BM_EditorIdleFrame)->Unit(benchmark::kMicrosecond);

}  // namespace
