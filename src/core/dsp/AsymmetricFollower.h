#pragma once

#include <cmath>

namespace corvane {

/// Smoother with two speeds from one coefficient: it rises by `coefficient` of the distance per sample and
/// falls by its square root, which below 1 is the faster of the two. Rectifying is up to the owner. [render]
struct AsymmetricFollower {
  double level = 0.0;        ///< the smoothed value
  double coefficient = 0.0;  ///< 0..1, set by the owner

  /// Walks `count` samples and leaves the last level in `level`.
  void followBlock(const double* samples, int count) {
    const double rise = coefficient, fall = std::sqrt(coefficient);
    double v = level;
    for (int i = 0; i < count; ++i) v = next(v, samples[i], rise, fall);
    level = v;
  }
  /// The level after `sample`, for an owner that follows in a loop of its own; `fall`: root of `rise`.
  static double next(double level, double sample, double rise, double fall) {
    return level + (sample - level) * (level > sample ? fall : rise);
  }
};

}  // namespace corvane
