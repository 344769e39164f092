#pragma once

#include <cmath>

namespace corvane {

/// Rounds `v` to the last place of `e`, so that a decaying state never becomes denormal:
/// (v + e) - e, in this order, is part of the sound and must not be simplified. `V`: a double or a pack of
/// them.
template <typename V>
inline V flushed(V v, double e) {
  return (v + e) - e;
}

/// As `flushed`, but leaves alone what is a million times larger than `e`, where the flush could only round
/// the last place once more. A recursion then waits for two additions less; in silence it flushes as ever.
inline double flushedNearZero(double v, double e) {
  if (std::abs(v) < e * 0x1p20) [[unlikely]]
    return flushed(v, e);
  return v;
}

/// `x`, or 0 where it is not a number.
inline double numberOrZero(double x) { return std::isnan(x) ? 0.0 : x; }

}  // namespace corvane
