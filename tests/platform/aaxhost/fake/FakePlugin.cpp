#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "platform/aax/AAX_CEffectParameters.h"
#include "platform/aax/AAX_IDescription.h"
#include "tests/platform/aaxhost/fake/FakeProbe.h"

// A plug-in as small as the contract allows, with every kind of field. It notes what its host does, and the
// variable FAKE_FAULT makes it misbehave in one way at a time.

namespace {

FakeProbe* probe();
std::mutex logMutex;
std::vector<std::string> logLines;
std::atomic<int> living = 0;

void note(const std::string& line) {
  if (!probe()->logging) return;
  const std::lock_guard lock(logMutex);
  logLines.push_back(line);
}

FakeProbe* probe() {
  static FakeProbe one{.takeLog = [] {
    const std::lock_guard lock(logMutex);
    return std::exchange(logLines, {});
  }};
  return &one;
}

bool fault(const char* name) {
  const char* set = std::getenv("FAKE_FAULT");
  return set && std::strcmp(set, name) == 0;
}

struct Living {
  Living() { ++living; }
  ~Living() { --living; }
};

/// Lives in private field 21 and owns memory, so that a host that forgets it leaks.
struct Processor {
  Processor() { ++probe()->processors; }
  ~Processor() { --probe()->processors; }
  std::vector<float> memory = std::vector<float>(64, 1.0f);
};

class Parameters final : public AAX_CEffectParameters, Living {
 public:
  static AAX_IEffectParameters* create() { return note("make parameters"), new Parameters; }
  ~Parameters() override { note("delete parameters"); }

  AAX_Result UpdateParameterNormalizedValue(AAX_CParamID id, double value,
                                            AAX_EUpdateSource source) override {
    AAX_CBoolean touched = 0;
    AutomationDelegate()->GetTouchState(id, &touched);
    note("update " + std::string(id) + " " + std::to_string(value).substr(0, 4) + " source " +
         std::to_string(source) + (touched ? " touched" : ""));
    const AAX_Result result = AAX_CEffectParameters::UpdateParameterNormalizedValue(id, value, source);
    if (touched && std::strcmp(id, "ask") == 0) {  // one value makes the next
      AAX_IParameter* answer = mParameterManager.GetParameterByID("answer");
      answer->Touch();
      answer->SetNormalizedValue(value / 2);
      answer->Release();
    }
    return result;
  }
  AAX_Result ResetFieldData(AAX_CFieldIndex field, void* data, std::uint32_t size) const override {
    note("fill " + std::to_string(field));
    if (reinterpret_cast<std::uintptr_t>(data) % 64 != 0) probe()->misaligned = true;
    if (field == kFakeLarge && fault("field")) return AAX_ERROR_INVALID_FIELD_INDEX;
    if (field != kFakeProcessor) return AAX_CEffectParameters::ResetFieldData(field, data, size);
    new (data) Processor;
    return AAX_SUCCESS;
  }
  AAX_Result FreeFieldData(AAX_CFieldIndex field, void* data, std::uint32_t) const override {
    note("free " + std::to_string(field));
    if (field == kFakeProcessor) static_cast<Processor*>(data)->~Processor();
    return AAX_SUCCESS;
  }

