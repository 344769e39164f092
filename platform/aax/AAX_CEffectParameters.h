#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/aax/AAX_CPacketDispatcher.h"
#include "platform/aax/AAX_CParameter.h"
#include "platform/aax/AAX_IEffect.h"

/// The parameters of an instance in the order in which they were added. [control]
class AAX_CParameterManager {
 public:
  void AddParameter(std::unique_ptr<AAX_IParameter> parameter);
  std::int32_t NumParameters() const { return static_cast<std::int32_t>(parameters.size()); }
  /// Null for an index or id without a parameter.
  AAX_IParameter* GetParameter(std::int32_t index) const;
  AAX_IParameter* GetParameterByID(AAX_CParamID id) const;

 private:
  std::vector<std::unique_ptr<AAX_IParameter>> parameters;
  std::unordered_map<std::string, AAX_IParameter*> byId;
};

/// Base of an effect's parameters object: keeps the parameters, answers the host's questions, turns updates
/// into packets, and stores all values as the chunk "elck". [control]
class AAX_CEffectParameters : public AAX_IEffectParameters {
 public:
  AAX_Result Initialize(AAX_IController* controller, AAX_IAutomationDelegate* automation) final;

  AAX_Result GetNumberOfParameters(std::int32_t* count) const override;
  AAX_Result GetParameterIDFromIndex(std::int32_t index, AAX_IString* id) const override;
  AAX_Result GetParameterName(AAX_CParamID id, AAX_IString* name) const override;
  AAX_Result GetParameterIsAutomatable(AAX_CParamID id, AAX_CBoolean* automatable) const override;
  AAX_Result GetParameterNumberOfSteps(AAX_CParamID id, std::int32_t* steps) const override;
  AAX_Result GetParameterDefaultNormalizedValue(AAX_CParamID id, double* normalised) const override;
  AAX_Result GetParameterNormalizedValue(AAX_CParamID id, double* normalised) const override;
  AAX_Result GetMasterBypassParameter(AAX_IString* id) const override;
  AAX_Result GetParameterStringFromValue(AAX_CParamID id, double normalised, AAX_IString* text,
                                         std::int32_t maxLength) const override;
  AAX_Result SetParameterNormalizedValue(AAX_CParamID id, double normalised) override;
  AAX_Result TouchParameter(AAX_CParamID id) override;
  AAX_Result ReleaseParameter(AAX_CParamID id) override;
  AAX_Result UpdateParameterNormalizedValue(AAX_CParamID id, double normalised,
                                            AAX_EUpdateSource source) override;
  AAX_Result GenerateCoefficients() override;
  AAX_Result ResetFieldData(AAX_CFieldIndex field, void* data, std::uint32_t size) const override;
  AAX_Result GetNumberOfChunks(std::int32_t* count) const override;
  AAX_Result GetChunkIDFromIndex(std::int32_t index, AAX_CTypeID* id) const override;
  AAX_Result GetChunkSize(AAX_CTypeID id, std::uint32_t* size) const override;
  AAX_Result GetChunk(AAX_CTypeID id, AAX_SPlugInChunk* chunk) const override;
  AAX_Result SetChunk(AAX_CTypeID id, const AAX_SPlugInChunk* chunk) override;

 protected:
  static constexpr AAX_CTypeID kControlsChunkId = AAX_TypeID("elck");
  static constexpr const char* kControlsChunkDescription = "Complete Controls State";

  /// Adds the effect's parameters and packets; called once, with the host's interfaces in place.
  virtual AAX_Result EffectInit() = 0;

  AAX_IController* Controller() const { return controller; }
  AAX_IAutomationDelegate* AutomationDelegate() const { return automation; }
  void AddParameter(std::unique_ptr<AAX_IParameter> parameter);

  AAX_CParameterManager mParameterManager;
  AAX_CPacketDispatcher mPacketDispatcher;

 private:
  AAX_IController* controller = nullptr;
  AAX_IAutomationDelegate* automation = nullptr;
};

/// Base of what an effect does on the host's timer with its private fields.
class AAX_CEffectDirectData : public AAX_IEffectDirectData {
 public:
  AAX_Result Initialize(AAX_IController* host, AAX_IEffectParameters* effectParameters) override {
    controller = host;
    parameters = effectParameters;
    return host && effectParameters ? AAX_SUCCESS : AAX_ERROR_NULL_OBJECT;
  }

 protected:
  AAX_IController* Controller() const { return controller; }
  AAX_IEffectParameters* EffectParameters() const { return parameters; }

 private:
  AAX_IController* controller = nullptr;
  AAX_IEffectParameters* parameters = nullptr;
};

/// Base of an effect's window.
class AAX_CEffectGUI : public AAX_IEffectGUI {
 public:
  AAX_Result Initialize(AAX_IController* host, AAX_IEffectParameters* effectParameters) override {
    controller = host;
    parameters = effectParameters;
    return host && effectParameters ? AAX_SUCCESS : AAX_ERROR_NULL_OBJECT;
  }
  AAX_Result TimerWakeup() override { return AAX_SUCCESS; }
  AAX_Result ParameterUpdated(AAX_CParamID) override { return AAX_SUCCESS; }

 protected:
  AAX_IController* Controller() const { return controller; }
  AAX_IEffectParameters* EffectParameters() const { return parameters; }

 private:
  AAX_IController* controller = nullptr;
  AAX_IEffectParameters* parameters = nullptr;
};
