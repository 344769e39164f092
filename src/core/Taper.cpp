#include "core/Taper.h"

#include <cmath>

namespace corvane::taper {

double linearForward(const Taper& t, double p) { return t.span * p + t.base; }
double linearInverse(const Taper& t, double value) { return (value - t.base) / t.span; }
double exponentialForward(const Taper& t, double p) { return t.base * std::pow(t.span, p); }
double exponentialInverse(const Taper& t, double value) {
  return std::log(value / t.base) / std::log(t.span);
}
double steppedForward(const Taper& t, double p) { return std::trunc(t.span * p + 0.5); }
double steppedInverse(const Taper& t, double value) { return value / t.span; }

}  // namespace corvane::taper
