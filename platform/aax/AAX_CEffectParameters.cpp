#include "platform/aax/AAX_CEffectParameters.h"

#include <cstring>

namespace {

constexpr const char* kMasterBypassId = "MasterBypassID";

}  // namespace

void AAX_CParameterManager::AddParameter(std::unique_ptr<AAX_IParameter> parameter) {
  byId[parameter->Identifier()] = parameter.get();
  parameters.push_back(std::move(parameter));
}

AAX_IParameter* AAX_CParameterManager::GetParameter(std::int32_t index) const {
  return index >= 0 && index < NumParameters() ? parameters[static_cast<std::size_t>(index)].get() : nullptr;
}

AAX_IParameter* AAX_CParameterManager::GetParameterByID(AAX_CParamID id) const {
  const auto at = byId.find(id);
  return at == byId.end() ? nullptr : at->second;
}

AAX_Result AAX_CEffectParameters::Initialize(AAX_IController* host, AAX_IAutomationDelegate* hostAutomation) {
  if (!host || !hostAutomation) return AAX_ERROR_NULL_OBJECT;
  controller = host;
  automation = hostAutomation;
  mPacketDispatcher.Initialize(host);
  return EffectInit();
}

void AAX_CEffectParameters::AddParameter(std::unique_ptr<AAX_IParameter> parameter) {
  parameter->SetAutomationDelegate(automation);
  mParameterManager.AddParameter(std::move(parameter));
}

