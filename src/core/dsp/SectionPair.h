#pragma once

#include "core/dsp/Biquad.h"
#include "core/dsp/Pair.h"

namespace corvane {

/// Two standing second-order sections side by side, one in each lane. A recursion of one section waits for
/// its own last output most of the time, so several pairs that do not wait for each other cost little more
/// than one section. The guards against not-a-number are up to the caller: once in a section it stays in its
/// y1, so one look behind the block tells. [render]
struct SectionPair {
  Pair b0, b1, b2, a1, a2;
  Pair x1, x2, y1, y2;

  SectionPair(const BiquadCoefficients& c, const BiquadHistory& h, const BiquadCoefficients& d,
              const BiquadHistory& k)
      : b0{c.b0, d.b0},
        b1{c.b1, d.b1},
        b2{c.b2, d.b2},
        a1{c.a1, d.a1},
        a2{c.a2, d.a2},
        x1{h.x1, k.x1},
        x2{h.x2, k.x2},
        y1{h.y1, k.y1},
        y2{h.y2, k.y2} {}

  /// One sample through both: the sum of `biquadSum` in its order, and the flush. The result is in `y1`.
  void step(Pair x0) { push(x0, sum(x0)); }
  /// The same in one lane; the other stands still.
  template <int kLane>
  void stepLane(Pair x0) {
    constexpr PairMask runs{kLane == 0 ? -1 : 0, kLane == 1 ? -1 : 0};
    const Pair y0 = sum(x0);
    x2 = runs ? x1 : x2, x1 = runs ? x0 : x1;
    y2 = runs ? y1 : y2, y1 = runs ? y0 : y1;
  }
  /// Takes a pair of samples into the history, for a step with something of its own between sum and feedback.
  void push(Pair x0, Pair y0) { x2 = x1, x1 = x0, y2 = y1, y1 = y0; }
  bool isPoisoned() const { return y1[0] != y1[0] || y1[1] != y1[1]; }
  /// The history of one lane, after a block of at least one sample.
  BiquadHistory history(int lane) const {
    return {x1[lane], x1[lane], x2[lane], y1[lane], y1[lane], y2[lane]};
  }

 private:
  Pair sum(Pair x0) const { return flushed(biquadSum(x0, *this, *this), kFilterFlush); }
};

}  // namespace corvane
