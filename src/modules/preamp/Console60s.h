#pragma once

#include "modules/preamp/ChannelPair.h"
#include "modules/preamp/CurveTable.h"

namespace corvane::preamp {

/// Push-pull stage of the 60s: the positive half-waves set the gain of an arc tangent, the negative ones,
/// behind it, the gain of a hyperbolic tangent; each through an envelope of 707 Hz.
///
///   up   += (max(s, 1e-9) - up) k          h = s g(up),   g(x) = (atan(|A x|^p w) / w)^(1/p) / (A x)
///   down -= (down + h) k while h < -1e-9   y = h f(down) n, f(x) = (tanh(|B x|^p w) / w)^(1/p) / (B x)
///
/// Both gains tend to 1 for small signals. Two channels, nothing allocated. [render]
class Console60s {
 public:
  Console60s();

  /// Hz; both envelopes to rest.
  void setSampleRate(double hz);
  /// In place; writes the drive of each sample to `levels`, for the meter.
  void run(Pair* samples, double* levels, int frames);

 private:
  static constexpr double kRest = 1e-9;  // -180 dB: never 0, the curves divide by it

  /// The falling envelope of one channel and the gain of its curve there.
  struct Half {
    double envelope = kRest;
    double gain = 1.0;
  };
  const CurveTable &rising, &falling;
  Pair up = both(kRest);  ///< the rising envelope
  Half down[2];
  double fastShare = 0.0;  ///< per sample
};

// Gain of each curve at an envelope above 0; the table is made at the first call. [any]
const CurveTable& risingGain();
const CurveTable& fallingGain();

}  // namespace corvane::preamp