AAX_Result AAX_CEffectParameters::GetNumberOfParameters(std::int32_t* count) const {
  *count = mParameterManager.NumParameters();
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterIDFromIndex(std::int32_t index, AAX_IString* id) const {
  const AAX_IParameter* parameter = mParameterManager.GetParameter(index);
  if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
  id->Set(parameter->Identifier());
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterName(AAX_CParamID id, AAX_IString* name) const {
  const AAX_IParameter* parameter = mParameterManager.GetParameterByID(id);
  if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
  name->Set(parameter->Name());
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterIsAutomatable(AAX_CParamID id,
                                                            AAX_CBoolean* automatable) const {
  const AAX_IParameter* parameter = mParameterManager.GetParameterByID(id);
  if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
  *automatable = parameter->Automatable();
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterNumberOfSteps(AAX_CParamID id, std::int32_t* steps) const {
  const AAX_IParameter* parameter = mParameterManager.GetParameterByID(id);
  if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
  *steps = parameter->GetNumberOfSteps();
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterDefaultNormalizedValue(AAX_CParamID id,
                                                                     double* normalised) const {
  const AAX_IParameter* parameter = mParameterManager.GetParameterByID(id);
  if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
  *normalised = parameter->GetNormalizedDefaultValue();
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterNormalizedValue(AAX_CParamID id, double* normalised) const {
  const AAX_IParameter* parameter = mParameterManager.GetParameterByID(id);
  if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
  *normalised = parameter->GetNormalizedValue();
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetMasterBypassParameter(AAX_IString* id) const {
  if (!mParameterManager.GetParameterByID(kMasterBypassId)) return AAX_ERROR_INVALID_PARAMETER_ID;
  id->Set(kMasterBypassId);
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetParameterStringFromValue(AAX_CParamID id, double normalised,
                                                              AAX_IString* text,
                                                              std::int32_t maxLength) const {
  const AAX_IParameter* parameter = mParameterManager.GetParameterByID(id);
  if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
  parameter->GetStringFromNormalizedValue(normalised, text);
  if (maxLength >= 0 && text->Length() > static_cast<std::uint32_t>(maxLength))
    text->Set(std::string(text->Get(), static_cast<std::size_t>(maxLength)).c_str());
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::SetParameterNormalizedValue(AAX_CParamID id, double normalised) {
  AAX_IParameter* parameter = mParameterManager.GetParameterByID(id);
  if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
  parameter->SetNormalizedValue(normalised);
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::TouchParameter(AAX_CParamID id) {
  AAX_IParameter* parameter = mParameterManager.GetParameterByID(id);
  if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
  parameter->Touch();
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::ReleaseParameter(AAX_CParamID id) {
  AAX_IParameter* parameter = mParameterManager.GetParameterByID(id);
  if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
  parameter->Release();
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::UpdateParameterNormalizedValue(AAX_CParamID id, double normalised,
                                                                 AAX_EUpdateSource) {
  AAX_IParameter* parameter = mParameterManager.GetParameterByID(id);
  if (!parameter) return AAX_ERROR_INVALID_PARAMETER_ID;
  if (parameter->UpdateNormalizedValue(normalised)) mPacketDispatcher.SetDirty(id);
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GenerateCoefficients() { return mPacketDispatcher.Dispatch(); }

AAX_Result AAX_CEffectParameters::ResetFieldData(AAX_CFieldIndex, void* data, std::uint32_t size) const {
  if (!data) return AAX_ERROR_NULL_OBJECT;
  std::memset(data, 0, size);
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetNumberOfChunks(std::int32_t* count) const {
  *count = 1;
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetChunkIDFromIndex(std::int32_t index, AAX_CTypeID* id) const {
  if (index != 0) return AAX_ERROR_INVALID_CHUNK_INDEX;
  *id = kControlsChunkId;
  return AAX_SUCCESS;
}

// "elck": one double a parameter, in order. Values reach the host as requests, like any other wish.

AAX_Result AAX_CEffectParameters::GetChunkSize(AAX_CTypeID id, std::uint32_t* size) const {
  if (id != kControlsChunkId) return AAX_ERROR_INVALID_CHUNK_ID;
  *size = static_cast<std::uint32_t>(mParameterManager.NumParameters()) * sizeof(double);
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::GetChunk(AAX_CTypeID id, AAX_SPlugInChunk* chunk) const {
  std::uint32_t size = 0;
  if (const AAX_Result result = GetChunkSize(id, &size); result != AAX_SUCCESS) return result;
  chunk->fSize = static_cast<std::int32_t>(size);
  chunk->fVersion = 1;
  chunk->fChunkID = id;
  std::memset(chunk->fName, 0, sizeof chunk->fName);
  std::strncpy(chunk->fName, kControlsChunkDescription, sizeof chunk->fName - 1);
  for (std::int32_t k = 0; k < mParameterManager.NumParameters(); ++k) {
    const double value = mParameterManager.GetParameter(k)->GetNormalizedValue();
    std::memcpy(chunk->fData + static_cast<std::size_t>(k) * sizeof value, &value, sizeof value);
  }
  return AAX_SUCCESS;
}

AAX_Result AAX_CEffectParameters::SetChunk(AAX_CTypeID id, const AAX_SPlugInChunk* chunk) {
  std::uint32_t size = 0;
  if (const AAX_Result result = GetChunkSize(id, &size); result != AAX_SUCCESS) return result;
  if (chunk->fSize != static_cast<std::int32_t>(size)) return AAX_ERROR_INCORRECT_CHUNK_SIZE;
  const auto valueAt = [chunk](std::int32_t k) {
    double value = 0.0;
    std::memcpy(&value, chunk->fData + static_cast<std::size_t>(k) * sizeof value, sizeof value);
    return value;
  };
  for (std::int32_t k = 0; k < mParameterManager.NumParameters(); ++k)
    if (!(valueAt(k) >= 0.0 && valueAt(k) <= 1.0)) return AAX_ERROR_INVALID_INTERNAL_DATA;
  for (std::int32_t k = 0; k < mParameterManager.NumParameters(); ++k) {
    AAX_IParameter* parameter = mParameterManager.GetParameter(k);
    parameter->Touch();
    parameter->SetNormalizedValue(valueAt(k));
    parameter->Release();
  }
  return AAX_SUCCESS;
}
