#include "control/StateBank.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr std::uint8_t kStateBankStart[] = {0x00, 0x00, 0x00, 0x02, 'N', 'M', 'c', 'Q'};

}  // namespace

void appendStateBank(Bytes& out, std::span<const PresetRecord> bank, std::int32_t editorWord,
                     std::int32_t editorZoom) {
  out.insert(out.end(), std::begin(kStateBankStart), std::end(kStateBankStart));
  appendHeader(out, PresetContent::bank,
               {kStatePresets * kRecordsOfPreset, 0,
                static_cast<std::uint32_t>(kStatePresets * kRecordsOfPresetBytes), editorWord, editorZoom});
  for (std::uint32_t index = 0; index < kStatePresets; ++index) appendRecords(out, bank[index], index);
}

PresetResult readStateBank(ByteView data, const PresetRecord& fresh, std::vector<PresetRecord>& bank,
                           PresetHeader& header) {
  PresetResult refused;
  constexpr std::size_t kRecordsAt = std::size(kStateBankStart) + kPresetHeaderBytes;
  refused.error = PresetError::tooShort;
  if (data.size() < kRecordsAt) return refused;
  const PresetHeader read = readHeader(data.subspan(std::size(kStateBankStart)), false);
  refused.error = PresetError::cut;
  if (read.recordBytes > data.size() - kRecordsAt) return refused;

  std::vector<PresetRecord> presets = bank;
  RecordWalk walk(data.subspan(kRecordsAt, read.recordBytes), false);
  for (;;) {
    const auto step = walk.next();
    if (step == RecordWalk::Step::failed) return walk.result;
    if (step == RecordWalk::Step::end) break;
    if (walk.presetIndex >= presets.size()) continue;
    PresetRecord& preset = presets[walk.presetIndex];
    if (step == RecordWalk::Step::name) {
      preset = fresh;
      preset.setName(walk.name);
    } else if (step == RecordWalk::Step::value) {
      preset.values[walk.id] = walk.value;
    }
  }
  bank = std::move(presets);
  header = read;
  return {};
}

namespace {

struct WholeBank {
  std::vector<PresetRecord> presets = std::vector<PresetRecord>(kStatePresets);
  PresetHeader header;
};

PresetResult readWhole(ByteView state, WholeBank& bank) {
  PresetResult refused;
  refused.error = PresetError::tooShort;
  if (state.size() < kStateHeadBytes) return refused;
  return readStateBank(state.subspan(kStateHeadBytes), {}, bank.presets, bank.header);
}

}  // namespace

PresetResult readCurrentPreset(ByteView state, PresetRecord& record) {
  WholeBank bank;
  PresetResult result = readWhole(state, bank);
  if (result) record = bank.presets.front();
  return result;
}

PresetResult writeCurrentPreset(std::span<std::uint8_t> state, const PresetRecord& record) {
  WholeBank bank;
  PresetResult result = readWhole(state, bank);
  if (!result) return result;
  bank.presets.front() = record;
  Bytes changed;
  appendStateBank(changed, bank.presets, bank.header.editorWord, bank.header.editorZoom);
  if (changed.size() > state.size() - kStateHeadBytes) {
    result.error = PresetError::tooShort;
    return result;
  }
  std::ranges::copy(changed, state.begin() + kStateHeadBytes);
  return result;
}

}  // namespace corvane
