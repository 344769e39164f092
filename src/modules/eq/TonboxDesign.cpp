#include <cmath>

#include "modules/eq/EqDesign.h"

namespace corvane::eq {

namespace {

constexpr double kSlope[] = {1.0, 1.41, 2.0};
constexpr double kLoSlope[] = {1.0, 1.4, 2.0};
constexpr double kOuterGain = 0.88, kMiddleGain = 0.75;  // dB in the band per dB on the knob
constexpr double kNarrowWidth = 0.9;                     // a narrow band is given back what its overlap takes
constexpr double kDeepestNarrowCutDb = 13.5;

double fromDecibels(double db) { return std::pow(10.0, 0.05 * db); }

}  // namespace

SectionDesign designTonboxShelf(Band band, const EqBand& setting) {
  const double f = setting.bandFrequency;
  if (band == kHi) return {SectionType::lowPass, f / 1.5, kSlope[setting.bandShape] / 2.0, 0.0};
  return {SectionType::highPass, 0.5 * f, kLoSlope[setting.bandShape] / 2.0, 0.0};
}

TonboxEdges designTonboxEdges(const EqBand& setting) {
  const double t = kSlope[setting.bandShape];
  const double u = setting.bandGain >= 0.0 ? t : t / 2.0;
  return {{SectionType::lowPass, std::pow(0.5, 1.0 / u) * setting.bandFrequency, u / 2.0, 0.0},
          {SectionType::highPass, std::pow(2.0, 1.0 / u) * setting.bandFrequency, u / 2.0, 0.0}};
}

double tonboxGain(Band band, const EqBand& setting) {
  const double g = setting.bandGain;
  if (band == kHi || band == kLo) return fromDecibels(kOuterGain * g);
  if (setting.bandShape == 2 && g < 0.0) return fromDecibels(kDeepestNarrowCutDb * std::tanh(g * 0.82 / 9.0));
  return fromDecibels(kMiddleGain * g / std::pow(kNarrowWidth, std::sqrt(setting.bandShape)));
}

double tonboxStartGain(const EqBand& setting) { return fromDecibels(kMiddleGain * setting.bandGain); }

}  // namespace corvane::eq
