#pragma once

#include <cstdint>

namespace corvane::limiter {

// Brick-wall limiter: the level follows the key upwards at once, so that in the hard form no sample passes
// the ceiling, without look-ahead.
//
//   v = |k| / ceiling + 0.01        x = level + 1e-6
//   hard: g = min(1, 1 / x)         soft: g = sqrt(atan(y^2)) / y, y = 1.255 x
//
// The 0.01 makes the level a shade higher than the key: |out| < ceiling in both forms, with the output
// control at 0 dB and the key equal to the signal. The three modes differ in the fall alone:
//   0  by the square of the distance, at most a quarter of it per sample
//   1  exponential towards 0.1 (-20 dB), one stage
//   2  towards 0.1 through four stages of one speed

inline constexpr int kBrickModes = 3;

/// Shares per sample.
struct BrickWallCoefficients {
  double fastFall = 0.0;  ///< detector of modes 0 and 1
  double slow1 = 0.0;     ///< mode 0: share per sample and unit of distance
  double slow2 = 0.0;     ///< mode 1
  double slow3 = 0.0;     ///< mode 2, each stage
};

/// `releaseMs`: 10 .. 1000.
BrickWallCoefficients designBrickWall(double releaseMs, double sampleRateHz);

/// What one channel remembers, linear, ceiling 1.0; `{}` is the state after a reset.
struct BrickWallState {
  double brickFast = 0.0;
  double brickStage1 = 0.0, brickStage2 = 0.0, brickStage3 = 0.0;
};

/// Gains for `frames` (at most a block) of rectified key. `mode`: 0 .. kBrickModes - 1.
void brickWallGains(const double* rectifiedKey, int frames, double ceilingInverse, std::int32_t mode,
                    bool soft, const BrickWallCoefficients& c, BrickWallState& state, double* gains);

}  // namespace corvane::limiter
