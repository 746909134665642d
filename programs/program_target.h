// What the program and bank loaders change: the operations of the plug-in instance that a file
// or chunk drives, gathered in one interface so that the loaders are plain functions over byte
// spans, testable and fuzzable without an instance.
//
// The instance implements it with its own host operations (program switching, renaming,
// parameter writes and the set-program bracket); tests and fuzz targets use small fakes.
// Threads: whichever thread calls the loader; see the instance for which threads may load.
#pragma once

namespace ziv {

class ProgramTarget {
 public:
  virtual ~ProgramTarget() = default;

  // Number of parameters the target stores per program (108 for the instance).
  virtual int parameterCount() const = 0;
  virtual int currentProgramIndex() const = 0;
  // Makes `index` current (clamped to the bank) and writes its stored values to the sound.
  virtual void selectProgram(int index) = 0;
  // Renames the current program; the target keeps at most 24 characters.
  virtual void renameProgram(const char* name) = 0;
  // Sets a parameter of the current program from a normalised value; indices outside
  // 0..parameterCount()-1 are ignored.
  virtual void loadValue(int index, float value) = 0;
  // The format version under which values are being written (converts older programs).
  virtual int loadVersion() = 0;
  virtual void setLoadVersion(int version) = 0;
  // The host's set-program bracket: beginSetProgram / endSetProgram.
  virtual void beginProgramLoad() = 0;
  virtual void endProgramLoad() = 0;
};

}  // namespace ziv
