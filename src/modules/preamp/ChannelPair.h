#pragma once

#include <algorithm>

#include "core/dsp/SectionPair.h"

namespace corvane::preamp {

// The same quantity of both channels, side by side in one register. The colouring stage always runs two
// channels; in this form the second one costs next to nothing, and each lane rounds as a plain double does.

inline Pair swapped(Pair v) { return Pair{v[1], v[0]}; }
inline Pair larger(Pair a, Pair b) { return a > b ? a : b; }
inline Pair smaller(Pair a, Pair b) { return a < b ? a : b; }
inline double largerLane(Pair v) { return v[0] > v[1] ? v[0] : v[1]; }
inline Pair numbersOrZero(Pair v) { return v == v ? v : both(0.0); }

/// A section of each channel with the same response, nothing behind it.
inline SectionPair alike(const BiquadCoefficients& c = {}) { return {c, {}, c, {}}; }
inline void clearHistory(SectionPair& section) { section.x1 = section.x2 = section.y1 = section.y2 = Pair{}; }

/// A section of each channel without flush and guards, so that its recursion waits for two additions less.
/// The flush changes nothing in outputs above 1e-13, and a not-a-number once in a recursion stays in it: one
/// look behind the block tells whether either would have acted, and then the block has to run again with
/// them.
struct BareSection {
  SectionPair section;
  PairMask small;

  explicit BareSection(const SectionPair& from)
      : section(from), small(absolute(from.y1) < kFilterFlushMatters) {}
  Pair step(Pair x) {
    const Pair y = biquadSum(x, section, section);
    section.push(x, y);
    small |= absolute(y) < kFilterFlushMatters;
    return y;
  }
  bool isExact() const { return (small[0] | small[1]) == 0 && !section.isPoisoned(); }
};

/// One section over a block, in place; equal to `filterSample` on each lane, bit for bit.
inline void runSection(SectionPair& section, Pair* samples, int frames) {
  Pair out[kBlockFrames];
  BareSection bare(section);
  if ((bare.small[0] | bare.small[1]) == 0)
    for (int i = 0; i < frames; ++i) out[i] = bare.step(samples[i]);
  SectionPair local = bare.section;
  if (!bare.isExact()) {
    local = section;
    for (int i = 0; i < frames; ++i) {
      const Pair x = numbersOrZero(samples[i]);
      out[i] = numbersOrZero(flushed(biquadSum(x, local, local), kFilterFlush));
      local.push(x, out[i]);
    }
  }
  section = local;
  std::copy_n(out, frames, samples);
}

}  // namespace corvane::preamp
