// The learned controller map: for each of the 128 MIDI controllers, the parameter it moves or
// -1. The map belongs to the machine, not to a program: every change is written to the
// settings file at once, and every instance in the process re-reads that file when a
// process-wide change counter says another map has rewritten it.
//
// Entries are atomics so that the audio thread (which reads them for every controller message
// and completes learns) and the user-interface thread (which removes bindings and asks what is
// bound for its menu) never race; a reader that overlaps a writer sees either value.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

#include "midi/settings_file.h"

namespace ziv {

class MidiLearnMap {
 public:
  // Reads the settings file at `path` at once; an empty path, or a file that cannot be read,
  // leaves every controller unbound. Constructing thread.
  explicit MidiLearnMap(std::string path);
  MidiLearnMap(const MidiLearnMap&) = delete;
  MidiLearnMap& operator=(const MidiLearnMap&) = delete;

  // Re-reads the settings file when any map in the process has written it since this one last
  // read it; true when it did. Audio thread, once per processEvents: reads the file only on a
  // change, and never allocates.
  bool readIfChanged();

  // The parameter bound to `controller`, -1 for none or a number outside 0..127. Any thread.
  int parameterFor(int controller) const;
  // The lowest controller bound to `parameter`, -1 for none. Any thread.
  int findController(int parameter) const;

  // Binds `controller` to `parameter`, unbinding whichever controller moved `parameter` before;
  // `parameter` -1 removes the controller's binding. Then writes the settings file and, when
  // that succeeded, advances the change counter (this map too re-reads its own file at its next
  // readIfChanged). When the file cannot be written the binding stays in this map only.
  // Invalid controllers and parameters are ignored. Audio thread (a learn completes) or
  // user-interface thread (a binding is removed); never allocates.
  void bind(int parameter, int controller);

  // The process-wide change counter: starts at 1, advanced by every successful write. Any thread.
  static std::uint32_t changeCount();

 private:
  void store(const ControllerEntries& entries);
  ControllerEntries snapshot() const;

  const std::string path_;
  // The change counter when this map last read the file; 0 before the first read.
  std::uint32_t stamp_ = 0;
  std::array<std::atomic<std::int32_t>, kControllerCount> map_;
};

}  // namespace ziv
