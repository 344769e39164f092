#include "modules/eq/AnalogStage.h"

#include <cmath>

#include "core/dsp/Biquad.h"

namespace corvane::eq {

namespace {

constexpr double kLowFlush = 1e-15;
constexpr double kSmallestLevel = 1e-6;  // below it the gain is 1 to 14 places, and l divides

enum Type { kBellform = 1, kLumenband = 2, kTonbox = 3 };

struct BellformLaw {
  static double upper(double y, double l) { return y * std::atan(l * 0.0625) * 16.0 / l; }
  static double lower(double y, double l) { return upper(y, l); }
};
struct LumenbandLaw {
  static double upper(double y, double l) { return y * std::tanh(l / 16.0) * 16.0 / l; }
  static double lower(double y, double l) { return y * std::atan(l / 8.0) * 8.0 / l; }
};
struct TonboxLaw {
  static double upper(double y, double l) { return y * std::tanh(l / 8.0) * 8.0 / l; }
  static double lower(double y, double l) {
    return y * std::atan(l / (1.0 + 0.02 * std::abs(l)) / 16.0) * 16.0 / l;
  }
};

template <typename Law>
void applyLaw(double* samples, const double* low, int frames) {
  for (int i = 0; i < frames; ++i) {
    if (low[i] > kSmallestLevel)
      samples[i] = Law::upper(samples[i], low[i]);
    else if (low[i] < -kSmallestLevel)
      samples[i] = Law::lower(samples[i], low[i]);
  }
}

}  // namespace

double analogCoefficient(int type, double sampleRateHz) {
  const double w = type == kBellform    ? 21991.14857512855   // 2 pi 3500 Hz
                   : type == kLumenband ? 15707.963267948966  // 2 pi 2500 Hz
                                        : 9424.77796076938;   // 2 pi 1500 Hz
  return 1.0 - std::exp(-w / sampleRateHz);
}

void runAnalogStage(double* samples, int frames, int type, double coefficient, bool on, AnalogState& state) {
  double low[kBlockFrames];
  AnalogState s = state;
  for (int i = 0; i < frames; ++i) {
    s.low1 = flushed(s.low1 + (samples[i] - s.low1) * coefficient, kLowFlush);
    s.low2 = flushed(s.low2 + (s.low1 - s.low2) * coefficient, kLowFlush);
    low[i] = s.low2;
  }
  state = s;
  if (on) {
    switch (type) {
      case kBellform: applyLaw<BellformLaw>(samples, low, frames); break;
      case kLumenband: applyLaw<LumenbandLaw>(samples, low, frames); break;
      case kTonbox: applyLaw<TonboxLaw>(samples, low, frames); break;
      default: break;
    }
  }
  for (int i = 0; i < frames; ++i) samples[i] = numberOrZero(samples[i]);
}

}  // namespace corvane::eq
