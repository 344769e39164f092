#include "modules/limiter/BrickWall.h"

#include <algorithm>
#include <cmath>

#include "core/dsp/FastMath.h"
#include "modules/limiter/LimiterTimes.h"

namespace corvane::limiter {

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kHeadroom = 0.01;      // the level stands this much over the key
constexpr double kRest = 0.1;           // modes 1 and 2 fall to here
constexpr double kSteepestFall = 0.25;  // mode 0, share of the distance per sample
constexpr double kBesideZero = 1e-6;
constexpr double kSoftDrive = 1.255;

// A stage that jumps up to what stands above it, and falls by a share of the distance, is the larger of the
// two: no guess of the processor which way it will be.
double chase(double above, double stage, double share) {
  return std::max(above, stage + (above - stage) * share);
}

/// `v` and both states in units of 1 / slow1, in which the square of the distance needs no factor.
double quadraticFall(double v, const BrickWallCoefficients& c, BrickWallState& s) {
  s.brickFast = std::max(v, approach(v, s.brickFast, c.fastFall));
  const double d = s.brickStage1 - s.brickFast;
  if (d < 0.0) return s.brickStage1 = s.brickFast;
  // min(d / 4, d^2): told by the distance, the choice is foreseen and the level does not wait for it
  if (d > kSteepestFall) [[unlikely]]
    return s.brickStage1 -= kSteepestFall * d;
  return s.brickStage1 -= d * d;
}

double exponentialFall(double v, const BrickWallCoefficients& c, BrickWallState& s) {
  s.brickFast = std::max(v, approach(kRest, s.brickFast, c.fastFall));
  return s.brickStage1 = chase(s.brickFast, s.brickStage1, c.slow2);
}

double cascadedFall(double v, const BrickWallCoefficients& c, BrickWallState& s) {
  s.brickFast = std::max(v, s.brickFast + (kRest - s.brickFast) * c.slow3);
  s.brickStage1 = chase(s.brickFast, s.brickStage1, c.slow3);
  s.brickStage2 = chase(s.brickStage1, s.brickStage2, c.slow3);
  return s.brickStage3 = chase(s.brickStage2, s.brickStage3, c.slow3);
}

/// `level` over a block, in units of 1 / `scale`.
template <typename Level>
void levels(const double* rectifiedKey, int frames, double ceilingInverse, const BrickWallCoefficients& c,
            double scale, BrickWallState& state, double* out, Level level) {
  const auto scaled = [](const BrickWallState& s, double by) {
    return BrickWallState{s.brickFast * by, s.brickStage1 * by, s.brickStage2 * by, s.brickStage3 * by};
  };
  const double share = ceilingInverse * scale, headroom = kHeadroom * scale, unit = 1.0 / scale;
  BrickWallState s = scaled(state, scale);
  for (int i = 0; i < frames; ++i) out[i] = unit * level(rectifiedKey[i] * share + headroom, c, s);
  state = scaled(s, unit);
}

}  // namespace

BrickWallCoefficients designBrickWall(double releaseMs, double sampleRateHz) {
  BrickWallCoefficients c;
  c.fastFall = 1.0 - std::exp(-kTwoPi / (0.0025 * sampleRateHz));
  c.slow1 = shareOver(2.0 * 0.35 * releaseMs * sampleRateHz * 0.001 * 3.0);
  c.slow2 = shareOver(2.0 * 0.125 * 1.4 * releaseMs * sampleRateHz * 0.001 * 3.0);
  c.slow3 = shareOver(2.0 * 0.03125 * 1.4 * releaseMs * sampleRateHz * 0.001 * 3.0);
  return c;
}

CORVANE_WIDE_LOOPS [[gnu::flatten]] void brickWallGains(const double* rectifiedKey, int frames,
                                                        double ceilingInverse, std::int32_t mode, bool soft,
                                                        const BrickWallCoefficients& c, BrickWallState& state,
                                                        double* gains) {
  if (mode == 0) levels(rectifiedKey, frames, ceilingInverse, c, c.slow1, state, gains, quadraticFall);
  if (mode == 1) levels(rectifiedKey, frames, ceilingInverse, c, 1.0, state, gains, exponentialFall);
  if (mode == 2) levels(rectifiedKey, frames, ceilingInverse, c, 1.0, state, gains, cascadedFall);
  if (soft)
    for (int i = 0; i < frames; ++i) {
      const double y = kSoftDrive * (gains[i] + kBesideZero);
      gains[i] = std::sqrt(fast::atan(y * y)) / y;
    }
  else
    for (int i = 0; i < frames; ++i) {
      const double x = gains[i] + kBesideZero;
      gains[i] = x >= 1.0 ? 1.0 / x : 1.0;
    }
}

}  // namespace corvane::limiter
