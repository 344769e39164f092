#include <cmath>

#include "modules/eq/EqDesign.h"

namespace corvane::eq {

namespace {

constexpr double kButterworthQ = 0.7071, kOctaveStep = 1.4142;
constexpr double kBellQ = 0.45 * kButterworthQ;
constexpr double kShelfHiShare = 0.33, kShelfLoShare = 3.0;  // shelf frequency over the marked one
constexpr double kOuterBellGain = 1.12;
constexpr double kSoftShelfQ = 0.3485, kSteepShelfQ = 0.47;

double shelfQ(double base, double g) { return base * std::pow(1.28, std::abs(g) / 15.0); }
double bellQ(double base, double g) { return base * std::pow(1.23, std::abs(g) / 15.0); }

SectionDesign outerBand(SectionType shelf, double shelfShare, const EqBand& b) {
  const double f = b.bandFrequency, g = b.bandGain;
  switch (b.bandShape) {
    case 0: return {shelf, shelfShare * f, shelfQ(kSoftShelfQ, g), g};
    case 1: return {shelf, shelfShare * f, shelfQ(kSteepShelfQ, g), g};
    default: return {SectionType::peaking, f, bellQ(kBellQ, kOuterBellGain * g), kOuterBellGain * g};
  }
}

SectionDesign middleBand(const EqBand& b) {
  const double f = b.bandFrequency, g = b.bandGain;
  switch (b.bandShape) {
    case 0: return {SectionType::peaking, f, bellQ(0.45 * kOctaveStep * kButterworthQ * 0.5, g), g};
    case 1: return {SectionType::peaking, f, bellQ(kBellQ, g), 1.125 * g};
    default: return {SectionType::peaking, f, bellQ(kBellQ * kOctaveStep, g), 1.25 * g};
  }
}

}  // namespace

SectionDesign designBellform(Band band, const EqBand& setting) {
  switch (band) {
    case kHi: return outerBand(SectionType::highShelf, kShelfHiShare, setting);
    case kLo: return outerBand(SectionType::lowShelf, kShelfLoShare, setting);
    default: return middleBand(setting);
  }
}

}  // namespace corvane::eq
