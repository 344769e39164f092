#pragma once

#include <cmath>

namespace corvane::limiter {

inline constexpr double kTimeRest = 0.1091012;  // what a time leaves of a distance: -19.24 dB

/// Share of a distance covered per sample, so that `kTimeRest` of it is left after `samples`.
inline double shareOver(double samples) { return 1.0 - std::pow(kTimeRest, 1.0 / samples); }

}  // namespace corvane::limiter
