#include "modules/tidalform/TidalformDynamics.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/dsp/FastMath.h"

namespace corvane {

namespace {

constexpr double kFlush = 1e-18;
constexpr double kTurn = 6.283;       // radians; part of the sound in this many digits
constexpr double kLevelFloor = 1e-7;  // -140 dBFS
constexpr double kSmoothingSeconds = 0.05;

}  // namespace

TidalformTimes designTidalformTimes(double frequencyHz, double timeFactor, double sampleRateHz) {
  const auto share = [&](double cornerHz) {
    return 1.0 - std::exp(-kTurn * cornerHz / (timeFactor * sampleRateHz));
  };
  return {share(0.25 * std::pow(frequencyHz, 0.7071)), share(0.1 * std::pow(frequencyHz, 0.5))};
}

double tidalformSmoothing(double sampleRateHz) {
  return 1.0 - std::exp(-kTurn / (kSmoothingSeconds * sampleRateHz));
}

void followLaw(const GainLaw& law, const double* key, double* overDb, double* goalDb, int frames) {
  const double above = law.aboveDb, half = (law.aboveDb - law.belowDb) / 2.0;
  const double threshold = law.thresholdDb, width = law.halfWidthDb;
  for (int i = 0; i < frames; ++i) overDb[i] = 20.0 * fast::log10(std::abs(key[i]) + kLevelFloor) - threshold;
  if (width > 0.0)
    for (int i = 0; i < frames; ++i) goalDb[i] = fast::tanh(overDb[i] / width) * half - half + above;
  else
    for (int i = 0; i < frames; ++i) {
      const double side = overDb[i] > 0.0 ? 1.0 : overDb[i] < 0.0 ? -1.0 : 0.0;
      goalDb[i] = side * half - half + above;
    }
}

namespace {

template <bool kRiseIsFaster>
void followGainOneWay(const double* goalDb, double* heldDb, int frames, double rise, double fall,
                      GainFollower& follower) {
  double follow = follower.gainFollow, hold = follower.gainHold;
  for (int i = 0; i < frames; ++i) {
    // The product that belongs to the direction is the larger one where the rise is faster, else the smaller.
    const double distance = goalDb[i] - follow;
    const double up = distance * rise, down = distance * fall;
    follow = flushed(follow + (kRiseIsFaster ? std::max(up, down) : std::min(up, down)), kFlush);
    // A share below 1 never oversteps, so the larger of the two is the right one on both sides.
    hold = flushed(std::max(follow, hold + (follow - hold) * fall), kFlush);
    heldDb[i] = hold;
  }
  follower = {follow, hold};
}

}  // namespace

void followGain(const double* goalDb, double* heldDb, int frames, double rise, double fall,
                GainFollower& follower) {
  if (rise >= fall)
    followGainOneWay<true>(goalDb, heldDb, frames, rise, fall, follower);
  else
    followGainOneWay<false>(goalDb, heldDb, frames, rise, fall, follower);
}

void OverIndicator::follow(const double* first, const double* second, int frames, double smoothing) {
  double over = overLevel, above = aboveIndicator;
  for (int i = 0; i < frames; ++i) {
    over = flushed(over + (first[i] - over) * smoothing, kFlush);
    over = flushed(over + (second[i] - over) * smoothing, kFlush);
    above = flushed(above + ((over >= 0.0 ? 1.0 : -1.0) - above) * smoothing, kFlush);
  }
  overLevel = over, aboveIndicator = above;
}

}  // namespace corvane
