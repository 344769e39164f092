#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "control/FactoryBank.h"
#include "core/Rack.h"

namespace corvane {

/// A setting with its name: the unit of presets, memories, undo and clipboard.
struct PresetRecord {
  char name[kPresetNameBytes] = "";
  std::array<float, kParameters> values{};  ///< normalised, by id

  /// Cut to what fits.
  void setName(std::string_view text) {
    const std::size_t length = std::min(text.size(), sizeof name - 1);
    std::memset(name, 0, sizeof name);
    std::memcpy(name, text.data(), length);
  }
};

}  // namespace corvane
