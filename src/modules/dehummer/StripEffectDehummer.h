#pragma once

#include "core/StripEffect.h"
#include "modules/dehummer/HarmonicComb.h"

namespace corvane {

/// De-hummer: eighteen notches at the harmonics of a mains frequency that is set by hand. The fundamental is
/// cut by the full attenuation, the harmonics along a falling curve. Monitor plays what the notches take.
/// Parameters as in DehummerTable.h. No latency; the two-channel form links the reduction meter alone.
class StripEffectDehummer final : public StripEffect {
 public:
  StripEffectDehummer(std::int32_t parameterBase, std::int32_t meterBase, std::int32_t tagBase);

  void reset() override;
  void setSampleRate(double hz) override;
  /// Own parameters; what is set glides for 60 ms. Every write that turns Monitor on renews both banks.
  void setParameter(int id, double value) override;
  void setDefaults() override;
  void processBlock(double** in, double** out, int frames) override;
  void processBlockMono(double** in, double** out, int frames) override;
  /// The level meters, and the share of the level that the comb takes, 0..1.
  void getMeter(int id, double* value) override;
  void resetMeters() override;
  void enable() override { active = 1; }
  void disable() override { active = 0; }

 private:
  struct Channel {
    HarmonicComb comb;
    double inputEnvelope = 0.0, notchedEnvelope = 0.0;  ///< linear
    double input[kBlockFrames], output[kBlockFrames];
  };

  bool passes() const { return active == 0 || type == 0; }
  void updateHarmonicFrequencies();
  void updateHarmonicGains();
  void runChannel(Channel& channel, const double* input, int frames);
  void updateReduction(double inputEnvelope, double notchedEnvelope, int frames);

  Channel channels[2];
  HumSetting hum;
  double mainsFrequency = 60.0;      ///< Hz
  double frequencyOffset = 0.0;      ///< Hz
  double envelopeCoefficient = 0.0;  ///< share of the distance per sample, as the level meters fall
  double humReduction = 0.0;         ///< 0..1
  std::int32_t monitorOn = 0;
};

}  // namespace corvane
