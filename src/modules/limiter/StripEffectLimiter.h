#pragma once

#include "modules/limiter/StripEffectLimiter_BrickWall_Saturator.h"

namespace corvane {

/// The limiter that the rack holds: sends each block to the variant in force. A type without a variant leaves
/// the buffers and the meters as they are. [render]
class StripEffectLimiter final : public StripEffectLimiter_BrickWall_Saturator {
 public:
  using StripEffectLimiter_BrickWall_Saturator::StripEffectLimiter_BrickWall_Saturator;
  void processBlock(double** in, double** out, int frames) override { process(in, out, frames, 2); }
  void processBlockMono(double** in, double** out, int frames) override { process(in, out, frames, 1); }

 private:
  void process(double** in, double** out, int frames, int channels);
};

}  // namespace corvane
