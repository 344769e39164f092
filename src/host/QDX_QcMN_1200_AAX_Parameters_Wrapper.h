#pragma once

#include <array>
#include <memory>

#include "core/Rack.h"
#include "host/ControllerDesk.h"
#include "host/LivingObject.h"
#include "host/QDX_AAX_ControllerWrapper.h"
#include "platform/aax/AAX_CEffectParameters.h"

namespace corvane::host {

/// The parameters object of an instance: makes host parameters out of the bank, fills the private fields,
/// speaks values and keeps the whole state as the chunk "All ". [control]
class QDX_QcMN_1200_AAX_Parameters_Wrapper final : public AAX_CEffectParameters, private LivingObject {
 public:
  /// Factory function of the description.
  static AAX_IEffectParameters* Create();
  explicit QDX_QcMN_1200_AAX_Parameters_Wrapper(const platform::Services& services);

  /// The bank's text with its unit, cut to `maxLength` characters, 31 at most.
  AAX_Result GetParameterStringFromValue(AAX_CParamID id, double normalised, AAX_IString* text,
                                         std::int32_t maxLength) const override;
  AAX_Result UpdateParameterNormalizedValue(AAX_CParamID id, double normalised,
                                            AAX_EUpdateSource source) override;
  AAX_Result ResetFieldData(AAX_CFieldIndex field, void* data, std::uint32_t size) const override;
  /// The processor's field alone holds an object that must end.
  AAX_Result FreeFieldData(AAX_CFieldIndex field, void* data, std::uint32_t size) const override;
  AAX_Result GetNumberOfChunks(std::int32_t* count) const override;
  AAX_Result GetChunkIDFromIndex(std::int32_t index, AAX_CTypeID* id) const override;
  AAX_Result GetChunkSize(AAX_CTypeID id, std::uint32_t* size) const override;
  AAX_Result GetChunk(AAX_CTypeID id, AAX_SPlugInChunk* chunk) const override;
  AAX_Result SetChunk(AAX_CTypeID id, const AAX_SPlugInChunk* chunk) override;
  /// Under EditorDesk::kCustomDataId the pointer to the instance's desk.
  AAX_Result GetCustomData(AAX_CTypeID id, std::uint32_t size, void* data,
                           std::uint32_t* written) const override;

  /// Host parameter of a bank id below 360; null where the host has none.
  AAX_IParameter* parameterOf(int id) const {
    return id < kParameters ? byId[static_cast<std::size_t>(id)] : nullptr;
  }
  QDX_AAX_ControllerWrapper& controllerWrapper() { return wrapper; }

 protected:
  AAX_Result EffectInit() override;

 private:
  void addParameters();
  void addBypass();
  void addBankParameter(int id);
  AAX_Result fillStateChunk(AAX_SPlugInChunk& chunk) const;

  platform::HoldableClock clock;
  const platform::Services machine;
  mutable QDX_AAX_ControllerWrapper wrapper;
  mutable ControllerDesk desk;
  std::array<AAX_IParameter*, kParameters> byId{};
};

/// What a host shows behind the display of a bank id, blanks included.
const char* hostUnit(int id);

}  // namespace corvane::host
