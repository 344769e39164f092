#include "modules/limiter/BrickWall.h"

#include <algorithm>
#include <cmath>

#include "core/dsp/Biquad.h"
#include "modules/limiter/LimiterTimes.h"

namespace corvane::limiter {

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kHeadroom = 0.01;      // the level stands this much over the key
constexpr double kRest = 0.1;           // modes 1 and 2 fall to here
constexpr double kSteepestFall = 0.25;  // mode 0, share of the distance per sample
constexpr double kBesideZero = 1e-6;
constexpr double kSoftDrive = 1.255;

double quadraticFall(double v, const BrickWallCoefficients& c, BrickWallState& s) {
  if (v > s.brickFast)
    s.brickFast = v;
  else
    s.brickFast += (v - s.brickFast) * c.fastFall;
  if (s.brickFast > s.brickStage1) {
    s.brickStage1 = s.brickFast;
  } else {
    const double d = s.brickStage1 - s.brickFast;
    s.brickStage1 -= std::min(kSteepestFall * d, d * d * c.slow1);
  }
  return s.brickStage1;
}

/// `stage` takes `above` when that is higher, and moves towards it otherwise.
double stageBelow(double above, double stage, double share) {
  return above > stage ? above : stage + (above - stage) * share;
}

double exponentialFall(double v, const BrickWallCoefficients& c, BrickWallState& s) {
  s.brickFast += (kRest - s.brickFast) * c.fastFall;
  if (v > s.brickFast) s.brickFast = v;
  return s.brickStage1 = stageBelow(s.brickFast, s.brickStage1, c.slow2);
}

double cascadedFall(double v, const BrickWallCoefficients& c, BrickWallState& s) {
  s.brickFast += (kRest - s.brickFast) * c.slow3;
  if (v > s.brickFast) s.brickFast = v;
  s.brickStage1 = stageBelow(s.brickFast, s.brickStage1, c.slow3);
  s.brickStage2 = stageBelow(s.brickStage1, s.brickStage2, c.slow3);
  return s.brickStage3 = stageBelow(s.brickStage2, s.brickStage3, c.slow3);
}

template <typename Level>
void levels(const double* rectifiedKey, int frames, double ceilingInverse, const BrickWallCoefficients& c,
            BrickWallState& state, double* out, Level level) {
  BrickWallState s = state;
  for (int i = 0; i < frames; ++i) out[i] = level(rectifiedKey[i] * ceilingInverse + kHeadroom, c, s);
  state = s;
}

}  // namespace

BrickWallCoefficients designBrickWall(double releaseMs, double sampleRateHz) {
  return {
      .fastFall = 1.0 - std::exp(-kTwoPi / (0.0025 * sampleRateHz)),
      .slow1 = shareOver(2.0 * 0.35 * releaseMs * sampleRateHz * 0.001 * 3.0),
      .slow2 = shareOver(2.0 * 0.125 * 1.4 * releaseMs * sampleRateHz * 0.001 * 3.0),
      .slow3 = shareOver(2.0 * 0.03125 * 1.4 * releaseMs * sampleRateHz * 0.001 * 3.0),
  };
}

void brickWallGains(const double* rectifiedKey, int frames, double ceilingInverse, std::int32_t mode,
                    bool soft, const BrickWallCoefficients& c, BrickWallState& state, double* gains) {
  if (mode == 0) levels(rectifiedKey, frames, ceilingInverse, c, state, gains, quadraticFall);
  if (mode == 1) levels(rectifiedKey, frames, ceilingInverse, c, state, gains, exponentialFall);
  if (mode == 2) levels(rectifiedKey, frames, ceilingInverse, c, state, gains, cascadedFall);
  for (int i = 0; i < frames; ++i) {
    const double x = gains[i] + kBesideZero;
    const double y = kSoftDrive * x;
    gains[i] = soft ? std::sqrt(std::atan(y * y)) / y : x >= 1.0 ? 1.0 / x : 1.0;
  }
}

}  // namespace corvane::limiter
