#include "platform/aaxhost/Registration.h"

#include <algorithm>

namespace corvane::aaxhost {

namespace {

constexpr AAX_CFieldIndex kMostFields = 65536;      // a table of pointers this long is still half a megabyte
constexpr std::uint32_t kLargestPacket = 8;         // what a packet can carry
constexpr std::int32_t kLargestPrivate = 64 << 20;  // far above any processor; more is a wrong number
constexpr std::uint32_t kMostMeters = 4096;

std::string number(std::int64_t value) { return std::to_string(value); }

}  // namespace

class Registration::Properties final : public AAX_IPropertyMap {
 public:
  AAX_Result AddProperty(AAX_EProperty property, AAX_CPropertyValue value) override {
    list.push_back({property, value});
    return AAX_SUCCESS;
  }
  std::vector<Property> list;
};

class Registration::Algorithm final : public AAX_IComponentDescriptor {
 public:
  explicit Algorithm(Registration& registration) : all(registration) {}

  AAX_Result AddAudioIn(AAX_CFieldIndex field) override { return add(FieldKind::AudioIn, field); }
  AAX_Result AddAudioOut(AAX_CFieldIndex field) override { return add(FieldKind::AudioOut, field); }
  AAX_Result AddAudioBufferLength(AAX_CFieldIndex field) override {
    return add(FieldKind::BufferLength, field);
  }
  AAX_Result AddSampleRate(AAX_CFieldIndex field) override { return add(FieldKind::SampleRate, field); }
  AAX_Result AddSideChainIn(AAX_CFieldIndex field) override { return add(FieldKind::SideChain, field); }
  AAX_Result AddMeters(AAX_CFieldIndex field, const AAX_CTypeID* meters, std::uint32_t count) override {
    if (!meters || count == 0 || count > kMostMeters)
      return all.refuse(AAX_ERROR_INVALID_METER_INDEX, "field " + number(field) + " has no list of meters");
    Field readings{.kind = FieldKind::Meters, .index = field};
    readings.meters.assign(meters, meters + count);
    return add(std::move(readings));
  }
  AAX_Result AddMIDINode(AAX_CFieldIndex field, AAX_EMIDINodeType type, const char* name,
                         std::uint32_t channelMask) override {
    if (!name) return all.refuse(AAX_ERROR_NULL_OBJECT, "MIDI node " + number(field) + " has no name");
    return add({.kind = FieldKind::MidiNode,
                .index = field,
                .midiType = type,
                .midiName = name,
                .channelMask = channelMask});
  }
  AAX_Result AddDataInPort(AAX_CFieldIndex field, std::uint32_t packetSize,
                           AAX_EDataInPortType type) override {
    if (packetSize == 0 || packetSize > kLargestPacket)
      return all.refuse(AAX_ERROR_INVALID_INTERNAL_DATA, "data port " + number(field) + " has " +
                                                             number(packetSize) + " bytes, must be 1 to 8");
    return add({.kind = FieldKind::DataInPort,
                .index = field,
                .bytes = packetSize,
                .buffered = type == AAX_eDataInPortType_Buffered});
  }
  AAX_Result AddPrivateData(AAX_CFieldIndex field, std::int32_t dataSize) override {
    if (dataSize <= 0 || dataSize > kLargestPrivate)
      return all.refuse(AAX_ERROR_INVALID_INTERNAL_DATA, "private field " + number(field) + " has " +
                                                             number(dataSize) + " bytes, must be 1 to " +
                                                             number(kLargestPrivate));
    return add(
        {.kind = FieldKind::PrivateData, .index = field, .bytes = static_cast<std::uint32_t>(dataSize)});
  }
  AAX_Result AddProcessProc_Native(AAX_CProcessProc function, AAX_IPropertyMap* map) override {
    if (!function) return all.refuse(AAX_ERROR_NULL_OBJECT, "the process function is null");
    if (process) return all.refuse(AAX_ERROR_INVALID_INTERNAL_DATA, "more than one process function");
    process = function;
    properties = static_cast<Properties*>(map);
    return AAX_SUCCESS;
  }
  AAX_IPropertyMap* NewPropertyMap() override { return &all.maps.emplace_back(); }

