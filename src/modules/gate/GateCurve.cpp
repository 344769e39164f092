#include "modules/gate/GateCurve.h"

#include "core/dsp/Biquad.h"
#include "core/dsp/FastMath.h"

namespace corvane::gate {

CORVANE_WIDE_LOOPS [[gnu::flatten]] void expanderTargets(double* levels, int frames, int ratioStep) {
  const double exponent = kRatioExponents[static_cast<std::size_t>(ratioStep)];
  if (exponent == 1.0 || exponent == 0.5) {
    for (int i = 0; i < frames; ++i) {
      const double level = levels[i] < 1.0 ? levels[i] : 1.0;
      levels[i] = exponent == 1.0 ? level : std::sqrt(level);
    }
    return;
  }
  // Only what lies below the threshold is worth a power, side by side.
  int below[kBlockFrames];
  double powers[kBlockFrames];
  int count = 0;
  for (int i = 0; i < frames; ++i) {
    below[count] = i;
    powers[count] = levels[i];
    count += levels[i] < 1.0;
    levels[i] = 1.0;
  }
  if (exponent == 0.0) return;
  for (int k = 0; k < count; ++k) powers[k] = fast::pow(powers[k], exponent);
  for (int k = 0; k < count; ++k) levels[below[k]] = powers[k];
}

}  // namespace corvane::gate
