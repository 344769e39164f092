#include "core/dsp/Biquad.h"

#include <algorithm>
#include <complex>
#include <numbers>

namespace corvane {

namespace {

/// How strongly Q is bent: Qe = q (1 - (f / (share fs)) ^ exponent).
struct Bend {
  double share, exponent;
};

constexpr Bend bendOf(SectionType type) {
  switch (type) {
    case SectionType::highPass: return {0.5001, 6.0};
    case SectionType::lowShelf: return {0.5001, 3.5};
    case SectionType::highShelf: return {0.5001, 4.0};
    case SectionType::lowPass: return {0.50001, 8.0};
    default: return {0.5001, 2.8};
  }
}

}  // namespace

BiquadCoefficients designSection(SectionType type, double frequencyHz, double q, double gainDb,
                                 double sampleRateHz) {
  const double fs = sampleRateHz;
  const double f = frequencyHz;
  const double fc = std::min(f, 0.499 * fs);
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

  const double s = std::sin(w), c = std::cos(w);
  const Bend bend = bendOf(type);
  const double bendHz = type == SectionType::bandPass ? f : fc;
  const double bent =
      type == SectionType::allPass ? q : q * (1.0 - std::pow(bendHz / (bend.share * fs), bend.exponent));
  const double alpha = s / (2.0 * bent);

  switch (type) {
    case SectionType::highPass:
      k.b0 = k.b2 = (1.0 + c) / 2.0;
      k.b1 = -(1.0 + c);
      k.a0 = 1.0 + alpha, k.a1 = -2.0 * c, k.a2 = 1.0 - alpha;
      break;
    case SectionType::lowShelf: {
      const double A = std::pow(10.0, gainDb / 40.0);
      const double beta = std::sqrt(A) * s / bent;
      k.b0 = A * ((A + 1.0) - (A - 1.0) * c + beta);
      k.b1 = 2.0 * A * ((A - 1.0) - (A + 1.0) * c);
      k.b2 = A * ((A + 1.0) - (A - 1.0) * c - beta);
      k.a0 = (A + 1.0) + (A - 1.0) * c + beta;
      k.a1 = -2.0 * ((A - 1.0) + (A + 1.0) * c);
      k.a2 = (A + 1.0) + (A - 1.0) * c - beta;
      break;
    }
    case SectionType::peaking: {
      const double A = std::pow(10.0, gainDb / 40.0);
      k.b0 = 1.0 + alpha * A, k.b1 = -2.0 * c, k.b2 = 1.0 - alpha * A;
      k.a0 = 1.0 + alpha / A, k.a1 = -2.0 * c, k.a2 = 1.0 - alpha / A;
      break;
    }
    case SectionType::bandPass:
      k.b0 = alpha, k.b1 = 0.0, k.b2 = -alpha;
      k.a0 = 1.0 + alpha, k.a1 = -2.0 * c, k.a2 = 1.0 - alpha;
      break;
    case SectionType::notch:
      k.b0 = k.b2 = 1.0, k.b1 = -2.0 * c;
      k.a0 = 1.0 + alpha, k.a1 = -2.0 * c, k.a2 = 1.0 - alpha;
      break;
    case SectionType::highShelf: {
      const double A = std::pow(10.0, gainDb / 40.0);
      const double beta = std::sqrt(A) * s / bent;
      k.b0 = A * ((A + 1.0) + (A - 1.0) * c + beta);
      k.b1 = -2.0 * A * ((A - 1.0) + (A + 1.0) * c);
      k.b2 = A * ((A + 1.0) + (A - 1.0) * c - beta);
      k.a0 = (A + 1.0) - (A - 1.0) * c + beta;
      k.a1 = 2.0 * ((A - 1.0) - (A + 1.0) * c);
      k.a2 = (A + 1.0) - (A - 1.0) * c - beta;
      break;
    }
    case SectionType::lowPass:
      k.b0 = k.b2 = (1.0 - c) / 2.0, k.b1 = 1.0 - c;
      k.a0 = 1.0 + alpha, k.a1 = -2.0 * c, k.a2 = 1.0 - alpha;
      break;
    case SectionType::allPass:
      k.b0 = 1.0 - alpha, k.b1 = -2.0 * c, k.b2 = 1.0 + alpha;
      k.a0 = 1.0 + alpha, k.a1 = -2.0 * c, k.a2 = 1.0 - alpha;
      break;
    default: return k;
  }
  k.b0 /= k.a0, k.b1 /= k.a0, k.b2 /= k.a0;
  k.a1 /= k.a0, k.a2 /= k.a0;
  return k;
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
