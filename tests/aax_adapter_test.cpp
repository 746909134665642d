// The AAX adapter's SDK-free decisions, driven as the AAX glue drives them: identifiers, the
// wrapped instance's host callback, private-data fields, relative and host parameter changes,
// the state chunk and value texts.
#include "sdk/aax/aax_adapter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "plugin/parameter_display.h"
#include "sdk/aax/parameter_id.h"
#include "sdk/aax/value_text.h"

namespace ziv::aax {
namespace {

struct RecordingParameters : ParameterHost {
  std::vector<std::pair<std::string, double>> values;
  std::vector<std::string> touched, released;

  void setNormalised(const char* id, double value) override { values.emplace_back(id, value); }
  void touch(const char* id) override { touched.emplace_back(id); }
  void release(const char* id) override { released.emplace_back(id); }
};

class AdapterTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(adapter.createInstance(48000.0)); }

  vst2::VstIntPtr callHost(vst2::VstInt32 opcode, vst2::VstInt32 index = 0, void* ptr = nullptr,
                           float opt = 0.0f) {
    return Adapter::hostCallback(adapter.instance()->getAeffect(), opcode, index, 0, ptr, opt);
  }

  RecordingParameters parameters;
  Adapter adapter{parameters};
};

TEST(AAXParameterId, DecimalIndexBothWays) {
  EXPECT_STREQ(parameterId(0).text, "0");
  EXPECT_STREQ(parameterId(107).text, "107");
  EXPECT_STREQ(parameterId(INT32_MIN).text, "-2147483648");
  EXPECT_EQ(parseParameterId("12"), 12);
  EXPECT_EQ(parseParameterId("-3"), -3);
  EXPECT_EQ(parseParameterId("2147483647"), INT32_MAX);
  for (const char* bad :
       {"x", "", " 12", "12x", "1.5", "2147483648", "-2147483649", "99999999999999999999"}) {
    EXPECT_FALSE(parseParameterId(bad).has_value()) << bad;
  }
  EXPECT_FALSE(parseParameterId(nullptr).has_value());
}

TEST_F(AdapterTest, InstanceStartsWithTheHostsRateAndEveryParameter) {
  EXPECT_EQ(adapter.parameterCount(), kHostParamCount);
  EXPECT_EQ(adapter.timeInfo().sampleRate, 48000.0);
  EXPECT_EQ(adapter.instance()->getAeffect()->resvd1, reinterpret_cast<vst2::VstIntPtr>(&adapter));

  // Re-creation replaces the instance; an unknown rate leaves the time record at 1.
  ASSERT_TRUE(adapter.createInstance(0.0));
  EXPECT_EQ(adapter.timeInfo().sampleRate, Adapter::kUnknownSampleRate);
  EXPECT_EQ(adapter.parameterCount(), kHostParamCount);
}

TEST_F(AdapterTest, HostCallbackAnswersAsAnAAXHost) {
  EXPECT_EQ(callHost(vst2::audioMasterVersion), 2400);
  char product[vst2::kVstMaxProductStrLen] = "?";
  EXPECT_EQ(callHost(vst2::audioMasterGetProductString, 0, product), 0);
  EXPECT_STREQ(product, "AAX");
  EXPECT_EQ(callHost(vst2::audioMasterGetTime), reinterpret_cast<vst2::VstIntPtr>(&adapter.timeInfo()));
  EXPECT_EQ(callHost(vst2::audioMasterCanDo), 0);

  // Editor gestures and edits reach the AAX parameter named by the index.
  adapter.instance()->beginEdit(7);
  adapter.instance()->engine().setParameter(7, 0.25f, true);
  adapter.instance()->endEdit(7);
  EXPECT_EQ(parameters.touched, std::vector<std::string>{"7"});
  EXPECT_EQ(parameters.released, std::vector<std::string>{"7"});
  ASSERT_EQ(parameters.values.size(), 1u);
  EXPECT_EQ(parameters.values[0].first, "7");
  EXPECT_FLOAT_EQ(parameters.values[0].second, 0.25f);

  // Without the back pointer only the version and product questions have answers.
  vst2::AEffect orphan{};
  EXPECT_EQ(Adapter::hostCallback(&orphan, vst2::audioMasterGetTime, 0, 0, nullptr, 0.0f), 0);
  EXPECT_EQ(Adapter::hostCallback(nullptr, vst2::audioMasterAutomate, 3, 0, nullptr, 0.5f), 0);
  EXPECT_EQ(Adapter::hostCallback(nullptr, vst2::audioMasterVersion, 0, 0, nullptr, 0.0f), 2400);
  EXPECT_TRUE(parameters.values.size() == 1u);
}

