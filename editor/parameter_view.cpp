#include "editor/parameter_view.h"

#include <algorithm>
#include <cmath>

#include "engine/modulation/mod_routing.h"
#include "plugin/vst_test.h"

namespace ziv {
namespace {

constexpr const char* kNoTargetName = "Off";

}  // namespace

ParameterView::ParameterView(VstTest& instance) : instance_(instance) {}

bool ParameterView::valid(int index) const {
  return index >= 0 && index < kHostParamCount;
}

float ParameterView::value(int index) const {
  return valid(index) ? instance_.engine().parameter(index).baseValue() : 0.0f;
}

int ParameterView::rangeMin(int index) const {
  return valid(index) ? instance_.engine().parameter(index).lo.load(std::memory_order_relaxed) : 0;
}

int ParameterView::rangeMax(int index) const {
  return valid(index) ? instance_.engine().parameter(index).hi.load(std::memory_order_relaxed) : 1;
}

bool ParameterView::waitingForLearn(int index) const {
  return valid(index) && instance_.midiLearn().state(index).status == LearnStatus::kWaiting;
}

float ParameterView::defaultValue(int index) const {
  if (!valid(index)) return 0.0f;
  const int lo = rangeMin(index), hi = rangeMax(index);
  const float span = static_cast<float>(hi - lo);
  return span > 0.0f ? (paramTable()[index].defaultValue - static_cast<float>(lo)) / span : 0.0f;
}

float ParameterView::physical(int index) const {
  const int lo = rangeMin(index), hi = rangeMax(index);
  return static_cast<float>(lo) + static_cast<float>(hi - lo) * value(index);
}

int ParameterView::integerValue(int index) const {
  return static_cast<int>(std::round(physical(index)));
}

void ParameterView::text(int index, char* out, std::size_t capacity) const {
  if (out == nullptr || capacity == 0) return;
  out[0] = '\0';
  if (valid(index)) instance_.engine().parameterDisplay(index, out, capacity);
}

int ParameterView::choiceCount(int index) const {
  if (!valid(index)) return 0;
  const ModTargetList targets = modTargetsOfSelector(index);
  return targets.count > 0 ? targets.count : paramTable()[index].choices.count;
}

const char* ParameterView::choiceName(int index, int choice) const {
  if (choice < 0 || choice >= choiceCount(index)) return "";
  const ModTargetList targets = modTargetsOfSelector(index);
  if (targets.count == 0) return paramTable()[index].choices.names[choice];
  const int target = targets.targets[choice];
  return target == kNoModTarget ? kNoTargetName : paramTable()[target].name;
}

int ParameterView::currentChoice(int index) const {
  const ModTargetList targets = modTargetsOfSelector(index);
  return targets.count > 0 ? modTargetPosition(value(index), targets.count)
                           : integerValue(index) - rangeMin(index);
}

void ParameterView::set(int index, float normalised) {
  if (valid(index)) instance_.engine().setParameter(index, normalised, true);
}

void ParameterView::setInteger(int index, int n) {
  const int lo = rangeMin(index), hi = rangeMax(index);
  if (hi <= lo) return;
  set(index, static_cast<float>(std::clamp(n, lo, hi) - lo) / static_cast<float>(hi - lo));
}

void ParameterView::setChoice(int index, int choice) {
  const int count = choiceCount(index);
  if (count < 2) return;
  choice = std::clamp(choice, 0, count - 1);
  if (modTargetsOfSelector(index).count > 0) {
    set(index, static_cast<float>(choice) / static_cast<float>(count - 1));
  } else {
    setInteger(index, rangeMin(index) + choice);
  }
}

void ParameterView::beginEdit(int index) {
  if (valid(index)) instance_.beginEdit(index);
}

void ParameterView::endEdit(int index) {
  if (valid(index)) instance_.endEdit(index);
}

}  // namespace ziv
