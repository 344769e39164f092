#pragma once

#include <algorithm>
#include <cstring>

#include "core/dsp/SectionPair.h"

namespace corvane::preamp {

// The same quantity of both channels, side by side in one register. The colouring stage always runs two
// channels; in this form the second one costs next to nothing, and each lane rounds as a plain double does.

template <typename V>
[[gnu::always_inline]] inline V larger(V a, V b) {
  return a > b ? a : b;
}
template <typename V>
[[gnu::always_inline]] inline V smaller(V a, V b) {
  return a < b ? a : b;
}
/// The channels of a frame, or of two frames, in each other's place.
template <typename V>
[[gnu::always_inline]] inline V swapped(V v) {
  if constexpr (sizeof(V) == sizeof(Pair))
    return Pair{v[1], v[0]};
  else
    return __builtin_shufflevector(v, v, 1, 0, 3, 2);
}
inline double largerLane(Pair v) { return v[0] > v[1] ? v[0] : v[1]; }
/// Not-a-number as 0.
template <typename V>
[[gnu::always_inline]] inline V numbersOrZero(V v) {
  return v == v ? v : V{};
}

inline bool anyLane(const PairMask& m) { return (m[0] | m[1]) != 0; }
inline bool anyLane(const QuadMask& m) { return (m[0] | m[1] | m[2] | m[3]) != 0; }

/// A section of each channel with the same response, nothing behind it.
inline SectionPair alike(const BiquadCoefficients& c = {}) { return {c, {}, c, {}}; }
inline void clearHistory(SectionPair& section) { section.x1 = section.x2 = section.y1 = section.y2 = Pair{}; }

/// Two frames in a register, for work in which the second does not wait for the first. They are loaded one by
/// one: a load of both would wait until two stores just done have left the processor.
[[gnu::always_inline]] inline Quad twoFrames(const Pair* from) {
  return __builtin_shufflevector(from[0], from[1], 0, 1, 2, 3);
}
inline void store(const Quad& frames, Pair* to) { std::memcpy(to, &frames, sizeof frames); }

/// Lanes of a section's output on which its flush would act.
template <typename V>
[[gnu::always_inline]] inline auto isSmall(const V& y) {
  return absolute(y) < kFilterFlushMatters;
}

/// A section of each channel without flush and guards, so that its recursion waits for two additions less.
/// The flush changes nothing as long as no output is small, and a not-a-number once in a recursion stays in
/// it: one look behind the block tells whether either would have acted, and then the block has to run again
/// with them.
struct BareSection {
  SectionPair section;
  bool startsSmall;

  explicit BareSection(const SectionPair& from) : section(from), startsSmall(anyLane(isSmall(from.y1))) {}
  Pair step(Pair x) {
    const Pair y = biquadSum(x, section, section);
    section.push(x, y);
    return y;
  }
  /// Behind a block without a small output.
  bool isExact() const { return !startsSmall && !section.isPoisoned(); }
};

/// One section over a block, in place; equal to `filterSample` on each lane, bit for bit.
inline void runSection(SectionPair& section, Pair* samples, int frames) {
  Pair out[kBlockFrames];
  BareSection bare(section);
  PairMask small{};
  if (!bare.startsSmall)
    for (int i = 0; i < frames; ++i) {
      out[i] = bare.step(samples[i]);
      small |= isSmall(out[i]);
    }
  SectionPair local = bare.section;
  if (!bare.isExact() || anyLane(small)) {
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
