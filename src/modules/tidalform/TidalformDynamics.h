#pragma once

#include "core/dsp/Biquad.h"

namespace corvane {

/// Shares of the remaining distance that the gain covers per sample, 0..1. A move towards the gain above the
/// threshold uses `riseA`, the faster, a move towards the gain below it `riseB`.
struct TidalformTimes {
  double riseA = 1.0, riseB = 1.0;
};

/// Corners of a quarter of f^0.7071 and a tenth of f^0.5 Hz, so that a higher band reacts faster;
/// `timeFactor` stretches both.
TidalformTimes designTidalformTimes(double frequencyHz, double timeFactor, double sampleRateHz);

/// Share per sample of what is smoothed at 20 Hz.
double tidalformSmoothing(double sampleRateHz);

/// Two gains and the way between them, in dB.
///
///   t = tanh(L / H) D - D + A,  D = (A - B) / 2: B far below the threshold, A far above, their mean on it
struct GainLaw {
  double thresholdDb = -30.0;
  double aboveDb = 0.0, belowDb = 0.0;
  double halfWidthDb = 12.0;  ///< H; 0 switches hard, and gives the mean on the threshold itself
};

/// Levels over the threshold in dB, sample by sample, and the gains that the law gives for them.
void followLaw(const GainLaw& law, const double* key, double* overDb, double* goalDb, int frames);

/// Gain of one channel on its way, dB: the first stage moves both ways, the second rises at once and falls
/// after it.
struct GainFollower {
  double gainFollow = 0.0, gainHold = 0.0;
};

/// Which side of the threshold the level was on lately.
struct OverIndicator {
  double overLevel = 0.0;       ///< dB over the threshold, smoothed
  double aboveIndicator = 0.0;  ///< -1 below .. 1 above
};

/// One channel's levels and gains over a block, dB.
struct TidalformLevels {
  double overDb[kBlockFrames], goalDb[kBlockFrames];
};

/// Shares of the distance per sample.
struct TidalformShares {
  double rise, fall;  ///< of the gain
  double smoothing;   ///< of the indicator
};

/// Moves one gain for each channel towards its goal and the indicator with their levels, two steps a sample:
/// one from each channel, or both from the only one. `gainDb`: the mean of the channels' gains.
void followGoals(const TidalformLevels* const* levels, int channels, const TidalformShares& shares,
                 double* gainDb, int frames, GainFollower* const* followers, OverIndicator& indicator);

}  // namespace corvane
