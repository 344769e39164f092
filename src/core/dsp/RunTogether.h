#pragma once

#include <algorithm>
#include <cmath>
#include <tuple>
#include <type_traits>

#include "core/dsp/Biquad.h"

namespace corvane {

// Standing sections in a loop of their own, without the guards of their plain forms: a not-a-number once in a
// recursion stays in it, so one look behind the block tells whether a guard would have acted. The flush stays
// out of the recursion as well, as long as no output is so small that it would change it.

/// `filterSample` with everything in registers.
struct SecondOrder {
  BiquadCoefficients c;
  double x1, x2, y1, y2;

  SecondOrder(const BiquadCoefficients& set, const BiquadHistory& h)
      : c(set), x1(h.x1), x2(h.x2), y1(h.y1), y2(h.y2) {}
  template <bool kFlush>
  double step(double x0) {
    const double sum = c.b0 * x0 + c.b1 * x1 + c.b2 * x2 - c.a1 * y1 - c.a2 * y2;
    const double y0 = kFlush ? flushed(sum, kFilterFlush) : sum;
    x2 = x1, x1 = x0, y2 = y1, y1 = y0;
    return y0;
  }
  /// What the flush acts on.
  double state() const { return y1; }
  /// After at least one sample.
  void store(BiquadHistory& h) const { h = {x1, x1, x2, y1, y1, y2}; }
};

/// Sections in series over a block of at most kBlockFrames, in place; false, and the block as it was, if a
/// guard would have acted. The recursions do not wait for each other: two to four take little longer than
/// one.
template <typename... Sections>
bool runTogether(double* samples, int count, Sections&... sections) {
  const auto run = [=]<bool kFlush>(std::bool_constant<kFlush>, Sections... local) {  // copies: in registers
    double out[kBlockFrames];
    double least = kFilterFlushMatters;
    for (int i = 0; i < count; ++i) {
      double v = samples[i];
      ((v = local.template step<kFlush>(v),
        least = kFlush ? least : std::min(least, std::abs(local.state()))),
       ...);
      out[i] = v;
    }
    const bool exact = least == kFilterFlushMatters && !(std::isnan(local.state()) || ...);
    if (exact) std::copy_n(out, count, samples);
    return std::tuple(exact, local...);
  };
  bool done = false;
  const auto take = [&](auto result) {
    done = std::get<0>(result);
    if (done) std::tie(done, sections...) = result;
  };
  if (((std::abs(sections.state()) >= kFilterFlushMatters) && ...)) take(run(std::false_type{}, sections...));
  if (!done) take(run(std::true_type{}, sections...));
  return done;
}

}  // namespace corvane
