// The AAX view: the wrapped instance's own editor (the same one a VST 2.4 host shows) opened in
// the Win32 window the AAX host provides. The editor draws and refreshes itself, so the view needs
// no idle or timer calls; other container kinds get no view.
//
// Threads: the host's user-interface thread. No exception leaves any of these operations.
#pragma once

#include "AAX_CEffectGUI.h"
#include "sdk/aax/editor_view.h"

namespace ziv {

class AAXGui : public AAX_CEffectGUI {
 public:
  // The creation procedure the description registers.
  static AAX_IEffectGUI* AAX_CALLBACK Create();

  // Closes a view the host left open: the base's teardown could no longer reach this class.
  ~AAXGui() override;

  // The editor's size (1040 x 472); AAX_ERROR_NOT_INITIALIZED while there is no view.
  AAX_Result GetViewSize(AAX_Point* viewSize) const override;

 protected:
  // The editor object already exists with the instance: there is nothing to build up front.
  void CreateViewContents() override {}
  void CreateViewContainer() override;
  void DeleteViewContainer() override;

 private:
  aax::EditorView view_;
};

}  // namespace ziv
