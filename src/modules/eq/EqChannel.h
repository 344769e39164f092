#pragma once

#include "core/dsp/Biquad.h"
#include "modules/eq/AnalogStage.h"
#include "modules/eq/EqSection.h"

namespace corvane::eq {

/// Signal order of the bands where they stand in series.
inline constexpr Band kSeriesOrder[kBands] = {kLm, kHm, kHi, kLo};

/// A smoothed value over one block.
struct Ramp {
  double values[kBlockFrames];
};

/// What all channels share while a block runs.
struct BlockGains {
  Ramp fade[kBands];      ///< share of a band that is in, 0 .. 1
  Ramp toneGain[kBands];  ///< Tonbox's band gains, linear
  Ramp out;               ///< linear
};

/// The sections of one channel: all three equalisers at once, so that a change between them needs no design.
class EqChannel {
 public:
  EqChannel();

  /// Takes a band's knobs into all three equalisers.
  void design(Band band, const EqBand& setting);
  void setSampleRate(double hz);
  void setAnalog(bool on);
  /// Every section at its target with empty history.
  void reset();

  // Bands and output gain over a block, in place.
  void runBellform(double* samples, int frames, const BlockGains& gains);
  void runLumenband(double* samples, int frames, const BlockGains& gains);
  void runTonbox(double* samples, int frames, const BlockGains& gains);

  AnalogState analog;

 private:
  struct Stages {
    EqSection stage1, stage2;
  };
  struct Edges {
    EqSection passLow, passHigh;
  };

  template <typename Action>
  void forEachSection(Action action);

  EqSection bellform[kBands];
  Stages lumenband[kBands];
  EqSection toneHigh, toneLow;
  Edges toneHm, toneLm;
};

}  // namespace corvane::eq
