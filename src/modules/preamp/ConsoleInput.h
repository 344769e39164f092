#pragma once

#include <cmath>
#include <numbers>

#include "modules/preamp/ConsoleTable.h"
#include "modules/preamp/PairSection.h"

namespace corvane::preamp {

/// Input stage of the older consoles: the signal's own low frequencies shift the working point, and the gain
/// of the stage changes with it.
///
///   b = (0.998 bias + 0.002 a) trim,  q = 0.2 K + b M L
///   y = (2 e^2 + 30) e / (9.6 e^2 + 30) / r * a,  e = (2.8 - 1.5 K) q,  r = (1.4 - 0.75 K) q atan 2
///
/// The rational law stands for a hyperbolic tangent. At q = 0 exactly there is no output.
class ConsoleInput {
 public:
  /// Trim of the bias of each channel, from the unit's parts.
  explicit ConsoleInput(Pair trims) : biasTrim(trims) {}

  void configure(const ConsoleRow& console, double sampleRateHz) {
    row = &console;
    biasShare = 1.0 - std::exp(-2.0 * std::numbers::pi * console.biasCornerHz / sampleRateHz);
  }
  void reset() { bias = Pair{}; }

  /// In place; `drive` linear. [render]
  void run(Pair* samples, int frames, double drive) {
    const double slope = row->m, depth = row->l, rest = 0.2 * row->k;
    const double rScale = 1.4 - 0.75 * row->k, eScale = 2.8 - 1.5 * row->k;
    const double inScale = row->inputScale, outScale = row->inverseInputScale;
    Pair state = bias;
    for (int i = 0; i < frames; ++i) {
      const Pair a = numbersOrZero(drive * samples[i] * inScale);
      const Pair q = rest + (0.998 * state + 0.002 * a) * biasTrim * slope * depth;
      const Pair r = rScale * q * kAtan2;
      const Pair e = eScale * q, ee = e * e;
      const Pair y = (2.0 * ee + 30.0) * e / (9.6 * ee + 30.0) * a * 0.25 * 1.07 * outScale / r;
      samples[i] = r == 0.0 ? both(0.0) : y;
      state = flushed(state + (0.25 * a - state) * biasShare, kBiasFlush);
    }
    bias = state;
  }

 private:
  static constexpr double kAtan2 = 1.1071487177940904;  // arc tangent of 2
  static constexpr double kBiasFlush = 1e-16;

  const ConsoleRow* row = &consoleOf(Colour::console70s);
  Pair biasTrim;
  Pair bias{};
  double biasShare = 0.0;  ///< per sample
};

}  // namespace corvane::preamp
