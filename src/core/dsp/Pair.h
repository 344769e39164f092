#pragma once

#include <cmath>
#include <cstdint>

namespace corvane {

/// Two doubles that go through the same arithmetic side by side, lane 0 and lane 1, in one instruction on
/// every 64-bit PC. Each lane is rounded as a double of its own, so the results are those of two separate
/// runs, bit for bit; independent recursions run in the lanes at the price of one.
using Pair = double __attribute__((vector_size(16)));
/// One truth value for each lane, as comparisons give it: 0 or all bits.
using PairMask = std::int64_t __attribute__((vector_size(16)));

/// Four doubles side by side: one register in a loop that may use AVX2, else two pairs. A function takes or
/// returns them only where it is inlined for certain, since the two forms are handed over differently; the
/// compiler would warn of those as well, so targets with such functions switch -Wpsabi off.
using Quad = double __attribute__((vector_size(32)));
using QuadMask = std::int64_t __attribute__((vector_size(32)));

inline double absolute(double v) { return std::abs(v); }
/// Of every lane of a pair or a quad.
template <typename V>
[[gnu::always_inline]] inline V absolute(V v) {
  constexpr std::int64_t kWithoutSign = 0x7fffffffffffffff;
  return reinterpret_cast<V>(reinterpret_cast<decltype(v < v)>(v) & kWithoutSign);
}

/// The same value in both lanes.
inline Pair both(double v) { return Pair{v, v}; }

}  // namespace corvane
