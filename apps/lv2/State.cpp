#include "lv2/State.h"

#include <lv2/atom/atom.h>

#include <array>
#include <cmath>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "control/StateBank.h"
#include "core/ParameterBank.h"
#include "lv2/Ports.h"
#include "lv2/Strip.h"

namespace corvane::lv2 {

namespace {

constexpr AAX_CTypeID kEffectChunk = AAX_TypeID("All ");
constexpr std::uint32_t kFlags = LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE;
constexpr std::size_t kMostBytes = 1 << 20;  // far above any state that the effect writes

std::span<std::uint8_t> bytesOf(std::vector<char>& data) {
  return {reinterpret_cast<std::uint8_t*>(data.data()), data.size()};
}

/// Lays the values of the ports into the current setting of the effect's state.
void layIn(const Strip& strip, aaxhost::Chunk& chunk) {
  PresetRecord current;
  if (!readCurrentPreset(bytesOf(chunk.data), current)) return;
  for (int id = 0; id < kParameters; ++id)
    if (const double p = strip.held(id); parameterKind(id) & kKindStored && !std::isnan(p))
      current.values[static_cast<std::size_t>(id)] = static_cast<float>(p);
  writeCurrentPreset(bytesOf(chunk.data), current);
}

/// A state of the effect, or nothing.
std::optional<aaxhost::Chunk> effectState(std::span<const char> bytes) {
  if (bytes.size() > kMostBytes) return std::nullopt;
  auto chunk = aaxhost::chunkFromBytes(bytes);
  PresetRecord current;
  if (!chunk || chunk->id != kEffectChunk || !readCurrentPreset(bytesOf(chunk->data), current))
    return std::nullopt;
  return chunk;
}

using Word = std::array<std::uint8_t, 8>;

Word wordBytes(std::uint64_t word) {
  Word bytes;
  for (std::size_t k = 0; k < bytes.size(); ++k) bytes[k] = static_cast<std::uint8_t>(word >> 8 * k);
  return bytes;
}

std::uint64_t wordOf(std::span<const char> bytes) {
  std::uint64_t word = 0;
  for (std::size_t k = 0; k < bytes.size(); ++k)
    word |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[k])) << 8 * k;
  return word;
}

}  // namespace

State::State(LV2_URID_Map* map) {
  if (!map) return;
  const auto id = [map](const std::string& uri) { return map->map(map->handle, uri.c_str()); };
  chunkType = id(LV2_ATOM__Chunk);
  effectKey = id(std::string(kPluginUri) + "#effect");
  rackKey = id(std::string(kPluginUri) + "#rack");
  usable = chunkType && effectKey && rackKey;
}

LV2_State_Status State::save(Strip& strip, LV2_State_Store_Function store, LV2_State_Handle handle) const {
  if (!usable) return LV2_STATE_ERR_NO_FEATURE;
  aaxhost::Chunk chunk;
  if (strip.effect().getChunk(kEffectChunk, &chunk) != AAX_SUCCESS) return LV2_STATE_ERR_UNKNOWN;
  layIn(strip, chunk);
  const std::vector<char> bytes = aaxhost::chunkToBytes(chunk);
  if (const auto status = store(handle, effectKey, bytes.data(), bytes.size(), chunkType, kFlags);
      status != LV2_STATE_SUCCESS)
    return status;
  const Word rack = wordBytes(strip.rackMemory());
  return store(handle, rackKey, rack.data(), rack.size(), chunkType, kFlags);
}

LV2_State_Status State::restore(Strip& strip, LV2_State_Retrieve_Function retrieve,
                                LV2_State_Handle handle) const {
  if (!usable) return LV2_STATE_ERR_NO_FEATURE;
  LV2_State_Status wrong = LV2_STATE_SUCCESS;
  const auto stored = [&](LV2_URID key) -> std::span<const char> {
    std::size_t size = 0;
    std::uint32_t type = 0, flags = 0;
    const auto* bytes = static_cast<const char*>(retrieve(handle, key, &size, &type, &flags));
    if (!bytes) return {};
    if (type != chunkType) wrong = LV2_STATE_ERR_BAD_TYPE;
    return type == chunkType ? std::span(bytes, size) : std::span<const char>{};
  };
  const auto effect = stored(effectKey), rack = stored(rackKey);
  if (wrong != LV2_STATE_SUCCESS) return wrong;

  // A preset of the host's menu has neither: its ports say all.
  if (!effect.data() && !rack.data()) return LV2_STATE_SUCCESS;
  if (!effect.data() || !rack.data()) return LV2_STATE_ERR_NO_PROPERTY;
  const auto chunk = effectState(effect);
  if (!chunk || rack.size() != Word{}.size() || !RackRules().recall(wordOf(rack)) ||
      strip.effect().setChunk(*chunk) != AAX_SUCCESS)
    return LV2_STATE_ERR_UNKNOWN;
  strip.effect().settle();
  strip.recallRack(wordOf(rack));
  return LV2_STATE_SUCCESS;
}

}  // namespace corvane::lv2
