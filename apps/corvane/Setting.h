#pragma once

#include <array>

#include "core/ModuleFamily.h"
#include "core/Rack.h"

namespace corvane::cli {

/// The values of a strip, normalised, by id; starts as the default strip.
class Setting {
 public:
  Setting();

  double value(int id) const { return values[static_cast<std::size_t>(id)]; }
  void store(int id, double value) { values[static_cast<std::size_t>(id)] = value; }
  const std::array<double, kParameters>& all() const { return values; }

 private:
  std::array<double, kParameters> values{};
};

/// Family of the module that stands in a place under this setting; null for an empty insert.
const ModuleFamily* familyInPlace(int place, const Setting& setting);

}  // namespace corvane::cli
