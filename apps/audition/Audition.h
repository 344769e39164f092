#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "audition/Hearing.h"
#include "audition/Material.h"

namespace corvane::audition {

/// A preset of the factory bank, heard.
struct Auditioned {
  int index = -1;
  std::string name, category;  ///< category empty for a starting point
  std::string material;
  Hearing hearing{};
  Character character{};       ///< on the common material of the category
  std::optional<int> nearest;  ///< index of the preset of its category that sounds most alike
  double nearestDb = 0.0;
};

/// Plays the factory presets for which `wanted` holds, in order of index, and finds each one's nearest among
/// them. The same every time, whichever others are heard. Throws cli::Failure.
std::vector<Auditioned> audition(const std::function<bool(const Auditioned&)>& wanted, MaterialShelf& shelf);

}  // namespace corvane::audition
