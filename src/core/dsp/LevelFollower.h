#pragma once

#include <span>

#include "core/dsp/Flush.h"

namespace corvane {

inline constexpr double kMeterFlush = 1e-14;  // -280 dBFS, far below what a 24-bit converter resolves

/// One sample of a level meter: moves `level` towards `magnitude` by `attack` of the distance when it rises
/// and by `release` when it falls. Levels linear, shares 0..1.
inline double followLevel(double magnitude, double level, double attack, double release) {
  level += (magnitude - level) * (magnitude > level ? attack : release);
  return flushed(level, kMeterFlush);
}

/// One follower's share of a sub-block.
struct LevelJob {
  const double* samples = nullptr;
  double level = 0.0;                  ///< before, and afterwards behind the last sample
  double attack = 0.0, release = 0.0;  ///< attack >= release
};

/// Runs every job over its `frames` samples; equal to `followLevel` of each rectified sample, bit for bit.
///
/// A follower is one long chain of dependent additions, so one alone leaves the processor idle most of the
/// time: jobs run side by side, jobs with the same state and samples run once, and the flush, which changes
/// nothing at audible levels, is checked beside the chain instead of inside it.
void followLevels(std::span<LevelJob> jobs, int frames);

}  // namespace corvane
