// The test material of the bank check: the phrase each category is heard with (leads a melody in
// C4-C5, basses a line in C1-C2, polys four-note chords in C3-C4, pads slower chords, FX a held
// C4), the eight-note chord that tests headroom, the held bass notes for pitch and the overlapping
// pair that shows glide. All at 120 BPM, as MIDI events in frames for a render job.
#pragma once

#include <string>
#include <vector>

#include "tools/host/midi_events.h"

namespace bankcheck {

// The categories in bank order; kNone for a name without a known category word ("Init Patch").
enum class Category { kLead, kBass, kPoly, kPad, kFx, kNone };

Category categoryOf(const std::string& programName);
const char* categoryWord(Category category);

struct Phrase {
  std::vector<vrnhost::FrameMidi> events;
  std::int64_t frames = 0;  // the render's length, tail included
};

// The category's phrase at one velocity (1..127), with the mod wheel at rest or fully up.
Phrase categoryPhrase(Category category, int velocity, bool wheelUp, int sampleRate);

// C3 E3 G3 B3 C4 E4 G4 B4 at velocity 127, held two seconds.
Phrase fullChord(int sampleRate);

// C1 then C2, each held; kBassNoteSpans gives the spans in which their pitch is measured.
Phrase heldBassNotes(int sampleRate);
struct NoteSpan {
  int note;
  double fromSeconds, toSeconds;
};
extern const NoteSpan kBassNoteSpans[2];

// C4 held, then G4 pressed before C4 is released: a mono program with glide slides between them.
Phrase overlappingPair(int sampleRate);
constexpr int kPairFirstNote = 60;
constexpr int kPairSecondNote = 67;
constexpr double kPairSecondStartSeconds = 0.5;

// Frequency of a MIDI note in equal temperament (A4 = 440 Hz).
double noteHz(double note);

}  // namespace bankcheck
