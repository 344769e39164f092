#pragma once

#include "core/StripEffect.h"
#include "core/dsp/AsymmetricFollower.h"
#include "core/dsp/GlideFilter.h"
#include "modules/limiter/OptoLimiter.h"
#include "modules/limiter/VcaLimiter.h"

namespace corvane {

/// Frame of all limiters, and the variants "Opto Lim" (type 1) and "VCA Lim" (type 2).
///
///   out = in g output        g from the key of the same instant: no look-ahead, no delay, no oversampling
///
/// The ceiling scales the key alone; the output gain comes behind, so that the result can stand above the
/// ceiling. With Monitor on the key leaves in place of the signal, without the output gain. [render]
class StripEffectLimiter_OptoVCA : public StripEffect {
 public:
  StripEffectLimiter_OptoVCA(std::int32_t parameterBase, std::int32_t meterBase, std::int32_t tagBase);

  /// Detectors to 0, smoothed gains and filters to their targets, meters to rest.
  void reset() override;
  void setSampleRate(double hz) override;
  /// Own parameters as in LimiterTable.h. A write of Type seeds the detectors.
  void setParameter(int id, double value) override;
  void setDefaults() override;
  void getMeter(int id, double* value) override;
  void resetMeters() override;
  /// Both clear the detectors: every change of a solo or mute does.
  void enable() override;
  void disable() override;

  virtual void setEnabled(double value);
  /// Filters of the class to their starting designs.
  virtual void initFilters();
  /// Attack coefficients of the current `type`.
  virtual void updateAttack();
  /// Release coefficients of the current `type`.
  virtual void updateRelease();

 protected:
  static constexpr std::int32_t kOpto = 1, kVca = 2;
  static constexpr double kSeed = 1e-5;  // of all detector states at a change of Type

  /// One channel of a block on its way.
  struct Lane {
    double input[kBlockFrames];
    const double* key;               ///< `input`, or `keyBuffer` where it is another signal
    double keyBuffer[kBlockFrames];  ///< key of pair 1, or filtered as the variant does
    double rectified[kBlockFrames];  ///< of the key, linked where that is on
    double gain[kBlockFrames];
    double output[kBlockFrames];  ///< before the output gain
  };

  bool passes() const { return enabled == 0 || type == 0; }
  /// A type that has a filter of its own lets it glide; the others' filters move at once.
  static void moveFilter(GlideFilter& filter, double hz, bool inUse);
  static void changeRate(GlideFilter& filter, double hz);
  static void settle(GlideFilter& filter);

  // Steps of a block of all variants; `channels` is 1 or 2.
  void smoothGains();
  /// `ownKey`: the variant writes the key buffer in any case.
  void readLanes(double** in, int frames, int channels, bool ownKey, Lane* lanes) const;
  void rectifyKeys(int frames, int channels, Lane* lanes) const;
  /// Input times gain of each lane.
  static void applyGains(int frames, int channels, Lane* lanes);
  /// Output gain, monitor, outputs and meters. `followerShare`: of the reduction meter.
  void finishBlock(double** out, int frames, int channels, Lane* lanes, double followerShare);

  void processOptoVca(double** in, double** out, int frames, int channels);

  double attackNorm, releaseNorm;  ///< positions of the controls
  double ceiling, ceilingInverse, ceilingInverseSmoothed;
  double outputGain, outputGainSmoothed;
  double hpfHz;
  double reductionFollow = 0.0;  ///< coefficient of `gainFollower`
  std::int32_t enabled = 1;
  std::int32_t hpfOn = 0, linkOn = 0, softOn = 0, monitor = 0;

 private:
  double rowValue(int offset, double p) const;
  void seedDetectors(double level);
  void updateSmoothing();

  struct Channel {
    GlideFilter keyFilter;
    limiter::OptoState opto;
    limiter::VcaState vca;
  };
  Channel channel[2];
  limiter::OptoCoefficients optoCoefficients;
  limiter::VcaCoefficients vcaCoefficients;
  double gainSmooth = 0.0;  ///< share per block
  AsymmetricFollower gainFollower;
  double reductionMeter = 0.0;  ///< published, 1 - gain
};

}  // namespace corvane
