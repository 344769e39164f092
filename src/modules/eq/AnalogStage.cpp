#include "modules/eq/AnalogStage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "core/dsp/FastMath.h"

namespace corvane::eq {

namespace {

enum Curve { kAtan, kTanh };

/// The gain over one half-wave: curve(t) / t with t = |l| / scale, and |l| first bent to |l| / (1 + bend
/// |l|).
struct HalfWave {
  Curve curve;
  double scale, bend = 0.0;
};
struct Law {
  HalfWave above, below;  ///< of level 0
};
constexpr Law kLaws[] = {
    {{kAtan, 16.0}, {kAtan, 16.0}},
    {{kTanh, 16.0}, {kAtan, 8.0}},
    {{kTanh, 8.0}, {kAtan, 16.0, 0.02}},
};

constexpr double kSmallestLevel = 1e-6;  // below it the gain is 1 to 14 places

// curve(t) / t as a series in t^2. Up to |t| = 1/8, which is full scale at least, nine terms leave less than
// 1e-17, and neither curve nor division is needed.
constexpr double kSeriesEnd = 0.125;
using Series = std::array<double, 9>;
constexpr std::array kSeries{
    Series{1.0, -1.0 / 3.0, 1.0 / 5.0, -1.0 / 7.0, 1.0 / 9.0, -1.0 / 11.0, 1.0 / 13.0, -1.0 / 15.0,
           1.0 / 17.0},
    Series{1.0, -1.0 / 3.0, 2.0 / 15.0, -17.0 / 315.0, 62.0 / 2835.0, -1382.0 / 155925.0, 21844.0 / 6081075.0,
           -929569.0 / 638512875.0, 6404582.0 / 10854718875.0}};

template <Curve kCurve>
inline double series(double t) {
  constexpr Series c = kSeries[kCurve];
  const double z = t * t, z2 = z * z, z4 = z2 * z2;
  const double low = (c[0] + c[1] * z) + (c[2] + c[3] * z) * z2;
  const double high = (c[4] + c[5] * z) + (c[6] + c[7] * z) * z2;
  return low + (high + c[8] * z4) * z4;
}

/// t of a half-wave, and the gain that its bend has taken.
struct Bent {
  double t, gain;
};
template <int kType>
inline Bent bent(double l) {
  constexpr Law law = kLaws[kType - kBellform];
  constexpr double kAbove = 1.0 / law.above.scale, kBelow = 1.0 / law.below.scale;  // powers of two, so exact
  const double t = std::abs(l) * (l > 0.0 ? kAbove : kBelow);
  if constexpr (law.above.bend == 0.0 && law.below.bend == 0.0) return {t, 1.0};
  const double gain = 1.0 / (1.0 + (l > 0.0 ? law.above.bend : law.below.bend) * std::abs(l));
  return {t * gain, gain};
}

/// The gain where the series serves, without a branch.
template <int kType>
inline double seriesGain(double l) {
  constexpr Law law = kLaws[kType - kBellform];
  const Bent b = bent<kType>(l);
  const double above = series<law.above.curve>(b.t), below = series<law.below.curve>(b.t);
  return std::abs(l) > kSmallestLevel ? (l > 0.0 ? above : below) * b.gain : 1.0;
}

/// The gain at any level.
template <int kType>
inline double gainAt(double l) {
  constexpr Law law = kLaws[kType - kBellform];
  const Bent b = bent<kType>(l);
  if (!(b.t > kSeriesEnd)) return seriesGain<kType>(l);
  return ((l > 0.0 ? law.above : law.below).curve == kAtan ? fast::atan(b.t) : fast::tanh(b.t)) / b.t *
         b.gain;
}

template <int kType>
[[gnu::always_inline]] inline void applyGains(const double* levels, double* samples, int frames) {
  // Below this level the series serves for both half-waves; a bend only takes t further down.
  constexpr double kSafe =
      kSeriesEnd * std::min(kLaws[kType - kBellform].above.scale, kLaws[kType - kBellform].below.scale);
  std::int64_t beyond = 0;
  for (int i = 0; i < frames; ++i) beyond |= std::abs(levels[i]) > kSafe ? 1 : 0;
  if (beyond != 0)
    for (int i = 0; i < frames; ++i) samples[i] *= gainAt<kType>(levels[i]);
  else
    for (int i = 0; i < frames; ++i) samples[i] *= seriesGain<kType>(levels[i]);
}

}  // namespace

double analogCoefficient(int type, double sampleRateHz) {
  const double w = type == kBellform    ? 21991.14857512855   // 2 pi 3500 Hz
                   : type == kLumenband ? 15707.963267948966  // 2 pi 2500 Hz
                                        : 9424.77796076938;   // 2 pi 1500 Hz
  return 1.0 - std::exp(-w / sampleRateHz);
}

double analogGain(int type, double l) {
  switch (type) {
    case kBellform: return gainAt<kBellform>(l);
    case kLumenband: return gainAt<kLumenband>(l);
    default: return gainAt<kTonbox>(l);
  }
}

CORVANE_WIDE_LOOPS void applyAnalog(int type, bool on, const double* levels, double* samples, int frames) {
  if (on) {
    switch (type) {
      case kBellform: applyGains<kBellform>(levels, samples, frames); break;
      case kLumenband: applyGains<kLumenband>(levels, samples, frames); break;
      default: applyGains<kTonbox>(levels, samples, frames); break;
    }
  }
  for (int i = 0; i < frames; ++i) samples[i] = numberOrZero(samples[i]);
}

}  // namespace corvane::eq
