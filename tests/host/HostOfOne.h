#pragma once

#include <cstring>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "core/CorvaneMonoEffect.h"
#include "host/Fields.h"
#include "host/ProcessFunction.h"
#include "host/QDX_AAX_DirectData.h"
#include "host/QDX_QcMN_1200_AAX_Parameters_Wrapper.h"
#include "host/SharedBlock.h"
#include "tests/control/Home.h"

namespace corvane::rig {

using namespace corvane::host;

/// A host with one instance, small enough to read: it notes what the instance asks, answers when told, and
/// renders one record.
class HostOfOne final : public AAX_IController,
                        public AAX_IAutomationDelegate,
                        public AAX_IPrivateDataAccess,
                        public AAX_ITransport,
                        public AAX_IMIDINode {
 public:
  explicit HostOfOne(Home& userHome)
      : home(userHome),
        parameters(std::make_unique<QDX_QcMN_1200_AAX_Parameters_Wrapper>(userHome.services)) {
    EXPECT_EQ(parameters->Initialize(this, this), AAX_SUCCESS);
    directData.Initialize(this, parameters.get());
    processor = ::operator new (sizeof(CorvaneMonoEffect), std::align_val_t{alignof(CorvaneMonoEffect)});
    parameters->ResetFieldData(kSharedBlockField, &shared, sizeof shared);
    parameters->ResetFieldData(kLatencySeenField, &latencySeen, sizeof latencySeen);
    parameters->ResetFieldData(kRateSeenField, &rateSeen, sizeof rateSeen);
    EXPECT_EQ(parameters->ResetFieldData(kProcessorField, processor, sizeof(CorvaneMonoEffect)), AAX_SUCCESS);
  }
  ~HostOfOne() override {
    parameters->FreeFieldData(kProcessorField, processor, sizeof(CorvaneMonoEffect));
    ::operator delete (processor, std::align_val_t{alignof(CorvaneMonoEffect)});
  }

  CorvaneMonoEffect& effect() { return *static_cast<CorvaneMonoEffect*>(processor); }
  QDX_AAX_ControllerWrapper& wrapper() { return parameters->controllerWrapper(); }
  /// What the host holds for a parameter, as the instance last heard it.
  double held(int id) {
    double value = -1.0;
    parameters->GetParameterNormalizedValue(parameterIdentifier(id), &value);
    return value;
  }

  /// A knob turned in the window, and the host's answers.
  void edit(int id, double value) {
    home.clock.nowMs += 1000;
    wrapper().editorSetParameter(id, value);
    answer();
  }
  /// An automation lane: no touch.
  void automate(int id, double value) {
    parameters->UpdateParameterNormalizedValue(parameterIdentifier(id), value, AAX_eUpdateSource_Parameter);
  }
  /// Brings every request back, those that the answers raise too.
  void answer() {
    for (int rounds = 0; !requests.empty(); ++rounds) {
      ASSERT_LT(rounds, 10000) << "requests chase each other";
      const Request request = requests.front();
      requests.pop_front();
      touchNow = request.touched;
      parameters->UpdateParameterNormalizedValue(request.id.c_str(), request.value,
                                                 AAX_eUpdateSource_Unspecified);
    }
    touchNow = false;
  }

  std::vector<float> render(std::vector<float> in, const std::vector<float>* key = nullptr) {
    parameters->GenerateCoefficients();
    std::vector<float> out(in.size(), -99.0f);
    float* inputs[2] = {in.data(), key ? const_cast<float*>(key->data()) : nullptr};
    float* outputs[1] = {out.data()};
    std::int32_t frames = static_cast<std::int32_t>(in.size()), sideChain = key ? 1 : 0;
    void* fields[374] = {};
    for (auto& [field, bytes] : packets) fields[field] = bytes.data();
    fields[kAudioInField] = inputs;
    fields[kAudioOutField] = outputs;
    fields[kFramesField] = &frames;
    fields[kSampleRateField] = &rate;
    fields[kMetersField] = meters.data();
    fields[kSideChainField] = &sideChain;
    fields[kTransportField] = transportOffered ? static_cast<AAX_IMIDINode*>(this) : nullptr;
    fields[kSharedBlockField] = &shared;
    fields[kLatencySeenField] = &latencySeen;
    fields[kRateSeenField] = &rateSeen;
    fields[kProcessorField] = processor;
    void* const* records[1] = {fields};
    processInstances(records, records + 1);
    return out;
  }

  // What the instance calls.
  AAX_Result GetSampleRate(float* hz) const override { return *hz = rate, AAX_SUCCESS; }
  AAX_Result GetSignalLatency(std::int32_t* samples) const override {
    return *samples = latency, AAX_SUCCESS;
  }
  AAX_Result SetSignalLatency(std::int32_t samples) override { return latency = samples, AAX_SUCCESS; }
  AAX_Result PostPacket(AAX_CFieldIndex field, const void* payload, std::uint32_t size) override {
    auto& bytes = packets[field];
    bytes.assign(2, 0);
    std::memcpy(bytes.data(), payload, size);
    return AAX_SUCCESS;
  }
  AAX_Result GetCurrentMeterValue(AAX_CTypeID, float*) const override { return AAX_ERROR_UNIMPLEMENTED; }
  AAX_Result RegisterParameter(AAX_CParamID) override { return AAX_SUCCESS; }
  AAX_Result PostTouchRequest(AAX_CParamID id) override {
    return log.push_back("touch"), touched = id, AAX_SUCCESS;
  }
  AAX_Result PostSetValueRequest(AAX_CParamID id, double value) override {
    log.push_back("set");
    std::erase_if(requests, [id](const Request& older) { return older.id == id; });
    if (held(parameterIdOf(id)) != value) requests.push_back({id, value, touched == id});
    return AAX_SUCCESS;
  }
  AAX_Result PostReleaseRequest(AAX_CParamID) override {
    return log.push_back("release"), touched.clear(), AAX_SUCCESS;
  }
  AAX_Result GetTouchState(AAX_CParamID, AAX_CBoolean* state) override {
    return *state = touchNow, AAX_SUCCESS;
  }
  AAX_Result ReadPortDirect(AAX_CFieldIndex field, std::uint32_t offset, std::uint32_t size,
                            void* to) override {
    return std::memcpy(to, fieldBytes(field) + offset, size), accessError;
  }
  AAX_Result WritePortDirect(AAX_CFieldIndex field, std::uint32_t offset, std::uint32_t size,
                             const void* from) override {
    return std::memcpy(fieldBytes(field) + offset, from, size), AAX_SUCCESS;
  }
  AAX_Result GetCurrentTempo(AAX_CTransportTempo* tempo) const override {
    return *tempo = 120.0, AAX_SUCCESS;
  }
  AAX_Result GetCurrentTickPosition(std::int64_t* at) const override { return *at = ticks, AAX_SUCCESS; }
  AAX_Result IsTransportPlaying(bool* is) const override { return *is = playing, AAX_SUCCESS; }
  AAX_ITransport* GetTransport() override { return this; }

  struct Request {
    std::string id;
    double value;
    bool touched;
  };

  Home& home;
  std::unique_ptr<QDX_QcMN_1200_AAX_Parameters_Wrapper> parameters;
  QDX_AAX_DirectData directData;
  std::map<AAX_CFieldIndex, std::vector<std::uint64_t>> packets;
  std::deque<Request> requests;
  std::vector<std::string> log;
  SharedBlock shared;
  std::int32_t latencySeen = 0, latency = 7;
  float rate = 48000.0f, rateSeen = 0.0f;
  std::vector<float> meters = std::vector<float>(kMeters, 0.0f);
  bool transportOffered = false, playing = false;
  std::int64_t ticks = 0;
  AAX_Result accessError = AAX_SUCCESS;

 private:
  char* fieldBytes(AAX_CFieldIndex field) {
    return field == kSharedBlockField ? reinterpret_cast<char*>(&shared)
                                      : reinterpret_cast<char*>(&latencySeen);
  }

  void* processor = nullptr;
  std::string touched;
  bool touchNow = false;
};

}  // namespace corvane::rig
