// What the library tells an AAX host when it is scanned: GetEffectDescriptions run against a
// collection that records every call, and the module's exported ACF entry points.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "AAX_ICollection.h"
#include "AAX_IComponentDescriptor.h"
#include "AAX_IEffectDescriptor.h"
#include "AAX_IPropertyMap.h"
#include "sdk/aax/glue/aax_gui.h"
#include "sdk/aax/glue/aax_parameters.h"
#include "sdk/aax/glue/aax_render.h"

AAX_Result GetEffectDescriptions(AAX_ICollection* collection);

namespace ziv {
namespace {

using Transcript = std::vector<std::string>;

std::string call(const char* name, std::initializer_list<long long> numbers, const char* text = nullptr) {
  std::string line = name;
  for (long long number : numbers) line += " " + std::to_string(number);
  if (text != nullptr) line += std::string(" '") + text + "'";
  return line;
}

class RecordingProperties : public AAX_IPropertyMap {
 public:
  AAX_CBoolean GetProperty(AAX_EProperty, AAX_CPropertyValue*) const override { return false; }
  AAX_CBoolean GetPointerProperty(AAX_EProperty, const void**) const override { return false; }
  AAX_Result AddProperty(AAX_EProperty property, AAX_CPropertyValue value) override {
    values[property] = value;
    return AAX_SUCCESS;
  }
  AAX_Result AddPointerProperty(AAX_EProperty, const void*) override { return AAX_SUCCESS; }
  AAX_Result AddPointerProperty(AAX_EProperty, const char*) override { return AAX_SUCCESS; }
  AAX_Result RemoveProperty(AAX_EProperty) override { return AAX_SUCCESS; }
  AAX_Result AddPropertyWithIDArray(AAX_EProperty, const AAX_SPlugInIdentifierTriad*, uint32_t) override {
    return AAX_SUCCESS;
  }
  AAX_CBoolean GetPropertyWithIDArray(AAX_EProperty, const AAX_SPlugInIdentifierTriad**,
                                      uint32_t*) const override {
    return false;
  }
  IACFUnknown* GetIUnknown() override { return nullptr; }

  std::map<int, int> values;
};

class RecordingComponent : public AAX_IComponentDescriptor {
 public:
  explicit RecordingComponent(Transcript& transcript) : log(transcript) {}
  AAX_Result Clear() override { return AAX_SUCCESS; }
  AAX_Result AddAudioIn(AAX_CFieldIndex field) override { return add(call("AddAudioIn", {field})); }
  AAX_Result AddAudioOut(AAX_CFieldIndex field) override { return add(call("AddAudioOut", {field})); }
  AAX_Result AddAudioBufferLength(AAX_CFieldIndex field) override {
    return add(call("AddAudioBufferLength", {field}));
  }
  AAX_Result AddSampleRate(AAX_CFieldIndex field) override { return add(call("AddSampleRate", {field})); }
  AAX_Result AddClock(AAX_CFieldIndex field) override { return add(call("AddClock", {field})); }
  AAX_Result AddSideChainIn(AAX_CFieldIndex field) override { return add(call("AddSideChainIn", {field})); }
  AAX_Result AddDataInPort(AAX_CFieldIndex field, uint32_t, AAX_EDataInPortType) override {
    return add(call("AddDataInPort", {field}));
  }
  AAX_Result AddAuxOutputStem(AAX_CFieldIndex field, int32_t, const char[]) override {
    return add(call("AddAuxOutputStem", {field}));
  }
  AAX_Result AddPrivateData(AAX_CFieldIndex field, int32_t size, uint32_t options) override {
    return add(call("AddPrivateData", {field, size, options}));
  }
  AAX_Result AddTemporaryData(AAX_CFieldIndex field, uint32_t) override {
    return add(call("AddTemporaryData", {field}));
  }
  AAX_Result AddDmaInstance(AAX_CFieldIndex field, AAX_IDma::EMode) override {
    return add(call("AddDmaInstance", {field}));
  }
  AAX_Result AddMeters(AAX_CFieldIndex field, const AAX_CTypeID*, const uint32_t) override {
    return add(call("AddMeters", {field}));
  }
  AAX_Result AddMIDINode(AAX_CFieldIndex field, AAX_EMIDINodeType type, const char name[],
                         uint32_t mask) override {
    return add(call("AddMIDINode", {field, type, mask}, name));
  }
  AAX_Result AddReservedField(AAX_CFieldIndex field, uint32_t) override {
    return add(call("AddReservedField", {field}));
  }
  AAX_IPropertyMap* NewPropertyMap() const override { return &properties; }
  AAX_IPropertyMap* DuplicatePropertyMap(AAX_IPropertyMap*) const override { return nullptr; }
  AAX_Result AddProcessProc_Native(AAX_CProcessProc proc, AAX_IPropertyMap* map, AAX_CInstanceInitProc,
                                   AAX_CBackgroundProc, AAX_CSelector*) override {
    nativeProc = proc;
    nativeProperties = map;
    return add("AddProcessProc_Native");
  }
  AAX_Result AddProcessProc_TI(const char[], const char[], AAX_IPropertyMap*, const char[], const char[],
                               AAX_CSelector*) override {
    return add("AddProcessProc_TI");
  }
  AAX_Result AddProcessProc(AAX_IPropertyMap*, AAX_CSelector*, int32_t) override {
    return add("AddProcessProc");
  }

  Transcript& log;
  mutable RecordingProperties properties;
  AAX_CProcessProc nativeProc = nullptr;
  AAX_IPropertyMap* nativeProperties = nullptr;

