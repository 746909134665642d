#include "sdk/aax/glue/aax_gui.h"

#include "AAX_IViewContainer.h"
#include "sdk/aax/glue/aax_parameters.h"
#include "sdk/aax/guarded.h"

namespace ziv {

AAX_IEffectGUI* AAX_CALLBACK AAXGui::Create() {
  try {
    return new AAXGui;
  } catch (...) {
    return nullptr;
  }
}

AAXGui::~AAXGui() {
  aax::guarded([&] {
    view_.close();
    return AAX_CEffectGUI::Uninitialize();
  });
}

void AAXGui::CreateViewContainer() {
  aax::guarded([&] {
    const AAXParameters* parameters = dynamic_cast<const AAXParameters*>(GetEffectParameters());
    VstTest* instance = parameters != nullptr ? parameters->instance() : nullptr;
    view_.open(GetViewContainerType(), GetViewContainerPtr(),
               instance != nullptr ? instance->getEditor() : nullptr);
    return aax::kSuccess;
  });
}

void AAXGui::DeleteViewContainer() {
  aax::guarded([&] {
    view_.close();
    return aax::kSuccess;
  });
}

AAX_Result AAXGui::GetViewSize(AAX_Point* viewSize) const {
  return aax::guarded([&] {
    float width = 0.0f, height = 0.0f;
    const aax::Result result = view_.size(&width, &height);
    if (result == aax::kSuccess && viewSize != nullptr) {
      viewSize->horz = width;
      viewSize->vert = height;
    }
    return result;
  });
}

}  // namespace ziv
