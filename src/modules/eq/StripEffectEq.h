#pragma once

#include "core/StripEffect.h"
#include "modules/eq/EqChannel.h"

namespace corvane {

/// Four-band equaliser in three designs, by `type`: 1 Bellform, 2 Lumenband, 3 Tonbox.
///
///   bands -> output gain -> Analog stage
///
/// All three share parameters, band switches and the stages behind the bands. A band is switched by a
/// crossfade of 3 ms while its filters run on, and a change of type finds every filter designed. No latency.
class StripEffectEq final : public StripEffect {
 public:
  StripEffectEq(std::int32_t parameterBase, std::int32_t meterBase, std::int32_t tagBase);

  /// Filters at their targets with empty history, output gain at its target; bands that are in fade in from
  /// dry.
  void reset() override;
  void setSampleRate(double hz) override;
  /// Type and own parameters as in EqTable.h.
  void setParameter(int id, double value) override;
  void setDefaults() override;
  void processBlock(double** in, double** out, int frames) override;
  void processBlockMono(double** in, double** out, int frames) override;
  void getMeter(int id, double* value) override { getLevelMeter(id, value); }
  void resetMeters() override { initMeters(); }
  void enable() override { active = 1; }
  void disable() override { active = 0; }

 private:
  /// A value that follows its target by a share of the distance per sample.
  struct Smoothed {
    double target = 0.0, current = 0.0;
    /// The next values of a block.
    void run(eq::Ramp& ramp, int frames, double share, double flush);
  };

  bool passes() const;
  void setBand(eq::Band band, eq::BandParameter parameter, double p);
  void setAnalog(bool on);
  void design(eq::Band band);
  void updateCoefficients();
  void runGains(int frames);

  eq::EqChannel channels[2];
  eq::EqBand bands[eq::kBands];
  Smoothed fade[eq::kBands];
  Smoothed toneGain[eq::kBands];
  Smoothed outGain{1.0, 1.0};
  eq::BlockGains gains;
  bool analogOn = true;
  double fadeCoeff = 0.0;  ///< share per sample of every smoothed value
};

}  // namespace corvane
