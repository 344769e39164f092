#pragma once

#include <algorithm>
#include <array>
#include <utility>

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

/// Sections in series that always run together: the output history of one is the input history of the next,
/// and the two last values change places from sample to sample instead of moving. Equal to one section after
/// the other, bit for bit, for numbers; there is no guard against anything else.
template <std::size_t count>
class PairCascade {
 public:
  /// A design for each channel; the history starts empty once all sections are designed anew.
  void design(std::size_t section, const BiquadCoefficients& left, const BiquadCoefficients& right) {
    sections[section] = {left, {}, right, {}};
  }
  void clearHistory() { past = {}; }

  /// In place. Inlined, so that it takes the instructions of its caller.
  [[gnu::always_inline]] void run(Pair* samples, int frames) {
    PairCascade local = *this;
    int i = 0;
    for (; i + 1 < frames; i += 2) {
      samples[i] = local.template step<0>(samples[i]);
      samples[i + 1] = local.template step<1>(samples[i + 1]);
    }
    if (i < frames) {
      samples[i] = local.template step<0>(samples[i]);
      for (auto& pair : local.past) std::swap(pair[0], pair[1]);
    }
    past = local.past;
  }

 private:
  template <std::size_t... k>
  static std::array<SectionPair, count> filled(std::index_sequence<k...>) {
    return {(static_cast<void>(k), alike())...};
  }

  /// The value two samples back stands in slot `older` and makes room for the newest.
  template <std::size_t older>
  Pair step(Pair x) {
    constexpr std::size_t newer = 1 - older;
    for (std::size_t k = 0; k < count; ++k) {
      const SectionPair& c = sections[k];
      const Pair y = flushed(c.b0 * x + c.b1 * past[k][newer] + c.b2 * past[k][older] -
                                 c.a1 * past[k + 1][newer] - c.a2 * past[k + 1][older],
                             kFilterFlush);
      past[k][older] = x;
      x = y;
    }
    past[count][older] = x;
    return x;
  }

  std::array<SectionPair, count> sections =
      filled(std::make_index_sequence<count>{});  ///< coefficients alone
  std::array<std::array<Pair, 2>, count + 1> past{};
};

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
