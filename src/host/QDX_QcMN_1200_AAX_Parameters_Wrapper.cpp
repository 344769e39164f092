#include "host/QDX_QcMN_1200_AAX_Parameters_Wrapper.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "control/ParameterText.h"
#include "core/CorvaneMonoEffect.h"
#include "host/SharedBlock.h"
#include "platform/system/Services.h"

namespace corvane::host {

namespace {

constexpr const char* kBypassId = "MasterBypassID";
constexpr AAX_CTypeID kStateChunkId = AAX_TypeID("All ");
constexpr std::uint32_t kTrailerWord = 0x00300000;
constexpr std::uint32_t kTrailerBytes = 2 * sizeof kTrailerWord;
constexpr std::int32_t kSmallestChunk = 12;
constexpr std::int32_t kLongestText = 31;

/// Takes a parameter's value as what it offers.
void fillPacket(const AAX_IParameter& parameter, AAX_CPacket& packet) {
  bool flag = false;
  float single = 0.0f;
  std::int32_t integer = 0;
  double number = 0.0;
  if (parameter.GetValueAsBool(&flag))
    packet.Set(static_cast<std::int32_t>(flag));
  else if (parameter.GetValueAsFloat(&single))
    packet.Set(single);
  else if (parameter.GetValueAsInt32(&integer))
    packet.Set(integer);
  else if (parameter.GetValueAsDouble(&number))
    packet.Set(number);
}

template <typename T, typename Fill>
AAX_Result fillField(void* data, std::uint32_t size, Fill fill) {
  if (size != sizeof(T)) return AAX_ERROR_INVALID_INTERNAL_DATA;
  fill(data);
  return AAX_SUCCESS;
}

/// Hosts are told that memory ran out; no exception goes through their code.
template <typename Work>
AAX_Result withinMemory(Work work) try {
  return work();
} catch (const std::bad_alloc&) {
  return AAX_ERROR_NULL_OBJECT;
}

/// Steps of a host parameter: one more than the bank's, 0 for a continuous one.
std::int32_t hostSteps(int id) {
  const int steps = parameterSteps(id);
  return steps > 0 ? steps + 1 : 0;
}

}  // namespace

AAX_IEffectParameters* QDX_QcMN_1200_AAX_Parameters_Wrapper::Create() try {
  return new QDX_QcMN_1200_AAX_Parameters_Wrapper(platform::systemServices());
} catch (...) {
  return nullptr;
}

QDX_QcMN_1200_AAX_Parameters_Wrapper::QDX_QcMN_1200_AAX_Parameters_Wrapper(const platform::Services& services)
    : clock(services.clock),
      machine{services.folders, services.settings, clock, services.desktop, services.trace},
      wrapper(*this, machine),
      desk(wrapper, clock) {}

AAX_Result QDX_QcMN_1200_AAX_Parameters_Wrapper::EffectInit() {
  return withinMemory([this] {
    addParameters();
    return AAX_SUCCESS;
  });
}

void QDX_QcMN_1200_AAX_Parameters_Wrapper::addParameters() {
  addBypass();
  for (int id = 0; id < kIdentifiers; ++id)
    if ((parameterKind(id) & kKindAnnounced) != 0) addBankParameter(id);
  const auto generator = [this](AAX_CParamID id, AAX_CPacket& packet) {
    if (const AAX_IParameter* parameter = mParameterManager.GetParameterByID(id))
      fillPacket(*parameter, packet);
  };
  mPacketDispatcher.RegisterPacket(kBypassId, kBypassField, generator);
  for (int id = 0; id < kParameters; ++id)
    if (byId[static_cast<std::size_t>(id)])
      mPacketDispatcher.RegisterPacket(parameterIdentifier(id), kFirstParameterField + id, generator);
}

void QDX_QcMN_1200_AAX_Parameters_Wrapper::addBypass() {
  AddParameter(std::make_unique<AAX_CParameter<bool>>(
      kBypassId, "Master Bypass", false, std::make_unique<AAX_CBinaryTaperDelegate>(),
      std::make_unique<AAX_CBinaryDisplayDelegate>("off", "on"), true, 2));
}

void QDX_QcMN_1200_AAX_Parameters_Wrapper::addBankParameter(int id) {
  char name[kTextBytes];
  parameterName(id, name);
  auto parameter = std::make_unique<AAX_CParameter<float>>(
      parameterIdentifier(id), name, static_cast<float>(wrapper.value(id)),
      std::make_unique<AAX_CLinearTaperDelegate<float>>(0.0f, 1.0f),
      std::make_unique<AAX_CNumberDisplayDelegate<float>>(), true, hostSteps(id));
  if (id < kParameters) byId[static_cast<std::size_t>(id)] = parameter.get();
  AddParameter(std::move(parameter));
}

AAX_Result QDX_QcMN_1200_AAX_Parameters_Wrapper::GetParameterStringFromValue(AAX_CParamID id,
                                                                             double normalised,
                                                                             AAX_IString* text,
                                                                             std::int32_t maxLength) const {
  if (!id || !text) return AAX_ERROR_NULL_OBJECT;
  if (std::strcmp(id, kBypassId) == 0)
    return AAX_CEffectParameters::GetParameterStringFromValue(id, normalised, text, maxLength);
  const int bankId = parameterIdOf(id);
  if (bankId < 0) return AAX_ERROR_INVALID_PARAMETER_ID;
  char display[kTextBytes];
  parameterDisplay(bankId, normalised, display);
  std::string shown = std::string(display).append(hostUnit(bankId));
  shown.resize(std::min(shown.size(), static_cast<std::size_t>(std::clamp(maxLength, 0, kLongestText))));
  text->Set(shown.c_str());
  return AAX_SUCCESS;
}

AAX_Result QDX_QcMN_1200_AAX_Parameters_Wrapper::UpdateParameterNormalizedValue(AAX_CParamID id,
                                                                                double normalised,
                                                                                AAX_EUpdateSource source) {
  if (!id) return AAX_ERROR_NULL_OBJECT;
  const AAX_Result result = AAX_CEffectParameters::UpdateParameterNormalizedValue(id, normalised, source);
  if (result != AAX_SUCCESS) return result;
  const bool fromElsewhere = source == AAX_eUpdateSource_Parameter || source == AAX_eUpdateSource_Chunk ||
                             source == AAX_eUpdateSource_Delay;
  const int bankId = parameterIdOf(id);
  if (fromElsewhere || bankId < 0 || bankId >= kParameters) return AAX_SUCCESS;
  AAX_CBoolean touched = 0;
  AutomationDelegate()->GetTouchState(id, &touched);
  if (touched) wrapper.hostValueChanged(bankId, normalised);
  return AAX_SUCCESS;
}

AAX_Result QDX_QcMN_1200_AAX_Parameters_Wrapper::ResetFieldData(AAX_CFieldIndex field, void* data,
                                                                std::uint32_t size) const {
  if (!data) return AAX_ERROR_NULL_OBJECT;
  switch (field) {
    case kSharedBlockField:
      return fillField<SharedBlock>(data, size, [](void* at) {
        auto* block = new (at) SharedBlock{};
        std::fill(std::begin(block->seenValues), std::end(block->seenValues), kNeverSeen);
        std::fill(std::begin(block->commandValues), std::end(block->commandValues), kNeverSeen);
      });
    case kLatencySeenField:
      return fillField<std::int32_t>(data, size, [](void* at) { new (at) std::int32_t{-1}; });
    case kRateSeenField: return fillField<float>(data, size, [](void* at) { new (at) float{kNeverSeen}; });
    case kProcessorField:
      try {
        return fillField<CorvaneMonoEffect>(data, size, [](void* at) { new (at) CorvaneMonoEffect; });
      } catch (...) {
        return AAX_ERROR_NULL_OBJECT;
      }
    default: return AAX_CEffectParameters::ResetFieldData(field, data, size);
  }
}

AAX_Result QDX_QcMN_1200_AAX_Parameters_Wrapper::FreeFieldData(AAX_CFieldIndex field, void* data,
                                                               std::uint32_t size) const {
  if (!data) return AAX_ERROR_NULL_OBJECT;
  if (field != kProcessorField) return AAX_SUCCESS;
  return fillField<CorvaneMonoEffect>(data, size,
                                      [](void* at) { std::destroy_at(static_cast<CorvaneMonoEffect*>(at)); });
}

AAX_Result QDX_QcMN_1200_AAX_Parameters_Wrapper::GetCustomData(AAX_CTypeID id, std::uint32_t size, void* data,
                                                               std::uint32_t* written) const {
  if (!data || !written) return AAX_ERROR_NULL_OBJECT;
  if (id != EditorDesk::kCustomDataId) return AAX_CEffectParameters::GetCustomData(id, size, data, written);
  EditorDesk* const offered = &desk;
  if (size < sizeof offered) return AAX_ERROR_INVALID_INTERNAL_DATA;
  std::memcpy(data, &offered, sizeof offered);
  *written = sizeof offered;
  return AAX_SUCCESS;
}

// Chunks: all host parameters as the base keeps them, and the strip's own state.

AAX_Result QDX_QcMN_1200_AAX_Parameters_Wrapper::GetNumberOfChunks(std::int32_t* count) const {
  *count = 2;
  return AAX_SUCCESS;
}

AAX_Result QDX_QcMN_1200_AAX_Parameters_Wrapper::GetChunkIDFromIndex(std::int32_t index,
                                                                     AAX_CTypeID* id) const {
  if (index != 1) return AAX_CEffectParameters::GetChunkIDFromIndex(index, id);
  *id = kStateChunkId;
  return AAX_SUCCESS;
}

AAX_Result QDX_QcMN_1200_AAX_Parameters_Wrapper::GetChunkSize(AAX_CTypeID id, std::uint32_t* size) const {
  if (id != kStateChunkId) return AAX_CEffectParameters::GetChunkSize(id, size);
  return withinMemory([&] {
    void* block = nullptr;
    *size = static_cast<std::uint32_t>(wrapper.getController()->getState(&block)) + kTrailerBytes;
    return AAX_SUCCESS;
  });
}

AAX_Result QDX_QcMN_1200_AAX_Parameters_Wrapper::GetChunk(AAX_CTypeID id, AAX_SPlugInChunk* chunk) const {
  if (id != kStateChunkId) return AAX_CEffectParameters::GetChunk(id, chunk);
  return withinMemory([&] { return fillStateChunk(*chunk); });
}

AAX_Result QDX_QcMN_1200_AAX_Parameters_Wrapper::fillStateChunk(AAX_SPlugInChunk& chunk) const {
  void* block = nullptr;
  const int size = wrapper.getController()->getState(&block);
  chunk.fSize = size + static_cast<std::int32_t>(kTrailerBytes);
  chunk.fVersion = 1;
  chunk.fChunkID = kStateChunkId;
  std::memset(chunk.fName, 0, sizeof chunk.fName);
  char* data = chunk.fData;
  std::memcpy(data, block, static_cast<std::size_t>(size));
  for (int k = 0; k < 2; ++k) {
    const std::size_t at = static_cast<std::size_t>(size) + static_cast<std::size_t>(k) * sizeof kTrailerWord;
    for (int byte = 0; byte < 4; ++byte)
      data[at + static_cast<std::size_t>(byte)] = static_cast<char>(kTrailerWord >> 8 * byte);
  }
  return AAX_SUCCESS;
}

AAX_Result QDX_QcMN_1200_AAX_Parameters_Wrapper::SetChunk(AAX_CTypeID id, const AAX_SPlugInChunk* chunk) {
  if (!chunk) return AAX_ERROR_NULL_OBJECT;
  if (id != kStateChunkId) return AAX_CEffectParameters::SetChunk(id, chunk);
  if (chunk->fSize < kSmallestChunk) return AAX_ERROR_NOT_INITIALIZED;
  const auto size = static_cast<std::size_t>(chunk->fSize) - kTrailerBytes;
  return withinMemory([&] {
    std::vector<char> block(chunk->fData, chunk->fData + size);  // the reader takes bytes that it may change
    const bool taken = wrapper.getController()->setState(block.data(), static_cast<int>(size));
    return taken ? AAX_SUCCESS : AAX_ERROR_INVALID_INTERNAL_DATA;
  });
}

}  // namespace corvane::host
