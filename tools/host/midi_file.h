// Reads a Standard MIDI File (format 0 or 1) into the host's message list, using libsmf. Timing
// follows the file's own tempo map; meta events and system exclusive messages are skipped.
#pragma once

#include <string>
#include <vector>

#include "tools/host/midi_events.h"

namespace vrnhost {

// On failure returns false with a one-line reason in error. sequence.tempo is the file's initial
// tempo (120 when the file sets none, as the format defines).
bool readMidiFile(const std::string& path, MidiSequence& sequence, std::string& error);

// One track of a file: the name its track-name meta event gives (empty when none) and its messages.
struct MidiTrack {
  std::string name;
  MidiSequence sequence;
};

// Reads every track of the file, in file order, each timed by the file's tempo map and carrying
// the file's initial tempo. Same failures as readMidiFile.
bool readMidiTracks(const std::string& path, std::vector<MidiTrack>& tracks, std::string& error);

}  // namespace vrnhost
