// libsmf reports problems through GLib's log; while a file is loaded those messages are caught
// so that the host can print one clean error line instead of library chatter.
#include "tools/host/midi_file.h"

#include <glib.h>
#include <smf.h>

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace vrnhost {

namespace {

std::string gLastLibraryMessage;

void keepLastMessage(const gchar* /*domain*/, GLogLevelFlags /*level*/, const gchar* message, gpointer) {
  gLastLibraryMessage = message ? message : "";
}

// Routes GLib's messages into gLastLibraryMessage for as long as it lives.
class LibraryMessageCatcher {
 public:
  LibraryMessageCatcher() : previous_(g_log_set_default_handler(keepLastMessage, nullptr)) {
    gLastLibraryMessage.clear();
  }
  ~LibraryMessageCatcher() { g_log_set_default_handler(previous_, nullptr); }

 private:
  GLogFunc previous_;
};

struct SmfDeleter {
  void operator()(smf_t* smf) const { smf_delete(smf); }
};

using SmfPointer = std::unique_ptr<smf_t, SmfDeleter>;

SmfPointer loadSmf(const std::string& path, std::string& error) {
  LibraryMessageCatcher catcher;
  SmfPointer smf(smf_load(path.c_str()));
  if (!smf) {
    error = "cannot read MIDI file '" + path + "'";
    if (!gLastLibraryMessage.empty()) error += ": " + gLastLibraryMessage;
  }
  return smf;
}

double initialTempo(smf_t* smf) {
  smf_tempo_t* tempo = smf_get_tempo_by_seconds(smf, 0.0);
  return tempo && tempo->microseconds_per_quarter_note > 0 ? 60.0e6 / tempo->microseconds_per_quarter_note
                                                           : 120.0;
}

// Keeps channel messages (1 to 3 bytes); meta events and system exclusive messages are skipped.
void appendChannelMessage(const smf_event_t* event, MidiSequence& sequence) {
  if (smf_event_is_metadata(event) || smf_event_is_sysex(event)) return;
  if (event->midi_buffer_length < 1 || event->midi_buffer_length > 3) return;
  TimedMidi message;
  message.seconds = event->time_seconds;
  for (int i = 0; i < event->midi_buffer_length; ++i) message.bytes[i] = event->midi_buffer[i];
  sequence.messages.push_back(message);
}

constexpr std::uint8_t kMetaEvent = 0xFF;
constexpr std::uint8_t kTrackNameMeta = 0x03;

bool isTrackName(const smf_event_t* event) {
  return event->midi_buffer_length >= 2 && event->midi_buffer[0] == kMetaEvent &&
         event->midi_buffer[1] == kTrackNameMeta;
}

}  // namespace

bool readMidiFile(const std::string& path, MidiSequence& sequence, std::string& error) {
  SmfPointer smf = loadSmf(path, error);
  if (!smf) return false;
  sequence = MidiSequence{};
  sequence.tempo = initialTempo(smf.get());
  while (smf_event_t* event = smf_get_next_event(smf.get())) appendChannelMessage(event, sequence);
  return true;
}

bool readMidiTracks(const std::string& path, std::vector<MidiTrack>& tracks, std::string& error) {
  SmfPointer smf = loadSmf(path, error);
  if (!smf) return false;
  tracks.clear();
  for (int number = 1; number <= smf->number_of_tracks; ++number) {
    smf_track_t* track = smf_get_track_by_number(smf.get(), number);
    if (!track) continue;
    MidiTrack result;
    result.sequence.tempo = initialTempo(smf.get());
    while (smf_event_t* event = smf_track_get_next_event(track)) {
      if (isTrackName(event) && result.name.empty()) {
        std::unique_ptr<char, decltype(&std::free)> name(smf_event_extract_text(event), &std::free);
        if (name) result.name = name.get();
      }
      appendChannelMessage(event, result.sequence);
    }
    tracks.push_back(std::move(result));
  }
  return true;
}

}  // namespace vrnhost
