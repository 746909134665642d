// The editor script: every step with its arguments and defaults, and mistakes reported by line.
#include "tools/host/editor_script.h"

#include <gtest/gtest.h>

#include <sstream>

namespace vrnhost {
namespace {

using Kind = EditorStep::Kind;

std::vector<EditorStep> parse(const std::string& text, std::string* error = nullptr) {
  std::istringstream in(text);
  std::vector<EditorStep> steps;
  std::string reason;
  if (!parseEditorScript(in, steps, reason)) steps.clear();
  if (error != nullptr) *error = reason;
  return steps;
}

TEST(EditorScript, ReadsEveryStep) {
  const auto steps = parse(
      "# a knob drag\r\n"
      "open\n"
      "\n"
      "  move 10 -20\n"
      "press\n"
      "release right\n"
      "click 5 6 right\n"
      "double 7 8\n"
      "drag 1 200 1 66 4\n"
      "drag 1 2 3 4\n"
      "shift down\n"
      "wheel -120\n"
      "wait 3\n"
      "screenshot out/editor one.png\n"
      "set FILTER 1: Cutoff=0.35\n"
      "program 12\n"
      "instance 3\n"
      "params\n"
      "rect\n"
      "destroy\n"
      "close\n"
      "cc 74 127\n"
      "type Warm Pad 2\n"
      "key escape\n"
      "name\n");
  ASSERT_EQ(steps.size(), 23u);
  EXPECT_EQ(steps[0].kind, Kind::kOpen);
  EXPECT_EQ(steps[0].line, 2);
  EXPECT_EQ(steps[1].kind, Kind::kMove);
  EXPECT_EQ(steps[1].y, -20);
  EXPECT_EQ(steps[2].button, EditorStep::kLeft);
  EXPECT_EQ(steps[3].button, EditorStep::kRight);
  EXPECT_EQ(steps[4].kind, Kind::kClick);
  EXPECT_EQ(steps[4].button, EditorStep::kRight);
  EXPECT_EQ(steps[5].kind, Kind::kDoubleClick);
  EXPECT_EQ(steps[5].x, 7);
  EXPECT_EQ(steps[6].y1, 66);
  EXPECT_EQ(steps[6].count, 4);
  EXPECT_EQ(steps[7].count, EditorStep::kDefaultDragSteps);
  EXPECT_EQ(steps[8].count, 1);
  EXPECT_EQ(steps[9].count, -120);
  EXPECT_EQ(steps[10].count, 3);
  EXPECT_EQ(steps[11].text, "out/editor one.png");
  EXPECT_EQ(steps[12].text, "FILTER 1: Cutoff");
  EXPECT_FLOAT_EQ(steps[12].value, 0.35f);
  EXPECT_EQ(steps[13].count, 12);
  EXPECT_EQ(steps[14].count, 3);
  EXPECT_EQ(steps[18].kind, Kind::kClose);
  EXPECT_EQ(steps[19].kind, Kind::kController);
  EXPECT_EQ(steps[19].count, 74);
  EXPECT_EQ(steps[19].data, 127);
  EXPECT_EQ(steps[20].text, "Warm Pad 2");
  EXPECT_EQ(steps[21].count, 27);
  EXPECT_EQ(steps[22].kind, Kind::kName);
}

TEST(EditorScript, NamesTheLineOfAMistake) {
  const char* bad[] = {
      "hover 1 2",         // unknown step
      "move 1",            // missing coordinate
      "move 1 2 3",        // extra word
      "click 1 2 middle",  // no such button
      "drag 0 0 10 10 0",  // no moves
      "shift left",
      "wait -1",
      "wait x",
      "screenshot",
      "set Cutoff",      // no value
      "set Cutoff=1.5",  // out of range
      "instance 4",      // instances 0..3
      "open now",
      "cc 128 0",  // controllers 0..127
      "cc 1",      // no value
      "type",      // nothing to type
      "key tab",   // enter or escape only
  };
  for (const char* line : bad) {
    std::string error;
    EXPECT_TRUE(parse(std::string("open\n") + line + "\n", &error).empty()) << line;
    EXPECT_EQ(error.rfind("script line 2: ", 0), 0u) << line << " -> " << error;
  }
}

}  // namespace
}  // namespace vrnhost
