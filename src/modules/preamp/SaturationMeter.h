#pragma once

#include <algorithm>

#include "core/dsp/Flush.h"

namespace corvane::preamp {

/// Lamp of the colouring stage, 0 .. 1: jumps up with the signal, falls slowly.
struct SaturationMeter {
  double level = 0.0;

  /// Over a block of drive levels. `share` per sample, falling.
  void follow(const double* levels, int frames, double share) {
    double v = level;
    bool acted = false;  // the flush, which stays out of the recursion as long as it would change nothing
    for (int i = 0; i < frames; ++i) {
      v = moved(v, std::min(levels[i], 1.0), share);
      acted |= flushed(v, kFlush) != v;
    }
    if (acted) {
      v = level;
      for (int i = 0; i < frames; ++i) {
        const double m = levels[i];
        v = flushed(m > v ? m : v + (m - v) * share, kFlush);
        if (v > 1.0) v = 1.0;
      }
    }
    level = v;
  }

  /// One step from `v` without the flush, for `m` up to 1 and a share below 1.
  static double moved(double v, double m, double share) { return std::max(m, v + (m - v) * share); }

  static constexpr double kFlush = 1e-15;
};

}  // namespace corvane::preamp