 private:
  AAX_Result EffectInit() override {
    note("initialise parameters");
    if (fault("init")) return AAX_ERROR_NOT_INITIALIZED;
    AAX_CFieldIndex field = 10;
    for (const char* id : {"gain", "twin", "ask", "answer"}) {
      AddParameter(std::make_unique<AAX_CParameter<float>>(
          id, id, 0.0f, std::make_unique<AAX_CLinearTaperDelegate<float>>(0.0f, 1.0f),
          std::make_unique<AAX_CNumberDisplayDelegate<float>>(), true, 0));
      mPacketDispatcher.RegisterPacket(id, field++, [this](AAX_CParamID of, AAX_CPacket& packet) {
        float value = 0.0f;
        mParameterManager.GetParameterByID(of)->GetValueAsFloat(&value);
        packet.Set(value);
      });
    }
    AddParameter(std::make_unique<AAX_CParameter<bool>>(
        "MasterBypassID", "Master Bypass", false, std::make_unique<AAX_CBinaryTaperDelegate>(),
        std::make_unique<AAX_CBinaryDisplayDelegate>("off", "on"), true, 2));
    return mPacketDispatcher.RegisterPacket("MasterBypassID", field,
                                            [this](AAX_CParamID of, AAX_CPacket& packet) {
                                              bool on = false;
                                              mParameterManager.GetParameterByID(of)->GetValueAsBool(&on);
                                              packet.Set(on);  // one byte for a port of four
                                            });
  }
};

class DirectData final : public AAX_CEffectDirectData, Living {
 public:
  static AAX_IEffectDirectData* create() { return note("make direct data"), new DirectData; }
  ~DirectData() override { note("delete direct data"); }
  AAX_Result TimerWakeup(AAX_IPrivateDataAccess* access) override {
    note("timer of direct data");
    FakeShared shared;
    AAX_Result result = access->ReadPortDirect(kFakeShared, 0, sizeof shared, &shared);
    if (result != AAX_SUCCESS) return result;
    for (const auto& half : {shared.blocks, shared.commands})
      if (!std::all_of(half, half + 200, [half](std::int64_t value) { return value == half[0]; }))
        ++probe()->torn;
    // One at a time: the last must have been taken before the next goes.
    if (shared.commands[0] != 0) return AAX_SUCCESS;
    const long next = probe()->commandToSend.exchange(0);
    if (next == 0) return AAX_SUCCESS;
    std::fill(std::begin(shared.commands), std::end(shared.commands), next);
    constexpr auto kOffset = static_cast<std::uint32_t>(sizeof shared.blocks);
    return access->WritePortDirect(kFakeShared, kOffset, sizeof shared.commands, shared.commands);
  }
};

class Gui final : public AAX_CEffectGUI, Living {
 public:
  static AAX_IEffectGUI* create() { return note("make window"), fault("gui") ? nullptr : new Gui; }
  ~Gui() override { note("delete window"); }
  AAX_Result TimerWakeup() override { return note("timer of window"), AAX_SUCCESS; }
  AAX_Result ParameterUpdated(AAX_CParamID id) override {
    return note(std::string("window hears of ") + id), AAX_SUCCESS;
  }
};

void takeTransport(void* field) {
  AAX_ITransport* transport = static_cast<AAX_IMIDINode*>(field)->GetTransport();
  probe()->tempo = -1.0;
  if (!transport) return;
  double tempo = 0.0;
  std::int64_t ticks = 0;
  bool playing = false;
  transport->GetCurrentTempo(&tempo);
  transport->GetCurrentTickPosition(&ticks);
  transport->IsTransportPlaying(&playing);
  probe()->tempo = tempo;
  probe()->ticks = ticks;
  probe()->playing = playing;
}

void processOne(void* const* fields) {
  const auto* in = static_cast<float* const*>(fields[1]);
  const auto* out = static_cast<float* const*>(fields[2]);
  const int frames = *static_cast<const std::int32_t*>(fields[3]);
  probe()->rate = static_cast<double>(*static_cast<const float*>(fields[4]));
  const float* key = nullptr;
  if (const int at = *static_cast<const std::int32_t*>(fields[5]); at != 0) key = in[at];
  auto* meters = static_cast<float*>(fields[6]);
  takeTransport(fields[7]);
  const float gain = *static_cast<const float*>(fields[10]), twin = *static_cast<const float*>(fields[11]);
  const bool bypassed = *static_cast<const std::int32_t*>(fields[14]) != 0;
  if (gain != twin) ++probe()->splitPairs;

  auto& shared = *static_cast<FakeShared*>(fields[kFakeShared]);
  for (std::int64_t& value : shared.blocks) ++value;
  probe()->commands += shared.commands[0];
  for (const std::int64_t value : shared.commands)
    if (value != shared.commands[0]) ++probe()->torn;
  std::fill(std::begin(shared.commands), std::end(shared.commands), 0);

  const float unity = static_cast<Processor*>(fields[kFakeProcessor])->memory[0];
  for (int i = 0; i < frames && in[0] && out[0]; ++i) {
    meters[0] = std::max(meters[0], std::abs(in[0][i]));
    out[0][i] = bypassed ? in[0][i] : unity * gain * in[0][i] + (key ? key[i] : 0.0f);
    meters[1] = std::max(meters[1], std::abs(out[0][i]));
  }
  meters[2] = gain;
  meters[3] = gain + 0.1f;
}

void process(void* const* inBegin[], const void* inEnd) {
  ++probe()->calls;
  probe()->lastCount = static_cast<void* const**>(const_cast<void*>(inEnd)) - inBegin;
  for (void* const** at = inBegin; at < inEnd; ++at) processOne(*at);
}

void describeFields(AAX_IComponentDescriptor& c) {
  if (!fault("no-input")) c.AddAudioIn(1);
  c.AddAudioOut(2);
  c.AddAudioBufferLength(3);
  c.AddSampleRate(4);
  c.AddSideChainIn(5);
  const AAX_CTypeID meters[] = {AAX_TypeID("mtrI"), AAX_TypeID("mtrO"), AAX_TypeID("mtGR"),
                                AAX_TypeID("mtcA")};
  c.AddMeters(6, meters, 4);
  c.AddMIDINode(7, AAX_eMIDINodeType_Transport, "Transport", 0xFFFF);
  c.AddMIDINode(fault("twice") ? 7 : 8, AAX_eMIDINodeType_LocalInput, "Fake", 0xFFFF);
  for (AAX_CFieldIndex field = 10; field <= 14; ++field)
    c.AddDataInPort(field, fault("wide-port") ? 12 : 4, AAX_eDataInPortType_Buffered);
  c.AddPrivateData(fault("far-field") ? 1 << 30 : kFakeShared, fault("no-size") ? 0 : sizeof(FakeShared));
  c.AddPrivateData(kFakeProcessor, sizeof(Processor));
  c.AddPrivateData(kFakeLarge, 20000);
}

void describeMeters(AAX_IEffectDescriptor& effect) {
  const AAX_CTypeID ids[] = {AAX_TypeID("mtrI"), AAX_TypeID("mtrO"), AAX_TypeID("mtGR"), AAX_TypeID("mtcA")};
  for (int k = 0; k < (fault("meter") ? 3 : 4); ++k) {
    AAX_IPropertyMap* map = effect.NewPropertyMap();
    map->AddProperty(AAX_eProperty_Meter_Type, k < 3 ? k : 5);
    map->AddProperty(AAX_eProperty_Meter_Orientation, 0);
    if (k == 3) map->AddProperty(AAX_eProperty_Meter_Custom, 1);
    effect.AddMeterDescription(ids[k], k < 3 ? "Plain" : "Custom", map);
  }
}

}  // namespace

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

