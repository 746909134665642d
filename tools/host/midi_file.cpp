// libsmf reports problems through GLib's log; while a file is loaded those messages are caught
// so that the host can print one clean error line instead of library chatter.
#include "tools/host/midi_file.h"

#include <glib.h>
#include <smf.h>

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

}  // namespace

bool readMidiFile(const std::string& path, MidiSequence& sequence, std::string& error) {
  LibraryMessageCatcher catcher;
  std::unique_ptr<smf_t, SmfDeleter> smf(smf_load(path.c_str()));
  if (!smf) {
    error = "cannot read MIDI file '" + path + "'";
    if (!gLastLibraryMessage.empty()) error += ": " + gLastLibraryMessage;
    return false;
  }
  sequence = MidiSequence{};
  smf_tempo_t* tempo = smf_get_tempo_by_seconds(smf.get(), 0.0);
  sequence.tempo = tempo && tempo->microseconds_per_quarter_note > 0
                       ? 60.0e6 / tempo->microseconds_per_quarter_note
                       : 120.0;
  while (smf_event_t* event = smf_get_next_event(smf.get())) {
    if (smf_event_is_metadata(event) || smf_event_is_sysex(event)) continue;
    if (event->midi_buffer_length < 1 || event->midi_buffer_length > 3) continue;
    TimedMidi message;
    message.seconds = event->time_seconds;
    for (int i = 0; i < event->midi_buffer_length; ++i) message.bytes[i] = event->midi_buffer[i];
    sequence.messages.push_back(message);
  }
  return true;
}

}  // namespace vrnhost
