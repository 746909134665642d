// The editor's timer frame with nothing changing: the layout pass over every panel and control
// (input, parameter reads, queued drawing) and a flush that has nothing to draw. This is what an
// open editor costs 20 times a second while the user does not touch it.
#include <benchmark/benchmark.h>

#include <memory>

#include "editor/editor_ui.h"
#include "measuring_canvas.h"
#include "plugin/vst_test.h"

namespace {

void BM_EditorIdleFrame(benchmark::State& state) {
  ziv::imageTable::acquire();
  ziv::VstTest instance(nullptr, std::make_unique<ziv::SynthEngine>());
  ziv::EditorUi editor(instance);
  ziv::testing::MeasuringCanvas canvas;
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
