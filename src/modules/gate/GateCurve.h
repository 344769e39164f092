#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "core/dsp/Flush.h"

namespace corvane::gate {

// How the gain of expander, gate and ducker moves. A state x in 0..1 rises and falls by
//
//   attack    x += (1 - x) a               exponential, 92.4 % of the way in the attack time
//   release   x -= (x - t)^E r             E = 1 exponential, E = 1/16 close to a straight line in amplitude
//
// with t the value that is aimed at (the gate closes to 0; the ducker runs both mirrored). What reaches the
// signal is range + (1 - range) x.

inline constexpr double kGainFlush = 1e-15;

/// Coefficient 1 - 0.07637084^(1 / samples) of a stage that leaves 7.6 % of its way after a time.
inline double coverInTime(double sampleRateHz, double ms) {
  return 1.0 - std::pow(0.07637084, 1.0 / (sampleRateHz * ms * 0.001));
}

/// Stretch of the release time by the shape `s` in 0..1. A curve with a small exponent ends early;
/// stretched, 92.4 % of a fall take 1.00, 1.30 and 1.42 times what the dial shows at the shapes 0, 0.5 and 1.
inline double releaseStretch(double s) {
  const double s2 = s * s, s3 = s2 * s, s4 = s3 * s, s5 = s4 * s;
  return 1.0 - 0.5721 * s + 9.0385 * s2 - 3.5531 * s3 - 4.8688 * s4 + 2.7155 * s5;
}

/// Exponent of the release for the shape `s` in 0..1: 1 at 0, a half at 0.5, a sixteenth at 1.
inline double releaseExponent(double s) { return std::pow(0.0625, s * s); }

/// Coefficient of the expander's second stage, which rounds the corners: 95 % of the way in 10 ms.
inline double smoothingCoefficient(double sampleRateHz) { return 1.0 - std::pow(0.05, 100.0 / sampleRateHz); }

/// Exponent of the expander's static curve for each step of its ratio: t = l^exponent below the threshold, so
/// that 6 dB down at the key become 6 (1 + exponent) dB at the output. Step 0 does not expand.
inline constexpr std::array kRatioExponents{0.0, 0.1, 0.23, 0.35, 0.5, 0.7, 1.0, 1.5, 2.2, 4.0, 9.0};

/// The static curve over a block, in place: levels over the threshold to the gains that they aim at, 0..1.
void expanderTargets(double* levels, int frames, int ratioStep);

/// What a block needs to know; nothing in here changes from sample to sample.
struct GateCoefficients {
  double attackCoef = 0.0;     ///< share of the way per sample
  double releaseCoef = 0.0;    ///< fall per sample at full distance
  double smoothCoef = 0.0;     ///< share of the way per sample
  double smoothRise = 0.0;     ///< the same behind an attack step in the same sample: both in one
  double range = 0.0;          ///< floor, linear
  std::int32_t holdLimit = 0;  ///< samples
};

/// What one channel remembers; `{}` is closed.
struct GateState {
  double gainState = 0.0;      ///< what the curves act on, 0..1
  double gainSmoothed = 0.0;   ///< second stage, 0..1
  double gain = 0.0;           ///< linear, range .. 1
  std::int32_t holdCount = 0;  ///< samples since the key fell below the threshold
};

/// Release curves x^E. The two exponents that have a short form get it: the straight end of the dial and its
/// middle, where it stands by default. In a recursion the library's power is the quickest there is.
struct PlainCurve {
  double operator()(double x) const { return x; }
};
struct RootCurve {
  double operator()(double x) const { return std::sqrt(x); }
};
struct PowerCurve {
  double exponent;
  double operator()(double x) const { return std::pow(x, exponent); }
};

// The flush, and a fall that would pass 0, happen near 0 alone: the next sample does not wait for either.
inline double flushedGain(double x) { return flushedNearZero(x, kGainFlush); }
inline double settledGain(double x) {
  if (x < kGainFlush * 0x1p20) [[unlikely]]
    return std::max(flushed(x, kGainFlush), 0.0);
  return x;
}

// One sample of each variant. A release that has arrived is not computed: x^E is 0 there and the flush leaves
// 0 and 1 as they are.

/// `target`: the static curve's gain for this sample's key, 0..1. A key above the threshold is asked for
/// first: that is known ahead, where a comparison with the state would have to wait for it.
template <typename Curve>
void stepExpander(double target, const GateCoefficients& c, Curve curve, GateState& s) {
  const double risen = s.gainState + (1.0 - s.gainState) * c.attackCoef;
  if (target >= 1.0)
    s.gainState = flushedGain(risen);
  else if (target < s.gainState)
    s.gainState = settledGain(s.gainState - curve(s.gainState - target) * c.releaseCoef);
  else
    s.gainState = flushedGain(std::min(risen, target));
  const double distance = s.gainState - s.gainSmoothed;
  s.gainSmoothed = flushedGain(s.gainSmoothed + std::max(distance * c.smoothRise, distance * c.smoothCoef));
}

template <typename Curve>
void stepGate(bool above, const GateCoefficients& c, Curve curve, GateState& s) {
  if (above) {
    s.holdCount = 0;
    s.gainState = flushedGain(s.gainState + (1.0 - s.gainState) * c.attackCoef);
  } else if (s.holdCount < c.holdLimit) {
    ++s.holdCount;
  } else if (s.gainState != 0.0) {
    s.gainState = settledGain(s.gainState - curve(s.gainState) * c.releaseCoef);
  }
  s.gainSmoothed = s.gainState;
}

template <typename Curve>
void stepDucker(bool above, const GateCoefficients& c, Curve curve, GateState& s) {
  if (above) {
    s.holdCount = 0;
    s.gainState = settledGain(s.gainState - s.gainState * c.attackCoef);
  } else if (s.holdCount < c.holdLimit) {
    ++s.holdCount;
  } else if (s.gainState != 1.0) {
    s.gainState = std::min(flushedGain(s.gainState + curve(1.0 - s.gainState) * c.releaseCoef), 1.0);
  }
  s.gainSmoothed = s.gainState;
}

}  // namespace corvane::gate
