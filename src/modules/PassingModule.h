#pragma once

#include "core/ModuleFamily.h"
#include "core/Rack.h"

namespace corvane {

/// Stands in the rack for a family that has no sound yet: passes its input and follows both level meters.
class PassingModule final : public StripEffect {
 public:
  using StripEffect::StripEffect;
  void reset() override { initMeters(); }
  void setSampleRate(double hz) override {
    sampleRate = clampedRate(hz);
    updateMeterCoefficients();
  }
  void setParameter(int, double) override {}
  void setDefaults() override {}
  void processBlock(double** in, double** out, int frames) override { passThroughBlock(in, out, frames); }
  void processBlockMono(double** in, double** out, int frames) override { passThroughBlock(in, out, frames); }
  void getMeter(int id, double* value) override { getLevelMeter(id, value); }
  void resetMeters() override { initMeters(); }
  void enable() override { active = 1; }
  void disable() override { active = 0; }
};

inline std::unique_ptr<StripEffect> makePassingModule(int parameterBase, int meterBase, int tagBase) {
  return std::make_unique<PassingModule>(parameterBase, meterBase, tagBase);
}

}  // namespace corvane
