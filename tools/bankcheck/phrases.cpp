// The phrases of phrases.h, written as notes in seconds (120 BPM: a beat is half a second).
#include "tools/bankcheck/phrases.h"

#include <algorithm>
#include <cmath>

namespace bankcheck {

namespace {

constexpr double kBeat = 0.5;
// Time after the last note-off for releases and echoes to die away.
constexpr double kTailSeconds = 2.0;
constexpr std::uint8_t kNoteOn = 0x90;
constexpr std::uint8_t kNoteOff = 0x80;
constexpr std::uint8_t kController = 0xB0;
constexpr std::uint8_t kModWheel = 1;

struct Note {
  double start;   // beats
  double length;  // beats
  int key;
};

// A singable line over an octave, with short and long notes, detached (not legato).
const Note kLeadNotes[] = {{0, 0.9, 60},    {1, 0.45, 64}, {1.5, 0.45, 67}, {2, 1.9, 72}, {4, 0.45, 71},
                           {4.5, 0.45, 67}, {5, 0.9, 69},  {6, 0.9, 65},    {7, 0.9, 64}, {8, 1.9, 60}};
// Eighth notes in the lowest two octaves, where bass lines live.
const Note kBassNotes[] = {{0, 0.45, 24}, {0.5, 0.45, 24}, {1, 0.45, 36}, {1.5, 0.45, 24},
                           {2, 0.45, 31}, {2.5, 0.45, 34}, {3, 0.45, 36}, {3.5, 0.45, 31},
                           {4, 0.45, 29}, {4.5, 0.45, 29}, {5, 0.45, 36}, {5.5, 0.45, 29},
                           {6, 0.45, 31}, {6.5, 0.45, 34}, {7, 0.9, 24}};
// Four-note chords in C3-C4, one every two beats.
const Note kPolyNotes[] = {{0, 1.8, 48}, {0, 1.8, 52}, {0, 1.8, 55}, {0, 1.8, 59}, {2, 1.8, 50}, {2, 1.8, 53},
                           {2, 1.8, 57}, {2, 1.8, 60}, {4, 1.8, 52}, {4, 1.8, 55}, {4, 1.8, 59}, {4, 1.8, 60},
                           {6, 1.8, 48}, {6, 1.8, 52}, {6, 1.8, 55}, {6, 1.8, 60}};
// Pads hold each chord for three bars' worth of time so slow attacks arrive.
const Note kPadNotes[] = {{0, 6, 48}, {0, 6, 52}, {0, 6, 55}, {0, 6, 59},
                          {6, 6, 50}, {6, 6, 53}, {6, 6, 57}, {6, 6, 60}};
const Note kFxNotes[] = {{0, 8, 60}};
const Note kChordNotes[] = {{0, 4, 48}, {0, 4, 52}, {0, 4, 55}, {0, 4, 59},
                            {0, 4, 60}, {0, 4, 64}, {0, 4, 67}, {0, 4, 71}};
const Note kHeldBassNotes[] = {{0, 2.8, 24}, {3, 2.8, 36}};
const Note kPairNotes[] = {{0, 1.2, kPairFirstNote}, {kPairSecondStartSeconds / kBeat, 1.4, kPairSecondNote}};

std::int64_t toFrame(double seconds, int sampleRate) {
  return static_cast<std::int64_t>(std::llround(seconds * sampleRate));
}

template <std::size_t N>
Phrase phraseOf(const Note (&notes)[N], int velocity, bool wheelUp, int sampleRate) {
  Phrase phrase;
  if (wheelUp) phrase.events.push_back({0, {kController, kModWheel, 127}});
  double end = 0.0;
  for (const Note& note : notes) {
    const auto key = static_cast<std::uint8_t>(note.key);
    phrase.events.push_back(
        {toFrame(note.start * kBeat, sampleRate), {kNoteOn, key, static_cast<std::uint8_t>(velocity)}});
    phrase.events.push_back({toFrame((note.start + note.length) * kBeat, sampleRate), {kNoteOff, key, 0}});
    end = std::max(end, (note.start + note.length) * kBeat);
  }
  // Note-offs go before note-ons at the same frame, so a repeated key is released first.
  std::stable_sort(phrase.events.begin(), phrase.events.end(),
                   [](const vrnhost::FrameMidi& a, const vrnhost::FrameMidi& b) {
                     if (a.frame != b.frame) return a.frame < b.frame;
                     return a.bytes[0] == kNoteOff && b.bytes[0] == kNoteOn;
                   });
  phrase.frames = toFrame(end + kTailSeconds, sampleRate);
  return phrase;
}

}  // namespace

// Each note's first 0.4 s after its attack, where plucked basses still sound.
const NoteSpan kBassNoteSpans[2] = {{24, 0.05, 0.45}, {36, 1.55, 1.95}};

Category categoryOf(const std::string& programName) {
  const std::string word = programName.substr(0, programName.find(' '));
  for (Category category :
       {Category::kLead, Category::kBass, Category::kPoly, Category::kPad, Category::kFx}) {
    if (word == categoryWord(category)) return category;
  }
  return Category::kNone;
}

const char* categoryWord(Category category) {
  switch (category) {
    case Category::kLead:
      return "LEAD";
    case Category::kBass:
      return "BASS";
    case Category::kPoly:
      return "POLY";
    case Category::kPad:
      return "PAD";
    case Category::kFx:
      return "FX";
    case Category::kNone:
    default:
      return "";
  }
}

Phrase categoryPhrase(Category category, int velocity, bool wheelUp, int sampleRate) {
  switch (category) {
    case Category::kLead:
      return phraseOf(kLeadNotes, velocity, wheelUp, sampleRate);
    case Category::kBass:
      return phraseOf(kBassNotes, velocity, wheelUp, sampleRate);
    case Category::kPad:
      return phraseOf(kPadNotes, velocity, wheelUp, sampleRate);
    case Category::kFx:
      return phraseOf(kFxNotes, velocity, wheelUp, sampleRate);
    case Category::kPoly:
    case Category::kNone:
    default:
      return phraseOf(kPolyNotes, velocity, wheelUp, sampleRate);
  }
}

Phrase fullChord(int sampleRate) {
  return phraseOf(kChordNotes, 127, false, sampleRate);
}

Phrase heldBassNotes(int sampleRate) {
  return phraseOf(kHeldBassNotes, 100, false, sampleRate);
}

Phrase overlappingPair(int sampleRate) {
  return phraseOf(kPairNotes, 100, false, sampleRate);
}

double noteHz(double note) {
  return 440.0 * std::pow(2.0, (note - 69.0) / 12.0);
}

}  // namespace bankcheck
