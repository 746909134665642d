// The script of the host's editor mode: what a user does to a plug-in's editor, one step per line,
// replayed by the Windows host through real window messages. Lines (blank ones and "#" comments
// are skipped; coordinates are editor pixels, a button is "left" or "right", default left):
//
//   open                      effEditGetRect, then effEditOpen in a top-level window of that size
//   close                     effEditClose; the top-level window goes with it
//   rect                      print the editor rectangle: "rect TOP LEFT BOTTOM RIGHT"
//   move X Y                  mouse move (carrying the held buttons and Shift)
//   press [BUTTON]            button down at the pointer
//   release [BUTTON]          button up at the pointer
//   click X Y [BUTTON]        move, press, release
//   double X Y [BUTTON]       move, then the system's double-click sequence: down, up, double, up
//   drag X0 Y0 X1 Y1 [STEPS]  move to X0 Y0, press left, STEPS moves (default 8) to X1 Y1, release
//   shift down|up             Shift held or not in the following mouse messages
//   wheel DELTA               mouse wheel over the editor (multiples of 120 per notch)
//   wait TICKS                pump messages for TICKS editor timer ticks of 50 ms
//   screenshot FILE           write the editor window's pixels as a PNG file
//   params                    print every parameter: "param INDEX VALUE NAME = DISPLAY"
//   set P=V                   host automation: parameter P (name or index) to V (0..1)
//   program N                 the host selects program N
//   instance N                make instance N (0..3) current, creating it on first use
//   destroy                   effClose of the current instance, whether its editor is open or not
//   cc N V                    MIDI controller N (0..127) with value V (0..127) through
//                             effProcessEvents, followed by one audio block
//   type TEXT                 TEXT typed, one character message each, to the window with the focus
//   key enter|escape          the key typed to the window with the focus
//   name                      print the current program: "name INDEX NAME"
//
// Threads: any; parsing only.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace vrnhost {

struct EditorStep {
  enum class Kind {
    kOpen,
    kClose,
    kRect,
    kMove,
    kPress,
    kRelease,
    kClick,
    kDoubleClick,
    kDrag,
    kShift,
    kWheel,
    kWait,
    kScreenshot,
    kParams,
    kSet,
    kProgram,
    kInstance,
    kDestroy,
    kController,
    kType,
    kKey,
    kName
  };
  static constexpr int kLeft = 0;
  static constexpr int kRight = 1;
  static constexpr int kDefaultDragSteps = 8;
  static constexpr int kMaxInstances = 4;

  Kind kind = Kind::kOpen;
  int x = 0, y = 0;    // move, click, double, the drag's start
  int x1 = 0, y1 = 0;  // the drag's end
  int button = kLeft;
  // wait: ticks; drag: steps; wheel: delta; program, instance, cc: the number; shift: 1 down;
  // key: the character code
  int count = 0;
  int data = 0;      // cc: the value
  std::string text;  // screenshot: the file; set: the parameter's name or index; type: the text
  float value = 0.0f;
  int line = 0;  // in the script, for messages
};

// Parses a whole script; on failure names the line and what is wrong with it.
bool parseEditorScript(std::istream& in, std::vector<EditorStep>& steps, std::string& error);

}  // namespace vrnhost
