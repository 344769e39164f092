#pragma once

#include "modules/preamp/ChannelPair.h"
#include "modules/preamp/ConsoleTable.h"

namespace corvane::preamp {

/// Parabolic clipper of the 70s and 80s: a soft knee that is full at twice its start, then a second, lopsided
/// curve that hangs on what lies below 3 kHz, and a high-pass at 2 Hz that takes the offset out again.
///
///   u = 2 P(v / 2),  P(t) = t - t |t| / 4, |t| <= 2
///   c += (offset + u - c) k,  w = 8 sqrt 2 (u - c |c| / 4)
///
/// Two channels, nothing allocated. [render]
class ConsoleParabola {
 public:
  /// Trim of the offset of each channel, from the unit's parts.
  explicit ConsoleParabola(Pair trims) : offsetTrim(trims) {}

  /// Hz; all state to rest.
  void setSampleRate(double hz);
  void reset();

  /// To a console of the 70s or the 80s; state stays.
  void configure(Colour colour);

  /// In place; writes the drive of each sample to `levels`, for the meter.
  void run(Pair* samples, double* levels, int frames);

 private:
  SectionPair highPass = alike();
  Pair offsetTrim, offset{};
  Pair clipState{};
  double clipShare = 0.0;  ///< per sample, 3 kHz
  double inTrim = 0.0, meterFactor = 0.0, lift = 1.0, outTrim = 0.0;
};

}  // namespace corvane::preamp
