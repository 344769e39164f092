#include "modules/limiter/OptoLimiter.h"

#include <algorithm>
#include <cmath>

#include "core/dsp/Biquad.h"
#include "core/dsp/Flush.h"
#include "modules/limiter/LimiterTimes.h"

namespace corvane::limiter {

namespace {

constexpr double kPeakShare = 0.93;
constexpr double kSoftBias = 0.01, kHardBias = 0.05;
constexpr double kFastestFall = 0.0333;  // share of the distance per sample that the cell can fall
constexpr double kFallScale = 0.25 * 0.145;
constexpr double kMemoryFloor = 0.001;
constexpr double kFlush = 1e-15;
constexpr double kBesideZero = 1e-6;               // keeps the gain laws off a division by 0
constexpr double kRiseHz2Pi = 25132.741228718343;  // 2 pi 4000 Hz
constexpr double kFallHz2Pi = 628.3185307179587;   // 2 pi 100 Hz
constexpr double kTwoPi = 6.283185307179586;

template <bool soft>
void optoLevels(const double* rectifiedKey, int frames, double ceilingInverse, const OptoCoefficients& c,
                OptoState& state, double* levels) {
  constexpr double bias = soft ? kSoftBias : kHardBias;
  auto [peak, memory, hold, follow] = state;
  for (int i = 0; i < frames; ++i) {
    const double v = kPeakShare * rectifiedKey[i];
    if (v > peak)
      peak = v;
    else
      peak += (v - peak) * c.optoPeakFall;
    const double x = ceilingInverse * peak + bias;
    const double d = x - memory;
    if (d > 0.0) {
      memory += d * c.optoAttack;
    } else if (d < 0.0) {
      const double m = (soft ? x * 0.999 + 0.001 : x * 0.5 + 0.5) - memory;
      const double m2 = m * m;
      memory -= std::min(kFastestFall * -d, kFallScale * std::atan(4.0 * (m2 * m2) * c.optoFall));
    }
    memory = std::max(memory, kMemoryFloor);
    if (memory > hold)
      hold = memory;
    else
      hold += (memory - hold) * c.optoPeakFall;
    follow = flushed(follow + (hold - follow) * (hold > follow ? c.riseFast : c.fallFast), kFlush);
    levels[i] = follow;
  }
  state = {peak, memory, hold, follow};
}

}  // namespace

double designOptoAttack(double attackNorm, double sampleRateHz) {
  const double reference = 0.1 * 0.33 * std::pow(1000.0, 0.5);           // ms, the middle of the travel
  const double time = 0.1 * 4.0 * 0.33 * std::pow(10000.0, attackNorm);  // ms
  return shareOver(reference * 44100.0 * 0.001) * reference / time * 44100.0 / sampleRateHz;
}

void designOptoRelease(double releaseNorm, double sampleRateHz, OptoCoefficients& c) {
  const double releaseMs = 0.35 * 10.0 * std::pow(1000.0, releaseNorm);
  c.optoFall = shareOver(releaseMs * sampleRateHz * 0.001);
  c.optoPeakFall = 1.0 - std::exp(-kTwoPi / (0.012 * std::sqrt(0.001 * releaseMs) * sampleRateHz));
  c.riseFast = 1.0 - std::exp(-kRiseHz2Pi / sampleRateHz);
  c.fallFast = 1.0 - std::exp(-kFallHz2Pi / sampleRateHz);
}

void optoGains(const double* rectifiedKey, int frames, double ceilingInverse, bool soft,
               const OptoCoefficients& c, OptoState& state, double* gains) {
  if (soft) {
    optoLevels<true>(rectifiedKey, frames, ceilingInverse, c, state, gains);
    for (int i = 0; i < frames; ++i) {
      const double y = gains[i] + kBesideZero;
      gains[i] = std::tanh(y) / y;
    }
  } else {
    optoLevels<false>(rectifiedKey, frames, ceilingInverse, c, state, gains);
    for (int i = 0; i < frames; ++i) {
      const double y = gains[i] + kBesideZero;
      gains[i] = y > 1.0 ? 1.0 / y : 1.0;
    }
  }
}

}  // namespace corvane::limiter
