#include "tools/host/editor_session.h"

#include <windows.h>

#include <array>
#include <cstdio>
#include <memory>
#include <ostream>

#include "tools/host/plugin_driver.h"
#include "tools/host/render_session.h"
#include "tools/host/thread_cpu_clock.h"
#include "tools/host/window_capture.h"

namespace vrnhost {
namespace {

using Kind = EditorStep::Kind;

constexpr wchar_t kFrameClass[] = L"vrnhost editor frame";
constexpr DWORD kFrameStyle = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN;
constexpr int kTickMs = 50;
constexpr int kSampleRate = 44100;
constexpr int kBlockSize = 512;
constexpr int kScreenshotSettleTicks = 1;
constexpr int kControllerStatus = 0xB0;  // control change, channel 1

struct Instance {
  std::unique_ptr<PluginDriver> driver;
  HWND frame = nullptr;   // the host's top-level window holding the editor
  HWND editor = nullptr;  // the plug-in's window inside it
};

// The frame windows are plain windows of the host's own class.
void registerFrameClass() {
  WNDCLASSW frameClass{};
  frameClass.lpfnWndProc = DefWindowProcW;
  frameClass.hInstance = GetModuleHandleW(nullptr);
  frameClass.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
  frameClass.hbrBackground = reinterpret_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
  frameClass.lpszClassName = kFrameClass;
  RegisterClassW(&frameClass);
}

LPARAM pointParam(int x, int y) {
  return MAKELPARAM(static_cast<WORD>(static_cast<SHORT>(x)), static_cast<WORD>(static_cast<SHORT>(y)));
}

class EditorSession {
 public:
  EditorSession(const std::string& pluginPath, std::ostream& out) : pluginPath_(pluginPath), out_(out) {}
  ~EditorSession() {
    for (Instance& instance : instances_) {
      closeEditor(instance);
      destroy(instance);
    }
  }

  bool run(const std::vector<EditorStep>& steps, std::string& error) {
    registerFrameClass();
    for (const EditorStep& step : steps) {
      std::string reason;
      if (!perform(step, reason)) {
        error = "script line " + std::to_string(step.line) + ": " + reason;
        return false;
      }
      printCallbacks();
    }
    const double frames = timerFrames_ > 0 ? timerFrames_ : 1;
    out_ << "frames " << timerFrames_ << " wall " << frameWallSeconds_ * 1000.0 / frames << " cpu "
         << waitCpuSeconds_ * 1000.0 / frames << '\n';
    return true;
  }

 private:
  bool perform(const EditorStep& step, std::string& error) {
    if (step.kind == Kind::kInstance) {
      current_ = step.count;
      out_ << "instance " << current_ << '\n';
      return ensureInstance(error);
    }
    if (!ensureInstance(error)) return false;
    Instance& instance = instances_[current_];
    PluginDriver& driver = *instance.driver;
    switch (step.kind) {
      case Kind::kOpen:
        return open(instance, error);
      case Kind::kClose:
        closeEditor(instance);
        out_ << "close\n";
        return true;
      case Kind::kRect: {
        vst2::ERect rect{};
        if (!driver.editorRect(rect)) {
          out_ << "rect none\n";
        } else {
          out_ << "rect " << rect.top << ' ' << rect.left << ' ' << rect.bottom << ' ' << rect.right << '\n';
        }
        return true;
      }
      case Kind::kWait: {
        // Thread CPU time is counted in scheduler ticks: only the total over a wait is meaningful.
        const double cpuStart = threadCpuSeconds();
        pump(step.count * kTickMs);
        waitCpuSeconds_ += threadCpuSeconds() - cpuStart;
        out_ << "wait " << step.count << '\n';
        return true;
      }
      case Kind::kScreenshot:
        return screenshot(instance, step.text, error);
      case Kind::kParams:
        printParameters(driver);
        return true;
      case Kind::kSet:
        return set(driver, step, error);
      case Kind::kProgram:
        driver.setProgram(step.count);
        out_ << "program " << step.count << '\n';
        return true;
      case Kind::kDestroy:
        destroy(instance);
        out_ << "destroy " << current_ << '\n';
        return true;
      case Kind::kController:
        controller(driver, step.count, step.data);
        out_ << "cc " << step.count << ' ' << step.data << '\n';
        return true;
      case Kind::kType:
        for (const char c : step.text) typeCharacter(static_cast<unsigned char>(c));
        out_ << "type " << step.text << '\n';
        return true;
      case Kind::kKey:
        typeCharacter(static_cast<unsigned>(step.count));
        out_ << "key " << step.count << '\n';
        return true;
      case Kind::kName:
        out_ << "name " << driver.currentProgram() << ' ' << driver.currentProgramName() << '\n';
        return true;
      default:
        return mouse(instance, step, error);
    }
  }

  bool ensureInstance(std::string& error) {
    Instance& instance = instances_[current_];
    if (instance.driver) return true;
    auto driver = std::make_unique<PluginDriver>();
    if (!driver->load(pluginPath_, error)) return false;
    driver->open(kSampleRate, kBlockSize);
    driver->start();
    driver->recordCallbacks(true);
    instance.driver = std::move(driver);
    return true;
  }

