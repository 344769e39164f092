#include "core/dsp/AsymmetricFollower.h"

#include <algorithm>

#include "core/dsp/ReleaseRun.h"

namespace corvane {

void AsymmetricFollower::followBlock(const double* samples, int count) {
  constexpr double kRest = 1.0 - 1e-15;  // a level that has arrived may round to above the samples
  const double rise = coefficient, fall = std::sqrt(coefficient);
  const ReleaseRun run(rise);
  double v = level;
  int i = 0;
  for (; i + ReleaseRun::kLength <= count; i += ReleaseRun::kLength) {
    const double* x = samples + i;
    Pair lowest{x[0], x[1]}, lift{};
    for (int k = 0; k < ReleaseRun::kLength; k += 2) {
      const Pair now{x[k], x[k + 1]};
      lowest = now < lowest ? now : lowest;
      lift += run.weights[k / 2] * now;
    }
    const double risen = (v - v * run.drop) + (lift[0] + lift[1]);
    if (std::min(lowest[0], lowest[1]) >= risen * kRest)  // it rises all the way
      v = risen;
    else
      for (int k = 0; k < ReleaseRun::kLength; ++k) v = next(v, x[k], rise, fall);
  }
  for (; i < count; ++i) v = next(v, samples[i], rise, fall);
  level = v;
}

}  // namespace corvane
