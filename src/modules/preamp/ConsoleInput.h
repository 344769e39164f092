#pragma once

#include <cmath>
#include <numbers>

#include "modules/preamp/ChannelPair.h"
#include "modules/preamp/ConsoleTable.h"

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
    rest = 0.2 * console.k, slope = console.m, depth = console.l;
    rScale = 1.4 - 0.75 * console.k, eScale = 2.8 - 1.5 * console.k;
    inScale = console.inputScale, outScale = console.inverseInputScale;
    biasShare = 1.0 - std::exp(-2.0 * std::numbers::pi * console.biasCornerHz / sampleRateHz);
  }
  void reset() { bias = Pair{}; }

  /// In place; `drive` linear. [render]
  void run(Pair* samples, int frames, double drive) {
    ConsoleInput local = *this;
    for (int i = 0; i < frames; ++i) samples[i] = local.step(samples[i], drive);
    bias = local.bias;
  }

 private:
  static constexpr double kAtan2 = 1.1071487177940904;  // arc tangent of 2
  static constexpr double kBiasFlush = 1e-16;

  Pair step(Pair x, double drive) {
    const Pair a = numbersOrZero(drive * x * inScale);
    const Pair q = rest + (0.998 * bias + 0.002 * a) * biasTrim * slope * depth;
    const Pair r = rScale * q * kAtan2;
    const Pair e = eScale * q, ee = e * e;
    const Pair y = (2.0 * ee + 30.0) * e / (9.6 * ee + 30.0) * a * 0.25 * 1.07 * outScale / r;
    bias = flushed(bias + (0.25 * a - bias) * biasShare, kBiasFlush);
    return r == 0.0 ? both(0.0) : y;
  }

  double rest = 0.0, slope = 0.0, depth = 0.0, rScale = 0.0, eScale = 0.0, inScale = 0.0, outScale = 0.0;
  double biasShare = 0.0;  ///< per sample
  Pair biasTrim;
  Pair bias{};
};

}  // namespace corvane::preamp
