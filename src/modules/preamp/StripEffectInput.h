#pragma once

#include "core/StripEffect.h"
#include "modules/preamp/ColourStage.h"
#include "modules/preamp/GainStage.h"
#include "modules/preamp/Polarity.h"

namespace corvane {

/// Preamp: polarity, gain or automated gain, and behind them a console input or a converter of an era.
///
///   x -> polarity -> gain -> post-gain meter -> colour ("Analog" on, every variant but "Gain") -> y
///
/// Both channels of the pair pass the colour, also in the mono form, where they start from the same samples:
/// the second one reaches the first by crosstalk and shows on the saturation meter. No latency is told;
/// "ADC 90s" reads about 1.55 samples back.
class StripEffectInput final : public StripEffect {
 public:
  StripEffectInput(std::int32_t parameterBase, std::int32_t meterBase, std::int32_t tagBase);

  /// Ends turns of polarity, gains to their targets, meters and colour to rest. The hiss goes on.
  void reset() override;
  void setSampleRate(double hz) override;
  /// Own parameters as in PreampTable.h, and the type.
  void setParameter(int id, double value) override;
  void setDefaults() override;
  /// Each channel with its own polarity; one gain.
  void processBlock(double** in, double** out, int frames) override;
  void processBlockMono(double** in, double** out, int frames) override;
  void getMeter(int id, double* value) override;
  void resetMeters() override;
  void enable() override { enabled = 1; }
  void disable() override { enabled = 0; }

 private:
  static constexpr std::int32_t kPlainType = 1;  // "Gain"

  bool passes() const { return enabled == 0 || type == 0; }
  bool isColoured() const { return analog && type != kPlainType; }
  void setType(double value);
  preamp::GainStage gain;
  preamp::ColourStage colour;
  preamp::Polarity polarity[2];
  std::int32_t enabled = 1;
  bool analog = true;  ///< colour in the path
};

}  // namespace corvane
