// Event sources: the demo phrase must be well-formed MIDI (every note ends, re-struck keys are
// released first) and actually polyphonic; MIDI files must be timed by their own tempo map.
#include <gtest/gtest.h>
#include <smf.h>
#include <unistd.h>

#include <cstdlib>
#include <map>

#include "tools/host/demo_phrase.h"
#include "tools/host/midi_file.h"

namespace vrnhost {
namespace {

TEST(DemoPhrase, EveryNoteEndsAndSeveralSoundTogether) {
  MidiSequence phrase = demoPhrase(120.0);
  ASSERT_FALSE(phrase.messages.empty());
  EXPECT_EQ(phrase.tempo, 120.0);
  std::map<int, int> held;
  int sounding = 0, mostSounding = 0;
  double previous = 0.0;
  for (const TimedMidi& message : phrase.messages) {
    EXPECT_GE(message.seconds, previous);
    previous = message.seconds;
    int key = message.bytes[1];
    if (message.bytes[0] == 0x90) {
      EXPECT_EQ(held[key], 0) << "key " << key << " struck while still held at " << message.seconds;
      ++held[key];
      mostSounding = std::max(mostSounding, ++sounding);
    } else {
      ASSERT_EQ(message.bytes[0], 0x80);
      EXPECT_EQ(held[key], 1) << "key " << key << " released but not held at " << message.seconds;
      --held[key];
      --sounding;
    }
  }
  EXPECT_EQ(sounding, 0);
  EXPECT_GE(mostSounding, 5);
  EXPECT_DOUBLE_EQ(previous, demoPhraseBeats() * 0.5);  // 120 BPM: half a second per beat
  EXPECT_DOUBLE_EQ(demoPhrase(60.0).messages.back().seconds, demoPhraseBeats());
}

TEST(DemoPhrase, NoteNames) {
  EXPECT_EQ(noteNumber("C4"), 60);
  EXPECT_EQ(noteNumber("A4"), 69);
  EXPECT_EQ(noteNumber("F#3"), 54);
  EXPECT_EQ(noteNumber("Bb2"), 46);
  EXPECT_EQ(noteNumber("C-1"), 0);
  EXPECT_EQ(noteNumber("G9"), 127);
  EXPECT_EQ(noteNumber("G#9"), -1);
  EXPECT_EQ(noteNumber("H2"), -1);
  EXPECT_EQ(noteNumber("C"), -1);
  EXPECT_EQ(noteNumber("C4x"), -1);
}

TEST(MidiEvents, FramesAndRenderLength) {
  std::vector<TimedMidi> messages = {{0.5, {0x90, 60, 1}}, {0.25, {0x90, 61, 1}}, {0.5, {0x80, 60, 0}}};
  std::vector<FrameMidi> events = toFrames(messages, 48000);
  ASSERT_EQ(events.size(), 3u);
  EXPECT_EQ(events[0].frame, 12000);
  EXPECT_EQ(events[1].frame, 24000);
  EXPECT_EQ(events[1].bytes[0], 0x90);  // equal times keep their order
  EXPECT_EQ(events[2].bytes[0], 0x80);
  EXPECT_EQ(renderLength(events, 48000), 72000);
  EXPECT_EQ(renderLength(events, 0), 24001);  // the last event must still be delivered
  EXPECT_EQ(renderLength({}, 100), 100);
}

class MidiFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/vrnhost-midi-XXXXXX";
    int fd = mkstemp(pattern);
    ASSERT_GE(fd, 0);
    close(fd);
    path_ = pattern;
  }
  void TearDown() override { std::remove(path_.c_str()); }

