#pragma once

#include <cmath>

namespace corvane::limiter {

inline constexpr double kTimeRest = 0.1091012;  // what a time leaves of a distance: -19.24 dB

/// Share of a distance covered per sample, so that `kTimeRest` of it is left after `samples`.
inline double shareOver(double samples) { return 1.0 - std::pow(kTimeRest, 1.0 / samples); }

/// stage + (goal - stage) share, arranged so that the next sample waits for one operation less. It rounds
/// twice where that form rounds once: for stages that remember some hundred samples and no more.
inline double approach(double goal, double stage, double share) {
  return (stage + goal * share) - stage * share;
}

}  // namespace corvane::limiter
