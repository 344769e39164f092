#include "modules/gate/GateCurve.h"

namespace corvane::gate {

void expanderTargets(double* levels, int frames, int ratioStep) {
  const double exponent = kRatioExponents[static_cast<std::size_t>(ratioStep)];
  const auto forEach = [&](auto curve) {
    for (int i = 0; i < frames; ++i) levels[i] = levels[i] < 1.0 ? curve(levels[i]) : 1.0;
  };
  if (exponent == 0.0)
    forEach([](double) { return 1.0; });
  else if (exponent == 1.0)
    forEach(PlainCurve{});
  else if (exponent == 0.5)
    forEach(RootCurve{});
  else
    forEach(PowerCurve{exponent});
}

}  // namespace corvane::gate
