#include "modules/limiter/StripEffectLimiter.h"

namespace corvane {

void StripEffectLimiter::process(double** in, double** out, int frames, int channels) {
  if (frames < 1) return;
  if (passes()) return passThroughBlock(in, out, frames);
  switch (type) {
    case kOpto:
    case kVca: return processOptoVca(in, out, frames, channels);
    case kBrickWall: return processBrickWall(in, out, frames, channels);
    case kSaturator: return processSaturator(in, out, frames, channels);
    default: return;
  }
}

}  // namespace corvane
