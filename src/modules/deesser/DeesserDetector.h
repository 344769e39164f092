#pragma once

#include <algorithm>

#include "core/dsp/GlideFilter.h"

namespace corvane {

/// Shares of the remaining distance that the de-esser's envelopes cover per sample, 0..1. All follow the
/// sibilance frequency, so that the detector is faster for a higher band.
struct DeesserShares {
  double fast = 1.0;
  double slow = 1.0;
  double mid = 1.0;
  double verySlow = 1.0;
  double release = 1.0;
};

/// Each 1 - exp(-2 pi corner / fs), a step-invariant one-pole; both arguments in Hz.
DeesserShares designDeesserShares(double sibilanceHz, double sampleRateHz);

/// Corner in Hz between the treated band and the rest: a quarter of the sibilance frequency and a little
/// more as the resonance rises.
double crossoverHz(double sibilanceHz, double sibilanceQ);

/// A block of one channel on its way through the de-esser, linear, full scale 1.0.
struct DeesserBlock {
  double input[kBlockFrames];
  double high[kBlockFrames];       ///< above the crossover
  double low[kBlockFrames];        ///< below it
  double sibilance[kBlockFrames];  ///< behind the detection filters, made up for the width of their band
  double heard[kBlockFrames];      ///< what a listener to the detector hears, before the gain
};

/// The filters of one channel. [render]
class DeesserFilters {
 public:
  DeesserFilters();

  /// Histories to silence, glides to their ends.
  void reset();
  /// Hz; the sections glide to their new designs.
  void setSampleRate(double hz);
  /// Detection sections first, then the crossover; all glide.
  void setBand(double sibilanceHz, double sibilanceQ);

  /// Fills `high`, `low` and `sibilance` from `input`. The crossover runs in both modes: the detector needs
  /// its upper half, and the lower half must be warm when the mode changes.
  void filter(DeesserBlock& block, int frames);

 private:
  template <typename Action>
  void forEachSection(Action action) {
    for (GlideFilter* s : {&detectBand, &detectPeak, &splitHigh1, &splitHigh2, &splitLow1, &splitLow2})
      action(*s);
  }
  bool filterStanding(DeesserBlock& block, int frames);

  GlideFilter detectBand, detectPeak;
  GlideFilter splitHigh1, splitHigh2;
  GlideFilter splitLow1, splitLow2;
  double bandMakeup = 1.0;  ///< linear
};

/// Envelopes of one channel, linear; `{}` is silence.
struct DeesserEnvelopes {
  double wideFast = 0.0, wideSlow = 0.0;  ///< of the whole signal
  double bandFast = 0.0, bandSlow = 0.0;  ///< of the detection band, sensitivity included

  /// One sample: the whole signal and the level of its sibilance, both rectified.
  void follow(double whole, double sibilance, const DeesserShares& c);
};

/// The gain that the detector asks for, one for all channels. It rests at 0 and so fades in after a reset.
struct DeesserGain {
  double gainTarget = 0.0;
  double gainSmooth = 0.0;

  /// One sample: the gain for the slow envelopes of the whole signal and of the band.
  double follow(double wide, double band, const DeesserShares& c);
};

inline constexpr double kDeesserFlush = 1e-15;  // -300 dBFS

/// One step of a two-speed envelope. Needs rise >= fall: then the larger of the two products is the one that
/// belongs to the direction, and no branch waits for a comparison.
inline double towards(double goal, double level, double rise, double fall) {
  const double distance = goal - level;
  return level + std::max(distance * rise, distance * fall);
}

inline void DeesserEnvelopes::follow(double whole, double sibilance, const DeesserShares& c) {
  wideFast = towards(whole, wideFast, c.fast, c.slow);
  wideSlow = flushed(towards(wideFast, wideSlow, c.mid, c.verySlow), kDeesserFlush);
  wideFast = flushed(wideFast, kDeesserFlush);
  bandFast = flushed(bandFast + (sibilance - bandFast) * c.fast, kDeesserFlush);
  bandSlow = flushed(towards(bandFast, bandSlow, c.fast, c.slow), kDeesserFlush);
}

inline double DeesserGain::follow(double wide, double band, const DeesserShares& c) {
  // The floors keep silence below any reduction: the band would need 10^5 times the level of the whole.
  constexpr double kWideFloor = 1e-7, kQuietFloor = 0.001, kBandFloor = 1e-8, kLastFloor = 1e-10;
  const double balance = (wide + kWideFloor + kQuietFloor) / (band + kBandFloor + kLastFloor);
  const double rising = gainTarget + (1.0 - gainTarget) * c.fast;
  gainTarget = flushed(gainTarget > balance ? balance : rising, kDeesserFlush);
  // Down fast, up slowly: the smaller product belongs to the faster share when the distance is negative.
  const double distance = gainTarget - gainSmooth;
  gainSmooth = flushed(gainSmooth + std::min(distance * c.fast, distance * c.release), kDeesserFlush);
  return gainSmooth;
}

}  // namespace corvane
