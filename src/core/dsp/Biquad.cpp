#include "core/dsp/Biquad.h"

#include <algorithm>
#include <complex>
#include <numbers>

#include "core/dsp/RunTogether.h"
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
  while (count > 0) {
    const int n = std::min(count, kBlockFrames);
    SecondOrder section(c, h);
    if (runTogether(samples, n, section))
      section.store(h);
    else
      for (int i = 0; i < n; ++i) samples[i] = filterSample(samples[i], c, h);
    samples += n;
    count -= n;
  }
}

}  // namespace corvane
