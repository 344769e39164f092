#include "modules/limiter/OptoLimiter.h"

#include <algorithm>
#include <cmath>

#include "core/dsp/FastMath.h"
#include "core/dsp/Flush.h"
#include "modules/limiter/LimiterTimes.h"

namespace corvane::limiter {

namespace {

constexpr double kPeakShare = 0.93;
constexpr double kSoftBias = 0.01, kHardBias = 0.05;
constexpr double kFastestFall = 0.0333;  // share of the distance per sample that the cell can fall
constexpr double kFallScale = 0.25 * 0.145;
constexpr double kSeriesEnd = 0.0625;     // argument of the arc tangent up to which its series serves
constexpr double kThreeTermsEnd = 0.005;  // and up to which three terms of it do
constexpr double kMemoryFloor = 0.001;
constexpr double kFlush = 1e-15;
constexpr double kSmallestPeak = 1e-100;  // far below the last place of the bias, far above what is slow
constexpr double kBesideZero = 1e-6;      // keeps the gain laws off a division by 0
constexpr double kRiseHz2Pi = 25132.741228718343;  // 2 pi 4000 Hz
constexpr double kFallHz2Pi = 628.3185307179587;   // 2 pi 100 Hz
constexpr double kTwoPi = 6.283185307179586;

/// What the cell loses in a sample, kFallScale atan(4 q fall) with q = m^4: `memory` less that.
/// The next sample waits for it, so the series is arranged for the shortest way from q to the result; what it
/// leaves out is below 2e-16. It serves for all but the loudest passages with the fastest releases.
inline double darkened(double memory, double q, const OptoCoefficients& c) {
  if (!(q <= c.seriesEnd)) return memory - kFallScale * fast::atan(4.0 * q * c.optoFall);
  const double* s = c.fallSeries;
  const double q2 = q * q, q4 = q2 * q2;
  double left = ((memory - s[0] * q) - (s[1] * q) * q2) - (s[2] * q) * q4;
  if (q > c.threeTermsEnd) left -= (q * q2) * q4 * (s[3] + s[4] * q2);
  return left;
}

// Where a level takes the larger of two ways, the larger of the two results is the same number, and costs no
// guess of the processor which way it will be.
template <bool soft>
void optoLevels(const double* rectifiedKey, int frames, double ceilingInverse, const OptoCoefficients& c,
                OptoState& state, double* levels) {
  constexpr double bias = soft ? kSoftBias : kHardBias;
  const OptoCoefficients k = c;
  const double attack = k.optoAttack, peakFall = k.optoPeakFall;
  auto [peak, memory, hold, follow] = state;
  for (int i = 0; i < frames; ++i) {
    const double v = kPeakShare * rectifiedKey[i];
    peak = std::max(v, approach(v, peak, peakFall));
    const double x = ceilingInverse * peak + bias;
    const double d = x - memory;
    if (d > 0.0) {
      memory = std::max(memory + d * attack, kMemoryFloor);
    } else {  // never below x, and so never below the floor
      const double m = (soft ? x * 0.999 + 0.001 : x * 0.5 + 0.5) - memory;
      const double m2 = m * m;
      const double lowest = memory + kFastestFall * d;
      memory = darkened(memory, m2 * m2, k);
      if (memory < lowest) [[unlikely]]
        memory = lowest;
    }
    hold = std::max(memory, approach(memory, hold, peakFall));
    follow = std::max(approach(hold, follow, k.riseFast), approach(hold, follow, k.fallFast));
    follow = flushedNearZero(follow, kFlush);
    levels[i] = follow;
  }
  // Beside the bias such a peak is nothing, and on its way to 0 it would slow the processor down.
  if (peak < kSmallestPeak) peak = 0.0;
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
  const double z = 4.0 * c.optoFall, z2 = z * z;  // of q = 1
  double power = kFallScale * z;
  for (int n = 0; n < 5; ++n, power *= -z2) c.fallSeries[n] = power / (2 * n + 1);
  c.threeTermsEnd = kThreeTermsEnd / z;
  c.seriesEnd = kSeriesEnd / z;
  c.riseFast = 1.0 - std::exp(-kRiseHz2Pi / sampleRateHz);
  c.fallFast = 1.0 - std::exp(-kFallHz2Pi / sampleRateHz);
}

CORVANE_WIDE_LOOPS [[gnu::flatten]] void optoGains(const double* rectifiedKey, int frames,
                                                   double ceilingInverse, bool soft,
                                                   const OptoCoefficients& c, OptoState& state,
                                                   double* gains) {
  if (soft) {
    optoLevels<true>(rectifiedKey, frames, ceilingInverse, c, state, gains);
    for (int i = 0; i < frames; ++i) {
      const double y = gains[i] + kBesideZero;
      gains[i] = fast::tanh(y) / y;
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
