#pragma once

#include <array>
#include <cstdint>

#include "core/StripEffect.h"
#include "modules/filters/FilterSection.h"

namespace corvane {

/// High-pass, parametric band and low-pass, for the signal or for the key of the modules behind.
///
///   high-pass 12, 18, 24 dB per octave -> parametric band -> low-pass 6, 12, 18 dB per octave
///
/// "Basic Filters" leaves the band out. "S.C. Filters" filters the external key (pair 1), so that every
/// module behind it hears the filtered key, and leaves the signal alone. No latency. Runs at up to 192 kHz.
class StripEffectFilters final : public StripEffect {
 public:
  StripEffectFilters(std::int32_t parameterBase, std::int32_t meterBase, std::int32_t tagBase);

  void reset() override;
  /// Frequencies that were limited by the old rate stand until they are sent again.
  void setSampleRate(double hz) override;
  /// Own parameters as in FiltersTable.h.
  void setParameter(int id, double value) override;
  void setDefaults() override;
  void processBlock(double** in, double** out, int frames) override;
  void processBlockMono(double** in, double** out, int frames) override;
  void getMeter(int id, double* value) override { getLevelMeter(id, value); }
  void resetMeters() override { initMeters(); }
  void enable() override { active = 1; }
  void disable() override { active = 0; }

 private:
  enum Variant { kBasic = 1, kPro, kKey };

  struct Channel {
    Channel();
    FilterSection highPassA, highPassB, highPassC, parametric, lowPassA, lowPassB;
    std::array<FilterSection*, 6> inOrder() {
      return {&highPassA, &highPassB, &highPassC, &parametric, &lowPassA, &lowPassB};
    }
    std::array<FilterSection*, 5> withoutBand() {
      return {&highPassA, &highPassB, &highPassC, &lowPassA, &lowPassB};
    }
  };

  bool passes() const { return active == 0 || type < kBasic || type > kKey; }
  void setHighPassFrequency(double hz);
  void setLowPassFrequency(double hz);
  void switchSections();
  /// Runs `samples` of one channel through what is on.
  void runChannel(double* samples, int frames, Channel& channel) const;

  std::int32_t lpfOn = 0, lpfSlope = 0;
  std::int32_t parametricOn = 0, parametricType = 0;
  std::int32_t hpfOn = 0, hpfSlope = 0;
  std::int32_t monitor = 0;         ///< the key is heard instead of the signal
  std::array<Channel, 2> channels;  ///< the same values in both
};

}  // namespace corvane
