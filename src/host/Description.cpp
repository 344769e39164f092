#include "host/Description.h"

#include <functional>
#include <initializer_list>

#include "core/CorvaneMonoEffect.h"
#include "host/ProcessFunction.h"
#include "host/QDX_AAX_DirectData.h"
#include "host/QDX_QcMN_1200_AAX_GUI.h"
#include "host/QDX_QcMN_1200_AAX_Parameters_Wrapper.h"
#include "host/SharedBlock.h"

namespace corvane::host {

namespace {

constexpr const char* kEffectIdentifier = "example.quadrexa.aax.CorvaneMono";
constexpr const char* kEffectName = "QDX Corvane Mono";
constexpr std::uint32_t kPackageVersion = 1200;
constexpr std::uint32_t kCategoryMask = 707;
constexpr std::uint32_t kAllMidiChannels = 0xFFFF;
constexpr std::uint32_t kPacketBytes = 4;

/// Runs steps in order and stops at the first that fails.
AAX_Result inOrder(std::initializer_list<std::function<AAX_Result()>> steps) {
  for (const auto& step : steps)
    if (const AAX_Result result = step(); result != AAX_SUCCESS) return result;
  return AAX_SUCCESS;
}

AAX_Result describeProcess(AAX_IComponentDescriptor& component) {
  AAX_IPropertyMap* properties = component.NewPropertyMap();
  if (!properties) return AAX_ERROR_NULL_OBJECT;
  const auto add = [properties](AAX_EProperty property, AAX_CPropertyValue value) {
    return [=] { return properties->AddProperty(property, value); };
  };
  return inOrder({add(AAX_eProperty_ManufacturerID, AAX_TypeID("QDXa")),
                  add(AAX_eProperty_ProductID, AAX_TypeID("QcMN")), add(AAX_eProperty_60, 1),
                  add(AAX_eProperty_116, 1), add(AAX_eProperty_InputStemFormat, AAX_eStemFormat_Mono),
                  add(AAX_eProperty_OutputStemFormat, AAX_eStemFormat_Mono),
                  add(AAX_eProperty_PlugInID_Native, AAX_TypeID("QmMN")),
                  add(AAX_eProperty_PlugInID_AudioSuite, AAX_TypeID("QaMN")),
                  [&] { return component.AddProcessProc_Native(processInstances, properties); }});
}

AAX_Result describeAlgorithm(AAX_IComponentDescriptor& c) {
  return inOrder({
      [&] { return c.AddAudioIn(kAudioInField); },
      [&] { return c.AddAudioOut(kAudioOutField); },
      [&] { return c.AddAudioBufferLength(kFramesField); },
      [&] { return c.AddSampleRate(kSampleRateField); },
      [&] { return c.AddSideChainIn(kSideChainField); },
      [&] { return c.AddMeters(kMetersField, kMeterTypeIds.data(), kMeters); },
      [&] { return c.AddMIDINode(kMidiField, AAX_eMIDINodeType_LocalInput, kEffectName, kAllMidiChannels); },
      [&] {
        return c.AddMIDINode(kTransportField, AAX_eMIDINodeType_Transport, "Transport", kAllMidiChannels);
      },
      [&] {
        AAX_Result result = AAX_SUCCESS;
        for (AAX_CFieldIndex field = 0; field <= kParameters && result == AAX_SUCCESS; ++field)
          result = c.AddDataInPort(field, kPacketBytes, AAX_eDataInPortType_Buffered);
        return result;
      },
      [&] { return c.AddPrivateData(kSharedBlockField, sizeof(SharedBlock)); },
      [&] { return c.AddPrivateData(kRateSeenField, sizeof(float)); },
      [&] { return c.AddPrivateData(kLatencySeenField, sizeof(std::int32_t)); },
      [&] { return c.AddPrivateData(kProcessorField, sizeof(CorvaneMonoEffect)); },
      [&] { return describeProcess(c); },
  });
}

AAX_Result describeMeters(AAX_IEffectDescriptor& effect) {
  constexpr AAX_CPropertyValue kInput = 0, kOutput = 1, kGainReduction = 2, kOther = 5;
  for (std::size_t k = 0; k < kMeters; ++k) {
    AAX_IPropertyMap* properties = effect.NewPropertyMap();
    if (!properties) return AAX_ERROR_NULL_OBJECT;
    const bool custom = k >= kPlainMeters;
    const char* name = custom ? "Custom" : k == 0 ? "Input" : k == 1 ? "Output" : "GainReduction";
    const AAX_CPropertyValue type = custom ? kOther : k == 0 ? kInput : k == 1 ? kOutput : kGainReduction;
    const AAX_Result result = inOrder(
        {[&] { return properties->AddProperty(AAX_eProperty_Meter_Type, type); },
         [&] { return properties->AddProperty(AAX_eProperty_Meter_Orientation, 0); },
         [&] { return custom ? properties->AddProperty(AAX_eProperty_Meter_Custom, 1) : AAX_SUCCESS; },
         [&] { return effect.AddMeterDescription(kMeterTypeIds[k], name, properties); }});
    if (result != AAX_SUCCESS) return result;
  }
  return AAX_SUCCESS;
}

/// A factory function as the description takes it.
template <typename Function>
void* factory(Function* function) {
  return reinterpret_cast<void*>(function);
}

AAX_Result describeEffect(AAX_IEffectDescriptor& effect) {
  return inOrder({
      [&] { return effect.AddName(kEffectName); },
      [&] { return effect.AddCategory(kCategoryMask); },
      [&] {
        AAX_IComponentDescriptor* component = effect.NewComponentDescriptor();
        if (!component) return static_cast<AAX_Result>(AAX_ERROR_NULL_OBJECT);
        const AAX_Result result = describeAlgorithm(*component);
        return result == AAX_SUCCESS ? effect.AddComponent(component) : result;
      },
      [&] {
        return effect.AddProcPtr(factory(&QDX_QcMN_1200_AAX_Parameters_Wrapper::Create),
                                 kAAX_ProcPtrID_Create_EffectParameters);
      },
      [&] { return effect.AddResourceInfo(AAX_eResourceType_PageTable, "QDXCorvaneMonoPageTables.xml"); },
      [&] {
        return effect.AddProcPtr(factory(&QDX_AAX_DirectData::Create),
                                 kAAX_ProcPtrID_Create_EffectDirectData);
      },
      [&] {
        return effect.AddProcPtr(factory(&QDX_QcMN_1200_AAX_GUI::Create), kAAX_ProcPtrID_Create_EffectGUI);
      },
      [&] { return describeMeters(effect); },
  });
}

}  // namespace

AAX_Result describeCollection(AAX_ICollection* collection) {
  if (!collection) return AAX_ERROR_NULL_OBJECT;
  AAX_IEffectDescriptor* effect = collection->NewDescriptor();
  if (!effect) return AAX_ERROR_NULL_OBJECT;
  return inOrder({
      [&] { return describeEffect(*effect); },
      [&] { return collection->AddEffect(kEffectIdentifier, effect); },
      [&] { return collection->SetManufacturerName("Quadrexa"); },
      [&] { return collection->AddPackageName("QDX Corvane Mono - channel strip emulation"); },
      [&] { return collection->AddPackageName("QDX Corvane Mono"); },
      [&] { return collection->AddPackageName("QDX Corvane Mn"); },
      [&] { return collection->SetPackageVersion(kPackageVersion); },
  });
}

}  // namespace corvane::host
