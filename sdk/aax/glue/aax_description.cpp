// The description the AAX host reads when it scans the library: one effect, "Vrn ZIV", a software
// generator with a stereo output, MIDI input and transport nodes, the private data the render
// callback needs, and the parameters and view objects' creation procedures. The SDK's ACF entry
// points (AAX_Exports.cpp) call GetEffectDescriptions.
#include "AAX_CHostServices.h"
#include "AAX_ICollection.h"
#include "AAX_IComponentDescriptor.h"
#include "AAX_IEffectDescriptor.h"
#include "AAX_IPropertyMap.h"
#include "AAX_Properties.h"
#include "sdk/aax/aax_constants.h"
#include "sdk/aax/glue/aax_gui.h"
#include "sdk/aax/glue/aax_parameters.h"
#include "sdk/aax/glue/aax_render.h"
#include "sdk/aax/guarded.h"

namespace ziv {
namespace {

static_assert(aax::kSuccess == AAX_SUCCESS);
static_assert(aax::kInvalidParameterId == AAX_ERROR_INVALID_PARAMETER_ID);
static_assert(aax::kInvalidChunkIndex == AAX_ERROR_INVALID_CHUNK_INDEX);
static_assert(aax::kInvalidChunkId == AAX_ERROR_INVALID_CHUNK_ID);
static_assert(aax::kIncorrectChunkSize == AAX_ERROR_INCORRECT_CHUNK_SIZE);
static_assert(aax::kNotInitialized == AAX_ERROR_NOT_INITIALIZED);
static_assert(aax::kUnknownException == AAX_ERROR_UNKNOWN_EXCEPTION);
static_assert(aax::kNullArgument == AAX_ERROR_NULL_ARGUMENT);
static_assert(aax::kInvalidFieldIndex == AAX_ERROR_PLUGIN_BEGIN);
static_assert(aax::kCategorySoftwareGenerator == AAX_ePlugInCategory_SWGenerators);
static_assert(aax::kViewContainerWin32 == AAX_eViewContainer_Type_HWND);
static_assert(aax::kMidiNodeLocalInput == AAX_eMIDINodeType_LocalInput);
static_assert(aax::kMidiNodeTransport == AAX_eMIDINodeType_Transport);
static_assert(aax::kPrivateDataExternal == AAX_ePrivateDataOptions_External);
static_assert(aax::kStemStereo == AAX_eStemFormat_Stereo);
static_assert(aax::kPropertyManufacturerId == AAX_eProperty_ManufacturerID);
static_assert(aax::kPropertyProductId == AAX_eProperty_ProductID);
static_assert(aax::kPropertyNativeId == AAX_eProperty_PlugInID_Native);
static_assert(aax::kPropertyInputStem == AAX_eProperty_InputStemFormat);
static_assert(aax::kPropertyOutputStem == AAX_eProperty_OutputStemFormat);
static_assert(aax::kPropertyCanBypass == AAX_eProperty_CanBypass);
static_assert(aax::kPropertyUsesClientGui == AAX_eProperty_UsesClientGUI);
static_assert(aax::kPropertyConstraintLocation == AAX_eProperty_Constraint_Location);
static_assert(aax::kPropertyConstraintTopology == AAX_eProperty_Constraint_Topology);
static_assert(aax::kPropertyConstraintNeverUnload == AAX_eProperty_Constraint_NeverUnload);
static_assert(aax::kPropertyConstraintNeverCache == AAX_eProperty_Constraint_NeverCache);
static_assert(aax::kPropertyConstraintMultiMono == AAX_eProperty_Constraint_MultiMonoSupport);

// Description failures go to the host's assertion log under the source name "aax".
void reportFailure(int line, const char* condition) {
  AAX_CHostServices::HandleAssertFailure("aax", line, condition, AAX_eAssertFlags_Log);
}

AAX_Result describeAlgorithm(AAX_IComponentDescriptor& component) {
  AAX_Result err = component.AddAudioOut(aax::kFieldAudioOut);
  if (err == AAX_SUCCESS) err = component.AddAudioBufferLength(aax::kFieldBufferLength);
  if (err == AAX_SUCCESS) err = component.AddClock(aax::kFieldClock);
  if (err == AAX_SUCCESS) {
    err = component.AddMIDINode(aax::kFieldTransport, AAX_eMIDINodeType_Transport, aax::kTransportName,
                                aax::kAllMidiChannels);
  }
  if (err == AAX_SUCCESS)
    err = component.AddPrivateData(aax::kFieldSpare, aax::kPrivateDataSize, aax::kPrivateDataDefault);
  if (err == AAX_SUCCESS)
    err = component.AddPrivateData(aax::kFieldTimeInfo, aax::kPrivateDataSize, aax::kPrivateDataDefault);
  if (err == AAX_SUCCESS) {
    err = component.AddMIDINode(aax::kFieldMidiIn, AAX_eMIDINodeType_LocalInput, aax::kMidiInName,
                                aax::kAllMidiChannels);
  }
  if (err == AAX_SUCCESS)
    err = component.AddPrivateData(aax::kFieldInstance, aax::kPrivateDataSize, aax::kPrivateDataExternal);
  if (err != AAX_SUCCESS) reportFailure(__LINE__, "err == AAX_SUCCESS");

  AAX_IPropertyMap* properties = component.NewPropertyMap();
  if (properties == nullptr) {
    reportFailure(__LINE__, "properties");
    return AAX_ERROR_NULL_OBJECT;
  }
  for (const aax::Property& property : aax::kRenderProperties) {
    properties->AddProperty(static_cast<AAX_EProperty>(property.id), property.value);
  }
  return component.AddProcessProc_Native(renderAAX, properties);
}

AAX_Result describeEffect(AAX_ICollection& collection) {
  AAX_IEffectDescriptor* effect = collection.NewDescriptor();
  if (effect == nullptr) return AAX_ERROR_NULL_OBJECT;
  effect->AddName(aax::kEffectName);
  effect->AddCategory(aax::kCategorySoftwareGenerator);

  AAX_IComponentDescriptor* component = effect->NewComponentDescriptor();
  if (component == nullptr) return AAX_ERROR_NULL_OBJECT;
  AAX_Result result = describeAlgorithm(*component);
  if (result != AAX_SUCCESS) return result;
  effect->AddComponent(component);
  effect->AddProcPtr(reinterpret_cast<void*>(&AAXParameters::Create), kAAX_ProcPtrID_Create_EffectParameters);
  effect->AddProcPtr(reinterpret_cast<void*>(&AAXGui::Create), kAAX_ProcPtrID_Create_EffectGUI);

  result = collection.AddEffect(aax::kEffectId, effect);
  if (result != AAX_SUCCESS) {
    reportFailure(__LINE__, "result == AAX_SUCCESS");
    return result;
  }
  collection.SetManufacturerName(aax::kManufacturerName);
  collection.AddPackageName(aax::kPackageName);
  collection.SetPackageVersion(aax::kPackageVersion);
  return AAX_SUCCESS;
}

}  // namespace
}  // namespace ziv

// Called by the SDK's ACFRegisterPlugin when the host scans the library.
AAX_Result GetEffectDescriptions(AAX_ICollection* collection) {
  return ziv::aax::guarded(
      [&] { return collection != nullptr ? ziv::describeEffect(*collection) : AAX_ERROR_NULL_ARGUMENT; });
}
