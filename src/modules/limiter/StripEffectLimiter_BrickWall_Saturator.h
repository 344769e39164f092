#pragma once

#include "modules/limiter/BrickWall.h"
#include "modules/limiter/Saturator.h"
#include "modules/limiter/StripEffectLimiter_OptoVCA.h"

namespace corvane {

/// Adds the variants "BrickWall" (type 7) and "Saturator" (type 12).
///
/// The saturator takes the bass down by 20 dB in both the key and the signal before its curve, and restores
/// it behind, so that the curve works on the mid and upper band. The shelves stand at 1/2.6 of the HPF
/// control; at gain 1 they cancel. A mode or shape without a meaning passes the signal and lets the reduction
/// meter stand. [render]
class StripEffectLimiter_BrickWall_Saturator : public StripEffectLimiter_OptoVCA {
 public:
  StripEffectLimiter_BrickWall_Saturator(std::int32_t parameterBase, std::int32_t meterBase,
                                         std::int32_t tagBase);

  void reset() override;
  void setSampleRate(double hz) override;
  void setParameter(int id, double value) override;
  void initFilters() override;
  void updateAttack() override;
  void updateRelease() override;

 protected:
  static constexpr std::int32_t kBrickWall = 7, kSaturator = 12;

  void processBrickWall(double** in, double** out, int frames, int channels);
  void processSaturator(double** in, double** out, int frames, int channels);

 private:
  struct Channel {
    GlideFilter keyShelf, signalShelf, restoreShelf;
    limiter::BrickWallState brick;
    limiter::SaturatorState saturator;
  };
  static Channel makeChannel();
  void seedDetectors(double level);
  /// `action` on every shelf of both channels.
  template <typename Action>
  void eachShelf(Action action);

  Channel channel[2];
  std::int32_t brickMode = 1;
  std::int32_t shapeStep = 2;
  double smoothNorm = 0.5;   ///< position of the control
  double releaseMs = 100.0;  ///< of the brick wall
  limiter::BrickWallCoefficients brickCoefficients;
  limiter::SaturatorCoefficients saturatorCoefficients;
};

}  // namespace corvane
