#include "midi/midi_learn.h"

#include "plugin/parameter_table.h"

namespace ziv {

int MidiLearn::onController(int controller) {
  // Data bytes arrive as signed values; only a real controller number can complete a learn.
  if (controller >= 0 && controller < kControllerCount) {
    const int target = learnTarget_.exchange(-1, std::memory_order_relaxed);
    if (target != -1) map_.bind(target, controller);
  }
  return map_.parameterFor(controller);
}

LearnState MidiLearn::state(int parameter) const {
  const int controller = map_.findController(parameter);
  if (controller != -1) return {LearnStatus::kMapped, controller};
  if (parameter != -1 && learnTarget_.load(std::memory_order_relaxed) == parameter) {
    return {LearnStatus::kWaiting, -1};
  }
  return {};
}

void MidiLearn::startLearn(int parameter) {
  if (parameter >= 0 && parameter < kHostParamCount) learnTarget_.store(parameter, std::memory_order_relaxed);
}

void MidiLearn::removeMapping(int parameter) {
  const int controller = map_.findController(parameter);
  if (controller != -1) map_.bind(-1, controller);
}

}  // namespace ziv
