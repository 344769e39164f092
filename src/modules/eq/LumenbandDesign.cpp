#include <cmath>

#include "modules/eq/EqDesign.h"

namespace corvane::eq {

namespace {

// The narrower a shape, the more gain and the higher the Q.
constexpr double kShapeGain[] = {1.0, 1.125, 1.25};
constexpr double kShapeQ[] = {1.0, 1.5, 2.2};
constexpr double kLmWideQ = 1.05;
constexpr double kCounterCurve = -0.17;  // gain of the second bell over that of the first

double decibelRatio(double db) { return std::pow(10.0, 0.05 * std::abs(db)); }

/// Q of a bell that grows with its gain: ratio^e, brought to 1 at 2^2.5 (15 dB).
double growingQ(double db, double exponent, double base) {
  return std::pow(decibelRatio(db), exponent) * 2.0 * base / (2.0 * std::pow(std::pow(2.0, 2.5), exponent));
}

std::array<SectionDesign, 2> boost(Band band, const EqBand& b, double s, double m) {
  const double f = b.bandFrequency;
  const double a = band == kHi || band == kLo ? 1.2 : 1.25;
  const double db = a * b.bandGain;
  const double q1 = growingQ(db, 0.2, 0.37 * s);
  const double q2 = std::pow(2.2, 0.05 * std::abs(db)) * std::pow(s, 0.25) * 1.2 * q1 * 1.25;
  return {{{SectionType::peaking, f, q1, db * m}, {SectionType::peaking, f, q2, kCounterCurve * db * m}}};
}

std::array<SectionDesign, 2> cut(Band band, const EqBand& b, double s, double m) {
  const double f = b.bandFrequency, g = b.bandGain;
  if (band == kHi) {
    const double q1 = std::pow(0.65, g / -15.0) * 0.55 * s * 0.85;
    return {{{SectionType::highShelf, 0.5 * f, q1, 1.15 * g * m},
             {SectionType::peaking, f, std::sqrt(s) * q1 * 1.6, 0.0}}};
  }
  if (band == kLo) {
    const double q1 = 0.4 * s;
    return {{{SectionType::lowShelf, 2.0 * f, q1, 1.15 * g * m},
             {SectionType::peaking, 2.0 * f, std::pow(s, 0.25) * q1 * 2.8, 0.0}}};
  }
  const double q1 = growingQ(g, 0.4, 0.71 * 1.1 * s);
  const double mainGain = band == kLm && b.bandShape == 0 ? 1.035 : 1.033;
  return {{{SectionType::peaking, f, q1, mainGain * 1.25 * g * m},
           {SectionType::peaking, f, std::pow(s, 0.25) * q1 * 0.35, kCounterCurve * 1.033 * 1.25 * g * m}}};
}

}  // namespace

std::array<SectionDesign, 2> designLumenband(Band band, const EqBand& setting) {
  const double s = band == kLm && setting.bandShape == 0 ? kLmWideQ : kShapeQ[setting.bandShape];
  const double m = kShapeGain[setting.bandShape];
  return setting.bandGain >= 0.0 ? boost(band, setting, s, m) : cut(band, setting, s, m);
}

}  // namespace corvane::eq