TEST_F(AdapterTest, PrivateFieldsHoldTheInstanceAndTheTimeRecord) {
  void* pointer = nullptr;
  ASSERT_EQ(adapter.resetFieldData(kFieldInstance, &pointer, kPrivateDataSize), kSuccess);
  EXPECT_EQ(pointer, adapter.instance());
  ASSERT_EQ(adapter.resetFieldData(kFieldTimeInfo, &pointer, kPrivateDataSize), kSuccess);
  EXPECT_EQ(pointer, &adapter.timeInfo());

  EXPECT_EQ(adapter.resetFieldData(kFieldInstance, &pointer, 4), kInvalidFieldIndex);
  EXPECT_EQ(adapter.resetFieldData(kFieldTimeInfo, nullptr, kPrivateDataSize), kInvalidFieldIndex);
  EXPECT_FALSE(adapter.resetFieldData(kFieldSpare, &pointer, kPrivateDataSize).has_value());
  EXPECT_FALSE(adapter.resetFieldData(kFieldAudioOut, &pointer, kPrivateDataSize).has_value());
}

TEST_F(AdapterTest, RelativeAndHostChangesReachTheInstance) {
  VstTest& instance = *adapter.instance();
  instance.setParameter(12, 0.5f);
  ASSERT_EQ(adapter.updateRelative("12", 0.125), kSuccess);
  EXPECT_FLOAT_EQ(instance.getParameter(12), 0.625f);
  ASSERT_EQ(parameters.values.size(), 1u);
  EXPECT_EQ(parameters.values[0].first, "12");
  EXPECT_FLOAT_EQ(parameters.values[0].second, 0.625f);

  // The value stays normalised; nonsense moves nothing.
  EXPECT_EQ(adapter.updateRelative("12", 5.0), kSuccess);
  EXPECT_FLOAT_EQ(instance.getParameter(12), 1.0f);
  EXPECT_EQ(adapter.updateRelative("12", std::nan("")), kSuccess);
  EXPECT_FLOAT_EQ(instance.getParameter(12), 1.0f);
  EXPECT_EQ(adapter.updateRelative("x", 0.1), kInvalidParameterId);
  EXPECT_EQ(adapter.updateRelative("99999999999", 0.1), kInvalidParameterId);
  EXPECT_EQ(adapter.updateRelative("500", 0.1), kSuccess);  // no such parameter: the instance ignores it

  adapter.applyHostValue("3", 0.75);
  EXPECT_FLOAT_EQ(instance.getParameter(3), 0.75f);
  adapter.applyHostValue("3", -2.0);
  EXPECT_FLOAT_EQ(instance.getParameter(3), 0.0f);
  adapter.applyHostValue("x", 0.5);
  adapter.applyHostValue("3", INFINITY);
  EXPECT_FLOAT_EQ(instance.getParameter(3), 0.0f);
}

TEST_F(AdapterTest, StateChunkIsTheBankChunk) {
  StateChunk& chunk = adapter.chunk();
  VstTest& instance = *adapter.instance();
  TypeId id = 0;
  EXPECT_EQ(StateChunk::idFromIndex(0, &id), kSuccess);
  EXPECT_EQ(id, kChunkId);
  EXPECT_EQ(StateChunk::idFromIndex(1, &id), kInvalidChunkIndex);
  EXPECT_EQ(StateChunk::idFromIndex(-1, &id), kInvalidChunkIndex);

  const TypeId foreign = fourCharId('e', 'l', 's', 'e');
  std::uint32_t size = 0;
  ChunkBytes bytes;
  EXPECT_EQ(chunk.size(foreign, &instance, &size), kInvalidChunkId);
  EXPECT_EQ(chunk.bytes(foreign, &instance, &bytes), kInvalidChunkId);
  EXPECT_EQ(chunk.load(foreign, &instance, nullptr, 0), kInvalidChunkId);

  ASSERT_EQ(chunk.size(kChunkId, &instance, &size), kSuccess);
  ASSERT_EQ(chunk.bytes(kChunkId, &instance, &bytes), kSuccess);
  ASSERT_EQ(static_cast<std::uint32_t>(bytes.size), size);
  Bytes bank;
  instance.makeBankChunk(bank);
  ASSERT_EQ(bank.size(), size);
  EXPECT_EQ(std::memcmp(bank.data(), bytes.data, size), 0);
  const std::vector<std::uint8_t> saved(bytes.data, bytes.data + bytes.size);

  bool equal = false;
  EXPECT_EQ(chunk.compare(kChunkId, &instance, saved.data(), bytes.size, &equal), kSuccess);
  EXPECT_TRUE(equal);
  instance.setParameter(20, 1.0f - instance.getParameter(20));
  EXPECT_EQ(chunk.compare(kChunkId, &instance, saved.data(), bytes.size, &equal), kSuccess);
  EXPECT_FALSE(equal);
  EXPECT_EQ(chunk.compare(kChunkId, &instance, saved.data(), bytes.size - 1, &equal), kSuccess);
  EXPECT_FALSE(equal);
  equal = false;
  EXPECT_EQ(chunk.compare(foreign, &instance, nullptr, 0, &equal), kSuccess);
  EXPECT_TRUE(equal);

  // Loading the saved chunk restores the state it was taken from.
  EXPECT_EQ(chunk.load(kChunkId, &instance, saved.data(), bytes.size), kSuccess);
  EXPECT_EQ(chunk.compare(kChunkId, &instance, saved.data(), bytes.size, &equal), kSuccess);
  EXPECT_TRUE(equal);
  EXPECT_EQ(chunk.load(kChunkId, &instance, nullptr, -5), kSuccess);  // nothing to load: harmless

  // No instance (its creation failed): nothing to hand out or load.
  EXPECT_EQ(chunk.size(kChunkId, nullptr, &size), kNotInitialized);
  EXPECT_EQ(chunk.bytes(kChunkId, nullptr, &bytes), kNotInitialized);
  EXPECT_EQ(chunk.load(kChunkId, nullptr, saved.data(), bytes.size), kNotInitialized);
  EXPECT_EQ(chunk.compare(kChunkId, nullptr, saved.data(), bytes.size, &equal), kNotInitialized);

  char name[kChunkNameCapacity];
  std::memset(name, 'x', sizeof name);
  StateChunk::writeName(name, sizeof name);
  EXPECT_STREQ(name, "Vrn Data Chunk");
  EXPECT_EQ(name[sizeof name - 1], '\0');
  char tiny[4];
  StateChunk::writeName(tiny, sizeof tiny);
  EXPECT_STREQ(tiny, "Vrn");
}

