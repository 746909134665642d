// Text forms of jobs and results. One keyword per line followed by its value; names may contain
// spaces and '=' (parameter names do), so a setting's value is everything after the last '='.
// Numbers are written with enough digits to read back exactly.
#include "tools/host/render_job.h"

#include <cstdio>
#include <istream>
#include <ostream>
#include <sstream>

namespace vrnhost {

namespace {

constexpr char kJobHeader[] = "vrnhost-job 1";

std::string formatDouble(double value) {
  char text[40];
  std::snprintf(text, sizeof(text), "%.17g", value);
  return text;
}

bool parseInt64(const std::string& text, std::int64_t& value) {
  std::istringstream stream(text);
  stream >> value;
  return stream && stream.peek() == std::char_traits<char>::eof();
}

bool parseInt(const std::string& text, int& value) {
  std::int64_t wide = 0;
  if (!parseInt64(text, wide) || wide < INT32_MIN || wide > INT32_MAX) return false;
  value = static_cast<int>(wide);
  return true;
}

bool parseDouble(const std::string& text, double& value) {
  std::istringstream stream(text);
  stream >> value;
  return stream && stream.peek() == std::char_traits<char>::eof();
}

bool parseEvent(const std::string& text, FrameMidi& event) {
  std::istringstream stream(text);
  int status = 0, data1 = 0, data2 = 0;
  if (!(stream >> event.frame >> status >> data1 >> data2) || !(stream >> std::ws).eof()) return false;
  if (event.frame < 0 || status < 0x80 || status > 0xFF || data1 < 0 || data1 > 127 || data2 < 0 || data2 > 127) {
    return false;
  }
  event.bytes = {static_cast<std::uint8_t>(status), static_cast<std::uint8_t>(data1),
                 static_cast<std::uint8_t>(data2)};
  return true;
}

bool parseSetting(const std::string& text, ParameterSetting& setting) {
  std::size_t equals = text.rfind('=');
  double value = 0.0;
  if (equals == std::string::npos || equals == 0 || !parseDouble(text.substr(equals + 1), value)) return false;
  setting.key = text.substr(0, equals);
  setting.value = static_cast<float>(value);
  return true;
}

// Splits "keyword rest of line"; the rest keeps inner spaces.
void splitLine(const std::string& line, std::string& keyword, std::string& rest) {
  std::size_t space = line.find(' ');
  keyword = line.substr(0, space);
  rest = space == std::string::npos ? "" : line.substr(space + 1);
}

}  // namespace

void writeJob(const RenderJob& job, std::ostream& out) {
  out << kJobHeader << '\n';
  out << "plugin " << job.pluginPath << '\n';
  out << "rate " << job.sampleRate << '\n';
  out << "block " << job.blockSize << '\n';
  out << "tempo " << formatDouble(job.tempo) << '\n';
  out << "playing " << (job.transportPlaying ? 1 : 0) << '\n';
  out << "zero-frame-calls " << (job.zeroFrameCalls ? 1 : 0) << '\n';
  out << "program " << job.program << '\n';
  for (const ParameterSetting& setting : job.settings) {
    out << "set " << setting.key << '=' << formatDouble(setting.value) << '\n';
  }
  out << "list-params " << (job.listParameters ? 1 : 0) << '\n';
  out << "frames " << job.frames << '\n';
  for (const FrameMidi& event : job.events) {
    out << "event " << event.frame << ' ' << int{event.bytes[0]} << ' ' << int{event.bytes[1]} << ' '
        << int{event.bytes[2]} << '\n';
  }
  out << "end\n";
}

bool readJob(std::istream& in, RenderJob& job, std::string& error) {
  job = RenderJob{};
  std::string line;
  int lineNumber = 0;
  auto fail = [&](const std::string& what) {
    error = "job line " + std::to_string(lineNumber) + ": " + what;
    return false;
  };
  // Files edited on Windows may end their lines with "\r\n".
  auto nextLine = [&]() {
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    ++lineNumber;
    return true;
  };
  if (!nextLine() || line != kJobHeader) {
    lineNumber = 1;
    return fail("not a vrnhost job");
  }
  while (nextLine()) {
    std::string keyword, rest;
    splitLine(line, keyword, rest);
    int flag = 0;
    bool ok = true;
    if (keyword == "end") {
      return true;
    } else if (keyword == "plugin") {
      job.pluginPath = rest;
    } else if (keyword == "rate") {
      ok = parseInt(rest, job.sampleRate) && job.sampleRate > 0;
    } else if (keyword == "block") {
      ok = parseInt(rest, job.blockSize) && job.blockSize > 0;
    } else if (keyword == "tempo") {
      ok = parseDouble(rest, job.tempo) && job.tempo > 0.0;
    } else if (keyword == "playing" || keyword == "zero-frame-calls" || keyword == "list-params") {
      ok = parseInt(rest, flag) && (flag == 0 || flag == 1);
      bool& target = keyword == "playing"            ? job.transportPlaying
                     : keyword == "zero-frame-calls" ? job.zeroFrameCalls
                                                     : job.listParameters;
      target = flag == 1;
    } else if (keyword == "program") {
      ok = parseInt(rest, job.program);
    } else if (keyword == "set") {
      job.settings.emplace_back();
      ok = parseSetting(rest, job.settings.back());
    } else if (keyword == "frames") {
      ok = parseInt64(rest, job.frames) && job.frames >= 0;
    } else if (keyword == "event") {
      job.events.emplace_back();
      ok = parseEvent(rest, job.events.back());
    } else {
      return fail("unknown keyword '" + keyword + "'");
    }
    if (!ok) return fail("bad value for '" + keyword + "'");
  }
  return fail("job ends without 'end' line");
}

void writeResultText(const RenderResult& result, std::ostream& out) {
  for (const ParameterInfo& info : result.parameters) {
    out << "param " << info.index << '\t' << info.name << '\t' << info.display << '\n';
  }
  out << "stats " << result.frames << ' ' << formatDouble(result.pluginCpuSeconds) << '\n';
}

bool readResultLine(const std::string& line, RenderResult& result) {
  std::string keyword, rest;
  splitLine(line, keyword, rest);
  if (keyword == "param") {
    std::size_t tab1 = rest.find('\t');
    std::size_t tab2 = tab1 == std::string::npos ? tab1 : rest.find('\t', tab1 + 1);
    ParameterInfo info;
    if (tab2 == std::string::npos || !parseInt(rest.substr(0, tab1), info.index)) return false;
    info.name = rest.substr(tab1 + 1, tab2 - tab1 - 1);
    info.display = rest.substr(tab2 + 1);
    result.parameters.push_back(info);
    return true;
  }
  if (keyword == "stats") {
    std::istringstream stream(rest);
    return static_cast<bool>(stream >> result.frames >> result.pluginCpuSeconds);
  }
  return false;
}

}  // namespace vrnhost
