#pragma once

#include "core/dsp/Pair.h"

namespace corvane {

/// kLength steps of a one-pole as one, for a follower that goes the same way over all of them:
///
///   level += (x_i - level) r, kLength times   =   level - level drop + sum of weight_i x_i
///
/// so that its recursion waits once a run and not once a sample. Equal to the steps within their rounding.
struct ReleaseRun {
  static constexpr int kLength = 8;

  double share;                 ///< r
  double drop;                  ///< 1 - (1 - r)^kLength, by doubling, which keeps all its digits
  Pair weights[kLength / 2]{};  ///< r (1 - r)^(kLength - 1 - i)

  explicit ReleaseRun(double r) : share(r), drop(r) {
    for (int n = 1; n < kLength; n *= 2) drop *= 2.0 - drop;
    const Pair twoSteps = both((1.0 - r) * (1.0 - r));
    Pair pair{r * (1.0 - r), r};
    for (int k = kLength / 2 - 1; k >= 0; --k, pair *= twoSteps) weights[k] = pair;
  }
};

}  // namespace corvane
