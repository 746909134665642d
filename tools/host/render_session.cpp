// The block loop. Events are cut into blocks by their absolute frame, so the audio does not depend
// on the block size except through the plug-in's own behaviour.
#include "tools/host/render_session.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>

#include "tools/host/thread_cpu_clock.h"

namespace vrnhost {

namespace {

constexpr int kBeatsPerBar = 4;

std::string trimmedLower(const std::string& text) {
  std::size_t first = text.find_first_not_of(" \t");
  std::size_t last = text.find_last_not_of(" \t");
  std::string result = first == std::string::npos ? "" : text.substr(first, last - first + 1);
  for (char& c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return result;
}

bool isIndex(const std::string& text) {
  return !text.empty() && text.size() < 9 &&
         std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

}  // namespace

vst2::VstTimeInfo transportAt(const RenderJob& job, std::int64_t startFrame) {
  vst2::VstTimeInfo info{};
  info.samplePos = static_cast<double>(startFrame);
  info.sampleRate = job.sampleRate;
  info.nanoSeconds = static_cast<double>(startFrame) / job.sampleRate * 1e9;
  info.tempo = job.tempo;
  info.ppqPos = job.transportPlaying ? static_cast<double>(startFrame) / job.sampleRate * job.tempo / 60.0 : 0.0;
  info.barStartPos = std::floor(info.ppqPos / kBeatsPerBar) * kBeatsPerBar;
  info.timeSigNumerator = kBeatsPerBar;
  info.timeSigDenominator = 4;
  info.flags = vst2::kVstNanosValid | vst2::kVstPpqPosValid | vst2::kVstTempoValid | vst2::kVstBarsValid |
               vst2::kVstTimeSigValid;
  if (job.transportPlaying) info.flags |= vst2::kVstTransportPlaying;
  if (startFrame == 0) info.flags |= vst2::kVstTransportChanged;
  return info;
}

int findParameter(const std::string& key, const std::vector<std::string>& names) {
  std::string wanted = trimmedLower(key);
  if (isIndex(wanted)) {
    int index = std::stoi(wanted);
    return index < static_cast<int>(names.size()) ? index : -1;
  }
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (trimmedLower(names[i]) == wanted) return static_cast<int>(i);
  }
  return -1;
}

int findProgram(const std::string& name, const std::vector<std::string>& names) {
  const std::string wanted = trimmedLower(name);
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (trimmedLower(names[i]) == wanted) return static_cast<int>(i);
  }
  return -1;
}

bool RenderSession::selectProgram(std::string& error) {
  int program = job_.program;
  if (!job_.programName.empty()) {
    std::vector<std::string> names;
    listPrograms(names);
    program = findProgram(job_.programName, names);
    if (program < 0) {
      error = "no program named '" + job_.programName + "' (see --list-programs)";
      return false;
    }
  }
  if (program < 0) return true;
  if (program >= driver_.programCount()) {
    error = "program " + std::to_string(program) + " does not exist (the plug-in has " +
            std::to_string(driver_.programCount()) + ")";
    return false;
  }
  driver_.setProgram(program);
  return true;
}

void RenderSession::listPrograms(std::vector<std::string>& names) {
  names.clear();
  for (int i = 0; i < driver_.programCount(); ++i) names.push_back(driver_.programName(i));
}

bool RenderSession::prepare(std::string& error) {
  driver_.open(job_.sampleRate, job_.blockSize);
  if (job_.loadKind != FxKind::kNone && !loadFxImage(driver_, job_.loadImage, job_.loadKind, error))
    return false;
  if (!selectProgram(error)) return false;
  std::vector<std::string> names;
  for (int i = 0; i < driver_.parameterCount(); ++i) names.push_back(driver_.parameterName(i));
  for (const ParameterSetting& setting : job_.settings) {
    int index = findParameter(setting.key, names);
    if (index < 0) {
      error = "unknown parameter '" + setting.key + "' (see --list-params)";
      return false;
    }
    if (!(setting.value >= 0.0f && setting.value <= 1.0f)) {
      error = "value for '" + setting.key + "' must be between 0 and 1";
      return false;
    }
    driver_.setParameter(index, setting.value);
  }
  savedImage_.clear();
  return job_.saveKind == FxKind::kNone || saveFxImage(driver_, job_.saveKind, savedImage_, error);
}

void RenderSession::listParameters(std::vector<ParameterInfo>& parameters) {
  parameters.clear();
  for (int i = 0; i < driver_.parameterCount(); ++i) {
    parameters.push_back({i, driver_.parameterName(i), driver_.parameterDisplay(i)});
  }
}

void RenderSession::collectBlockEvents(std::int64_t start, int frames) {
  blockEvents_.clear();
  const auto& events = job_.events;
  while (nextEvent_ < events.size() && events[nextEvent_].frame < start + frames) {
    vst2::VstMidiEvent event{};
    event.type = vst2::kVstMidiType;
    event.byteSize = sizeof(vst2::VstMidiEvent);
    // Events before the render start (there are none from our sources) go at offset 0.
    event.deltaFrames = static_cast<vst2::VstInt32>(std::max<std::int64_t>(0, events[nextEvent_].frame - start));
    std::memcpy(event.midiData, events[nextEvent_].bytes.data(), 3);
    blockEvents_.push_back(event);
    ++nextEvent_;
  }
}

void RenderSession::render(RenderResult& result, const ProgressFn& progress) {
  result.frames = job_.frames;
  result.samples.assign(static_cast<std::size_t>(job_.frames) * 2, 0.0f);
  result.pluginCpuSeconds = 0.0;
  result.codePath = driver_.codePath();
  nextEvent_ = 0;
  driver_.start();
  for (std::int64_t start = 0; start < job_.frames;) {
    int frames = static_cast<int>(std::min<std::int64_t>(job_.blockSize, job_.frames - start));
    collectBlockEvents(start, frames);
    driver_.setTimeInfo(transportAt(job_, start));

    double before = threadCpuSeconds();
    driver_.sendEvents(blockEvents_);
    // Some hosts poke the plug-in with empty blocks (e.g. while the transport is parked); the
    // events sent above must survive such a call untouched.
    if (job_.zeroFrameCalls) driver_.processReplacing(0);
    driver_.processReplacing(frames);
    result.pluginCpuSeconds += threadCpuSeconds() - before;

    const float* left = driver_.output(0);
    const float* right = driver_.output(1);
    float* out = result.samples.data() + start * 2;
    for (int i = 0; i < frames; ++i) {
      out[2 * i] = left[i];
      out[2 * i + 1] = right[i];
    }
    start += frames;
    if (progress) progress(start, job_.frames);
  }
  driver_.stop();
}

bool runRenderJob(const RenderJob& job, RenderResult& result, std::string& error, const ProgressFn& progress) {
  PluginDriver driver;
  if (!driver.load(job.pluginPath, error)) return false;
  RenderSession session(driver, job);
  if (!session.prepare(error)) return false;
  result.savedImage = session.savedImage();
  if (job.listParameters) session.listParameters(result.parameters);
  if (job.listPrograms) session.listPrograms(result.programNames);
  if (job.frames > 0) session.render(result, progress);
  driver.close();
  return true;
}

}  // namespace vrnhost
