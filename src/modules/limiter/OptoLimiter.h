#pragma once

namespace corvane::limiter {

// Opto limiter: a peak detector drives a cell with a memory, as lamp and photoresistor do. The cell brightens
// at the attack; it darkens at a speed that grows with the fourth power of its distance from rest, so a loud
// passage releases fast at first and slowly at the end.
//
//   peak    v = 0.93 |k|, instant rise, one-pole fall
//   cell    x = peak / ceiling + bias, memory rises by a share of x - memory per sample,
//           falls by min(0.0333 (memory - x), 0.03625 atan(4 m^4 fall)),
//           m = memory - (x + 1) / 2 hard, memory - (0.999 x + 0.001) soft
//   gain    y = held and smoothed memory;  hard: min(1, 1 / y)   soft: tanh(y) / y
//
// Levels are linear and count from the ceiling: 1.0 is a key at the ceiling. Both laws bring a loud key to
// the ceiling; the bias (0.05 hard, 0.01 soft) and the 0.93 shift the resting level.

/// Shares per sample.
struct OptoCoefficients {
  double optoAttack = 0.0;     ///< cell, rising
  double optoFall = 0.0;       ///< cell, falling: scale of the fourth-power law
  double fallSeries[5] = {};   ///< 0.03625 atan(4 q fall) = s0 q + s1 q^3 + s2 q^5 + ..., q = m^4
  double threeTermsEnd = 0.0;  ///< q up to which the first three terms serve
  double seriesEnd = 0.0;      ///< q up to which all of them do
  double optoPeakFall = 0.0;   ///< peak detector and hold, falling
  double riseFast = 0.0;       ///< last smoother, rising: 4 kHz
  double fallFast = 0.0;       ///< last smoother, falling: 100 Hz
};

/// `attackNorm`: position of the Attack control, 0..1. Four decades of time over its travel.
double designOptoAttack(double attackNorm, double sampleRateHz);
/// All but the attack. `releaseNorm`: position of the Release control, 0..1. Three decades of time.
void designOptoRelease(double releaseNorm, double sampleRateHz, OptoCoefficients& c);

/// What one channel remembers; `{}` is the state after a reset.
struct OptoState {
  double optoPeak = 0.0;    ///< linear, full scale 1.0
  double optoMemory = 0.0;  ///< linear, ceiling 1.0
  double optoHold = 0.0;
  double optoFollow = 0.0;
};

/// Gains for `frames` (at most a block) of rectified key.
void optoGains(const double* rectifiedKey, int frames, double ceilingInverse, bool soft,
               const OptoCoefficients& c, OptoState& state, double* gains);

}  // namespace corvane::limiter
