#pragma once

#include <algorithm>
#include <cmath>
#include <tuple>

#include "core/dsp/Biquad.h"

namespace corvane {

// Standing sections in a loop of their own, without the guards of their plain forms: a not-a-number once in a
// recursion stays in it, so one look behind the block tells whether a guard would have acted.

/// `filterSample` with everything in registers.
struct SecondOrder {
  BiquadCoefficients c;
  double x1, x2, y1, y2;

  SecondOrder(const BiquadCoefficients& set, const BiquadHistory& h)
      : c(set), x1(h.x1), x2(h.x2), y1(h.y1), y2(h.y2) {}
  double step(double x0) {
    const double y0 = flushed(c.b0 * x0 + c.b1 * x1 + c.b2 * x2 - c.a1 * y1 - c.a2 * y2, kFilterFlush);
    x2 = x1, x1 = x0, y2 = y1, y1 = y0;
    return y0;
  }
  bool isPoisoned() const { return std::isnan(y1); }
  /// After at least one sample.
  void store(BiquadHistory& h) const { h = {x1, x1, x2, y1, y1, y2}; }
};

/// Sections in series over a block of at most kBlockFrames, in place; false, and the block as it was, if a
/// guard would have acted. The recursions do not wait for each other: two to four take little longer than
/// one.
template <typename... Sections>
bool runTogether(double* samples, int count, Sections&... sections) {
  const auto run = [=](Sections... local) {  // copies: the loop keeps them in registers
    double out[kBlockFrames];
    for (int i = 0; i < count; ++i) {
      double v = samples[i];
      ((v = local.step(v)), ...);
      out[i] = v;
    }
    if ((local.isPoisoned() || ...)) return std::tuple(false, local...);
    std::copy_n(out, count, samples);
    return std::tuple(true, local...);
  };
  bool done = false;
  std::tie(done, sections...) = run(sections...);
  return done;
}

}  // namespace corvane
