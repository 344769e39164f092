#pragma once

#include "core/StripEffect.h"
#include "modules/tidalform/TidalformDynamics.h"
#include "modules/tidalform/TidalformFilters.h"

namespace corvane {

/// Tidalform dynamic equaliser: one shelf or bell whose gain moves between two set values as the level of a
/// detection signal passes a threshold. The detection signal, own or external, can go through a control
/// filter in the band of the dynamic one or in what that leaves. Frequency and Q are smoothed at 20 Hz; the
/// sections take a new design with every sample in which one of its inputs moved. Parameters as in
/// TidalformTable.h. No latency; the two-channel form detects each channel and drives both with the mean
/// gain.
class StripEffectTidalform final : public StripEffect {
 public:
  StripEffectTidalform(std::int32_t parameterBase, std::int32_t meterBase, std::int32_t tagBase);

  /// Smoothed values to their targets; the gain goes on from where it is.
  void reset() override;
  /// The gain starts again from 0 dB.
  void setSampleRate(double hz) override;
  void setParameter(int id, double value) override;
  void setDefaults() override;
  void processBlock(double** in, double** out, int frames) override;
  void processBlockMono(double** in, double** out, int frames) override;
  /// The level meters; the gain, 0 .. 1 for -24 .. 24 dB; the side of the threshold, 0 below .. 1 above.
  void getMeter(int id, double* value) override;
  void resetMeters() override;
  void enable() override { active = 1; }
  void disable() override { active = 0; }

 private:
  struct Channel {
    BiquadHistory controlFirst, controlSecond, dynamicFilter;
    GainFollower gain;
    double input[kBlockFrames], output[kBlockFrames];
    double key[kBlockFrames];    ///< as it came
    double heard[kBlockFrames];  ///< behind the control filter
    TidalformLevels levels;
  };

  bool passes() const { return active == 0 || type == 0; }
  void updateTimes();
  /// Fills `bandBlock` and returns how many samples of the block move; behind them the band stands.
  int moveBand(int frames);
  /// Designs of the standing band, if one of their inputs moved since.
  void updateStanding();
  template <int kChannels>
  void run(double** in, int frames);
  template <int kChannels>
  void detect(int moving, int frames);
  template <int kChannels>
  void moveGain(int frames);
  template <int kChannels>
  void filter(int moving, int frames);

  GainLaw law;
  TidalformTimes times;
  double timeFactor = 1.0;
  double frequencyTarget = 1000.0;  ///< Hz
  double peakQTarget = 1.0, shelfQTarget = 0.7;
  TidalformFilter filterType = TidalformFilter::peak;
  TidalformControl controlMode = TidalformControl::direct;
  std::int32_t monitorOn = 0;

  double smoothing = 0.0;  ///< share per sample, 20 Hz
  TidalformBand band;
  bool standingIsStale = true;  ///< band, type, mode or rate moved since the standing designs were made
  StandingCoefficients standingFirst, standingSecond;
  DynamicAngle standingAngle;

  Channel channels[2];
  OverIndicator indicator;
  double dynamicGainDb = 0.0;

  TidalformBandBlock bandBlock;
  CoefficientBlock firstBlock, secondBlock, dynamicBlock;
  double gainBlock[kBlockFrames];  ///< dB
};

}  // namespace corvane
