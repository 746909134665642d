// The AAX plug-in's glue, built against the real AAX library and driven as an AAX host drives
// it: through the SDK's own base classes, with a host object that answers the automation
// delegate's requests the way a host does (every value request comes back as an update); and the
// built module's exported entry points.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "AAX_CString.h"
#include "AAX_IACFAutomationDelegate.h"
#include "AAX_IACFViewContainer.h"
#include "AAX_UIDs.h"
#include "AAX_VTransport.h"
#include "acfextras.h"
#include "plugin/parameter_display.h"
#include "sdk/aax/glue/aax_gui.h"
#include "sdk/aax/glue/aax_parameters.h"
#include "sdk/aax/glue/aax_render.h"

namespace ziv {
namespace {

constexpr AAX_CTypeID kVrnd = aax::fourCharId('v', 'r', 'n', 'd');
constexpr AAX_CTypeID kForeign = aax::fourCharId('e', 'l', 's', 'e');

// The host side of one plug-in instance: its automation delegate, and the route by which the
// view finds the parameters object.
class FakeHost : public AAX_IACFAutomationDelegate {
 public:
  ACFMETHOD(QueryInterface)(const acfIID& iid, void** out) override {
    if (iid == IID_IAAXAutomationDelegateV1) {
      *out = static_cast<AAX_IACFAutomationDelegate*>(this);
      return ACF_OK;
    }
    if (iid == IID_IAAXEffectParametersV1 && parameters != nullptr)
      return parameters->QueryInterface(iid, out);
    *out = nullptr;
    return ACF_E_NOINTERFACE;
  }
  ACFMETHOD_(acfUInt32, AddRef)() override { return 1; }
  ACFMETHOD_(acfUInt32, Release)() override { return 1; }

  AAX_Result RegisterParameter(AAX_CParamID) override { return AAX_SUCCESS; }
  AAX_Result UnregisterParameter(AAX_CParamID) override { return AAX_SUCCESS; }
  AAX_Result PostSetValueRequest(AAX_CParamID id, double value) const override {
    return parameters->UpdateParameterNormalizedValue(id, value, AAX_eUpdateSource_Unspecified);
  }
  AAX_Result PostCurrentValue(AAX_CParamID, double) const override { return AAX_SUCCESS; }
  AAX_Result PostTouchRequest(AAX_CParamID id) override {
    touched.emplace_back(id);
    return AAX_SUCCESS;
  }
  AAX_Result PostReleaseRequest(AAX_CParamID id) override {
    released.emplace_back(id);
    return AAX_SUCCESS;
  }
  AAX_Result GetTouchState(AAX_CParamID, AAX_CBoolean* touchedNow) override {
    *touchedNow = false;
    return AAX_SUCCESS;
  }

  AAXParameters* parameters = nullptr;
  std::vector<std::string> touched, released;
};

// A view container of a given kind.
class FakeContainer : public AAX_IACFViewContainer {
 public:
  FakeContainer(int32_t type, void* window) : type_(type), window_(window) {}
  ACFMETHOD(QueryInterface)(const acfIID& iid, void** out) override {
    *out = iid == IID_IAAXViewContainerV1 ? static_cast<AAX_IACFViewContainer*>(this) : nullptr;
    return *out != nullptr ? ACF_OK : ACF_E_NOINTERFACE;
  }
  ACFMETHOD_(acfUInt32, AddRef)() override { return 1; }
  ACFMETHOD_(acfUInt32, Release)() override { return 1; }

  int32_t GetType() override { return type_; }
  void* GetPtr() override { return window_; }
  AAX_Result GetModifiers(uint32_t* modifiers) override {
    *modifiers = 0;
    return AAX_SUCCESS;
  }
  AAX_Result SetViewSize(AAX_Point&) override { return AAX_SUCCESS; }
  AAX_Result HandleParameterMouseDown(AAX_CParamID, uint32_t) override { return AAX_SUCCESS; }
  AAX_Result HandleParameterMouseDrag(AAX_CParamID, uint32_t) override { return AAX_SUCCESS; }
  AAX_Result HandleParameterMouseUp(AAX_CParamID, uint32_t) override { return AAX_SUCCESS; }

 private:
  int32_t type_;
  void* window_;
};

// The transport at a fixed place: the SDK's wrapper with no host behind it, answering two reads.
class FixedTransport : public AAX_VTransport {
 public:
  FixedTransport() : AAX_VTransport(nullptr) {}
  AAX_Result GetCurrentTempo(double* tempo) const override {
    *tempo = 96.0;
    return AAX_SUCCESS;
  }
  AAX_Result GetCurrentTickPosition(int64_t* ticks) const override {
    *ticks = 2 * 960000 + 240000;
    return AAX_SUCCESS;
  }
};

class FakeMidiNode : public AAX_IMIDINode {
 public:
  AAX_CMidiStream* GetNodeBuffer() override { return &stream; }
  AAX_Result PostMIDIPacket(AAX_CMidiPacket*) override { return AAX_SUCCESS; }
  AAX_ITransport* GetTransport() override { return &transport; }

