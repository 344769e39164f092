#include "host/QDX_AAX_DirectData.h"

#include <cstddef>

#include "host/QDX_QcMN_1200_AAX_Parameters_Wrapper.h"

namespace corvane::host {

namespace {
constexpr double kNothing = -1.0;
}

AAX_IEffectDirectData* QDX_AAX_DirectData::Create() try { return new QDX_AAX_DirectData; } catch (...) {
  return nullptr;
}

QDX_AAX_DirectData::QDX_AAX_DirectData() { commands.fill(kNothing); }

AAX_Result QDX_AAX_DirectData::Initialize(AAX_IController* host, AAX_IEffectParameters* effectParameters) {
  const AAX_Result result = AAX_CEffectDirectData::Initialize(host, effectParameters);
  if (auto* ours = dynamic_cast<QDX_QcMN_1200_AAX_Parameters_Wrapper*>(effectParameters))
    store = &ours->controllerWrapper();
  return result;
}

AAX_Result QDX_AAX_DirectData::TimerWakeup(AAX_IPrivateDataAccess* access) {
  if (!access) return AAX_ERROR_NULL_OBJECT;
  if (const AAX_Result result = reportLatency(*access); result != AAX_SUCCESS) return result;
  return moveCommands(*access);
}

AAX_Result QDX_AAX_DirectData::reportLatency(AAX_IPrivateDataAccess& access) {
  if (!Controller()) return AAX_SUCCESS;
  std::int32_t known = 0;
  if (const AAX_Result result = Controller()->GetSignalLatency(&known); result != AAX_SUCCESS) return result;
  const AAX_Result result =
      access.ReadPortDirect(kLatencySeenField, 0, sizeof reportedLatency, &reportedLatency);
  if (result != AAX_SUCCESS || reportedLatency < 0 || reportedLatency == known) return result;
  return Controller()->SetSignalLatency(reportedLatency);
}

AAX_Result QDX_AAX_DirectData::moveCommands(AAX_IPrivateDataAccess& access) {
  if (!store) return AAX_SUCCESS;
  commandsMoving = store->takePending(commands.data());
  if (!commandsMoving) return AAX_SUCCESS;
  // Only the commands go back: what the render thread has seen meanwhile stays its own.
  float values[kCommands];
  constexpr auto kOffset = static_cast<std::uint32_t>(offsetof(SharedValues, commandValues));
  AAX_Result result = access.ReadPortDirect(kSharedBlockField, kOffset, sizeof values, values);
  if (result != AAX_SUCCESS) return result;
  for (std::size_t k = 0; k < commands.size(); ++k) {
    if (commands[k] == kNothing) continue;
    values[k] = static_cast<float>(commands[k]);
    commands[k] = kNothing;
  }
  return access.WritePortDirect(kSharedBlockField, kOffset, sizeof values, values);
}

}  // namespace corvane::host
