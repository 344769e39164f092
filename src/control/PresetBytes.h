#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "control/PresetRecord.h"

namespace corvane {

// Presets as bytes: a header of 41 bytes and a row of records, for files, for the clipboard and inside the
// state of a host's session. Written little-endian; read in both orders. [any]

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

inline constexpr std::size_t kPresetHeaderBytes = 41;
inline constexpr std::size_t kPresetBlockBytes = 6353;      ///< header, name, 192 values
inline constexpr std::size_t kRecordsOfPresetBytes = 6312;  ///< the same without header
inline constexpr int kRecordsOfPreset = 193;

enum class PresetError {
  none,
  notOpened,        ///< the file system refused; `reason` says why
  tooShort,         ///< no room for a header
  notAPreset,       ///< another start
  notSingle,        ///< a bank, not one preset
  cut,              ///< the records end beyond the data
  brokenRecord,     ///< a record too small for its kind, or a rest that is none
  valueOutOfRange,  ///< `id`, `value`
  notWritten,       ///< `reason`
  noMemory,
};

/// What came of reading or writing. Nothing was changed unless it holds.
struct PresetResult {
  PresetError error = PresetError::none;
  int id = -1;
  float value = 0.0f;
  std::string reason;
  explicit operator bool() const { return error == PresetError::none; }
};

/// What a person should know of a failure, without the file's name.
std::string describe(const PresetResult& result);

/// The fields of a header that mean something on reading.
struct PresetHeader {
  std::uint32_t recordCount = 0, currentPreset = 0, recordBytes = 0;
  std::int32_t editorWord = 0;
  std::int32_t editorZoom = 0;  ///< per cent
};

enum class PresetContent : std::uint8_t { single = 0x22, bank = 0x38 };

void appendHeader(Bytes& out, PresetContent content, const PresetHeader& header);
/// The name and every stored value of `record`, as preset `index` of its bank.
void appendRecords(Bytes& out, const PresetRecord& record, std::uint32_t index);

/// Reads a header's fields; `header` holds kPresetHeaderBytes.
PresetHeader readHeader(ByteView header, bool bigEndian);

/// Walks the records of a block, calling back for what it knows.
class RecordWalk {
 public:
  RecordWalk(ByteView recordBytes, bool isBigEndian) : rest(recordBytes), bigEndian(isBigEndian) {}

  enum class Step { name, value, unknown, end, failed };
  /// Moves to the next record; behind `failed` stands `result`.
  Step next();

  std::uint32_t presetIndex = 0;  ///< of the record
  std::string_view name;          ///< of a name record, as far as it goes
  std::uint32_t id = 0;           ///< of a value record, below 360
  float value = 0.0f;             ///< 0 .. 1
  PresetResult result;

 private:
  Step fail(PresetError error) {
    result.error = error;
    return Step::failed;
  }

  ByteView rest;
  bool bigEndian;
};

/// One preset, as a file holds it.
Bytes presetBlock(const PresetRecord& record, std::int32_t editorWord, std::int32_t editorZoom);

/// Takes the preset of a block into `record`; ids that the block does not name keep their values. A block
/// with any fault leaves `record` as it was.
PresetResult readPresetBlock(ByteView block, PresetRecord& record);

}  // namespace corvane
