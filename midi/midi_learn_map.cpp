#include "midi/midi_learn_map.h"

#include "plugin/parameter_table.h"

namespace ziv {
namespace {

// Every map of the process compares its stamp with this. Lock-free on every target we build.
std::atomic<std::uint32_t> gChangeCounter{1};

bool isController(int controller) {
  return controller >= 0 && controller < kControllerCount;
}

bool isParameter(int parameter) {
  return parameter >= 0 && parameter < kHostParamCount;
}

}  // namespace

MidiLearnMap::MidiLearnMap(std::string path) : path_(std::move(path)) {
  for (std::atomic<std::int32_t>& entry : map_) entry.store(-1, std::memory_order_relaxed);
  readIfChanged();
}

std::uint32_t MidiLearnMap::changeCount() {
  return gChangeCounter.load(std::memory_order_acquire);
}

bool MidiLearnMap::readIfChanged() {
  const std::uint32_t count = changeCount();
  if (count == stamp_) return false;
  ControllerEntries entries = snapshot();
  if (readSettingsFile(path_.c_str(), entries)) {
    // A damaged or foreign file must not send controllers to parameters that do not exist.
    for (std::int32_t& entry : entries) {
      if (!isParameter(entry)) entry = -1;
    }
    store(entries);
  }
  stamp_ = count;
  return true;
}

int MidiLearnMap::parameterFor(int controller) const {
  return isController(controller) ? map_[controller].load(std::memory_order_relaxed) : -1;
}

int MidiLearnMap::findController(int parameter) const {
  if (!isParameter(parameter)) return -1;
  for (int c = 0; c < kControllerCount; ++c) {
    if (map_[c].load(std::memory_order_relaxed) == parameter) return c;
  }
  return -1;
}

void MidiLearnMap::bind(int parameter, int controller) {
  if (!isController(controller) || (parameter != -1 && !isParameter(parameter))) return;
  // A parameter follows one controller at most.
  const int previous = findController(parameter);
  if (previous != -1) map_[previous].store(-1, std::memory_order_relaxed);
  map_[controller].store(parameter, std::memory_order_relaxed);
  if (writeSettingsFile(path_.c_str(), snapshot())) gChangeCounter.fetch_add(1, std::memory_order_release);
}

void MidiLearnMap::store(const ControllerEntries& entries) {
  for (int c = 0; c < kControllerCount; ++c) map_[c].store(entries[c], std::memory_order_relaxed);
}

ControllerEntries MidiLearnMap::snapshot() const {
  ControllerEntries entries;
  for (int c = 0; c < kControllerCount; ++c) entries[c] = map_[c].load(std::memory_order_relaxed);
  return entries;
}

}  // namespace ziv
