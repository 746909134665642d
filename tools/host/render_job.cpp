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

// File images travel as one line of hexadecimal digits.
std::string toHex(const FxImage& bytes) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0f];
  }
  return text;
}

bool fromHex(const std::string& text, FxImage& bytes) {
  auto digit = [](char c) {
    return c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
  };
  if (text.size() % 2 != 0) return false;
  bytes.clear();
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const int high = digit(text[i]);
    const int low = digit(text[i + 1]);
    if (high < 0 || low < 0) return false;
    bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
  }
  return true;
}

const char* kindWord(FxKind kind) {
  return kind == FxKind::kProgram ? "fxp" : "fxb";
}

bool parseKind(const std::string& text, FxKind& kind) {
  kind = text == "fxp" ? FxKind::kProgram : text == "fxb" ? FxKind::kBank : FxKind::kNone;
  return kind != FxKind::kNone;
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
  if (job.loadKind != FxKind::kNone)
    out << "load " << kindWord(job.loadKind) << ' ' << toHex(job.loadImage) << '\n';
  out << "program " << job.program << '\n';
  if (!job.programName.empty()) out << "program-name " << job.programName << '\n';
  for (const ParameterSetting& setting : job.settings) {
    out << "set " << setting.key << '=' << formatDouble(setting.value) << '\n';
  }
  if (job.saveKind != FxKind::kNone) out << "save " << kindWord(job.saveKind) << '\n';
  out << "list-params " << (job.listParameters ? 1 : 0) << '\n';
  out << "list-programs " << (job.listPrograms ? 1 : 0) << '\n';
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
    } else if (keyword == "playing" || keyword == "zero-frame-calls" || keyword == "list-params" ||
               keyword == "list-programs") {
      ok = parseInt(rest, flag) && (flag == 0 || flag == 1);
      bool& target = keyword == "playing"            ? job.transportPlaying
                     : keyword == "zero-frame-calls" ? job.zeroFrameCalls
                     : keyword == "list-params"      ? job.listParameters
                                                     : job.listPrograms;
      target = flag == 1;
    } else if (keyword == "load") {
      std::string kind, hex;
      splitLine(rest, kind, hex);
      ok = parseKind(kind, job.loadKind) && fromHex(hex, job.loadImage);
    } else if (keyword == "program-name") {
      job.programName = rest;
      ok = !rest.empty();
    } else if (keyword == "save") {
      ok = parseKind(rest, job.saveKind);
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
  for (std::size_t i = 0; i < result.programNames.size(); ++i) {
    out << "programname " << i << '\t' << result.programNames[i] << '\n';
  }
  if (!result.savedImage.empty()) out << "saved " << toHex(result.savedImage) << '\n';
  out << "stats " << result.frames << ' ' << formatDouble(result.pluginCpuSeconds) << '\n';
  if (!result.codePath.empty()) out << "codepath " << result.codePath << '\n';
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
  if (keyword == "programname") {
    const std::size_t tab = rest.find('\t');
    int index = 0;
    if (tab == std::string::npos || !parseInt(rest.substr(0, tab), index) ||
        index != static_cast<int>(result.programNames.size())) {
      return false;
    }
    result.programNames.push_back(rest.substr(tab + 1));
    return true;
  }
  if (keyword == "saved") return fromHex(rest, result.savedImage);
  if (keyword == "codepath") {
    result.codePath = rest;
    return !rest.empty();
  }
  if (keyword == "stats") {
    std::istringstream stream(rest);
    return static_cast<bool>(stream >> result.frames >> result.pluginCpuSeconds);
  }
  return false;
}

}  // namespace vrnhost
