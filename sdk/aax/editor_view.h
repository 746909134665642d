// The AAX view over the wrapped instance's own editor: when the host offers a Win32 window, the
// editor opens in it, exactly as in a VST 2.4 host's window; any other kind of container gets no
// view and no error. The editor object belongs to the instance and outlives every view.
//
// Threads: the host's user-interface thread only.
#pragma once

#include <cstdint>

#include "sdk/aax/aax_constants.h"
#include "sdk/vst2/audio_effect.h"

namespace ziv::aax {

class EditorView {
 public:
  // Opens `editor` (may be null: an instance without one) in `parent` when the container is a
  // Win32 window. A view already open is closed first.
  void open(std::int32_t containerType, void* parent, vst2::AEffEditor* editor);
  // Closes the view, if any; the editor object lives on with its instance.
  void close();
  bool isOpen() const { return editor_ != nullptr; }
  // The open editor's size in pixels; kNotInitialized while there is no view.
  Result size(float* width, float* height) const;

 private:
  vst2::AEffEditor* editor_ = nullptr;  // not owned
};

}  // namespace ziv::aax
