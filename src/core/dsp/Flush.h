#pragma once

#include <cmath>

namespace corvane {

/// Rounds `v` to the last place of `e`, so that a decaying state never becomes denormal:
/// (v + e) - e, in this order, is part of the sound and must not be simplified. `V`: a double or a pack of them.
template <typename V>
inline V flushed(V v, double e) {
  return (v + e) - e;
}

/// `x`, or 0 where it is not a number.
inline double numberOrZero(double x) { return std::isnan(x) ? 0.0 : x; }

}  // namespace corvane
