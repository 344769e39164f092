#include "modules/limiter/VcaLimiter.h"

#include <algorithm>
#include <cmath>

#include "core/dsp/FastMath.h"
#include "modules/limiter/LimiterTimes.h"

namespace corvane::limiter {

namespace {

constexpr double kSoftRest = -1.2999999523162842, kHardRest = -0.800000011920929;
constexpr double kKeyFloor = 0.0001;  // -80 dB: the logarithm of silence stays finite
constexpr double kAttackExponent = 0.01002286817603043;
constexpr double kBesideZero = 1e-6;
constexpr double kSmallestLevel = 1e-5;  // below it the soft law is 1

double softGain(double level) { return level > kSmallestLevel ? fast::tanh(level) / level : 1.0; }

double hardGain(double level) {
  const double y = level + kBesideZero;
  return y >= 1.0 ? 1.0 / y : 1.0;
}

/// Replaces log levels of the key by the held levels, in decades; the highest of them.
///
/// The floor falls first and then rises where l is above it: the larger of the two, with the rise computed
/// from the floor before its fall, so that a sample waits for one multiplication and two additions less.
double hold(double* levels, int frames, double rest, const VcaCoefficients& c, VcaState& state) {
  const double fall = c.vcaFall, smooth = c.vcaSmooth;
  const double keep = (1.0 - fall) * (1.0 - c.vcaAttack), lift = rest * fall * (1.0 - c.vcaAttack);
  for (int i = 0; i < frames; ++i) levels[i] = lift + levels[i] * c.vcaAttack;
  auto [floor, held] = state;
  double highest = held;
  for (int i = 0; i < frames; ++i) {
    floor = std::max(floor + (rest - floor) * fall, keep * floor + levels[i]);
    held = std::max(floor, held + (floor - held) * smooth);
    levels[i] = held;
    highest = std::max(highest, held);
  }
  state = {floor, held};
  return highest;
}

}  // namespace

double designVcaAttack(double attackMs, double sampleRateHz) {
  const double time = 0.7 * attackMs;
  return (1.0 - std::pow(kTimeRest, kAttackExponent)) * 3.2 / time * 44100.0 / sampleRateHz;
}

void designVcaRelease(double releaseMs, double attackMs, double sampleRateHz, VcaCoefficients& c) {
  const double time = 2.8 * releaseMs;
  c.vcaFall = shareOver(1.4 * time * sampleRateHz * 0.001);
  c.vcaSmooth = shareOver((0.25 * time + attackMs) * sampleRateHz * 0.001);
}

CORVANE_WIDE_LOOPS [[gnu::flatten]] void vcaGains(const double* rectifiedKey, int frames,
                                                  double ceilingInverse, bool soft, const VcaCoefficients& c,
                                                  VcaState& state, double* gains) {
  const double rest = soft ? kSoftRest : kHardRest;
  for (int i = 0; i < frames; ++i) gains[i] = fast::log10(ceilingInverse * rectifiedKey[i] + kKeyFloor);
  const double highest = hold(gains, frames, rest, c, state);
  if (soft) {
    for (int i = 0; i < frames; ++i) gains[i] = softGain(fast::pow10(gains[i]));
  } else if (highest < -kBesideZero) {  // below the ceiling throughout
    std::fill_n(gains, frames, 1.0);
  } else {
    for (int i = 0; i < frames; ++i) gains[i] = hardGain(fast::pow10(gains[i]));
  }
}

}  // namespace corvane::limiter
