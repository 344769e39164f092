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

template <int kChannels, bool kRiseIsFaster>
void followGoalsOneWay(const TidalformLevels* const* levels, const TidalformShares& shares, double* gainDb,
                       int frames, GainFollower* const* followers, OverIndicator& indicator) {
  // One loop for all: the recursions do not wait for each other.
  const double rise = shares.rise, fall = shares.fall, smoothing = shares.smoothing;
  GainFollower gain[kChannels];
  for (int k = 0; k < kChannels; ++k) gain[k] = *followers[k];
  double over = indicator.overLevel, above = indicator.aboveIndicator;
  for (int i = 0; i < frames; ++i) {
    over = flushed(over + (levels[0]->overDb[i] - over) * smoothing, kFlush);
    over = flushed(over + (levels[kChannels - 1]->overDb[i] - over) * smoothing, kFlush);
    above = flushed(above + ((over >= 0.0 ? 1.0 : -1.0) - above) * smoothing, kFlush);
    for (int k = 0; k < kChannels; ++k) {
      auto& [follow, hold] = gain[k];
      // The product that belongs to the direction is the larger one where the rise is faster, else the
      // smaller.
      const double distance = levels[k]->goalDb[i] - follow;
      const double up = distance * rise, down = distance * fall;
      follow = flushed(follow + (kRiseIsFaster ? std::max(up, down) : std::min(up, down)), kFlush);
      // A share below 1 never oversteps, so the larger of the two is the right one on both sides.
      hold = flushed(std::max(follow, hold + (follow - hold) * fall), kFlush);
    }
    gainDb[i] = kChannels == 1 ? gain[0].gainHold : (gain[0].gainHold + gain[kChannels - 1].gainHold) * 0.5;
  }
  for (int k = 0; k < kChannels; ++k) *followers[k] = gain[k];
  indicator = {over, above};
}

}  // namespace

void followGoals(const TidalformLevels* const* levels, int channels, const TidalformShares& shares,
                 double* gainDb, int frames, GainFollower* const* followers, OverIndicator& indicator) {
  const bool riseIsFaster = shares.rise >= shares.fall;
  const auto run = channels == 1 ? (riseIsFaster ? followGoalsOneWay<1, true> : followGoalsOneWay<1, false>)
                                 : (riseIsFaster ? followGoalsOneWay<2, true> : followGoalsOneWay<2, false>);
  run(levels, shares, gainDb, frames, followers, indicator);
}

}  // namespace corvane