  std::vector<Field> fields;
  AAX_CProcessProc process = nullptr;
  const Properties* properties = nullptr;

 private:
  AAX_Result add(FieldKind kind, AAX_CFieldIndex field) { return add({.kind = kind, .index = field}); }
  AAX_Result add(Field field) {
    if (field.index < 0 || field.index >= kMostFields)
      return all.refuse(AAX_ERROR_INVALID_FIELD_INDEX,
                        "field " + number(field.index) + " is outside 0 to " + number(kMostFields - 1));
    if (!taken.insert(field.index).second)
      return all.refuse(AAX_ERROR_INVALID_FIELD_INDEX, "field " + number(field.index) + " is declared twice");
    fields.push_back(std::move(field));
    return AAX_SUCCESS;
  }

  Registration& all;
  std::set<AAX_CFieldIndex> taken;
};

class Registration::Effect final : public AAX_IEffectDescriptor {
 public:
  explicit Effect(Registration& registration) : all(registration) {}

  AAX_IComponentDescriptor* NewComponentDescriptor() override { return &all.algorithms.emplace_back(all); }
  AAX_Result AddComponent(AAX_IComponentDescriptor* component) override {
    if (!component) return all.refuse(AAX_ERROR_NULL_OBJECT, "the algorithm is null");
    if (algorithm) return all.refuse(AAX_ERROR_INVALID_INTERNAL_DATA, "more than one algorithm");
    algorithm = static_cast<Algorithm*>(component);
    return AAX_SUCCESS;
  }
  AAX_Result AddName(const char* name) override {
    if (!name) return all.refuse(AAX_ERROR_NULL_OBJECT, "a name of the effect is null");
    told.names.emplace_back(name);
    return AAX_SUCCESS;
  }
  AAX_Result AddCategory(std::uint32_t mask) override {
    told.category |= mask;
    return AAX_SUCCESS;
  }
  AAX_Result AddProcPtr(void* factory, AAX_CProcPtrID id) override {
    if (!factory) return all.refuse(AAX_ERROR_NULL_OBJECT, "factory " + number(id) + " is null");
    switch (id) {
      case kAAX_ProcPtrID_Create_EffectParameters:
        told.createParameters = reinterpret_cast<AAX_CreateEffectParameters>(factory);
        break;
      case kAAX_ProcPtrID_Create_EffectDirectData:
        told.createDirectData = reinterpret_cast<AAX_CreateEffectDirectData>(factory);
        break;
      case kAAX_ProcPtrID_Create_EffectGUI:
        told.createGui = reinterpret_cast<AAX_CreateEffectGUI>(factory);
        break;
      default: return all.refuse(AAX_ERROR_UNIMPLEMENTED, "factory " + number(id) + " is not known");
    }
    told.factories.push_back(id);
    return AAX_SUCCESS;
  }
  AAX_Result AddResourceInfo(AAX_EResourceType type, const char* file) override {
    if (!file) return all.refuse(AAX_ERROR_NULL_OBJECT, "the file of a resource is null");
    told.resources.push_back({type, file});
    return AAX_SUCCESS;
  }
  AAX_Result AddMeterDescription(AAX_CTypeID id, const char* name, AAX_IPropertyMap* map) override {
    if (!name) return all.refuse(AAX_ERROR_NULL_OBJECT, "meter \"" + typeIdText(id) + "\" has no name");
    Meter meter{.id = id, .name = name};
    if (map) meter.properties = static_cast<Properties*>(map)->list;
    told.meters.push_back(std::move(meter));
    return AAX_SUCCESS;
  }
  AAX_IPropertyMap* NewPropertyMap() override { return &all.maps.emplace_back(); }

