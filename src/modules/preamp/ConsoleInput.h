#pragma once

#include <cmath>
#include <numbers>

#include "core/dsp/Staggered.h"
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

  /// In place; `drive` linear. Inlined, so that it takes the instructions of its caller. [render]
  [[gnu::always_inline]] void run(Pair* samples, int frames, double drive) {
    Pair out[kBlockFrames];
    // the flush stays out of the recursion as long as it would change nothing
    Pair after = bias;
    if (!runWith(after, samples, out, frames, drive, [](Pair b) { return b; })) {
      after = bias;
      runWith(after, samples, out, frames, drive, [](Pair b) { return flushed(b, kBiasFlush); });
    }
    bias = after;
    std::copy_n(out, frames, samples);
  }

 private:
  static constexpr double kAtan2 = 1.1071487177940904;  // arc tangent of 2
  static constexpr double kBiasFlush = 1e-16;

  /// Moves `b` over a block, the law two frames at a time behind it; false if a flush would have changed `b`.
  template <typename Flush>
  [[gnu::always_inline]] bool runWith(Pair& b, const Pair* samples, Pair* out, int frames, double drive,
                                      Flush flush) const {
    Pair driven[kBlockFrames], biases[kBlockFrames];
    PairMask acts{};
    const auto move = [&](int i) {
      driven[i] = numbersOrZero(drive * samples[i] * inScale);
      biases[i] = b;
      const Pair moved = b + (0.25 * driven[i] - b) * biasShare;
      acts |= flushed(moved, kBiasFlush) != moved;
      b = flush(moved);
    };
    const Quad trims{biasTrim[0], biasTrim[1], biasTrim[0], biasTrim[1]};
    staggered(
        frames / 2, [&](int step) { move(2 * step), move(2 * step + 1); },
        [&](int step) {
          const int i = 2 * step;
          store(law(twoFrames(driven + i), twoFrames(biases + i), trims), out + i);
        });
    if (const int last = frames - 1; frames % 2 == 1) {
      move(last);
      out[last] = law(driven[last], biases[last], biasTrim);
    }
    return !anyLane(acts);
  }

  /// `V`: both channels of one frame or of two.
  template <typename V>
  [[gnu::always_inline]] V law(V a, V biasBefore, V trim) const {
    const V q = rest + (0.998 * biasBefore + 0.002 * a) * trim * slope * depth;
    const V r = rScale * q * kAtan2;
    const V e = eScale * q, ee = e * e;
    const V y = (2.0 * ee + 30.0) * e / (9.6 * ee + 30.0) * a * 0.25 * 1.07 * outScale / r;
    return r == 0.0 ? V{} : y;
  }

  double rest = 0.0, slope = 0.0, depth = 0.0, rScale = 0.0, eScale = 0.0, inScale = 0.0, outScale = 0.0;
  double biasShare = 0.0;  ///< per sample
  Pair biasTrim;
  Pair bias{};
};

}  // namespace corvane::preamp
