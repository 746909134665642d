// libsndfile wrappers with one-line error messages.
#include "tools/host/wav_file.h"

#include <sndfile.h>

namespace vrnhost {

bool writeWav(const std::string& path, const std::vector<float>& interleaved, int channels, int sampleRate,
              SampleFormat format, std::string& error) {
  SF_INFO info{};
  info.samplerate = sampleRate;
  info.channels = channels;
  info.format = SF_FORMAT_WAV | (format == SampleFormat::kFloat32 ? SF_FORMAT_FLOAT : SF_FORMAT_PCM_24);
  SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
  if (!file) {
    error = "cannot write '" + path + "': " + sf_strerror(nullptr);
    return false;
  }
  sf_command(file, SFC_SET_CLIPPING, nullptr, SF_TRUE);
  sf_count_t frames = static_cast<sf_count_t>(interleaved.size() / channels);
  sf_count_t written = sf_writef_float(file, interleaved.data(), frames);
  bool ok = written == frames;
  if (!ok) error = "cannot write '" + path + "': " + sf_strerror(file);
  if (sf_close(file) != 0 && ok) {
    error = "cannot write '" + path + "'";
    ok = false;
  }
  return ok;
}

bool readWav(const std::string& path, WavData& data, std::string& error) {
  SF_INFO info{};
  SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
  if (!file) {
    error = "cannot read '" + path + "': " + sf_strerror(nullptr);
    return false;
  }
  data.sampleRate = info.samplerate;
  data.channels = info.channels;
  data.frames = info.frames;
  data.samples.assign(static_cast<std::size_t>(info.frames) * info.channels, 0.0f);
  sf_count_t read = sf_readf_float(file, data.samples.data(), info.frames);
  sf_close(file);
  if (read != info.frames) {
    error = "cannot read '" + path + "': file is shorter than its header says";
    return false;
  }
  return true;
}

}  // namespace vrnhost
