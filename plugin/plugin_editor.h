// How the instance knows its editor: a VST 2.4 editor that can be told to redraw. The instance
// owns it (through the SDK base) but never needs the window layer's types, so the plug-in
// library does not depend on the editor's; the module's entry point creates the editor where
// there is one (Windows).
#pragma once

#include "sdk/vst2/audio_effect.h"

namespace ziv {

class PluginEditor : public vst2::AEffEditor {
 public:
  // The next frame redraws the whole editor (after a program or name change). Any thread.
  virtual void requestRedraw() = 0;
};

}  // namespace ziv
