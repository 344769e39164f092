#pragma once

namespace corvane::eq {

/// What one channel of the Analog stage remembers: a two-pole low-pass of the signal.
struct AnalogState {
  double low1 = 0.0, low2 = 0.0;
};

/// Share of the distance per sample of both poles. 3500, 2500 and 1500 Hz for Bellform, Lumenband and Tonbox.
double analogCoefficient(int type, double sampleRateHz);

/// Soft gain behind the bands, in place: the full signal is multiplied by a gain that its own low-passed form
/// l sets. The gain is 1 at small l and falls as |l| grows:
///
///   Bellform   atan(l/16) 16/l for both half-waves
///   Lumenband  tanh(l/16) 16/l above 0, atan(l/8) 8/l below
///   Tonbox     tanh(l/8) 8/l above 0, atan(l'/16) 16/l with l' = l / (1 + 0.02 |l|) below
///
/// The low-pass runs on while `on` is false, so that switching does not click. Not-a-number leaves as 0.
void runAnalogStage(double* samples, int frames, int type, double coefficient, bool on, AnalogState& state);

}  // namespace corvane::eq
