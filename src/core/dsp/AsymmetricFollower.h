#pragma once

#include <algorithm>
#include <cmath>

namespace corvane {

/// Smoother with two speeds from one coefficient: it rises by `coefficient` of the distance per sample and
/// falls by its square root, which below 1 is the faster of the two. Rectifying is up to the owner. [render]
struct AsymmetricFollower {
  double level = 0.0;        ///< the smoothed value
  double coefficient = 0.0;  ///< 0..1, set by the owner

  /// Walks `count` samples and leaves the last level in `level`: `next` for each, within 1e-13 of the level.
  /// Runs of samples above a positive level are one step.
  void followBlock(const double* samples, int count);
  /// The level after `sample`; `fall`: root of `rise`. With a fall above the rise the lower of the two ways
  /// is the one to take.
  static double next(double level, double sample, double rise, double fall) {
    const double distance = sample - level;
    return level + std::min(distance * rise, distance * fall);
  }
};

}  // namespace corvane