  AAX_CMidiStream stream{0, nullptr};
  FixedTransport transport;
};

class AAXHost : public ::testing::Test {
 protected:
  void SetUp() override {
    // The host holds one reference on each object it creates; the view holds another on the
    // parameters object while it exists.
    parameters.reset(static_cast<AAXParameters*>(AAXParameters::Create()));
    ASSERT_NE(parameters, nullptr);
    parameters->AddRef();
    host.parameters = parameters.get();
    ASSERT_EQ(parameters->Initialize(&host), AAX_SUCCESS);
    ASSERT_NE(parameters->instance(), nullptr);
  }
  void TearDown() override {
    if (parameters) parameters->Uninitialize();
  }

  double aaxValue(const char* id) {
    double value = -1.0;
    EXPECT_EQ(parameters->GetParameterNormalizedValue(id, &value), AAX_SUCCESS);
    return value;
  }

  FakeHost host;
  struct Release {
    void operator()(IACFUnknown* object) const { object->Release(); }
  };
  std::unique_ptr<AAXParameters, Release> parameters;
};

TEST_F(AAXHost, EveryInstanceParameterIsAnAAXParameterNamedByItsIndex) {
  VstTest& instance = *parameters->instance();
  int32_t count = 0;
  ASSERT_EQ(parameters->GetNumberOfParameters(&count), AAX_SUCCESS);
  ASSERT_EQ(count, kHostParamCount);
  for (int32_t index = 0; index < count; ++index) {
    AAX_CString id;
    ASSERT_EQ(parameters->GetParameterIDFromIndex(index, &id), AAX_SUCCESS);
    EXPECT_EQ(std::string(id.Get()), std::to_string(index));
    AAX_CString name;
    ASSERT_EQ(parameters->GetParameterName(id.Get(), &name), AAX_SUCCESS);
    char expected[kParamTextCapacity] = "";
    instance.getParameterName(index, expected);
    EXPECT_STREQ(name.Get(), expected);
    EXPECT_FLOAT_EQ(aaxValue(id.Get()), instance.getParameter(index));
    AAX_CBoolean automatable = false;
    ASSERT_EQ(parameters->GetParameterIsAutomatable(id.Get(), &automatable), AAX_SUCCESS);
    EXPECT_TRUE(automatable);
  }

  // Text both ways: the instance's display text for a value, a plain number back.
  AAX_CString text;
  ASSERT_EQ(parameters->GetParameterStringFromValue("40", 0.5, &text, 32), AAX_SUCCESS);
  char expected[kParamTextCapacity];
  instance.engine().valueDisplay(40, 0.5f, expected, sizeof expected);
  EXPECT_STREQ(text.Get(), expected);
  double parsed = -1.0;
  ASSERT_EQ(parameters->GetParameterValueFromString("3", &parsed, AAX_CString("0.25")), AAX_SUCCESS);
  EXPECT_DOUBLE_EQ(parsed, 0.25);
}

TEST_F(AAXHost, HostChangesEditorEditsAndRelativeUpdatesMeetInTheInstance) {
  VstTest& instance = *parameters->instance();
  ASSERT_EQ(parameters->SetParameterNormalizedValue("20", 0.3), AAX_SUCCESS);
  EXPECT_FLOAT_EQ(instance.getParameter(20), 0.3f);
  EXPECT_FLOAT_EQ(aaxValue("20"), 0.3f);
  ASSERT_EQ(parameters->UpdateParameterNormalizedValue("21", 0.7, AAX_eUpdateSource_Unspecified),
            AAX_SUCCESS);
  EXPECT_FLOAT_EQ(instance.getParameter(21), 0.7f);
  EXPECT_EQ(parameters->UpdateParameterNormalizedValue("nope", 0.7, AAX_eUpdateSource_Unspecified),
            AAX_ERROR_INVALID_PARAMETER_ID);

  // An edit in the instance's editor: gesture and value reach the AAX parameter.
  host.touched.clear();
  host.released.clear();
  instance.beginEdit(7);
  instance.engine().setParameter(7, 0.25f, true);
  instance.endEdit(7);
  EXPECT_FLOAT_EQ(aaxValue("7"), 0.25f);
  ASSERT_FALSE(host.touched.empty());
  EXPECT_EQ(host.touched.front(), "7");
  EXPECT_EQ(host.released.back(), "7");

  instance.setParameter(12, 0.5f);
  ASSERT_EQ(parameters->UpdateParameterNormalizedRelative("12", 0.125), AAX_SUCCESS);
  EXPECT_FLOAT_EQ(instance.getParameter(12), 0.625f);
  EXPECT_FLOAT_EQ(aaxValue("12"), 0.625f);
  EXPECT_EQ(parameters->UpdateParameterNormalizedRelative("x", 0.1), AAX_ERROR_INVALID_PARAMETER_ID);
}

TEST_F(AAXHost, StateChunkRoundTripsTheBank) {
  int32_t chunks = 0;
  ASSERT_EQ(parameters->GetNumberOfChunks(&chunks), AAX_SUCCESS);
  EXPECT_EQ(chunks, 1);
  AAX_CTypeID id = 0;
  ASSERT_EQ(parameters->GetChunkIDFromIndex(0, &id), AAX_SUCCESS);
  EXPECT_EQ(id, kVrnd);
  EXPECT_EQ(parameters->GetChunkIDFromIndex(1, &id), AAX_ERROR_INVALID_CHUNK_INDEX);
  uint32_t size = 0;
  EXPECT_EQ(parameters->GetChunkSize(kForeign, &size), AAX_ERROR_INVALID_CHUNK_ID);

  ASSERT_EQ(parameters->GetChunkSize(kVrnd, &size), AAX_SUCCESS);
  ASSERT_GT(size, 0u);
  std::vector<char> storage(sizeof(AAX_SPlugInChunk) + size);
  AAX_SPlugInChunk* chunk = reinterpret_cast<AAX_SPlugInChunk*>(storage.data());
  EXPECT_EQ(parameters->GetChunk(kForeign, chunk), AAX_ERROR_INVALID_CHUNK_ID);
  ASSERT_EQ(parameters->GetChunk(kVrnd, chunk), AAX_SUCCESS);
  chunk->fChunkID = kVrnd;
  EXPECT_EQ(chunk->fVersion, 1033);
  EXPECT_EQ(static_cast<uint32_t>(chunk->fSize), size);
  EXPECT_STREQ(reinterpret_cast<const char*>(chunk->fName), "Vrn Data Chunk");
  Bytes bank;
  parameters->instance()->makeBankChunk(bank);
  EXPECT_EQ(std::memcmp(bank.data(), chunk->fData, size), 0);

  AAX_CBoolean equal = false;
  ASSERT_EQ(parameters->CompareActiveChunk(chunk, &equal), AAX_SUCCESS);
  EXPECT_TRUE(equal);
  ASSERT_EQ(parameters->SetParameterNormalizedValue("30", 1.0 - aaxValue("30")), AAX_SUCCESS);
  ASSERT_EQ(parameters->CompareActiveChunk(chunk, &equal), AAX_SUCCESS);
  EXPECT_FALSE(equal);
  ASSERT_EQ(parameters->SetChunk(kVrnd, chunk), AAX_SUCCESS);
  ASSERT_EQ(parameters->CompareActiveChunk(chunk, &equal), AAX_SUCCESS);
  EXPECT_TRUE(equal);

  chunk->fChunkID = kForeign;
  equal = false;
  ASSERT_EQ(parameters->CompareActiveChunk(chunk, &equal), AAX_SUCCESS);
  EXPECT_TRUE(equal);
  EXPECT_EQ(parameters->SetChunk(kForeign, chunk), AAX_ERROR_INVALID_CHUNK_ID);
  EXPECT_EQ(parameters->SetChunk(kVrnd, nullptr), AAX_SUCCESS);
}

TEST_F(AAXHost, PrivateDataAndRenderCallbackDriveTheInstance) {
  // The host resets the private-data blocks, then points the context at them.
  VstTest* instanceBlock = nullptr;
  vst2::VstTimeInfo* timeBlock = nullptr;
  void* spareBlock = reinterpret_cast<void*>(1);
  ASSERT_EQ(parameters->ResetFieldData(5, &instanceBlock, 8), AAX_SUCCESS);
  ASSERT_EQ(parameters->ResetFieldData(7, &timeBlock, 8), AAX_SUCCESS);
  ASSERT_EQ(parameters->ResetFieldData(6, &spareBlock, 8), AAX_SUCCESS);
  EXPECT_EQ(instanceBlock, parameters->instance());
  EXPECT_NE(timeBlock, nullptr);
  EXPECT_EQ(spareBlock, nullptr);
  EXPECT_EQ(parameters->ResetFieldData(5, &instanceBlock, 4), -20600);
  EXPECT_EQ(parameters->ResetFieldData(7, nullptr, 8), -20600);

  constexpr int32_t kFrames = 256;
  std::vector<float> left(kFrames, 5.0f), right(kFrames, 5.0f), idleLeft(kFrames, 5.0f),
      idleRight(kFrames, 5.0f);
  float* outputs[2] = {left.data(), right.data()};
  float* idleOutputs[2] = {idleLeft.data(), idleRight.data()};
  int32_t frames = kFrames;
  AAX_CTimestamp clock = 0;
  FakeMidiNode midiIn, transport;
  AAX_CMidiPacket noteOn{16, 3, {0x90, 57, 110, 0}, false};
  VstTest* noInstance = nullptr;
  AAXRenderContext live{outputs,    &frames,        &clock,      &midiIn,
                        &transport, &instanceBlock, &spareBlock, &timeBlock};
  AAXRenderContext idle{idleOutputs, &frames,     &clock,      &midiIn,
                        &transport,  &noInstance, &spareBlock, &timeBlock};
  AAXRenderContext* contexts[2] = {&live, &idle};

  float peak = 0.0f;
  for (int block = 0; block < 20; ++block) {
    midiIn.stream = block == 0 ? AAX_CMidiStream{1, &noteOn} : AAX_CMidiStream{0, nullptr};
    renderAAX(contexts, contexts + 2);
    for (int i = 0; i < kFrames; ++i) {
      ASSERT_TRUE(std::isfinite(left[i]) && std::isfinite(right[i]));
      peak = std::max(peak, std::fabs(left[i]));
      ASSERT_EQ(idleLeft[i], 0.0f);
      ASSERT_EQ(idleRight[i], 0.0f);
    }
  }
  EXPECT_GT(peak, 0.01f);
  EXPECT_DOUBLE_EQ(timeBlock->ppqPos, 2.25);
  EXPECT_DOUBLE_EQ(timeBlock->tempo, 96.0);

  // Absurd contexts are survived: no frame count, a null context.
  AAXRenderContext broken{outputs, nullptr, nullptr, nullptr, nullptr, &instanceBlock, nullptr, nullptr};
  AAXRenderContext* odd[2] = {&broken, nullptr};
  renderAAX(odd, odd + 2);
}

TEST_F(AAXHost, ViewOpensOnlyInAWin32WindowAndAnswersItsSize) {
  std::unique_ptr<AAXGui, Release> gui(static_cast<AAXGui*>(AAXGui::Create()));
  ASSERT_NE(gui, nullptr);
  gui->AddRef();
  ASSERT_EQ(gui->Initialize(&host), AAX_SUCCESS);
  AAX_Point size(0.0f, 0.0f);
  EXPECT_EQ(gui->GetViewSize(&size), AAX_ERROR_NOT_INITIALIZED);

  int window = 0;
  FakeContainer cocoa(AAX_eViewContainer_Type_NSView, &window);
  ASSERT_EQ(gui->SetViewContainer(&cocoa), AAX_SUCCESS);
  EXPECT_EQ(gui->GetViewSize(&size), AAX_ERROR_NOT_INITIALIZED);
  ASSERT_EQ(gui->SetViewContainer(nullptr), AAX_SUCCESS);
  ASSERT_EQ(gui->SetViewContainer(nullptr), AAX_SUCCESS);

  // A Win32 window: the view shows the instance's editor when it has one (the Linux build has
  // none, so here the view stays empty).
  FakeContainer win32(AAX_eViewContainer_Type_HWND, &window);
  ASSERT_EQ(gui->SetViewContainer(&win32), AAX_SUCCESS);
  if (parameters->instance()->getEditor() != nullptr) {
    ASSERT_EQ(gui->GetViewSize(&size), AAX_SUCCESS);
    EXPECT_EQ(size.horz, 1040.0f);
    EXPECT_EQ(size.vert, 472.0f);
  } else {
    EXPECT_EQ(gui->GetViewSize(&size), AAX_ERROR_NOT_INITIALIZED);
  }
  // The host tears the view down with its container still set.
  gui.reset();
}

TEST(AAXModule, ExportsTheACFEntryPointsOnly) {
  void* module = dlopen(ZIV_AAX_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(module, nullptr) << dlerror();
  for (const char* name : {"ACFRegisterPlugin", "ACFRegisterComponent", "ACFGetClassFactory",
                           "ACFCanUnloadNow", "ACFStartup", "ACFShutdown", "ACFGetSDKVersion"}) {
    EXPECT_NE(dlsym(module, name), nullptr) << name;
  }
  EXPECT_EQ(dlsym(module, "VSTPluginMain"), nullptr);  // the wrapped VST 2.4 entry stays inside
  using GetVersion = int32_t (*)(uint64_t*);
  const auto getVersion = reinterpret_cast<GetVersion>(dlsym(module, "ACFGetSDKVersion"));
  ASSERT_NE(getVersion, nullptr);
  uint64_t version = 0;
  EXPECT_EQ(getVersion(&version), 0);
  EXPECT_GT(version >> 32, 0u);
  dlclose(module);
}

}  // namespace
}  // namespace ziv
