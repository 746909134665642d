// The demo phrase's notes. Chords change every bar (Am, F, C, G) and overlap the melody, so up to
// six voices sound at once, enough to hear the synth's polyphony, envelopes and filter.
#include "tools/host/demo_phrase.h"

#include <algorithm>
#include <cctype>

namespace vrnhost {

namespace {

struct PhraseNote {
  double beat;   // start, in quarter notes from the phrase start
  double beats;  // duration
  const char* pitch;
  int velocity;
};

constexpr int kChordVelocity = 80;
constexpr int kMelodyVelocity = 100;

// clang-format off
const PhraseNote kDemoNotes[] = {
  // Bar 1: A minor
  {0, 4, "A2", kChordVelocity}, {0, 4, "A3", kChordVelocity}, {0, 4, "C4", kChordVelocity}, {0, 4, "E4", kChordVelocity},
  {0, 1, "E5", kMelodyVelocity}, {1, 0.5, "C5", kMelodyVelocity}, {1.5, 0.5, "D5", kMelodyVelocity},
  {2, 1, "E5", kMelodyVelocity}, {3, 1, "A4", kMelodyVelocity},
  // Bar 2: F major
  {4, 4, "F2", kChordVelocity}, {4, 4, "A3", kChordVelocity}, {4, 4, "C4", kChordVelocity}, {4, 4, "F4", kChordVelocity},
  {4, 1.5, "F5", kMelodyVelocity}, {5.5, 0.5, "E5", kMelodyVelocity}, {6, 1, "C5", kMelodyVelocity},
  {7, 1, "A4", kMelodyVelocity},
  // Bar 3: C major
  {8, 4, "C3", kChordVelocity}, {8, 4, "G3", kChordVelocity}, {8, 4, "C4", kChordVelocity}, {8, 4, "E4", kChordVelocity},
  {8, 1, "G5", kMelodyVelocity}, {9, 0.5, "E5", kMelodyVelocity}, {9.5, 0.5, "D5", kMelodyVelocity},
  {10, 1, "C5", kMelodyVelocity}, {11, 1, "E5", kMelodyVelocity},
  // Bar 4: G major, ending on the tonic
  {12, 4, "G2", kChordVelocity}, {12, 4, "G3", kChordVelocity}, {12, 4, "B3", kChordVelocity}, {12, 4, "D4", kChordVelocity},
  {12, 1, "D5", kMelodyVelocity}, {13, 1, "B4", kMelodyVelocity}, {14, 0.5, "G4", kMelodyVelocity},
  {14.5, 0.5, "B4", kMelodyVelocity}, {15, 1, "A4", kMelodyVelocity},
};
// clang-format on

constexpr std::uint8_t kNoteOn = 0x90;
constexpr std::uint8_t kNoteOff = 0x80;

}  // namespace

int noteNumber(const std::string& name) {
  static const int kPitchClass[] = {9, 11, 0, 2, 4, 5, 7};  // A B C D E F G
  if (name.size() < 2) return -1;
  char letter = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
  if (letter < 'A' || letter > 'G') return -1;
  int note = kPitchClass[letter - 'A'];
  std::size_t pos = 1;
  if (name[pos] == '#') {
    ++note;
    ++pos;
  } else if (name[pos] == 'b') {
    --note;
    ++pos;
  }
  std::string octave = name.substr(pos);
  if (octave.empty() || octave.size() > 2 || (octave[0] != '-' && !std::isdigit(static_cast<unsigned char>(octave[0])))) {
    return -1;
  }
  for (std::size_t i = 1; i < octave.size(); ++i) {
    if (!std::isdigit(static_cast<unsigned char>(octave[i]))) return -1;
  }
  int number = (std::stoi(octave) + 1) * 12 + note;
  return number >= 0 && number <= 127 ? number : -1;
}

double demoPhraseBeats() {
  double end = 0.0;
  for (const PhraseNote& note : kDemoNotes) end = std::max(end, note.beat + note.beats);
  return end;
}

MidiSequence demoPhrase(double tempo) {
  const double secondsPerBeat = 60.0 / tempo;
  MidiSequence sequence;
  sequence.tempo = tempo;
  for (const PhraseNote& note : kDemoNotes) {
    auto key = static_cast<std::uint8_t>(noteNumber(note.pitch));
    auto velocity = static_cast<std::uint8_t>(note.velocity);
    sequence.messages.push_back({note.beat * secondsPerBeat, {kNoteOn, key, velocity}});
    sequence.messages.push_back({(note.beat + note.beats) * secondsPerBeat, {kNoteOff, key, 0}});
  }
  std::stable_sort(sequence.messages.begin(), sequence.messages.end(), [](const TimedMidi& a, const TimedMidi& b) {
    if (a.seconds != b.seconds) return a.seconds < b.seconds;
    return a.bytes[0] == kNoteOff && b.bytes[0] == kNoteOn;
  });
  return sequence;
}

}  // namespace vrnhost
