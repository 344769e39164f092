#pragma once

#include "core/dsp/Biquad.h"
#include "modules/eq/AnalogStage.h"
#include "modules/eq/EqSection.h"

namespace corvane::eq {

/// A smoothed value over one block.
struct Ramp {
  double at(int frame) const { return still ? values[0] : values[frame]; }

  double values[kBlockFrames];  ///< the first alone while `still`
  bool still;                   ///< the value did not move in this block
};

/// What all channels share while a block runs.
struct BlockGains {
  Ramp fade[kBands];      ///< share of a band that is in, 0 .. 1
  Ramp toneGain[kBands];  ///< Tonbox's band gains, linear
  Ramp out;               ///< linear
  double analogCoeff;     ///< share per sample of the Analog stage's low-pass
};

/// Lumenband's sections of a band, in signal order.
struct Stages {
  EqSection stage1, stage2;
};

/// Tonbox's sections of a band between two edges, in signal order.
struct Edges {
  EqSection passLow, passHigh;
};

/// One channel: the sections of all three equalisers at once, so that a change between them needs no design,
/// and the Analog stage behind them.
///
/// A block runs in one of two forms with the same bits: the plain one, section after section, while
/// coefficients or gains move, and a settled one with sections side by side. [render]
class EqChannel {
 public:
  EqChannel();

  /// Takes a band's knobs into all three equalisers.
  void design(Band band, const EqBand& setting);
  void setSampleRate(double hz);
  void setAnalog(bool on);
  /// Every section at its target, all history empty.
  void reset();

  /// Bands, output gain and Analog stage of equaliser `type` over a block; `input` and `output` are apart.
  void run(int type, const double* input, double* output, int frames, const BlockGains& gains);
  /// The same in the plain form, whatever moves.
  void runPlain(int type, const double* input, double* output, int frames, const BlockGains& gains);

 private:
  template <typename Action>
  void forEachSection(Action action);

  void bellformPlain(double* samples, int frames, const BlockGains& gains);
  void lumenbandPlain(double* samples, int frames, const BlockGains& gains);
  void tonboxPlain(double* samples, int frames, const BlockGains& gains);
  /// Whether nothing moves that equaliser `type` hears.
  bool settled(int type, const BlockGains& gains) const;
  /// Bands and output gain in the settled form; false, and no section changed, where a not-a-number came up.
  template <bool kAnalog>
  bool runSettled(int type, const double* input, double* output, double* levels, int frames,
                  const BlockGains& gains);
  /// `runSettled` with all that it calls inlined, so that wider registers serve throughout.
  bool runSettledWide(int type, const double* input, double* output, double* levels, int frames,
                      const BlockGains& gains);

  EqSection bellform[kBands];
  Stages lumenband[kBands];
  struct Tonbox {
    EqSection toneHigh, toneLow;
    Edges hm, lm;
  } tonbox;
  AnalogState analog;
  bool analogOn = false;
};

}  // namespace corvane::eq
