#pragma once

#include "platform/aax/AAX.h"

// What a library tells its host, once, when it is registered. The host implements these.

class AAX_IPropertyMap {
 public:
  virtual ~AAX_IPropertyMap() = default;
  virtual AAX_Result AddProperty(AAX_EProperty property, AAX_CPropertyValue value) = 0;
};

/// One algorithm: its fields in order of declaration and its process function.
class AAX_IComponentDescriptor {
 public:
  virtual ~AAX_IComponentDescriptor() = default;
  virtual AAX_Result AddAudioIn(AAX_CFieldIndex field) = 0;
  virtual AAX_Result AddAudioOut(AAX_CFieldIndex field) = 0;
  virtual AAX_Result AddAudioBufferLength(AAX_CFieldIndex field) = 0;
  virtual AAX_Result AddSampleRate(AAX_CFieldIndex field) = 0;
  virtual AAX_Result AddSideChainIn(AAX_CFieldIndex field) = 0;
  virtual AAX_Result AddMeters(AAX_CFieldIndex field, const AAX_CTypeID* meters, std::uint32_t count) = 0;
  virtual AAX_Result AddMIDINode(AAX_CFieldIndex field, AAX_EMIDINodeType type, const char* name,
                                 std::uint32_t channelMask) = 0;
  virtual AAX_Result AddDataInPort(AAX_CFieldIndex field, std::uint32_t packetSize,
                                   AAX_EDataInPortType type) = 0;
  virtual AAX_Result AddPrivateData(AAX_CFieldIndex field, std::int32_t dataSize) = 0;
  virtual AAX_Result AddProcessProc_Native(AAX_CProcessProc process, AAX_IPropertyMap* properties) = 0;
  /// Owned by the description.
  virtual AAX_IPropertyMap* NewPropertyMap() = 0;
};

class AAX_IEffectDescriptor {
 public:
  virtual ~AAX_IEffectDescriptor() = default;
  virtual AAX_IComponentDescriptor* NewComponentDescriptor() = 0;
  virtual AAX_Result AddComponent(AAX_IComponentDescriptor* component) = 0;
  virtual AAX_Result AddName(const char* name) = 0;
  virtual AAX_Result AddCategory(std::uint32_t mask) = 0;
  /// A factory function: no arguments, a new object of the kind.
  virtual AAX_Result AddProcPtr(void* factory, AAX_CProcPtrID id) = 0;
  virtual AAX_Result AddResourceInfo(AAX_EResourceType type, const char* file) = 0;
  virtual AAX_Result AddMeterDescription(AAX_CTypeID id, const char* name, AAX_IPropertyMap* properties) = 0;
  virtual AAX_IPropertyMap* NewPropertyMap() = 0;
};

class AAX_ICollection {
 public:
  virtual ~AAX_ICollection() = default;
  virtual AAX_IEffectDescriptor* NewDescriptor() = 0;
  virtual AAX_Result AddEffect(const char* identifier, AAX_IEffectDescriptor* effect) = 0;
  virtual AAX_Result SetManufacturerName(const char* name) = 0;
  virtual AAX_Result AddPackageName(const char* name) = 0;
  virtual AAX_Result SetPackageVersion(std::uint32_t version) = 0;
};
