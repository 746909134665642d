// The instance's side of its editor: the editor is reported to the host once attached, redrawn
// after program and name changes (once per set-program bracket), edits made in it reach the host
// as begin / automate / end gestures, and it goes before the rest of the instance.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "test_host.h"

namespace ziv::testing {
namespace {

// Counts redraw requests; on destruction asks the instance for its program through the SDK
// base, which answers as the instance only while the instance is still whole.
class RecordingEditor : public PluginEditor {
 public:
  RecordingEditor(vst2::AudioEffect& instance, int& redraws, int& programAtDestruction)
      : instance_(instance), redraws_(redraws), programAtDestruction_(programAtDestruction) {}
  ~RecordingEditor() override { programAtDestruction_ = instance_.getProgram(); }
  void requestRedraw() override { ++redraws_; }

 private:
  vst2::AudioEffect& instance_;
  int& redraws_;
  int& programAtDestruction_;
};

struct EditorHost {
  EditorHost() {
    host.plugin().attachEditor(
        std::make_unique<RecordingEditor>(host.plugin(), redraws, programAtDestruction));
  }
  int redraws = 0;
  int programAtDestruction = -1;
  TestHost host;
};

vst2::VstIntPtr dispatch(VstTest& plugin, vst2::VstInt32 opcode, vst2::VstIntPtr value = 0,
                         void* ptr = nullptr) {
  return plugin.dispatcher(opcode, 0, value, ptr, 0.0f);
}

TEST(InstanceEditor, WithoutAnEditorTheHostSeesNone) {
  TestHost host;
  EXPECT_EQ(host.plugin().getAeffect()->flags & vst2::effFlagsHasEditor, 0);
  vst2::ERect* rect = nullptr;
  EXPECT_EQ(dispatch(host.plugin(), vst2::effEditGetRect, 0, &rect), 0);
  EXPECT_EQ(dispatch(host.plugin(), vst2::effEditOpen, 0, &rect), 0);
  dispatch(host.plugin(), vst2::effEditClose);
  dispatch(host.plugin(), vst2::effEditIdle);
}

TEST(InstanceEditor, RedrawsAfterProgramAndNameChangesOncePerBracket) {
  EditorHost editor;
  VstTest& plugin = editor.host.plugin();
  EXPECT_NE(plugin.getAeffect()->flags & vst2::effFlagsHasEditor, 0);

  plugin.setProgram(3);
  EXPECT_EQ(editor.redraws, 1);
  char name[] = "Renamed";
  plugin.setProgramName(name);
  EXPECT_EQ(editor.redraws, 2);

  // A host's bracket (and a program file load) redraws once, at its end.
  plugin.beginSetProgram();
  plugin.setProgram(4);
  plugin.setProgramName(name);
  EXPECT_EQ(editor.redraws, 2);
  plugin.endSetProgram();
  EXPECT_EQ(editor.redraws, 3);

  // A MIDI program change on the audio thread asks too (the request is only a flag).
  editor.host.midi(0, 0xC0, 7, 0);
  editor.host.process(64);
  EXPECT_EQ(plugin.getProgram(), 7);
  EXPECT_EQ(editor.redraws, 4);
}

TEST(InstanceEditor, EditorGesturesReachTheHostInOrder) {
  EditorHost editor;
  VstTest& plugin = editor.host.plugin();
  HostRecord& record = editor.host.record();

  // The editor writes with the engine's editor flag, inside the instance's begin/end bracket.
  plugin.beginEdit(12);
  plugin.engine().setParameter(12, 0.25f, true);
  plugin.engine().setParameter(12, 0.5f, true);
  plugin.endEdit(12);
  const std::vector<HostCall>& calls = record.parameterCalls;
  ASSERT_EQ(calls.size(), 4u);
  EXPECT_EQ(calls[0].opcode, vst2::audioMasterBeginEdit);
  EXPECT_EQ(calls[1].opcode, vst2::audioMasterAutomate);
  EXPECT_FLOAT_EQ(calls[1].value, 0.25f);
  EXPECT_EQ(calls[2].opcode, vst2::audioMasterAutomate);
  EXPECT_FLOAT_EQ(calls[2].value, 0.5f);
  EXPECT_EQ(calls[3].opcode, vst2::audioMasterEndEdit);
  for (const HostCall& call : calls) EXPECT_EQ(call.index, 12);
  EXPECT_FLOAT_EQ(plugin.getParameter(12), 0.5f);
  EXPECT_FLOAT_EQ(plugin.program(plugin.getProgram()).values[12], 0.5f);

  // Host automation is not echoed back; no parameter (-1) brackets nothing.
  record.parameterCalls.clear();
  plugin.setParameter(12, 0.75f);
  plugin.beginEdit(-1);
  plugin.endEdit(-1);
  EXPECT_TRUE(record.parameterCalls.empty());
}

TEST(InstanceEditor, GoesBeforeTheRestOfTheInstance) {
  int redraws = 0;
  int programAtDestruction = -1;
  {
    TestHost host;
    host.plugin().attachEditor(
        std::make_unique<RecordingEditor>(host.plugin(), redraws, programAtDestruction));
    host.plugin().setProgram(5);
  }
  EXPECT_EQ(programAtDestruction, 5);
}

}  // namespace
}  // namespace ziv::testing
