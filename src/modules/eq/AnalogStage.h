#pragma once

#include "core/dsp/Flush.h"
#include "modules/eq/EqTable.h"

namespace corvane::eq {

/// Share of the distance per sample of both poles of the Analog stage. 3500, 2500 and 1500 Hz for Bellform,
/// Lumenband and Tonbox.
double analogCoefficient(int type, double sampleRateHz);

// A soft gain behind the bands: the full signal is multiplied by a gain that its own low-passed form sets.

/// What one channel of the Analog stage remembers: a two-pole low-pass of the signal.
struct AnalogState {
  double low1 = 0.0, low2 = 0.0;
};

/// Gain of the Analog stage at a low-passed level `l`, within 1e-15:
///
///   Bellform   atan(l/16) 16/l for both half-waves
///   Lumenband  tanh(l/16) 16/l above 0, atan(l/8) 8/l below
///   Tonbox     tanh(l/8) 8/l above 0, atan(l'/16) 16/l with l' = l / (1 + 0.02 |l|) below
///
/// It is 1 at small l and falls as |l| grows. `type`: one of the three.
double analogGain(int type, double l);

/// One step of the low-pass that steers the gain. It runs on while the stage is off, so that switching does
/// not click.
inline double analogLevel(double y, double coefficient, AnalogState& s) {
  constexpr double kLowFlush = 1e-15;
  s.low1 = flushed(s.low1 + (y - s.low1) * coefficient, kLowFlush);
  s.low2 = flushed(s.low2 + (s.low1 - s.low2) * coefficient, kLowFlush);
  return s.low2;
}

/// The stage over a block: every sample times the gain at its `level`, if `on`. Not-a-number leaves as 0.
void applyAnalog(int type, bool on, const double* levels, double* samples, int frames);

}  // namespace corvane::eq
