#include "core/dsp/Biquad.h"

#include <algorithm>
#include <complex>
#include <numbers>

#include "core/dsp/SectionShape.h"

namespace corvane {

BiquadCoefficients designSection(SectionType type, double frequencyHz, double q, double gainDb,
                                 double sampleRateHz) {
  const double fs = sampleRateHz;
  const double f = frequencyHz;
  const double fc = designedHz(f, fs);
  const double w = 2.0 * std::numbers::pi * fc / fs;
  BiquadCoefficients k;

  if (type == SectionType::onePoleHigh) {
    k.a0 = std::pow(0.005, fc / fs);
    return k;
  }
  if (type == SectionType::onePoleLow) {
    const double u = 2.0 - std::cos(2.0 * std::numbers::pi * f / fs);
    k.a1 = std::sqrt(u * u - 1.0) - u;
    k.b0 = 1.0 + k.a1;
    return k;
  }

  if (type < SectionType::highPass || type > SectionType::allPass) return k;

  const double bent = bentQ(type, f, q, fs, [](double x, double y) { return std::pow(x, y); });
  const double A = hasGain(type) ? std::pow(10.0, gainDb / 40.0) : 1.0;
  return shapeSection(type, std::sin(w), std::cos(w), bent, A);
}

double magnitude(const BiquadCoefficients& c, double hz, double sampleRateHz) {
  const auto z1 = std::polar(1.0, -2.0 * std::numbers::pi * hz / sampleRateHz);
  const auto z2 = z1 * z1;
  return std::abs((c.b0 + c.b1 * z1 + c.b2 * z2) / (1.0 + c.a1 * z1 + c.a2 * z2));
}

void filterBlock(double* samples, int count, const BiquadCoefficients& c, BiquadHistory& h) {
  // A not-a-number once in the recursion stays in it, so one look at the end tells whether the guards of
  // filterSample would have acted; then the block is run again with them.
  double x1 = h.x1, x2 = h.x2, y1 = h.y1, y2 = h.y2;
  double out[kBlockFrames];
  while (count > 0) {
    const int n = std::min(count, kBlockFrames);
    double x0 = h.x0, y0 = h.y0;
    for (int i = 0; i < n; ++i) {
      x0 = samples[i];
      y0 = flushed(c.b0 * x0 + c.b1 * x1 + c.b2 * x2 - c.a1 * y1 - c.a2 * y2, kFilterFlush);
      x2 = x1, x1 = x0, y2 = y1, y1 = y0;
      out[i] = y0;
    }
    if (std::isnan(y0)) {
      for (int i = 0; i < n; ++i) samples[i] = filterSample(samples[i], c, h);
      x1 = h.x1, x2 = h.x2, y1 = h.y1, y2 = h.y2;
    } else {
      std::copy_n(out, n, samples);
      h = {x0, x1, x2, y0, y1, y2};
    }
    samples += n;
    count -= n;
  }
}

}  // namespace corvane
