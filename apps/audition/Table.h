#pragma once

#include <string>
#include <vector>

#include "audition/Audition.h"

namespace corvane::audition {

// Where a preset leaves the field of its neighbours.
inline constexpr double kLoudnessWindowDb =
    3.0;  ///< out against in, or RMS against the one its name promises
inline constexpr double kHighestTruePeakDb = 0.0;
inline constexpr double kLeastCompressionDb = 1.0, kMostCompressionDb = 12.0;
inline constexpr double kGateClosesDb = 3.0, kGateOpensDb = 1.0;
inline constexpr double kNearestBoundDb = 1.0;

/// Words for what is out of bounds, empty for a clean preset.
std::string marksOf(const Auditioned& preset);

/// One row a preset, as a table of Markdown with aligned columns. `all` names the nearest.
std::string tableOf(const std::vector<Auditioned>& presets);

}  // namespace corvane::audition
