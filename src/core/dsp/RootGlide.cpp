#include "core/dsp/RootGlide.h"

#include <cmath>

namespace corvane {

void RootGlide::rest() {
  forEach([](GlideTrack& t) { t = {}; });
  zero1Real = {1.0, 1.0, 0.0};
  gain = {1.0, 1.0, 0.0};
  remaining = 0;
}

void RootGlide::snap() {
  forEach([](GlideTrack& t) { t.value = t.goal, t.step = 0.0; });
  remaining = 0;
}

void RootGlide::aim(const BiquadCoefficients& t) {
  // Zeros of b0 z^2 + b1 z + b2. A low-pass far below the rate can round b0 to 0: its zeros then count as 0,
  // since gain 0 silences them anyway.
  const double dz = t.b1 * t.b1 - 4.0 * t.b0 * t.b2;
  if (t.b0 == 0.0) {
    zero1Real.goal = zero2Real.goal = zero1Imag.goal = zero2Imag.goal = 0.0;
  } else if (dz >= 0.0) {
    zero1Imag.goal = zero2Imag.goal = 0.0;
    zero2Real.goal = (std::sqrt(dz) - t.b1) / (2.0 * t.b0);
    zero1Real.goal = (-t.b1 - std::sqrt(dz)) / (2.0 * t.b0);
  } else {
    zero1Real.goal = zero2Real.goal = t.b1 / (-2.0 * t.b0);
    zero1Imag.goal = std::sqrt(-dz) / (-2.0 * t.b0);
    zero2Imag.goal = -zero1Imag.goal;
  }
  // Poles of z^2 + a1 z + a2.
  const double dp = t.a1 * t.a1 - 4.0 * t.a2;
  if (dp >= 0.0) {
    pole1Imag.goal = pole2Imag.goal = 0.0;
    pole1Real.goal = (-t.a1 - std::sqrt(dp)) / 2.0;
    pole2Real.goal = (std::sqrt(dp) - t.a1) / 2.0;
  } else {
    pole1Real.goal = pole2Real.goal = -t.a1 / 2.0;
    pole1Imag.goal = -std::sqrt(-dp) / 2.0;
    pole2Imag.goal = std::sqrt(-dp) / 2.0;
  }
  gain.goal = t.b0;
  remaining = length;
  forEach([this](GlideTrack& k) { k.step = flushed((k.goal - k.value) / length, kFilterFlush); });
}

}  // namespace corvane
