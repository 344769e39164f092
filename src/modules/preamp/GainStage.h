#pragma once

#include <cstdint>

#include "core/dsp/GlideFilter.h"

namespace corvane::preamp {

/// The gain of the input: a knob behind a one-pole of 3.5 Hz, or automated gain that learns the loudest
/// passage since it was started and settles where that passage meets the reference level.
///
///   plain      g += (target - g) k,  y = x g
///   automated  target = reference / learned level,  g follows in about 12 ms,  y = x g
///
/// The learned level is a running maximum, of twice the RMS (so that a sine reads its peak-to-peak span) or
/// of the peak; it never falls while automation is on. "Down" only lowers the gain that it finds; "Up&Down"
/// lifts it too, slowly, and lowers it at once. What automation found stays when it is switched off.
/// In place, nothing allocated. [render]
class GainStage {
 public:
  GainStage();

  /// Hz, clamped already. Gains and learned levels stay.
  void setSampleRate(double hz);
  /// Gains to their targets, learned levels forgotten, detectors empty.
  void reset();
  /// Linear gain, from the knob. While automated: the learned level becomes the one at which this gain is
  /// right.
  void setGain(double gain);
  /// From off to on starts learning anew from the gain in force.
  void setAutomated(bool on);
  /// Linear level that the loudest passage is brought to.
  void setReference(double level) { reference = level; }
  void setDetectsRms(bool rms) { detectsRms = rms; }
  void setMayLift(bool lift) { mayLift = lift; }

  void processMono(double* samples, int frames);
  /// Both channels with one gain; automation takes the louder one.
  void processPair(double* left, double* right, int frames);

  /// Linear gain that automation aims at; the knob's gain while it is off.
  double aimedGain() const { return autoTarget; }

 private:
  /// Gain for each sample of a block; `right` is null in the mono form.
  void runGains(const double* left, const double* right, double* gains, int frames);
  void runPlain(double* gains, int frames);
  void runAutomated(const double* left, const double* right, double* gains, int frames);
  void learn(double meanSquare, double peak);
  void follow();
  void forget() { rmsHold = peakHold = meanSquareHold = twiceRms = 0.0; }

  GlideFilter rmsFilter[2];
  double gainTarget = 1.0, gainSmoothed = 1.0;  ///< linear, plain path
  double autoTarget = 1.0, autoGain = 1.0;      ///< linear, automated
  double reference = 1.0;                       ///< linear
  double rmsHold = 0.0, peakHold = 0.0, meanSquareHold = 0.0;
  double twiceRms = 0.0;      ///< of `meanSquareHold`
  double gainShare = 0.0005;  ///< per sample, plain path
  double autoShare = 0.0;     ///< per sample, automated
  bool automated = false;
  bool detectsRms = true;  ///< else peak
  bool mayLift = false;    ///< "Up&Down", else "Down"
};

}  // namespace corvane::preamp
