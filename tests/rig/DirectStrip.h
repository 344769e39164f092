#pragma once

#include <algorithm>
#include <array>

#include "core/CorvaneMonoEffect.h"
#include "core/ParameterBank.h"

namespace corvane::rig {

/// The processor without plug-in and host: values as floats, taken at the start of a block in rising order of
/// id and only where they changed. The plain form of the host road.
class DirectStrip {
 public:
  explicit DirectStrip(double rateHz) {
    effect.setSampleRate(rateHz);
    seen.fill(-1.0F);
    for (int id = 0; id < kParameters; ++id) set(id, parameterDefault(id));
  }

  void set(int id, double value) { values[static_cast<std::size_t>(id)] = static_cast<float>(value); }

  void process(const float* input, const float* key, float* output, int frames, bool bypassed = false) {
    deliver();
    const float* const inputs[4] = {input, nullptr, key, nullptr};
    float* const outputs[2] = {output, nullptr};
    if (bypassed)
      effect.processBypassedFloat(inputs, outputs, frames);
    else
      effect.processFloat(inputs, outputs, frames);
  }

  CorvaneMonoEffect effect;

 private:
  void deliver() {
    for (int id = 0; id < kParameters; ++id) {
      const auto k = static_cast<std::size_t>(id);
      if ((parameterKind(id) & kKindAnnounced) == 0 || values[k] == seen[k]) continue;
      seen[k] = values[k];
      effect.setParameter(id, static_cast<double>(values[k]));
      // a module that comes into an insert starts from its defaults: it needs the insert's values anew
      for (const int place : {kInsertX, kInsertY})
        if (const Place& insert = kRack[static_cast<std::size_t>(place)]; id == insert.parameterBase)
          std::fill_n(seen.begin() + id + 1, insert.parameterCount - 1, -1.0F);
    }
  }

  std::array<float, kParameters> values{}, seen{};
};

}  // namespace corvane::rig
