#pragma once

#include <array>

#include "host/LivingObject.h"
#include "host/SharedBlock.h"
#include "platform/aax/AAX_CEffectParameters.h"

namespace corvane::host {

class QDX_AAX_ControllerWrapper;

/// What cannot travel as a packet: commands to the processor, and the latency it reports. Runs on the host's
/// timer. [control]
class QDX_AAX_DirectData final : public AAX_CEffectDirectData, private LivingObject {
 public:
  /// Factory function of the description.
  static AAX_IEffectDirectData* Create();
  QDX_AAX_DirectData();
  AAX_Result Initialize(AAX_IController* controller, AAX_IEffectParameters* parameters) override;
  AAX_Result TimerWakeup(AAX_IPrivateDataAccess* access) override;

 private:
  AAX_Result reportLatency(AAX_IPrivateDataAccess& access);
  AAX_Result moveCommands(AAX_IPrivateDataAccess& access);

  QDX_AAX_ControllerWrapper* store = nullptr;
  std::array<double, kCommands> commands;  ///< by id - 360, -1 for none
  bool commandsMoving = false;
  std::int32_t reportedLatency = -1;
};

}  // namespace corvane::host
