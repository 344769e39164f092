#pragma once

#include "platform/aax/AAX.h"
#include "platform/aax/AAX_IHost.h"
#include "platform/aax/AAX_IString.h"

// What an instance offers to its host. The library's factory functions make these; the host deletes them.

class AAX_IEffectParameters {
 public:
  virtual ~AAX_IEffectParameters() = default;
  /// Before everything else. Both interfaces outlive the object.
  virtual AAX_Result Initialize(AAX_IController* controller, AAX_IAutomationDelegate* automation) = 0;

  virtual AAX_Result GetNumberOfParameters(std::int32_t* count) const = 0;
  virtual AAX_Result GetParameterIDFromIndex(std::int32_t index, AAX_IString* id) const = 0;
  virtual AAX_Result GetParameterName(AAX_CParamID id, AAX_IString* name) const = 0;
  virtual AAX_Result GetParameterIsAutomatable(AAX_CParamID id, AAX_CBoolean* automatable) const = 0;
  virtual AAX_Result GetParameterNumberOfSteps(AAX_CParamID id, std::int32_t* steps) const = 0;
  virtual AAX_Result GetParameterDefaultNormalizedValue(AAX_CParamID id, double* normalised) const = 0;
  virtual AAX_Result GetParameterNormalizedValue(AAX_CParamID id, double* normalised) const = 0;
  virtual AAX_Result GetMasterBypassParameter(AAX_IString* id) const = 0;
  virtual AAX_Result GetParameterStringFromValue(AAX_CParamID id, double normalised, AAX_IString* text,
                                                 std::int32_t maxLength) const = 0;
  /// The host's own wish: goes through touch, set, release like a person's.
  virtual AAX_Result SetParameterNormalizedValue(AAX_CParamID id, double normalised) = 0;
  virtual AAX_Result TouchParameter(AAX_CParamID id) = 0;
  virtual AAX_Result ReleaseParameter(AAX_CParamID id) = 0;

  /// The host brings a value: an answer to a request, or automation.
  virtual AAX_Result UpdateParameterNormalizedValue(AAX_CParamID id, double normalised,
                                                    AAX_EUpdateSource source) = 0;
  /// Posts packets for what has changed. The host calls it after updates and before a render.
  virtual AAX_Result GenerateCoefficients() = 0;
  /// Fills a private field before the first render.
  virtual AAX_Result ResetFieldData(AAX_CFieldIndex field, void* data, std::uint32_t size) const = 0;
  /// Ends what ResetFieldData began in a private field, before its memory goes: an object that was
  /// constructed there is destroyed. Called once for each field that was filled, the last one first, with no
  /// render under way. Fields of plain data need nothing.
  virtual AAX_Result FreeFieldData(AAX_CFieldIndex, void*, std::uint32_t) const { return AAX_SUCCESS; }

  virtual AAX_Result GetNumberOfChunks(std::int32_t* count) const = 0;
  virtual AAX_Result GetChunkIDFromIndex(std::int32_t index, AAX_CTypeID* id) const = 0;
  /// Of the chunk's data, without the header.
  virtual AAX_Result GetChunkSize(AAX_CTypeID id, std::uint32_t* size) const = 0;
  virtual AAX_Result GetChunk(AAX_CTypeID id, AAX_SPlugInChunk* chunk) const = 0;
  virtual AAX_Result SetChunk(AAX_CTypeID id, const AAX_SPlugInChunk* chunk) = 0;

  /// Data that the effect offers beside the contract, under ids of its own: at most `size` bytes into `data`,
  /// their number into `written`. Effects need not offer any.
  virtual AAX_Result GetCustomData(AAX_CTypeID, std::uint32_t, void*, std::uint32_t*) const {
    return AAX_ERROR_UNIMPLEMENTED;
  }
};

class AAX_IEffectDirectData {
 public:
  virtual ~AAX_IEffectDirectData() = default;
  virtual AAX_Result Initialize(AAX_IController* controller, AAX_IEffectParameters* parameters) = 0;
  /// On a timer of the host, off the audio thread.
  virtual AAX_Result TimerWakeup(AAX_IPrivateDataAccess* access) = 0;
};

class AAX_IEffectGUI {
 public:
  virtual ~AAX_IEffectGUI() = default;
  virtual AAX_Result Initialize(AAX_IController* controller, AAX_IEffectParameters* parameters) = 0;
  virtual AAX_Result TimerWakeup() = 0;
  virtual AAX_Result ParameterUpdated(AAX_CParamID id) = 0;
};

using AAX_CreateEffectParameters = AAX_IEffectParameters* (*)();
using AAX_CreateEffectDirectData = AAX_IEffectDirectData* (*)();
using AAX_CreateEffectGUI = AAX_IEffectGUI* (*)();

// Entry points of a library, by name.
class AAX_ICollection;
using AAX_RegisterPlugin = AAX_Result (*)(AAX_ICollection* collection);
using AAX_CanUnloadNow = AAX_Result (*)();  ///< how many objects live
