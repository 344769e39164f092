#pragma once

#include <cmath>
#include <cstdint>

namespace corvane {

/// Two doubles that go through the same arithmetic side by side, lane 0 and lane 1. Each lane is rounded as a
/// double of its own, so the results are those of two separate runs, bit for bit.
using Pair = double __attribute__((vector_size(16)));
using PairMask = std::int64_t __attribute__((vector_size(16)));

inline double absolute(double v) { return std::abs(v); }
inline Pair absolute(Pair v) {
  constexpr std::int64_t kWithoutSign = 0x7fffffffffffffff;
  return reinterpret_cast<Pair>(reinterpret_cast<PairMask>(v) & PairMask{kWithoutSign, kWithoutSign});
}

/// The same value in both lanes.
inline Pair both(double v) { return Pair{v, v}; }

}  // namespace corvane