  bool open(Instance& instance, std::string& error) {
    PluginDriver& driver = *instance.driver;
    if (!driver.hasEditor()) {
      error = "the plug-in has no editor";
      return false;
    }
    closeEditor(instance);
    vst2::ERect rect{};
    if (!driver.editorRect(rect)) {
      error = "the plug-in gives no editor rectangle";
      return false;
    }
    RECT outer{0, 0, rect.right - rect.left, rect.bottom - rect.top};
    AdjustWindowRectEx(&outer, kFrameStyle, FALSE, 0);
    instance.frame =
        CreateWindowExW(0, kFrameClass, L"Vrn ZIV", kFrameStyle, 0, 0, outer.right - outer.left,
                        outer.bottom - outer.top, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    ShowWindow(instance.frame, SW_SHOWNOACTIVATE);
    if (instance.frame == nullptr || !driver.openEditor(instance.frame)) {
      error = "the editor did not open";
      return false;
    }
    instance.editor = GetWindow(instance.frame, GW_CHILD);
    pump(0);
    RECT client{};
    GetClientRect(instance.editor, &client);
    out_ << "open " << client.right << ' ' << client.bottom << '\n';
    return true;
  }

  // effEditClose, then the frame window goes, as a host closes an editor.
  void closeEditor(Instance& instance) {
    if (instance.frame == nullptr) return;
    if (instance.driver) instance.driver->closeEditor();
    DestroyWindow(instance.frame);
    instance.frame = nullptr;
    instance.editor = nullptr;
    pump(0);
  }

  // effClose, with the editor open or not; the frame window goes afterwards.
  void destroy(Instance& instance) {
    instance.driver.reset();
    closeEditor(instance);
  }

  bool mouse(Instance& instance, const EditorStep& step, std::string& error) {
    if (instance.editor == nullptr) {
      error = "the editor is not open";
      return false;
    }
    const char* word = "move";
    switch (step.kind) {
      case Kind::kMove:
        post(instance, WM_MOUSEMOVE, step.x, step.y);
        break;
      case Kind::kPress:
        word = "press";
        button(instance, step.button, true);
        break;
      case Kind::kRelease:
        word = "release";
        button(instance, step.button, false);
        break;
      case Kind::kClick:
        word = "click";
        post(instance, WM_MOUSEMOVE, step.x, step.y);
        button(instance, step.button, true);
        button(instance, step.button, false);
        break;
      case Kind::kDoubleClick:
        // What Windows sends for a double-click on a CS_DBLCLKS window.
        word = "double";
        post(instance, WM_MOUSEMOVE, step.x, step.y);
        button(instance, step.button, true);
        button(instance, step.button, false);
        held_[step.button] = true;
        post(instance, step.button == EditorStep::kLeft ? WM_LBUTTONDBLCLK : WM_RBUTTONDBLCLK, x_, y_);
        button(instance, step.button, false);
        break;
      case Kind::kDrag:
        word = "drag";
        post(instance, WM_MOUSEMOVE, step.x, step.y);
        button(instance, EditorStep::kLeft, true);
        for (int i = 1; i <= step.count; ++i) {
          post(instance, WM_MOUSEMOVE, step.x + (step.x1 - step.x) * i / step.count,
               step.y + (step.y1 - step.y) * i / step.count);
        }
        button(instance, EditorStep::kLeft, false);
        break;
      case Kind::kShift:
        word = "shift";
        shift_ = step.count != 0;
        break;
      case Kind::kWheel: {
        word = "wheel";
        // The wheel's position is in screen coordinates.
        POINT screen{x_, y_};
        ClientToScreen(instance.editor, &screen);
        PostMessageW(instance.editor, WM_MOUSEWHEEL, MAKEWPARAM(keyFlags(), static_cast<WORD>(step.count)),
                     pointParam(screen.x, screen.y));
        pump(0);
        break;
      }
      default:
        error = "not a mouse step";
        return false;
    }
    out_ << "mouse " << word << ' ' << x_ << ' ' << y_ << " capture "
         << (GetCapture() == instance.editor ? 1 : 0) << '\n';
    return true;
  }

  WORD keyFlags() const {
    return static_cast<WORD>((held_[EditorStep::kLeft] ? MK_LBUTTON : 0) |
                             (held_[EditorStep::kRight] ? MK_RBUTTON : 0) | (shift_ ? MK_SHIFT : 0));
  }

  // A controller message at the start of one audio block, as a host's MIDI input delivers it.
  void controller(PluginDriver& driver, int number, int value) {
    vst2::VstMidiEvent event{};
    event.type = vst2::kVstMidiType;
    event.byteSize = sizeof event;
    event.midiData[0] = static_cast<char>(kControllerStatus);
    event.midiData[1] = static_cast<char>(number);
    event.midiData[2] = static_cast<char>(value);
    driver.sendEvents({event});
    driver.processReplacing(kBlockSize);
    pump(0);
  }

  // A typed character, posted to the window that has the keyboard focus (an editor's text field).
  void typeCharacter(unsigned code) {
    HWND focus = GetFocus();
    if (focus != nullptr) PostMessageW(focus, WM_CHAR, code, 1);
    pump(0);
  }

  // Posts a mouse message at (x, y) and lets the loop dispatch it.
  void post(Instance& instance, UINT message, int x, int y) {
    x_ = x;
    y_ = y;
    PostMessageW(instance.editor, message, keyFlags(), pointParam(x, y));
    pump(0);
  }

  void button(Instance& instance, int which, bool down) {
    held_[which] = down;
    const bool left = which == EditorStep::kLeft;
    post(instance, down ? (left ? WM_LBUTTONDOWN : WM_RBUTTONDOWN) : (left ? WM_LBUTTONUP : WM_RBUTTONUP), x_,
         y_);
  }

  // Dispatches messages until the queue is empty and `milliseconds` have passed, timing the
  // editors' timer frames.
  void pump(int milliseconds) {
    const ULONGLONG deadline = GetTickCount64() + static_cast<ULONGLONG>(milliseconds);
    for (;;) {
      MSG message;
      while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) dispatch(message);
      const ULONGLONG now = GetTickCount64();
      // Hosts also give open editors idle calls from their own user-interface timer.
      if (now >= lastIdle_ + kTickMs) {
        lastIdle_ = now;
        for (Instance& instance : instances_) {
          if (instance.driver && instance.editor != nullptr) instance.driver->editorIdle();
        }
      }
      if (now >= deadline) return;
      MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(deadline - now), QS_ALLINPUT);
    }
  }