  Description told;
  const Algorithm* algorithm = nullptr;

 private:
  Registration& all;
};

Registration::Registration() = default;
Registration::~Registration() = default;

AAX_Result Registration::refuse(AAX_Result code, const std::string& why) {
  if (wrong.empty()) wrong = why;
  return code;
}

AAX_IEffectDescriptor* Registration::NewDescriptor() { return &effects.emplace_back(*this); }

AAX_Result Registration::AddEffect(const char* identifier, AAX_IEffectDescriptor* effect) {
  if (!identifier || !*identifier) return refuse(AAX_ERROR_NULL_OBJECT, "an effect has no identifier");
  if (!effect) return refuse(AAX_ERROR_NULL_OBJECT, std::string("effect \"") + identifier + "\" is null");
  if (++effectsAdded > 1) return refuse(AAX_ERROR_INVALID_INTERNAL_DATA, "more than one effect");
  const Effect& added = *static_cast<Effect*>(effect);
  Description whole = added.told;
  whole.effectId = identifier;
  whole.manufacturer = told.manufacturer;
  whole.packageNames = told.packageNames;
  whole.packageVersion = told.packageVersion;
  if (added.algorithm) {
    whole.fields = added.algorithm->fields;
    whole.process = added.algorithm->process;
    if (added.algorithm->properties) whole.properties = added.algorithm->properties->list;
  }
  told = std::move(whole);
  return AAX_SUCCESS;
}

AAX_Result Registration::SetManufacturerName(const char* name) {
  if (!name) return refuse(AAX_ERROR_NULL_OBJECT, "the manufacturer's name is null");
  told.manufacturer = name;
  return AAX_SUCCESS;
}

AAX_Result Registration::AddPackageName(const char* name) {
  if (!name) return refuse(AAX_ERROR_NULL_OBJECT, "a package name is null");
  told.packageNames.emplace_back(name);
  return AAX_SUCCESS;
}

AAX_Result Registration::SetPackageVersion(std::uint32_t version) {
  told.packageVersion = version;
  return AAX_SUCCESS;
}

const Description& Registration::finish() {
  if (effectsAdded == 0)
    refuse(0, "no effect");
  else if (!told.process)
    refuse(0, "no process function");
  else if (!told.createParameters)
    refuse(0, "no factory of the parameters object");
  else {
    checkFields();
    checkMeters();
  }
  return told;
}

void Registration::checkFields() {
  const auto count = [this](FieldKind kind) {
    return std::count_if(told.fields.begin(), told.fields.end(),
                         [kind](const Field& f) { return f.kind == kind; });
  };
  for (const FieldKind kind :
       {FieldKind::AudioIn, FieldKind::AudioOut, FieldKind::BufferLength, FieldKind::SampleRate})
    if (count(kind) != 1)
      refuse(0, std::string(count(kind) == 0 ? "no field" : "more than one field") + " of kind \"" +
                    fieldKindText(kind) + "\"");
  for (const FieldKind kind : {FieldKind::SideChain, FieldKind::Meters})
    if (count(kind) > 1)
      refuse(0, std::string("more than one field of kind \"") + fieldKindText(kind) + "\"");
}

void Registration::checkMeters() {
  std::set<AAX_CTypeID> described, used;
  for (const Meter& meter : told.meters)
    if (!described.insert(meter.id).second)
      refuse(0, "meter \"" + typeIdText(meter.id) + "\" is described twice");
  for (const Field& field : told.fields)
    for (const AAX_CTypeID id : field.meters) {
      if (!used.insert(id).second) refuse(0, "meter \"" + typeIdText(id) + "\" stands twice in its field");
      if (!described.contains(id)) refuse(0, "meter \"" + typeIdText(id) + "\" has no description");
    }
}

}  // namespace corvane::aaxhost
