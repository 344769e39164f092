#pragma once

#include "core/StripEffect.h"
#include "modules/deesser/DeesserDetector.h"

namespace corvane {

/// De-esser: compares the level of a narrow detection band with the level of the whole signal and turns the
/// gain down when the band gets too strong against the rest.
///
///   g = smoothed min(1, whole / band)      applied = g^ratioExponent (1 - floor) + floor
///   full band   y = x applied              split band   y = low + high applied
///
/// Split band leaves the crossover's phase in the signal. Parameters as in DeesserTable.h. No latency; the
/// two-channel form links both channels to one gain.
class StripEffectDeesser final : public StripEffect {
 public:
  StripEffectDeesser(std::int32_t parameterBase, std::int32_t meterBase, std::int32_t tagBase);

  void reset() override;
  void setSampleRate(double hz) override;
  void setParameter(int id, double value) override;
  void setDefaults() override;
  void processBlock(double** in, double** out, int frames) override;
  void processBlockMono(double** in, double** out, int frames) override;
  /// The level meters, and the reduction: 1 - the applied gain of the last sample, linear.
  void getMeter(int id, double* value) override;
  void resetMeters() override;
  void enable() override { active = 1; }
  void disable() override { active = 0; }

 private:
  struct Channel {
    DeesserFilters filters;
    DeesserEnvelopes envelopes;
    DeesserBlock block;
  };

  bool passes() const { return active == 0 || type == 0; }
  void updateBand();
  /// Filters, detector and gain over the blocks of all channels.
  template <int kChannels>
  void run(double (*output)[kBlockFrames], int frames);

  Channel channels[2];
  DeesserGain gain;
  DeesserShares shares;
  double sibilanceFrequency = 6000.0;  ///< Hz
  double sibilanceQ = 6.0;
  double sensitivityGain = 1.0;  ///< linear
  double rangeFloor = 1.0;       ///< linear, the lowest gain
  double ratioExponent = 0.5;    ///< 0.5 for 2:1, 0.75 for 4:1
  std::int32_t splitBand = 0;    ///< 0 full band, 1 split band
  std::int32_t monitorOn = 0;
  double appliedGain = 0.0;  ///< linear, last sample
};

}  // namespace corvane
