#pragma once

#include "core/dsp/Biquad.h"
#include "core/dsp/Pair.h"

namespace corvane::preamp {

// The same quantity of both channels, side by side in one register. The colouring stage always runs two
// channels; in this form the second one costs next to nothing, and each lane rounds as a plain double does.

inline Pair swapped(Pair v) { return Pair{v[1], v[0]}; }
inline Pair larger(Pair a, Pair b) { return a > b ? a : b; }
inline Pair smaller(Pair a, Pair b) { return a < b ? a : b; }
inline double largerLane(Pair v) { return v[0] > v[1] ? v[0] : v[1]; }
inline Pair numbersOrZero(Pair v) { return v == v ? v : both(0.0); }
inline bool hasNaN(Pair v) { return v[0] != v[0] || v[1] != v[1]; }

/// A second-order section on both channels, each with its own coefficients and history.
struct PairSection {
  Pair b0 = both(1.0), b1{}, b2{}, a1{}, a2{};
  Pair x1{}, x2{}, y1{}, y2{};

  /// Takes a design for each channel; the history starts empty.
  void design(const BiquadCoefficients& left, const BiquadCoefficients& right) {
    b0 = Pair{left.b0, right.b0}, b1 = Pair{left.b1, right.b1}, b2 = Pair{left.b2, right.b2};
    a1 = Pair{left.a1, right.a1}, a2 = Pair{left.a2, right.a2};
    clearHistory();
  }
  void clearHistory() { x1 = x2 = y1 = y2 = Pair{}; }

  Pair sum(Pair x0) const { return b0 * x0 + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2; }
  void push(Pair x0, Pair y0) { x2 = x1, x1 = x0, y2 = y1, y1 = y0; }

  /// `filterSample` on each lane; without the guards where `guarded` is false.
  template <bool guarded>
  Pair step(Pair x0) {
    if constexpr (guarded) x0 = numbersOrZero(x0);
    Pair y0 = flushed(sum(x0), kFilterFlush);
    if constexpr (guarded) y0 = numbersOrZero(y0);
    push(x0, y0);
    return y0;
  }
};

/// `samples` through sections in series, in place, all in one loop: the sections of one sample do not wait
/// for those of the sample before. Equal to one section after the other, bit for bit.
template <std::size_t count>
void runSections(PairSection* const (&sections)[count], Pair* samples, int frames) {
  // A not-a-number once in a recursion stays in it, so one look at the end tells whether the guards would
  // have acted; then the block is run again with them.
  const auto run = [&]<bool guarded>(const Pair* in, Pair* out) {
    PairSection local[count];
    for (std::size_t k = 0; k < count; ++k) local[k] = *sections[k];
    for (int i = 0; i < frames; ++i) {
      Pair v = in[i];
      for (PairSection& section : local) v = section.template step<guarded>(v);
      out[i] = v;
    }
    if (!guarded)
      for (const PairSection& section : local)
        if (hasNaN(section.y1)) return false;
    for (std::size_t k = 0; k < count; ++k) *sections[k] = local[k];
    return true;
  };
  Pair out[kBlockFrames];
  if (!run.template operator()<false>(samples, out)) run.template operator()<true>(samples, out);
  for (int i = 0; i < frames; ++i) samples[i] = out[i];
}

/// One section over a block, in place; equal to `runSections` of it alone, bit for bit. One recursion has
/// nothing to overlap with, so the flush is taken out of it: it changes nothing in outputs above 1e-13, and a
/// block with a smaller one runs again with it.
inline void runSection(PairSection& section, Pair* samples, int frames) {
  constexpr double kFlushMatters = 1e-13;
  PairMask small = absolute(section.y1) < kFlushMatters;
  Pair out[kBlockFrames];
  PairSection local = section;
  if ((small[0] | small[1]) == 0)
    for (int i = 0; i < frames; ++i) {
      const Pair y = local.sum(samples[i]);
      local.push(samples[i], y);
      small |= absolute(y) < kFlushMatters;
      out[i] = y;
    }
  if ((small[0] | small[1]) != 0 || hasNaN(local.y1)) return runSections<1>({&section}, samples, frames);
  section = local;
  for (int i = 0; i < frames; ++i) samples[i] = out[i];
}

}  // namespace corvane::preamp
