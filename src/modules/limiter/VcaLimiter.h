#pragma once

namespace corvane::limiter {

// VCA limiter: a detector in decades of level, an instant hold behind it, and the gain from the held level.
//
//   l = log10(|k| / ceiling + 0.0001)
//   floor falls towards the rest V, and rises towards l where l is above it
//   hold takes the floor when that is higher, and falls towards it otherwise
//   G = 10^hold        hard: min(1, 1 / G)        soft: tanh(G) / G
//
// The rest V is -0.8 hard and -1.3 soft, 16 and 26 dB below the ceiling: releases end there and the next
// attack starts there.

/// Shares per sample.
struct VcaCoefficients {
  double vcaAttack = 0.0;  ///< floor, rising; 1.0039 at the fastest setting and 44.1 kHz, a passing by 0.4 %
  double vcaFall = 0.0;    ///< floor, falling
  double vcaSmooth = 0.0;  ///< hold, falling
};

/// `attackMs`: 0.1 .. 100.
double designVcaAttack(double attackMs, double sampleRateHz);
/// Both falls. `releaseMs`: 10 .. 1000; the hold's time is longer by the attack time.
void designVcaRelease(double releaseMs, double attackMs, double sampleRateHz, VcaCoefficients& c);

/// What one channel remembers, in decades from the ceiling; `{}` is the state after a reset.
struct VcaState {
  double vcaFloor = 0.0;
  double vcaHold = 0.0;
};

/// Gains for `frames` (at most a block) of rectified key.
void vcaGains(const double* rectifiedKey, int frames, double ceilingInverse, bool soft,
              const VcaCoefficients& c, VcaState& state, double* gains);

}  // namespace corvane::limiter