  void writeTwoTrackFile() {
    smf_t* smf = smf_new();
    ASSERT_EQ(smf_set_ppqn(smf, 96), 0);
    smf_track_t* tempoTrack = smf_track_new();
    smf_track_t* notes = smf_track_new();
    smf_add_track(smf, tempoTrack);
    smf_add_track(smf, notes);
    unsigned char slow[] = {0xFF, 0x51, 0x03, 0x09, 0x27, 0xC0};  // 600000 µs: 100 BPM
    unsigned char fast[] = {0xFF, 0x51, 0x03, 0x04, 0x93, 0xE0};  // 300000 µs: 200 BPM
    unsigned char name[] = {0xFF, 0x03, 0x0B, 'L', 'E', 'A', 'D', ' ', '-', ' ', 'T', 'e', 's', 't'};
    smf_track_add_event_pulses(tempoTrack, smf_event_new_from_pointer(slow, sizeof(slow)), 0);
    smf_track_add_event_pulses(tempoTrack, smf_event_new_from_pointer(fast, sizeof(fast)), 192);
    smf_track_add_event_pulses(notes, smf_event_new_from_pointer(name, sizeof(name)), 0);
    smf_track_add_event_pulses(notes, smf_event_new_from_bytes(0x90, 64, 90), 96);
    smf_track_add_event_pulses(notes, smf_event_new_from_bytes(0xC0, 3, -1), 192);
    smf_track_add_event_pulses(notes, smf_event_new_from_bytes(0x80, 64, 0), 288);
    ASSERT_EQ(smf_save(smf, path_.c_str()), 0);
    smf_delete(smf);
  }

  std::string path_;
};

// Two tracks; 96 pulses per quarter; 100 BPM for the first two beats, then 200 BPM. The second
// track is named and holds one note and a program change.
TEST_F(MidiFileTest, FollowsTheTempoMapAndSkipsMetaEvents) {
  writeTwoTrackFile();
  MidiSequence sequence;
  std::string error;
  ASSERT_TRUE(readMidiFile(path_, sequence, error)) << error;
  EXPECT_DOUBLE_EQ(sequence.tempo, 100.0);
  ASSERT_EQ(sequence.messages.size(), 3u);
  EXPECT_NEAR(sequence.messages[0].seconds, 0.6, 1e-9);
  EXPECT_EQ(sequence.messages[0].bytes, (MidiBytes{0x90, 64, 90}));
  EXPECT_NEAR(sequence.messages[1].seconds, 1.2, 1e-9);
  EXPECT_EQ(sequence.messages[1].bytes, (MidiBytes{0xC0, 3, 0}));  // two-byte message, padded
  EXPECT_NEAR(sequence.messages[2].seconds, 1.5, 1e-9);  // the third beat at 200 BPM
}

TEST_F(MidiFileTest, TracksKeepTheirNamesAndTheSharedTempoMap) {
  writeTwoTrackFile();
  std::vector<MidiTrack> tracks;
  std::string error;
  ASSERT_TRUE(readMidiTracks(path_, tracks, error)) << error;
  ASSERT_EQ(tracks.size(), 2u);
  EXPECT_EQ(tracks[0].name, "");
  EXPECT_TRUE(tracks[0].sequence.messages.empty()) << "tempo changes are not channel messages";
  EXPECT_EQ(tracks[1].name, "LEAD - Test");
  EXPECT_DOUBLE_EQ(tracks[1].sequence.tempo, 100.0);
  ASSERT_EQ(tracks[1].sequence.messages.size(), 3u);
  EXPECT_NEAR(tracks[1].sequence.messages[2].seconds, 1.5, 1e-9) << "timed by the tempo track";
}

TEST_F(MidiFileTest, RefusesFilesThatAreNotMidi) {
  FILE* file = std::fopen(path_.c_str(), "w");
  std::fputs("RIFF this is no MIDI file", file);
  std::fclose(file);
  MidiSequence sequence;
  std::string error;
  EXPECT_FALSE(readMidiFile(path_, sequence, error));
  EXPECT_NE(error.find("cannot read MIDI file"), std::string::npos) << error;
  EXPECT_EQ(error.find('\n'), std::string::npos) << error;
  EXPECT_FALSE(readMidiFile("/nonexistent.mid", sequence, error));
  std::vector<MidiTrack> tracks;
  EXPECT_FALSE(readMidiTracks(path_, tracks, error));
}

}  // namespace
}  // namespace vrnhost
