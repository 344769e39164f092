#pragma once

#include "core/StripEffect.h"
#include "modules/compressor/OptoFetVcaCompressor.h"

namespace corvane {

/// Compressor with three detectors: opto, FET and VCA.
///
///   key -> high-pass -> detector -> gain g       y = x g makeup       out = mix y + (1 - mix) x
///
/// The key is the input or pair 1. No look-ahead, no latency. Link is stored and has no effect.
class StripEffectCompressor final : public StripEffect, private OptoFetVcaCompressor {
 public:
  StripEffectCompressor(std::int32_t parameterBase, std::int32_t meterBase, std::int32_t tagBase);

  void reset() override;
  void setSampleRate(double hz) override;
  /// Own parameters as in CompressorTable.h, clamped to 0..1. A change of `type` clears nothing: the detector
  /// that takes over goes on from where it stood.
  void setParameter(int id, double value) override;
  void setDefaults() override;
  /// Each channel has its own detector; the reduction shown is that of the one that reduces more.
  void processBlock(double** in, double** out, int frames) override;
  void processBlockMono(double** in, double** out, int frames) override;
  /// Level meters, and at 2 the reduction: 1 - gain.
  void getMeter(int id, double* value) override;
  void resetMeters() override;
  void enable() override;
  /// Clears the detectors; controls on their way stay where they are.
  void disable() override;

 private:
  bool passes() const { return active == 0 || type == 0; }

  std::int32_t monitor = 0;
};

}  // namespace corvane
