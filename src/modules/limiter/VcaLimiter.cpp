#include "modules/limiter/VcaLimiter.h"

#include <cmath>

#include "core/dsp/Biquad.h"
#include "modules/limiter/LimiterTimes.h"

namespace corvane::limiter {

namespace {

constexpr double kSoftRest = -1.2999999523162842, kHardRest = -0.800000011920929;
constexpr double kKeyFloor = 0.0001;  // -80 dB: the logarithm of silence stays finite
constexpr double kAttackExponent = 0.01002286817603043;
constexpr double kBesideZero = 1e-6;
constexpr double kSmallestLevel = 1e-5;  // below it the soft law is 1

/// Replaces log levels of the key by the held levels, in decades.
void hold(double* levels, int frames, double rest, const VcaCoefficients& c, VcaState& state) {
  auto [floor, held] = state;
  for (int i = 0; i < frames; ++i) {
    const double l = levels[i];
    floor += (rest - floor) * c.vcaFall;
    if (l > floor) floor += (l - floor) * c.vcaAttack;
    if (floor > held)
      held = floor;
    else
      held += (floor - held) * c.vcaSmooth;
    levels[i] = held;
  }
  state = {floor, held};
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

void vcaGains(const double* rectifiedKey, int frames, double ceilingInverse, bool soft,
              const VcaCoefficients& c, VcaState& state, double* gains) {
  for (int i = 0; i < frames; ++i) gains[i] = std::log10(ceilingInverse * rectifiedKey[i] + kKeyFloor);
  hold(gains, frames, soft ? kSoftRest : kHardRest, c, state);
  for (int i = 0; i < frames; ++i) gains[i] = std::pow(10.0, gains[i]);
  if (soft)
    for (int i = 0; i < frames; ++i)
      gains[i] = gains[i] > kSmallestLevel ? std::tanh(gains[i]) / gains[i] : 1.0;
  else
    for (int i = 0; i < frames; ++i) {
      const double y = gains[i] + kBesideZero;
      gains[i] = y >= 1.0 ? 1.0 / y : 1.0;
    }
}

}  // namespace corvane::limiter
