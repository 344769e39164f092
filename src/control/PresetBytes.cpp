#include "control/PresetBytes.h"

#include <fmt/format.h>

#include <bit>

#include "core/ParameterBank.h"

namespace corvane {

namespace {

constexpr std::size_t kRecordHeaderBytes = 12;
constexpr std::uint32_t kNameRecord = 0, kValueRecord = 1;
constexpr std::uint32_t kNameBodyBytes = 156, kValueBodyBytes = 20;
constexpr std::size_t kValueInBody = 12;
constexpr std::uint32_t kFormatWord = 0x02000000;
constexpr std::uint32_t kHeaderTail = 13;
// offsets in the header
constexpr std::size_t kContentAt = 4, kRecordCountAt = 13, kCurrentAt = 17, kSizeAt = 21, kWordAt = 29,
                      kZoomAt = 33;

void appendInteger(Bytes& out, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<std::uint8_t>(value >> shift));
}

void appendText(Bytes& out, std::string_view text, std::size_t field) {
  out.insert(out.end(), text.begin(), text.end());
  out.resize(out.size() + field - text.size(), 0);
}

std::uint32_t readInteger(ByteView bytes, std::size_t at, bool bigEndian) {
  std::uint32_t value = 0;
  for (std::size_t k = 0; k < 4; ++k)
    value |= static_cast<std::uint32_t>(bytes[at + k]) << 8 * (bigEndian ? 3 - k : k);
  return value;
}

std::string_view textAt(ByteView bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Order of the bytes behind a magic word; nothing for a word that starts no preset.
std::optional<bool> bigEndianAfter(std::string_view magic) {
  if (magic == "NMcQ" || magic == "TScQ") return false;
  if (magic == "QcMN" || magic == "QcST") return true;
  return std::nullopt;
}

}  // namespace

std::string describe(const PresetResult& result) {
  switch (result.error) {
    case PresetError::none: return "";
    case PresetError::notOpened: return "cannot be read: " + result.reason;
    case PresetError::tooShort: return "too short for a preset; nothing was changed";
    case PresetError::notAPreset: return "not a preset; nothing was changed";
    case PresetError::notSingle: return "a bank, not a single preset; nothing was changed";
    case PresetError::cut: return "cut short; nothing was changed";
    case PresetError::brokenRecord: return "holds a broken record; nothing was changed";
    case PresetError::valueOutOfRange: {
      char name[kTextBytes];
      parameterName(result.id, name);
      return fmt::format("value of {} is {}, must be 0 to 1; nothing was changed", name, result.value);
    }
    case PresetError::notWritten: return "cannot be written: " + result.reason;
    case PresetError::noMemory: return "not enough memory; nothing was changed";
  }
  return "";
}

void appendHeader(Bytes& out, PresetContent content, const PresetHeader& header) {
  appendText(out, "NMcQ", 4);
  out.push_back(static_cast<std::uint8_t>(content));
  appendInteger(out, kFormatWord);
  appendInteger(out, kParameters);
  appendInteger(out, header.recordCount);
  appendInteger(out, header.currentPreset);
  appendInteger(out, header.recordBytes);
  appendInteger(out, kHeaderTail);
  appendInteger(out, static_cast<std::uint32_t>(header.editorWord));
  appendInteger(out, static_cast<std::uint32_t>(header.editorZoom));
  appendInteger(out, 0);
}

void appendRecords(Bytes& out, const PresetRecord& record, std::uint32_t index) {
  appendInteger(out, kNameRecord);
  appendInteger(out, kNameBodyBytes);
  appendInteger(out, index);
  const std::size_t length = strnlen(record.name, kPresetNameBytes - 1);
  appendText(out, {record.name, length}, kNameBodyBytes);
  for (int id = 0; id < kParameters; ++id) {
    if (!(parameterKind(id) & kKindStored)) continue;
    appendInteger(out, kValueRecord);
    appendInteger(out, kValueBodyBytes);
    appendInteger(out, index);
    appendInteger(out, static_cast<std::uint32_t>(id));
    appendInteger(out, 0);
    appendInteger(out, 0);
    appendInteger(out, std::bit_cast<std::uint32_t>(record.values[static_cast<std::size_t>(id)]));
    appendInteger(out, 0);
  }
}

PresetHeader readHeader(ByteView header, bool bigEndian) {
  PresetHeader read;
  read.recordCount = readInteger(header, kRecordCountAt, bigEndian);
  read.currentPreset = readInteger(header, kCurrentAt, bigEndian);
  read.recordBytes = readInteger(header, kSizeAt, bigEndian);
  read.editorWord = static_cast<std::int32_t>(readInteger(header, kWordAt, bigEndian));
  read.editorZoom = static_cast<std::int32_t>(readInteger(header, kZoomAt, bigEndian));
  return read;
}

RecordWalk::Step RecordWalk::next() {
  if (rest.empty()) return Step::end;
  if (rest.size() < kRecordHeaderBytes) return fail(PresetError::brokenRecord);
  const std::uint32_t type = readInteger(rest, 0, bigEndian), size = readInteger(rest, 4, bigEndian);
  presetIndex = readInteger(rest, 8, bigEndian);
  rest = rest.subspan(kRecordHeaderBytes);
  if (size > rest.size()) return fail(PresetError::cut);
  const ByteView body = rest.first(size);
  rest = rest.subspan(size);
  if (type == kNameRecord) {
    name = textAt(body.first(std::min<std::size_t>(body.size(), kPresetNameBytes)));
    name = name.substr(0, name.find('\0'));
    return Step::name;
  }
  if (type != kValueRecord) return Step::unknown;
  if (body.size() < kValueInBody + 4) return fail(PresetError::brokenRecord);
  id = readInteger(body, 0, bigEndian);
  if (id >= kParameters) return Step::unknown;
  value = std::bit_cast<float>(readInteger(body, kValueInBody, bigEndian));
  if (value >= 0.0f && value <= 1.0f) return Step::value;
  result.id = static_cast<int>(id);
  result.value = value;
  return fail(PresetError::valueOutOfRange);
}

Bytes presetBlock(const PresetRecord& record, std::int32_t editorWord, std::int32_t editorZoom) {
  Bytes out;
  out.reserve(kPresetBlockBytes);
  appendHeader(
      out, PresetContent::single,
      {kRecordsOfPreset, 0, static_cast<std::uint32_t>(kRecordsOfPresetBytes), editorWord, editorZoom});
  appendRecords(out, record, 0);
  return out;
}

PresetResult readPresetBlock(ByteView block, PresetRecord& record) {
  const auto refuse = [](PresetError error) {
    PresetResult result;
    result.error = error;
    return result;
  };
  if (block.size() <= kContentAt) return refuse(PresetError::tooShort);
  const auto bigEndian = bigEndianAfter(textAt(block.first(kContentAt)));
  if (!bigEndian) return refuse(PresetError::notAPreset);
  if (block[kContentAt] != static_cast<std::uint8_t>(PresetContent::single))
    return refuse(PresetError::notSingle);
  if (block.size() < kPresetHeaderBytes) return refuse(PresetError::tooShort);
  const PresetHeader header = readHeader(block, *bigEndian);
  const ByteView records = block.subspan(kPresetHeaderBytes);
  if (header.recordBytes > records.size()) return refuse(PresetError::cut);

  PresetRecord read = record;
  RecordWalk walk(records.first(header.recordBytes), *bigEndian);
  for (;;) switch (walk.next()) {
      case RecordWalk::Step::name: read.setName(walk.name); break;
      case RecordWalk::Step::value: read.values[walk.id] = walk.value; break;
      case RecordWalk::Step::unknown: break;
      case RecordWalk::Step::failed: return walk.result;
      case RecordWalk::Step::end: record = read; return {};
    }
}

}  // namespace corvane
