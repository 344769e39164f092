#pragma once

#include <cstdint>

#include "core/StripEffect.h"

namespace corvane {

namespace compressor {

// Three ways to find a gain from a key. All read the key behind a one-pole high-pass, all times are shares of
// the remaining distance per sample, and the release of each moves a little with the attack control.
//
//   Opto   u = (2 kHz mean of |k| times drive)^2, two stages in a row. A stage rises as a one-pole; stage 1
//          falls with the square of its distance, stage 2 with its power 1.4: fast at first, slow at the end.
//          gain = (1 / (1 + stage 2))^(exponent / 2)
//   FET    feedback: the key is seen behind the gain of the sample before, and only what exceeds a soft dead
//          zone of 0.25 counts. gain = 1.1 h / (h + 100) with h = 1001 at rest, falling to 2: at most -33 dB.
//   VCA    decades of level above the threshold with a soft knee, one-pole either way.
//          gain = 10^(-level exponent)
//
// Powers and logarithms are the fast ones, and flushes act near 0 alone: the sound is within 1e-12 of the
// same equations taken literally, sample by sample.

/// What the times of the detectors hang on: positions of the controls, normalised, and the rate.
struct TimeSettings {
  double attack = 0.5, release = 0.5, hpf = 0.5;
  double sampleRateHz = kLowestRateHz;
  bool operator==(const TimeSettings&) const = default;
};

/// Shares of the distance covered per sample.
struct TimeCoefficients {
  double rectCoef = 0.0;                         ///< mean of the rectified key of the opto detector, 2 kHz
  double optoAttack1 = 0.0, optoRelease1 = 0.0;  ///< stage 1
  double optoAttack2 = 0.0, optoRelease2 = 0.0;  ///< stage 2
  double fetAttack = 0.0, fetRelease = 0.0;
  double vcaAttack = 0.0, vcaRelease = 0.0;
  double smooth = 0.0;   ///< controls on their way to a new value, 10 Hz
  double hpfCoef = 0.0;  ///< low-pass that the key's high-pass subtracts
};
TimeCoefficients designTimes(const TimeSettings& settings);

/// How the three gain laws take the position of the Ratio control, normalised.
struct RatioTerms {
  double fetRatio = 0.0;      ///< 0 at 1:1, 20 for a limiter
  double optoExponent = 0.0;  ///< 0 at 1:1, 1.38 for a limiter
  double vcaExponent = 0.0;   ///< 0 at 1:1, 1 for a limiter: the share of each dB that is taken away
};
RatioTerms designRatio(double ratio);
/// Where `fetRatio` starts from after a reset; it reaches its target through the smoother.
double fetRatioAtReset(double ratio);

/// Linear gain in front of the detectors for a position of the Threshold control: -10 dB at its top, +40 dB
/// at its bottom.
double detectorDrive(double threshold);

inline constexpr double kDetectorRest =
    0.0001;  // the square of the offset that the opto detector never goes below

/// Detectors of one channel; `{}` is at rest.
struct DetectorState {
  double optoRectified = 0.0;         ///< linear
  double optoStage1 = kDetectorRest;  ///< square of a level
  double optoStage2 = kDetectorRest;  ///< square of a level, one sample before the last
  double optoStep2 = 0.0;             ///< what the last sample added to it
  double fetLevel = kDetectorRest;    ///< linear, behind the dead zone
  double vcaLevel = kDetectorRest;    ///< decades above the threshold
};

/// What one channel remembers.
struct ChannelState {
  double hpfState = 0.0;
  DetectorState detectors;
};

/// A control on its way to a new value.
class Glide {
 public:
  /// At `value` from here on.
  void snap(double value) { current = value; }
  /// Takes `frames` steps of `share` of the distance to `target`.
  void move(double target, double share, int frames);
  /// The value at each sample of the block that `move` went over.
  const double* path() const { return values; }

 private:
  double current = 1.0;
  double still = -1.0;  ///< what all of `values` hold; -1, which no control has, while they differ
  double values[kBlockFrames];
};

}  // namespace compressor

/// The three detectors with their controls and state, for two channels. [render]
class OptoFetVcaCompressor {
 protected:
  enum Detector { kOpto = 1, kFet, kVca };

  /// All controls to their targets at once, detectors and high-pass cleared.
  void resetCompressor(double sampleRateHz);
  /// Detectors alone.
  void clearDetectors();
  /// Renews coefficients whose settings changed and moves the gliding controls over the block. Once per
  /// block, before its channels.
  void startBlock(double sampleRateHz, int frames);
  /// One channel's block: the compressed signal in `output`, what the detector heard in `filteredKey`.
  /// Neither may overlap `input` or `key`. Returns the gain of the last sample; `frames` above 0.
  double runChannel(const double* input, const double* key, int frames, compressor::ChannelState& state,
                    double* output, double* filteredKey) const;

  std::int32_t detector = kOpto;  ///< 1 opto, 2 FET, 3 VCA
  double gainReduction = 1.0;     ///< linear gain of the last sample
  double thresholdDrive = 1.0;    ///< linear
  double makeupGain = 1.0;        ///< linear
  double mix = 1.0;               ///< share of the compressed signal
  double ratio = 0.5;             ///< normalised
  compressor::Glide thresholdDriveSmoothed, makeupGainSmoothed, mixSmoothed;
  compressor::Glide fetRatioSmoothed, optoExponentSmoothed;
  double attack = 0.5, release = 0.5, hpf = 0.5;  ///< normalised
  compressor::ChannelState channels[2];

 private:
  void updateCoefficients(double sampleRateHz);

  compressor::TimeSettings designedFor{.sampleRateHz = 0.0};  ///< what `times` holds; rate 0: nothing yet
  compressor::TimeCoefficients times;
  double ratioDesignedFor = -1.0;  ///< what `ratioTerms` holds; below 0: nothing yet
  compressor::RatioTerms ratioTerms;
};

}  // namespace corvane
