#pragma once

#include <algorithm>
#include <cmath>

#include "core/dsp/Biquad.h"

namespace corvane {

/// How strongly a response bends Q towards the top of the band: q (1 - (f / (share fs)) ^ exponent).
struct QBend {
  double share, exponent;
};

constexpr QBend bendOf(SectionType type) {
  switch (type) {
    case SectionType::highPass: return {0.5001, 6.0};
    case SectionType::lowShelf: return {0.5001, 3.5};
    case SectionType::highShelf: return {0.5001, 4.0};
    case SectionType::lowPass: return {0.50001, 8.0};
    default: return {0.5001, 2.8};
  }
}

/// Whether the design depends on a gain.
constexpr bool hasGain(SectionType type) {
  return type == SectionType::lowShelf || type == SectionType::peaking || type == SectionType::highShelf;
}

/// Where a section is designed that is asked for `hz`: away from Nyquist.
inline double designedHz(double hz, double sampleRateHz) { return std::min(hz, 0.499 * sampleRateHz); }

/// Q as the design uses it. `power` is the power function, precise or fast. Inlined at any size: a call would
/// keep a loop over it from running several lanes wide.
template <typename Power>
[[gnu::always_inline]] inline double bentQ(SectionType type, double hz, double q, double sampleRateHz,
                                           Power power) {
  if (type == SectionType::allPass) return q;
  const QBend bend = bendOf(type);
  const double bendHz = type == SectionType::bandPass ? hz : designedHz(hz, sampleRateHz);
  return q * (1.0 - power(bendHz / (bend.share * sampleRateHz), bend.exponent));
}

/// The cookbook's coefficients from sine and cosine of the corner's angle, the bent Q and, for the types with
/// a gain, A = 10^(dB / 40). Normalised. Branches on `type` alone, so that a loop with a type that is known
/// can run several lanes wide. Types that are not of second order give the identity.
inline BiquadCoefficients shapeSection(SectionType type, double s, double c, double bent, double A) {
  BiquadCoefficients k;
  const double alpha = s / (2.0 * bent);
  switch (type) {
    case SectionType::highPass:
      k.b0 = k.b2 = (1.0 + c) / 2.0;
      k.b1 = -(1.0 + c);
      k.a0 = 1.0 + alpha, k.a1 = -2.0 * c, k.a2 = 1.0 - alpha;
      break;
    case SectionType::lowShelf: {
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

}  // namespace corvane
