#include "platform/aaxhost/HostSide.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace corvane::aaxhost {

namespace {

std::size_t portCount(const Description& description) {
  return static_cast<std::size_t>(
      std::count_if(description.fields.begin(), description.fields.end(),
                    [](const Field& field) { return field.kind == FieldKind::DataInPort; }));
}

}  // namespace

HostSide::HostSide(const Description& description, float sampleRateHz)
    : queue(portCount(description)), board(description), rate(sampleRateHz) {
  for (const Field& field : description.fields) {
    if (field.kind != FieldKind::DataInPort) continue;
    const auto number = static_cast<std::uint32_t>(ports.size());  // counted before the entry is made
    ports[field.index] = {number, field.bytes};
  }
}

void HostSide::serve(AAX_IEffectParameters& parametersObject, AAX_IEffectGUI* guiObject) {
  parameters = &parametersObject;
  gui = guiObject;
  changed = true;  // the first packets carry every value
}

void HostSide::enter() {
  mutex.lock();
  ++depth;
}

void HostSide::leave() {
  if (depth == 1) {
    // what could not be posted is asked for again at the end of the next turn
    if (changed && parameters) changed = parameters->GenerateCoefficients() != AAX_SUCCESS;
    queue.flush();
  }
  --depth;
  mutex.unlock();
}

int HostSide::answerRequests() {
  if (!parameters) return 0;
  changed = true;  // values may also have changed behind our back
  const std::uint64_t thisRound = round++;
  int answered = 0;
  while (!requests.empty() && requests.front().round <= thisRound) {
    const Request request = std::move(requests.front());
    requests.pop_front();
    update(request, AAX_eUpdateSource_Unspecified);
    ++answered;
  }
  return answered;
}

AAX_Result HostSide::automate(const std::string& id, double normalised) {
  if (std::isnan(normalised)) return AAX_ERROR_INVALID_INTERNAL_DATA;
  return update({id, std::clamp(normalised, 0.0, 1.0), false, round}, AAX_eUpdateSource_Parameter);
}

AAX_Result HostSide::update(const Request& request, AAX_EUpdateSource source) {
  const Request* const outer = underWay;
  underWay = &request;
  const AAX_Result result =
      parameters->UpdateParameterNormalizedValue(request.id.c_str(), request.normalised, source);
  underWay = outer;
  if (result != AAX_SUCCESS) return result;
  changed = true;
  return gui ? gui->ParameterUpdated(request.id.c_str()) : AAX_SUCCESS;
}

bool HostSide::isTouched(const std::string& id) const {
  const auto at = touches.find(id);
  return at != touches.end() && at->second > 0;
}

AAX_Result HostSide::GetSampleRate(float* hz) const {
  if (!hz) return AAX_ERROR_NULL_OBJECT;
  *hz = sampleRate();
  return AAX_SUCCESS;
}

AAX_Result HostSide::GetSignalLatency(std::int32_t* samples) const {
  if (!samples) return AAX_ERROR_NULL_OBJECT;
  const std::lock_guard turn(mutex);
  *samples = latency;
  return AAX_SUCCESS;
}

AAX_Result HostSide::SetSignalLatency(std::int32_t samples) {
  if (samples < 0) return AAX_ERROR_INVALID_INTERNAL_DATA;
  const std::lock_guard turn(mutex);
  latency = samples;
  return AAX_SUCCESS;
}

AAX_Result HostSide::PostPacket(AAX_CFieldIndex field, const void* payload, std::uint32_t size) {
  if (!payload) return AAX_ERROR_NULL_OBJECT;
  const auto at = ports.find(field);
  if (at == ports.end()) return AAX_ERROR_INVALID_FIELD_INDEX;
  if (size == 0 || size > at->second.bytes) return AAX_ERROR_INVALID_INTERNAL_DATA;
  std::uint64_t bytes = 0;  // a shorter packet leaves the rest of its port 0
  std::memcpy(&bytes, payload, size);
  const Turn turn(*this);
  queue.post(at->second.number, bytes);
  return AAX_SUCCESS;
}

AAX_Result HostSide::GetCurrentMeterValue(AAX_CTypeID meter, float* value) const {
  if (!value) return AAX_ERROR_NULL_OBJECT;
  return board.read(meter, value) ? AAX_SUCCESS : AAX_ERROR_INVALID_METER_INDEX;
}

AAX_Result HostSide::RegisterParameter(AAX_CParamID id) { return id ? AAX_SUCCESS : AAX_ERROR_NULL_OBJECT; }

AAX_Result HostSide::PostTouchRequest(AAX_CParamID id) {
  if (!id) return AAX_ERROR_NULL_OBJECT;
  const Turn turn(*this);
  ++touches[id];
  return AAX_SUCCESS;
}

AAX_Result HostSide::PostSetValueRequest(AAX_CParamID id, double normalised) {
  if (!id) return AAX_ERROR_NULL_OBJECT;
  if (std::isnan(normalised)) return AAX_ERROR_INVALID_INTERNAL_DATA;
  const Turn turn(*this);
  const double wanted = std::clamp(normalised, 0.0, 1.0);
  std::erase_if(requests, [id](const Request& older) { return older.id == id; });
  double held = 0.0;
  if (parameters && parameters->GetParameterNormalizedValue(id, &held) == AAX_SUCCESS && held == wanted)
    return AAX_SUCCESS;
  requests.push_back({id, wanted, isTouched(id), round});
  return AAX_SUCCESS;
}

AAX_Result HostSide::PostReleaseRequest(AAX_CParamID id) {
  if (!id) return AAX_ERROR_NULL_OBJECT;
  const Turn turn(*this);
  if (int& held = touches[id]; held > 0) --held;
  return AAX_SUCCESS;
}

AAX_Result HostSide::GetTouchState(AAX_CParamID id, AAX_CBoolean* touched) {
  if (!id || !touched) return AAX_ERROR_NULL_OBJECT;
  const std::lock_guard turn(mutex);
  *touched = underWay && underWay->id == id ? underWay->touched : isTouched(id);
  return AAX_SUCCESS;
}

}  // namespace corvane::aaxhost
