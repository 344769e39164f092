#include "modules/eq/EqSection.h"

#include <algorithm>

namespace corvane::eq {

namespace {

constexpr double kTrackPi = 3.1415;
constexpr double kTrackTopHz = 7000.0;  // halved by the factor pi instead of 2 pi: 3500 Hz
constexpr double kDriveOff = 0.0001;

}  // namespace

EqSection::EqSection(double share)
    : filter(kLowestRateHz, SectionType::peaking, 1000.0, 1.0, 0.0), driveShare(share) {
  filter.active = true;
  retarget();
}

void EqSection::design(const SectionDesign& design) {
  filter.type = design.type;
  filter.frequency = std::clamp(design.frequencyHz, 0.001, filter.sampleRate);
  filter.q = std::clamp(design.q, 0.0001, 1000.0);
  filter.gainDb = design.gainDb;
  retarget();
}

void EqSection::setSampleRate(double hz) {
  filter.sampleRate = hz;
  retarget();
}

void EqSection::retarget() {
  const double f = filter.frequency, fs = filter.sampleRate;
  filter.retarget();
  trackCoefficients.trackLowCoeff = 1.0 - std::exp(-kTrackPi * (0.5 * f / fs + 0.01));
  trackCoefficients.trackBandCoeff = 1.0 - std::exp(-kTrackPi * kTrackTopHz / fs);
  feedbackDrive = 2.0 * (44100.0 / fs) * 0.001 * (2.0 * f / fs) / std::pow(filter.q, 0.75);
}

void EqSection::setAnalog(bool on) {
  const double f = filter.frequency, fs = filter.sampleRate;
  const double satAmount =
      on ? 0.4 * (44100.0 / fs) * std::sqrt(2.0 * f / fs) / std::pow(filter.q, 0.75) : kDriveOff;
  saturate = on;
  trackCoefficients.drive = satAmount * driveShare;
}

void EqSection::reset() {
  track = {};
  filter.clearHistory();
  filter.snapToTarget();
}

}  // namespace corvane::eq
