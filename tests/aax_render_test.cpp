// The AAX render call in VST 2.4 terms (transport into the time record, packets into event lists,
// then rendering) and the AAX view over the instance's editor.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "plugin/vst_test.h"
#include "sdk/aax/aax_adapter.h"
#include "sdk/aax/editor_view.h"
#include "sdk/aax/render_block.h"

namespace ziv::aax {
namespace {

// The host's MIDI packet record, as the render callback receives it.
struct Packet {
  std::uint32_t mTimestamp;
  std::uint32_t mLength;
  unsigned char mData[4];
  std::uint8_t mIsImmediate;
};

// Records the VST 2.4 calls a render makes, in order.
class RecordingInstance : public vst2::AudioEffectX {
 public:
  RecordingInstance() : AudioEffectX(nullptr, 1, 0) {}
  vst2::VstInt32 processEvents(vst2::VstEvents* events) override {
    calls.push_back('E');
    listSizes.push_back(events->numEvents);
    for (int i = 0; i < events->numEvents; ++i) {
      received.push_back(*reinterpret_cast<vst2::VstMidiEvent*>(events->events[i]));
    }
    return 0;
  }
  void processReplacing(float** inputs, float** outputs, vst2::VstInt32 frames) override {
    calls.push_back('R');
    sameBuffers = inputs == outputs;
    renderedFrames = frames;
    outputsSilentOnEntry = std::all_of(outputs[0], outputs[0] + frames, [](float x) { return x == 0.0f; }) &&
                           std::all_of(outputs[1], outputs[1] + frames, [](float x) { return x == 0.0f; });
  }

  std::vector<char> calls;
  std::vector<int> listSizes;
  std::vector<vst2::VstMidiEvent> received;
  bool sameBuffers = false;
  bool outputsSilentOnEntry = false;
  int renderedFrames = 0;
};

struct Block {
  explicit Block(int frames) : left(frames, 9.0f), right(frames, 9.0f) {}
  std::vector<float> left, right;
  float* outputs[2] = {left.data(), right.data()};
};

TEST(AAXRender, BlockWithoutPacketsStillDeliversAnEmptyListBeforeRendering) {
  RecordingInstance instance;
  vst2::VstTimeInfo time{};
  Block block(64);
  renderBlock<Packet>(&instance, &time, block.outputs, 64, TransportState{}, nullptr, 0);
  EXPECT_EQ(instance.calls, (std::vector<char>{'E', 'R'}));
  EXPECT_EQ(instance.listSizes, std::vector<int>{0});
  EXPECT_TRUE(instance.sameBuffers);
  EXPECT_TRUE(instance.outputsSilentOnEntry);
  EXPECT_EQ(instance.renderedFrames, 64);
}

TEST(AAXRender, PacketsBecomeMidiEventsInOrderAcrossAsManyListsAsNeeded) {
  RecordingInstance instance;
  const int count = MidiEventList::kCapacity + 44;
  std::vector<Packet> packets(count);
  for (int i = 0; i < count; ++i) {
    packets[i] = Packet{
        static_cast<std::uint32_t>(i % 128), 3, {0x90, static_cast<unsigned char>(i % 128), 0x7f, 0}, 0};
  }
  Block block(128);
  renderBlock(&instance, nullptr, block.outputs, 128, TransportState{}, packets.data(), count);
  EXPECT_EQ(instance.listSizes, (std::vector<int>{MidiEventList::kCapacity, 44}));
  EXPECT_EQ(instance.calls.back(), 'R');
  ASSERT_EQ(instance.received.size(), static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    const vst2::VstMidiEvent& event = instance.received[i];
    EXPECT_EQ(event.type, vst2::kVstMidiType);
    EXPECT_EQ(event.byteSize, 32);
    EXPECT_EQ(event.flags, 0);
    EXPECT_EQ(event.deltaFrames, i % 128);
    EXPECT_EQ(static_cast<unsigned char>(event.midiData[0]), 0x90);
    EXPECT_EQ(event.midiData[1], i % 128);
    EXPECT_EQ(event.midiData[2], 0x7f);
  }
}

TEST(AAXRender, TransportFillsTheTimeRecord) {
  RecordingInstance instance;
  vst2::VstTimeInfo time{};
  time.sampleRate = 44100.0;
  Block block(32);
  TransportState transport;
  transport.hasTicks = transport.hasTempo = true;
  transport.ticks = 3 * 960000 + 480000;
  transport.tempo = 128.0;
  renderBlock<Packet>(&instance, &time, block.outputs, 32, transport, nullptr, 0);
  EXPECT_DOUBLE_EQ(time.ppqPos, 3.5);
  EXPECT_DOUBLE_EQ(time.tempo, 128.0);
  EXPECT_EQ(time.flags & (vst2::kVstPpqPosValid | vst2::kVstTempoValid),
            vst2::kVstPpqPosValid | vst2::kVstTempoValid);
  EXPECT_EQ(time.sampleRate, 44100.0);
  EXPECT_DOUBLE_EQ(ticksToQuarterNotes(-960000), -1.0);

  // A block whose transport could not answer marks the values unknown.
  renderBlock<Packet>(&instance, &time, block.outputs, 32, TransportState{}, nullptr, 0);
  EXPECT_EQ(time.flags & (vst2::kVstPpqPosValid | vst2::kVstTempoValid), 0);
}

TEST(AAXRender, ContextWithoutInstanceOrBuffersIsSilentAndSafe) {
  vst2::VstTimeInfo time{};
  Block block(16);
  renderBlock<Packet>(nullptr, &time, block.outputs, 16, TransportState{}, nullptr, 0);
  EXPECT_TRUE(std::all_of(block.left.begin(), block.left.end(), [](float x) { return x == 0.0f; }));
  EXPECT_TRUE(std::all_of(block.right.begin(), block.right.end(), [](float x) { return x == 0.0f; }));

  RecordingInstance instance;
  float* oneChannel[2] = {block.left.data(), nullptr};
  renderBlock<Packet>(&instance, &time, oneChannel, 16, TransportState{}, nullptr, 0);
  renderBlock<Packet>(&instance, &time, block.outputs, 0, TransportState{}, nullptr, 0);
  renderBlock<Packet>(&instance, &time, block.outputs, -5, TransportState{}, nullptr, 0);
  renderBlock<Packet>(&instance, &time, nullptr, 16, TransportState{}, nullptr, 0);
  EXPECT_TRUE(instance.calls.empty());
}

struct NoParameters : ParameterHost {
  void setNormalised(const char*, double) override {}
  void touch(const char*) override {}
  void release(const char*) override {}
};

TEST(AAXRender, NoteThroughTheWrappedInstanceSounds) {
  NoParameters parameters;
  Adapter adapter(parameters);
  ASSERT_TRUE(adapter.createInstance(44100.0));
  const Packet noteOn{10, 3, {0x90, 60, 100, 0}, 0};
  float peak = 0.0f;
  for (int i = 0; i < 40; ++i) {
    Block block(256);
    renderBlock(adapter.instance(), &adapter.timeInfo(), block.outputs, 256, TransportState{}, &noteOn,
                i == 0 ? 1u : 0u);
    for (float x : block.left) {
      ASSERT_TRUE(std::isfinite(x));
      peak = std::max(peak, std::fabs(x));
    }
  }
  EXPECT_GT(peak, 0.01f);
}

// An editor that records what the view does with it.
class RecordingEditor : public vst2::AEffEditor {
 public:
  bool getRect(vst2::ERect** rect) override {
    *rect = &rect_;
    return true;
  }
  bool open(void* parent) override {
    ++opens;
    parentSeen = parent;
    return opens <= allowedOpens;
  }
  void close() override { ++closes; }