FAKE_EXPORT FakeProbe* fakeProbe() { return probe(); }
FAKE_EXPORT AAX_Result ACFCanUnloadNow() { return living; }
FAKE_EXPORT AAX_Result ACFGetSDKVersion() { return fault("version") ? 1 : AAX_SDKVersion; }
FAKE_EXPORT AAX_Result ACFStartup() { return fault("startup") ? AAX_ERROR_UNIMPLEMENTED : AAX_SUCCESS; }

FAKE_EXPORT AAX_Result ACFRegisterPlugin(AAX_ICollection* collection) {
  if (fault("refuse")) return AAX_ERROR_NULL_OBJECT;
  collection->SetManufacturerName("Tests");
  collection->AddPackageName("Fake plug-in");
  collection->SetPackageVersion(7);
  AAX_IEffectDescriptor* effect = collection->NewDescriptor();
  effect->AddName("Fake");
  effect->AddCategory(3);
  AAX_IComponentDescriptor* c = effect->NewComponentDescriptor();
  describeFields(*c);
  AAX_IPropertyMap* map = c->NewPropertyMap();
  map->AddProperty(AAX_eProperty_ManufacturerID, AAX_TypeID("Test"));
  if (!fault("no-process")) c->AddProcessProc_Native(process, map);
  effect->AddComponent(c);
  if (!fault("no-parameters"))
    effect->AddProcPtr(reinterpret_cast<void*>(&Parameters::create), kAAX_ProcPtrID_Create_EffectParameters);
  effect->AddProcPtr(reinterpret_cast<void*>(&DirectData::create), kAAX_ProcPtrID_Create_EffectDirectData);
  effect->AddProcPtr(reinterpret_cast<void*>(&Gui::create), kAAX_ProcPtrID_Create_EffectGUI);
  describeMeters(*effect);
  if (fault("two-effects")) collection->AddEffect("tests.other", effect);
  if (!fault("no-effect")) collection->AddEffect("tests.fake", effect);
  return AAX_SUCCESS;
}