 private:
  AAX_Result add(const std::string& line) {
    log.push_back(line);
    return AAX_SUCCESS;
  }
};

class RecordingEffect : public AAX_IEffectDescriptor {
 public:
  explicit RecordingEffect(Transcript& transcript) : log(transcript), component(transcript) {}
  AAX_IComponentDescriptor* NewComponentDescriptor() override { return &component; }
  AAX_Result AddComponent(AAX_IComponentDescriptor* added) override {
    return add(added == &component ? "AddComponent" : "AddComponent ?");
  }
  AAX_Result AddName(const char* name) override { return add(call("AddName", {}, name)); }
  AAX_Result AddCategory(uint32_t category) override { return add(call("AddCategory", {category})); }
  AAX_Result SetRole(uint32_t) override { return add("SetRole"); }
  AAX_Result AddCategoryBypassParameter(uint32_t, AAX_CParamID) override {
    return add("AddCategoryBypassParameter");
  }
  AAX_Result AddProcPtr(void* proc, AAX_CProcPtrID id) override {
    procs[id] = proc;
    return add(call("AddProcPtr", {id}));
  }
  AAX_IPropertyMap* NewPropertyMap() override { return nullptr; }
  AAX_Result SetProperties(AAX_IPropertyMap*) override { return add("SetProperties"); }
  AAX_Result AddResourceInfo(AAX_EResourceType, const char*) override { return add("AddResourceInfo"); }
  AAX_Result AddMeterDescription(AAX_CTypeID, const char*, AAX_IPropertyMap*) override {
    return add("AddMeterDescription");
  }
  AAX_Result AddControlMIDINode(AAX_CTypeID, AAX_EMIDINodeType, const char[], uint32_t) override {
    return add("AddControlMIDINode");
  }

  Transcript& log;
  RecordingComponent component;
  std::map<int, void*> procs;

 private:
  AAX_Result add(const std::string& line) {
    log.push_back(line);
    return AAX_SUCCESS;
  }
};

class RecordingCollection : public AAX_ICollection {
 public:
  AAX_IEffectDescriptor* NewDescriptor() override { return &effect; }
  AAX_Result AddEffect(const char* id, AAX_IEffectDescriptor* added) override {
    return add(call(added == &effect ? "AddEffect" : "AddEffect ?", {}, id));
  }
  AAX_Result SetManufacturerName(const char* name) override {
    return add(call("SetManufacturerName", {}, name));
  }
  AAX_Result AddPackageName(const char* name) override { return add(call("AddPackageName", {}, name)); }
  AAX_Result SetPackageVersion(uint32_t version) override {
    return add(call("SetPackageVersion", {version}));
  }
  AAX_IPropertyMap* NewPropertyMap() override { return nullptr; }
  AAX_Result SetProperties(AAX_IPropertyMap*) override { return add("SetProperties"); }
  AAX_Result GetHostVersion(uint32_t* version) const override {
    *version = 0;
    return AAX_SUCCESS;
  }
  AAX_IDescriptionHost* DescriptionHost() override { return nullptr; }
  const AAX_IDescriptionHost* DescriptionHost() const override { return nullptr; }
  IACFDefinition* HostDefinition() const override { return nullptr; }

  Transcript log;
  RecordingEffect effect{log};

 private:
  AAX_Result add(const std::string& line) {
    log.push_back(line);
    return AAX_SUCCESS;
  }
};

TEST(AAXDescription, OneSoftwareGeneratorWithItsContextPropertiesAndObjects) {
  RecordingCollection collection;
  ASSERT_EQ(GetEffectDescriptions(&collection), AAX_SUCCESS);
  const Transcript expected = {
      "AddName 'Vrn ZIV'",
      "AddCategory 2048",
      "AddAudioOut 0",
      "AddAudioBufferLength 1",
      "AddClock 2",
      "AddMIDINode 4 3 65535 'Transport'",
      "AddPrivateData 6 8 0",
      "AddPrivateData 7 8 0",
      "AddMIDINode 3 0 65535 'Vrn ZIV MIDI In'",
      "AddPrivateData 5 8 2",
      "AddProcessProc_Native",
      "AddComponent",
      "AddProcPtr 0",
      "AddProcPtr 1",
      "AddEffect 'com.quorvantis.vrnziv'",
      "SetManufacturerName 'Quorvantis'",
      "AddPackageName 'Vrn ZIV'",
      "SetPackageVersion 131084",
  };
  EXPECT_EQ(collection.log, expected);

  const RecordingComponent& component = collection.effect.component;
  EXPECT_EQ(component.nativeProc, reinterpret_cast<AAX_CProcessProc>(&renderAAX));
  EXPECT_EQ(component.nativeProperties, &component.properties);
  const std::map<int, int> properties = {{11, 'V' << 24 | 'r' << 16 | 'n' << 8 | ' '},
                                         {12, 'V' << 24 | 'r' << 16 | 'n' << 8 | '1'},
                                         {13, 'V' << 24 | 'r' << 16 | 'n' << 8 | '1'},
                                         {51, 0x10002},
                                         {52, 0x10002},
                                         {60, 0},
                                         {151, 0},
                                         {300, 1},
                                         {301, 1},
                                         {302, 0},
                                         {303, 1},
                                         {304, 0}};
  EXPECT_EQ(component.properties.values, properties);
  EXPECT_EQ(collection.effect.procs.at(kAAX_ProcPtrID_Create_EffectParameters),
            reinterpret_cast<void*>(&AAXParameters::Create));
  EXPECT_EQ(collection.effect.procs.at(kAAX_ProcPtrID_Create_EffectGUI),
            reinterpret_cast<void*>(&AAXGui::Create));
  EXPECT_EQ(GetEffectDescriptions(nullptr), AAX_ERROR_NULL_ARGUMENT);
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
