#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "core/StripEffect.h"
#include "core/dsp/GlideFilter.h"
#include "modules/gate/GateCurve.h"

namespace corvane {

/// Expander, gate and ducker: one key path, one set of parameters.
///
///   key -> high-pass, low-pass (24 dB per octave each, when in) -> rectified level over threshold -> gain
///   y = x (range + (1 - range) gain)
///
/// The level is the rectified sample itself, so the gain opens without delay and only the hold time (gate and
/// ducker) bridges the zero crossings of the key. No latency.
class StripEffectExpander final : public StripEffect {
 public:
  StripEffectExpander(std::int32_t parameterBase, std::int32_t meterBase, std::int32_t tagBase);

  /// Closed: the first sound above the threshold fades in with the attack.
  void reset() override;
  void setSampleRate(double hz) override;
  /// Own parameters as in GateTable.h. A change of `type` clears nothing: the gain goes on from where it is.
  void setParameter(int id, double value) override;
  void setDefaults() override;
  /// Each channel has its own filters and gain; both are keyed by the louder of the two key channels.
  void processBlock(double** in, double** out, int frames) override;
  void processBlockMono(double** in, double** out, int frames) override;
  /// Level meters, and at 2 the reduction: 1 - gain.
  void getMeter(int id, double* value) override;
  void resetMeters() override;
  void enable() override { enabled = 1; }
  void disable() override { enabled = 0; }

 private:
  enum Variant { kExpander = 1, kGate, kDucker };

  struct Channel {
    Channel();
    std::array<GlideFilter, 4> keyFilters;  ///< in series: two high-pass, two low-pass
    gate::GateState state;
    std::span<GlideFilter> keyHighPass() { return std::span(keyFilters).first(2); }
    std::span<GlideFilter> keyLowPass() { return std::span(keyFilters).last(2); }
  };

  bool passes() const { return enabled == 0 || type < kExpander || type > kDucker; }
  void updateTimes();
  gate::GateCoefficients coefficients() const;
  /// The key of one channel behind the filters that are in: `key` itself, or `filtered` where it went.
  const double* filterKey(const double* key, double* filtered, int frames, Channel& channel) const;
  /// Gain and output of one channel. `levels`: rectified key over threshold, overwritten.
  void runChannel(const double* input, const double* key, double* levels, double* output, int frames,
                  gate::GateState& state) const;
  template <typename Curve>
  void runVariant(Curve curve, const double* input, const double* key, double* levels, double* output,
                  int frames, gate::GateState& state) const;
  void publishGain(double lastGain);

  std::int32_t enabled = 1;
  std::int32_t ratioStep = 0;
  double range = 0.0;  ///< floor, linear
  double threshold = 0.001, inverseThreshold = 1000.0;
  double attackMs = 0.1, attackCoef = 0.0;
  double releaseMs = 10.0, releaseCoef = 0.0;
  double shape = 0.5;          ///< 0..1
  double curveExponent = 0.5;  ///< of the release, from `shape`
  double holdSeconds = 0.05;
  double smoothCoef = 0.0;
  double gainMeterPublished = 0.0;  ///< last gain of the block, 0..1
  std::int32_t hpfOn = 0, lpfOn = 0, monitor = 0;
  std::array<Channel, 2> channels;
};

}  // namespace corvane
