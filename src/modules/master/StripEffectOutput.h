#pragma once

#include "core/StripEffect.h"
#include "core/dsp/GlideFilter.h"
#include "modules/master/QDXmasterMeter.h"

namespace corvane {

/// Master Control: fader, balance and width, with peak, RMS and over meters before or after them.
///
///   mono   y = x g          stereo   mid and side, side scaled by the width; then balance and g
///
/// g moves through three one-pole stages in a row, an S-shaped glide of a few milliseconds. Width and balance
/// act in the two-channel form alone. No latency.
class StripEffectOutput final : public StripEffect, private QDXmasterMeter {
 public:
  StripEffectOutput(std::int32_t parameterBase, std::int32_t meterBase, std::int32_t tagBase);

  /// Meters cleared, controls at their targets at once. The RMS filters run their response from the second
  /// reset on, since a section designs nothing before it is active.
  void reset() override;
  void setSampleRate(double hz) override;
  /// Own parameters as in MasterTable.h; a write to either over meter clears both.
  void setParameter(int id, double value) override;
  void setDefaults() override;
  void processBlock(double** in, double** out, int frames) override;
  void processBlockMono(double** in, double** out, int frames) override;
  void getMeter(int id, double* value) override;
  void resetMeters() override;
  void enable() override;
  void disable() override;

 private:
  /// A value that follows its target.
  struct Glide {
    double target = 1.0, current = 1.0;
    void step(double share) { current = flushed(current + (target - current) * share, kMeterFlush); }
    void snap() { current = target; }
  };

  bool passes() const { return enabled == 0 || type == 0; }
  bool measuresOutput() const { return measurementPoint > 1; }
  void setBalance(double p);
  void updateSmoothing();
  void restartRmsFilter(GlideFilter& filter) const;
  double nextFaderGain();
  /// The fader's gain for each sample of the block.
  void runFader(double* gains, int frames);
  void measure(const double* measured, int frames, MasterMeterChannel& channel, GlideFilter& rmsFilter) const;

  GlideFilter rmsFilterLeft, rmsFilterRight;
  Glide width, leftGain, rightGain;
  double gainTarget = 1.0;
  double gainStage1 = 1.0, gainStage2 = 1.0, gainStage3 = 1.0;
  double fastSmooth = 0.0;            ///< share per sample, width and balance
  double gainSmooth = 0.0;            ///< share per sample, each stage of the fader
  std::int32_t measurementPoint = 2;  ///< 0 In, 1 Pre, 2 Post, 3 Out
  std::int32_t enabled = 1;
  double overShownLeft = 0.0, overShownRight = 0.0;  ///< brightness last shown
};

}  // namespace corvane