// An instance whose state grows between the host's size and get requests.
class GrowingChunk : public vst2::AudioEffect {
 public:
  GrowingChunk() : AudioEffect(nullptr, 1, 0) {}
  void processReplacing(float**, float**, vst2::VstInt32) override {}
  vst2::VstInt32 getChunk(void** data, bool) override {
    *data = bytes.data();
    return static_cast<vst2::VstInt32>(bytes.size());
  }
  std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(16, 1);
};

TEST(AAXStateChunk, StateChangedAfterTheSizeRequestFailsTheGet) {
  GrowingChunk instance;
  StateChunk chunk;
  std::uint32_t size = 0;
  ChunkBytes bytes;
  ASSERT_EQ(chunk.size(kChunkId, &instance, &size), kSuccess);
  EXPECT_EQ(size, 16u);
  instance.bytes.push_back(2);
  EXPECT_EQ(chunk.bytes(kChunkId, &instance, &bytes), kIncorrectChunkSize);
  ASSERT_EQ(chunk.size(kChunkId, &instance, &size), kSuccess);
  EXPECT_EQ(chunk.bytes(kChunkId, &instance, &bytes), kSuccess);
  EXPECT_EQ(bytes.size, 17);
}

TEST_F(AdapterTest, ValuesMapIdenticallyAndShowTheDisplayText) {
  EXPECT_EQ(constrainNormalised(-0.5), 0.0f);
  EXPECT_EQ(constrainNormalised(0.25), 0.25f);
  EXPECT_EQ(constrainNormalised(1.0), 1.0f);
  EXPECT_EQ(constrainNormalised(7.0), 1.0f);
  EXPECT_EQ(constrainNormalised(std::nan("")), 0.0f);

  // The text for a value is what the instance displays once it holds that value.
  VstTest& instance = *adapter.instance();
  for (int index : {0, 12, 40, kHostParamCount - 1}) {
    for (float value : {0.0f, 0.3f, 1.0f}) {
      char preview[kParamTextCapacity];
      char shown[kParamTextCapacity];
      valueText(&instance, index, value, preview, sizeof preview);
      instance.setParameter(index, value);
      instance.getParameterDisplay(index, shown);
      EXPECT_STREQ(preview, shown) << index << " at " << value;
    }
  }
  char text[kParamTextCapacity] = "?";
  valueText(&instance, kHostParamCount + 50, 0.5f, text, sizeof text);
  EXPECT_STREQ(text, "");
  valueText(nullptr, 0, 0.5f, text, sizeof text);
  EXPECT_STREQ(text, "");

  EXPECT_FLOAT_EQ(parseValueText("0.25"), 0.25f);
  EXPECT_FLOAT_EQ(parseValueText("  -3.5 dB"), -3.5f);
  EXPECT_EQ(parseValueText("abc"), 0.0f);
  EXPECT_EQ(parseValueText(nullptr), 0.0f);
}

}  // namespace
}  // namespace ziv::aax
