// The built-in demo phrase: four bars of held four-note chords under a melody, played when no MIDI
// file is given. It is written in beats and note names and timed at the requested tempo.
#pragma once

#include <string>

#include "tools/host/midi_events.h"

namespace vrnhost {

// The phrase as MIDI messages on channel 1, timed for the given tempo (beats per minute).
// Note-offs sort before note-ons at the same time, so a re-struck key is released first.
MidiSequence demoPhrase(double tempo);

// Length of the phrase in beats (its last note-off).
double demoPhraseBeats();

// MIDI note number of a name such as "C4" (60), "F#3" or "Bb2"; -1 when the name is malformed.
int noteNumber(const std::string& name);

}  // namespace vrnhost