  void dispatch(const MSG& message) {
    if (message.message != WM_TIMER || !isEditorWindow(message.hwnd)) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
      return;
    }
    LARGE_INTEGER frequency, start, end;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    DispatchMessageW(&message);
    QueryPerformanceCounter(&end);
    frameWallSeconds_ +=
        static_cast<double>(end.QuadPart - start.QuadPart) / static_cast<double>(frequency.QuadPart);
    ++timerFrames_;
  }

  bool isEditorWindow(HWND window) const {
    for (const Instance& instance : instances_) {
      if (window != nullptr && window == instance.editor) return true;
    }
    return false;
  }

  bool screenshot(Instance& instance, const std::string& path, std::string& error) {
    if (instance.editor == nullptr) {
      error = "the editor is not open";
      return false;
    }
    // The last frame's dirty area reaches the screen at the next paint.
    pump(kScreenshotSettleTicks * kTickMs);
    UpdateWindow(instance.editor);
    int width = 0, height = 0;
    if (!saveWindowPng(instance.editor, path, width, height, error)) return false;
    out_ << "screenshot " << path << ' ' << width << ' ' << height << '\n';
    return true;
  }

  void printParameters(PluginDriver& driver) {
    for (int i = 0; i < driver.parameterCount(); ++i) {
      char value[32];
      std::snprintf(value, sizeof(value), "%.6f", driver.parameterValue(i));
      out_ << "param " << i << ' ' << value << ' ' << driver.parameterName(i) << " = "
           << driver.parameterDisplay(i) << '\n';
    }
  }

  bool set(PluginDriver& driver, const EditorStep& step, std::string& error) {
    std::vector<std::string> names;
    for (int i = 0; i < driver.parameterCount(); ++i) names.push_back(driver.parameterName(i));
    const int index = findParameter(step.text, names);
    if (index < 0) {
      error = "unknown parameter '" + step.text + "'";
      return false;
    }
    driver.setParameter(index, step.value);
    out_ << "set " << index << ' ' << step.value << '\n';
    return true;
  }

  void printCallbacks() {
    for (Instance& instance : instances_) {
      if (!instance.driver) continue;
      for (const HostCallbackRecord& record : instance.driver->takeCallbackRecords()) {
        switch (record.opcode) {
          case vst2::audioMasterAutomate:
            out_ << "callback automate " << record.index << ' ' << record.value << '\n';
            break;
          case vst2::audioMasterBeginEdit:
            out_ << "callback beginEdit " << record.index << '\n';
            break;
          case vst2::audioMasterEndEdit:
            out_ << "callback endEdit " << record.index << '\n';
            break;
          default:
            out_ << "callback updateDisplay\n";
            break;
        }
      }
    }
  }

  std::string pluginPath_;
  std::ostream& out_;
  std::array<Instance, EditorStep::kMaxInstances> instances_;
  int current_ = 0;
  int x_ = 0, y_ = 0;
  bool held_[2] = {false, false};
  bool shift_ = false;
  ULONGLONG lastIdle_ = 0;
  int timerFrames_ = 0;
  double frameWallSeconds_ = 0.0;
  double waitCpuSeconds_ = 0.0;
};

}  // namespace

bool runEditorScript(const std::string& pluginPath, const std::vector<EditorStep>& steps, std::ostream& out,
                     std::string& error) {
  EditorSession session(pluginPath, out);
  return session.run(steps, error);
}

}  // namespace vrnhost
