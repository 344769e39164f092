#pragma once

#include <cstdint>

namespace corvane::limiter {

// Saturator: a gain computed from a smoothed envelope v of the key, v = 1.0 at the ceiling.
//
//   step  name         gain law                          |out| for a loud signal
//   0     Valve 1      1 / (0.33 sqrt(v) + 1)            grows with the root
//   1     Valve 2      1 / (0.33 v + 1)                  3 x ceiling
//   2     Tape 1       atan(v) / v                       pi/2 x ceiling
//   3     Tape 2       tanh(v) / v                       ceiling
//   4     Soft Clip    sqrt(tanh(v^2)) / v               ceiling
//   5     Hard Clip    sqrt(sqrt(tanh(v^4))) / v         ceiling
//
// The envelope is fast enough to bend the waveform: one smoothing stage (soft) or three faster ones (hard).
// The right column holds for an envelope that stands, as of a constant level.

inline constexpr int kShapes = 6;

/// Shares per sample of the envelope's stages.
struct SaturatorCoefficients {
  double satCoefSoft = 0.0;  ///< the one stage of the soft form
  double satCoefHard = 0.0;  ///< each of the three stages of the hard form
};

/// Before the first design: 10 kHz and 30 kHz.
SaturatorCoefficients initialSaturator(double sampleRateHz);
/// `smoothNorm`: position of the Smooth control, 0..1; below 0 counts as 0.
SaturatorCoefficients designSaturator(double smoothNorm, double sampleRateHz);

/// What one channel remembers of the envelope, linear, ceiling 1.0; `{}` is the state after a reset.
struct SaturatorState {
  double satStage1 = 0.0, satStage2 = 0.0, satStage3 = 0.0;
};

/// Gain of curve `shape` (0 .. kShapes - 1) for a standing envelope `v`.
double saturatorGain(std::int32_t shape, double v);

/// Gains for `frames` (at most a block) of rectified key.
void saturatorGains(const double* rectifiedKey, int frames, double ceilingInverse, std::int32_t shape,
                    bool soft, const SaturatorCoefficients& c, SaturatorState& state, double* gains);

}  // namespace corvane::limiter
