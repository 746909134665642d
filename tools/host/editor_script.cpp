#include "tools/host/editor_script.h"

#include <istream>
#include <sstream>

namespace vrnhost {
namespace {

using Kind = EditorStep::Kind;

struct Command {
  const char* word;
  Kind kind;
};

constexpr Command kCommands[] = {
    {"open", Kind::kOpen},
    {"close", Kind::kClose},
    {"rect", Kind::kRect},
    {"move", Kind::kMove},
    {"press", Kind::kPress},
    {"release", Kind::kRelease},
    {"click", Kind::kClick},
    {"double", Kind::kDoubleClick},
    {"drag", Kind::kDrag},
    {"shift", Kind::kShift},
    {"wheel", Kind::kWheel},
    {"wait", Kind::kWait},
    {"screenshot", Kind::kScreenshot},
    {"params", Kind::kParams},
    {"set", Kind::kSet},
    {"program", Kind::kProgram},
    {"instance", Kind::kInstance},
    {"destroy", Kind::kDestroy},
    {"cc", Kind::kController},
    {"type", Kind::kType},
    {"key", Kind::kKey},
    {"name", Kind::kName},
};

constexpr int kMidiDataMax = 127;
constexpr int kEnterCode = 13;
constexpr int kEscapeCode = 27;

// Editor coordinates beyond this are certainly typing mistakes.
constexpr int kMaxCoordinate = 100000;
constexpr int kMaxTicks = 100000;
constexpr int kMaxDragSteps = 10000;

bool readInt(std::istringstream& words, int low, int high, int& value) {
  long long number = 0;
  if (!(words >> number) || number < low || number > high) return false;
  value = static_cast<int>(number);
  return true;
}

bool readPoint(std::istringstream& words, int& x, int& y) {
  return readInt(words, -kMaxCoordinate, kMaxCoordinate, x) &&
         readInt(words, -kMaxCoordinate, kMaxCoordinate, y);
}

// An optional button word; absent means left.
bool readButton(std::istringstream& words, int& button) {
  std::string word;
  if (!(words >> word)) return true;
  if (word == "left" || word == "right") {
    button = word == "left" ? EditorStep::kLeft : EditorStep::kRight;
    return true;
  }
  return false;
}

std::string restOfLine(std::istringstream& words) {
  std::string rest;
  std::getline(words >> std::ws, rest);
  while (!rest.empty() && (rest.back() == ' ' || rest.back() == '\t')) rest.pop_back();
  return rest;
}

bool parseSetting(const std::string& text, EditorStep& step) {
  const std::size_t equals = text.rfind('=');
  if (equals == std::string::npos || equals == 0) return false;
  std::istringstream value(text.substr(equals + 1));
  double number = 0.0;
  if (!(value >> number) || !(value >> std::ws).eof() || number < 0.0 || number > 1.0) return false;
  step.text = text.substr(0, equals);
  step.value = static_cast<float>(number);
  return true;
}

// The arguments of one command; the words after them must be used up (checked by the caller).
bool parseArguments(std::istringstream& words, EditorStep& step) {
  switch (step.kind) {
    case Kind::kMove:
      return readPoint(words, step.x, step.y);
    case Kind::kPress:
    case Kind::kRelease:
      return readButton(words, step.button);
    case Kind::kClick:
    case Kind::kDoubleClick:
      return readPoint(words, step.x, step.y) && readButton(words, step.button);
    case Kind::kDrag:
      step.count = EditorStep::kDefaultDragSteps;
      return readPoint(words, step.x, step.y) && readPoint(words, step.x1, step.y1) &&
             ((words >> std::ws).eof() || readInt(words, 1, kMaxDragSteps, step.count));
    case Kind::kShift: {
      std::string word;
      words >> word;
      step.count = word == "down" ? 1 : 0;
      return word == "down" || word == "up";
    }
    case Kind::kWheel:
      return readInt(words, -kMaxCoordinate, kMaxCoordinate, step.count);
    case Kind::kWait:
      return readInt(words, 0, kMaxTicks, step.count);
    case Kind::kScreenshot:
      step.text = restOfLine(words);
      return !step.text.empty();
    case Kind::kSet:
      return parseSetting(restOfLine(words), step);
    case Kind::kProgram:
      return readInt(words, 0, kMaxCoordinate, step.count);
    case Kind::kInstance:
      return readInt(words, 0, EditorStep::kMaxInstances - 1, step.count);
    case Kind::kController:
      return readInt(words, 0, kMidiDataMax, step.count) && readInt(words, 0, kMidiDataMax, step.data);
    case Kind::kType:
      step.text = restOfLine(words);
      return !step.text.empty();
    case Kind::kKey: {
      std::string word;
      words >> word;
      step.count = word == "enter" ? kEnterCode : kEscapeCode;
      return word == "enter" || word == "escape";
    }
    case Kind::kOpen:
    case Kind::kClose:
    case Kind::kRect:
    case Kind::kParams:
    case Kind::kDestroy:
    case Kind::kName:
      return true;
  }
  return false;
}

}  // namespace

bool parseEditorScript(std::istream& in, std::vector<EditorStep>& steps, std::string& error) {
  steps.clear();
  std::string line;
  int lineNumber = 0;
  while (std::getline(in, line)) {
    ++lineNumber;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::istringstream words(line);
    std::string word;
    if (!(words >> word) || word[0] == '#') continue;
    const Command* command = nullptr;
    for (const Command& candidate : kCommands) {
      if (word == candidate.word) command = &candidate;
    }
    if (command == nullptr) {
      error = "script line " + std::to_string(lineNumber) + ": unknown step '" + word + "'";
      return false;
    }
    EditorStep step;
    step.kind = command->kind;
    step.line = lineNumber;
    if (!parseArguments(words, step) || !(words >> std::ws).eof()) {
      error = "script line " + std::to_string(lineNumber) + ": bad arguments for '" + word + "'";
      return false;
    }
    steps.push_back(step);
  }
  return true;
}

}  // namespace vrnhost
