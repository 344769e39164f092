#pragma once

#include <array>

#include "audition/Sound.h"

namespace corvane::audition {

inline constexpr int kBands = 27;  ///< third-octaves, 40 Hz to 16 kHz

/// Mean power in each third-octave, dB; -200 for none.
using BandLevels = std::array<double, kBands>;
BandLevels thirdOctaves(const Sound& sound);

/// dB an octave: the straight line through the differences out - in of the bands in which `in` lies within
/// 40 dB of its loudest.
double tiltChange(const BandLevels& in, const BandLevels& out);

}  // namespace corvane::audition