  int opens = 0, closes = 0, allowedOpens = 100;
  void* parentSeen = nullptr;

 private:
  vst2::ERect rect_{10, 20, 10 + 472, 20 + 1040};
};

TEST(AAXView, OpensTheEditorOnlyInAWin32Window) {
  RecordingEditor editor;
  EditorView view;
  int window = 0;
  float width = 0.0f, height = 0.0f;
  EXPECT_EQ(view.size(&width, &height), kNotInitialized);

  view.open(1, &window, &editor);  // another kind of container: no view, no error
  EXPECT_EQ(editor.opens, 0);
  EXPECT_EQ(view.size(&width, &height), kNotInitialized);
  view.open(kViewContainerWin32, &window, nullptr);  // an instance without an editor
  EXPECT_FALSE(view.isOpen());

  view.open(kViewContainerWin32, &window, &editor);
  EXPECT_EQ(editor.parentSeen, &window);
  ASSERT_EQ(view.size(&width, &height), kSuccess);
  EXPECT_EQ(width, 1040.0f);
  EXPECT_EQ(height, 472.0f);

  view.close();
  view.close();
  EXPECT_EQ(editor.closes, 1);
  EXPECT_EQ(view.size(&width, &height), kNotInitialized);

  // Views come and go many times; reopening closes the open one first.
  view.open(kViewContainerWin32, &window, &editor);
  view.open(kViewContainerWin32, &window, &editor);
  EXPECT_EQ(editor.closes, 2);
  EXPECT_TRUE(view.isOpen());
  view.close();
  EXPECT_EQ(editor.closes, 3);
}

TEST(AAXView, EditorThatCannotOpenGivesNoView) {
  RecordingEditor editor;
  editor.allowedOpens = 0;
  EditorView view;
  int window = 0;
  view.open(kViewContainerWin32, &window, &editor);
  EXPECT_FALSE(view.isOpen());
  view.close();
  EXPECT_EQ(editor.closes, 0);
}

}  // namespace
}  // namespace ziv::aax
