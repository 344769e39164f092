#pragma once

#include <vector>

#include "control/PresetBytes.h"

namespace corvane {

// A session's state: a head of the controller's, then the part that holds presets: 8 bytes, a bank header,
// and three presets. [control]

inline constexpr std::size_t kStateHeadBytes = 224;
inline constexpr std::size_t kStateBankBytes = 18985;
inline constexpr std::uint32_t kStatePresets =
    3;  ///< how many are stored: the current one and two of the bank

void appendStateBank(Bytes& out, std::span<const PresetRecord> bank, std::int32_t editorWord,
                     std::int32_t editorZoom);

/// Takes the presets of `data` into `bank`; the first name of a preset clears it to `fresh`. A block with a
/// fault leaves `bank` and `header` as they were. Words at the head of the block are not looked at, as older
/// sessions differ there.
PresetResult readStateBank(ByteView data, const PresetRecord& fresh, std::vector<PresetRecord>& bank,
                           PresetHeader& header);

/// The current setting of a whole state, head included, and the same put in its place. What follows the bank
/// stays. A state with a fault leaves all as it was.
PresetResult readCurrentPreset(ByteView state, PresetRecord& record);
PresetResult writeCurrentPreset(std::span<std::uint8_t> state, const PresetRecord& record);

}  // namespace corvane
