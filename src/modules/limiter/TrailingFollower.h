#pragma once

#include <cmath>

#include "core/dsp/AsymmetricFollower.h"

namespace corvane::limiter {

/// The reduction meter's follower, behind by one piece of a block: a detector steps it beside its own
/// samples. Each is a chain of samples that wait for the one before; in one loop both take the time of the
/// longer. [render]
class TrailingFollower {
 public:
  explicit TrailingFollower(const AsymmetricFollower& follower)
      : level(follower.level), rise(follower.coefficient), fall(std::sqrt(follower.coefficient)) {}

  /// `count` gains to follow behind those handed over before; they must stand until `finish`.
  void take(const double* gains, int count) {
    finish();
    at = gains;
    end = gains + count;
  }
  /// Follows one gain, if one is left.
  void step() {
    if (at != end) level = AsymmetricFollower::next(level, *at++, rise, fall);
  }
  /// Follows what is left; the level.
  double finish() {
    while (at != end) step();
    return level;
  }

 private:
  double level, rise, fall;
  const double *at = nullptr, *end = nullptr;
};

}  // namespace corvane::limiter
