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

/// Runs every job over its `frames` samples, at most kBlockFrames: `followLevel` of each rectified sample,
/// within 1e-13 of the level.
///
/// A follower is one long chain of dependent additions. A meter falls most of the time, and a run of samples
/// that stay below it is one step; in the others, and with several jobs at once, the chains overlap. Jobs
/// with the same state and samples run once.
void followLevels(std::span<LevelJob> jobs, int frames);

}  // namespace corvane
