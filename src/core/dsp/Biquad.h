#pragma once

#include <cmath>
#include <cstdint>

#include "core/dsp/Flush.h"

namespace corvane {

/// Response of a second-order section. The numbers are those that tables of filters use.
enum class SectionType : std::uint32_t {
  none = 0,
  highPass = 1,     ///< 12 dB per octave
  onePoleHigh = 2,  ///< one-pole high-pass of `FilterSection`; a GlideFilter designs the identity
  lowShelf = 3,
  peaking = 4,
  bandPass = 5,  ///< 0 dB at the centre
  notch = 6,
  highShelf = 7,
  lowPass = 8,     ///< 12 dB per octave
  onePoleLow = 9,  ///< 6 dB per octave
  allPass = 10,
};

/// Normalised set: all six are divided by a0, which is kept undivided for information.
struct BiquadCoefficients {
  double a0 = 1.0, a1 = 0.0, a2 = 0.0;
  double b0 = 1.0, b1 = 0.0, b2 = 0.0;
};

/// Input and output, now and one and two samples back; `{}` is silence.
struct BiquadHistory {
  double x0 = 0.0, x1 = 0.0, x2 = 0.0;
  double y0 = 0.0, y1 = 0.0, y2 = 0.0;
};

inline constexpr int kBlockFrames = 64;               // the rack's sub-block: no module sees a longer one
inline constexpr double kFilterFlush = 1e-30;         // -600 dBFS: rounds away what would turn denormal
inline constexpr double kFilterFlushMatters = 1e-13;  // the flush changes no number from here on

/// Shared section design after the bilinear cookbook formulas, with Q bent towards the top of the band so
/// that shelves and bells keep their width there. Frequencies above 0.499 of the rate are designed at that
/// limit (the one-pole low-pass and the bend of the band-pass take the frequency as asked for).
/// `frequencyHz` and `sampleRateHz` in Hz, `gainDb` in dB. Types without a response give the identity.
BiquadCoefficients designSection(SectionType type, double frequencyHz, double q, double gainDb,
                                 double sampleRateHz);

/// Magnitude of a set at `hz`, linear.
double magnitude(const BiquadCoefficients& c, double hz, double sampleRateHz);

/// The difference equation in its fixed order of additions, for one section or for several side by side.
template <typename V, typename Coefficients, typename History>
inline V biquadSum(V x0, const Coefficients& c, const History& h) {
  return c.b0 * x0 + c.b1 * h.x1 + c.b2 * h.x2 - c.a1 * h.y1 - c.a2 * h.y2;
}

/// Takes `x0` and `y0` into the history as the newest pair.
inline void pushHistory(double x0, double y0, BiquadHistory& h) {
  h.x0 = x0;
  h.y0 = y0;
  h.x2 = h.x1;
  h.x1 = x0;
  h.y2 = h.y1;
  h.y1 = y0;
}

/// One sample: guarded input, flushed and guarded output.
inline double filterSample(double sample, const BiquadCoefficients& c, BiquadHistory& h) {
  const double x0 = numberOrZero(sample);
  const double y0 = numberOrZero(flushed(biquadSum(x0, c, h), kFilterFlush));
  pushHistory(x0, y0, h);
  return y0;
}

/// A block with standing coefficients, in place; equal to `filterSample` sample by sample, bit for bit.
void filterBlock(double* samples, int count, const BiquadCoefficients& c, BiquadHistory& h);

}  // namespace corvane
