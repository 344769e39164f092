#pragma once

#include "modules/preamp/ChannelPair.h"

namespace corvane::preamp {

/// Four second-order sections in series on both channels. Equal to one section after the other, bit for bit,
/// for numbers; there is no guard against anything else.
///
/// Two sections stand in one register, first and third, second and fourth, both channels of each. A section
/// works some frames behind the one before it, so that no register waits for another within a step.
class HissFilters {
 public:
  static constexpr int kSections = 4;

  /// A design for each channel; the history stays.
  void design(int section, const BiquadCoefficients& left, const BiquadCoefficients& right) {
    Two& two = section % 2 == 0 ? even : odd;
    const int lane = section / 2 * 2;
    const auto put = [&](Quad& row, double l, double r) { row[lane] = l, row[lane + 1] = r; };
    put(two.b0, left.b0, right.b0), put(two.b1, left.b1, right.b1), put(two.b2, left.b2, right.b2);
    put(two.a1, left.a1, right.a1), put(two.a2, left.a2, right.a2);
  }
  void clearHistory() {
    for (Two* two : {&even, &odd}) two->x1 = two->x2 = two->y1 = two->y2 = Quad{};
  }

  /// `out`: what the sections make of `source()`, called once a frame, in order. Inlined, so that it takes
  /// the instructions of its caller.
  template <typename Source>
  [[gnu::always_inline]] void run(Source& source, Pair* out, int frames) {
    const auto sum = [](const Two& two, const Quad& x) __attribute__((always_inline)) {
      return flushed(biquadSum(x, two, two), kFilterFlush);
    };
    const auto everywhere = [&](Two & two, const Quad& x, int) __attribute__((always_inline)) {
      const Quad y = sum(two, x);
      two.x2 = two.x1, two.x1 = x, two.y2 = two.y1, two.y1 = y;
    };
    // At the ends of the block a section stands still that has no frame to work on.
    const auto whereFramesAre = [&](Two & two, const Quad& x, int frame) __attribute__((always_inline)) {
      const Quad y = sum(two, x);
      const auto bits = [frames](int at) -> std::int64_t { return at >= 0 && at < frames ? -1 : 0; };
      const std::int64_t lower = bits(frame), upper = bits(frame - kLagOfUpper);
      const QuadMask runs{lower, lower, upper, upper};
      two.x2 = runs ? two.x1 : two.x2, two.x1 = runs ? x : two.x1;
      two.y2 = runs ? two.y1 : two.y2, two.y1 = runs ? y : two.y1;
    };

    Two first = even, second = odd;
    Pair next = source();  // a step ahead
    Pair waiting{};        // from the second section to the third, a step longer than across registers
    const auto step = [&](int t, auto move) __attribute__((always_inline)) {
      const Quad toFirst{next[0], next[1], waiting[0], waiting[1]}, toSecond = first.y1;
      if (t + 1 < frames) next = source();
      waiting = Pair{second.y1[0], second.y1[1]};
      move(first, toFirst, t);
      move(second, toSecond, t - 1);
      if (t >= kLastLag) out[t - kLastLag] = Pair{second.y1[2], second.y1[3]};
    };
    int t = 0;
    for (; t < kLastLag; ++t) step(t, whereFramesAre);
    for (; t + 1 < frames; ++t) step(t, everywhere);
    for (; t < frames + kLastLag; ++t) step(t, whereFramesAre);
    even = first, odd = second;
  }

 private:
  static constexpr int kLagOfUpper = 3, kLastLag = 4;  // frames

  /// Two sections, one above the other.
  struct Two {
    Quad b0{}, b1{}, b2{}, a1{}, a2{};
    Quad x1{}, x2{}, y1{}, y2{};
  };

  Two even, odd;
};

}  // namespace corvane::preamp
