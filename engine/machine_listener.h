// The interface through which the engine reports every parameter change to its owner, so that
// the owner (the plug-in instance) can mirror values in its current program and tell the host.
#pragma once

namespace ziv {

class MachineListener {
 public:
  virtual ~MachineListener() = default;
  // Called on the thread that set the value, after it is stored.
  virtual void onParameterChanged(int index, float value, bool fromEditor) = 0;
};

}  // namespace ziv
