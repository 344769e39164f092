#include "modules/master/QDXmasterMeter.h"

#include <algorithm>
#include <cmath>

namespace corvane {

namespace {
constexpr double kPeakReleaseSeconds = 1.2000000476837158;  // a fall by the factor 0.109, 19.25 dB
constexpr double kMeterScale = 0.316228;                    // +10 dB over full scale reads 1.0
constexpr double kSineCrest = 1.4142;                       // a sine reads the same on RMS as on peak
constexpr double kOverDimStep = 0.05, kOverDimFloor = 0.5;
}  // namespace

void QDXmasterMeter::setMeterRate(double hz) {
  clearMeter();
  peakRelease = 1.0 - std::pow(0.109, 1.0 / (kPeakReleaseSeconds * clampedRate(hz)));
}

void QDXmasterMeter::clearOvers() {
  for (MasterMeterChannel* channel : {&left, &right}) channel->clipCount = channel->over = 0;
}

void QDXmasterMeter::startBlock() {
  for (MasterMeterChannel* channel : {&left, &right}) {
    channel->blockPeak = channel->peak;
    channel->blockMeanSquare = channel->meanSquare;
  }
}

double QDXmasterMeter::readPeak(const MasterMeterChannel& channel) {
  return std::clamp(std::max(channel.peak, channel.blockPeak) * kMeterScale, 0.0, 1.0);
}

double QDXmasterMeter::readRms(const MasterMeterChannel& channel) {
  const double meanSquare = std::max(channel.meanSquare, channel.blockMeanSquare);
  if (!(meanSquare > 0.0)) return 0.0;  // rounding can leave it a hair below 0
  return std::min(std::sqrt(meanSquare) * kSineCrest * kMeterScale, 1.0);
}

double QDXmasterMeter::readOver(MasterMeterChannel& channel, double& shown) {
  const std::int32_t latch = channel.over;
  if (latch > 1) --channel.over;
  if (latch == 0)
    shown = 0.0;
  else if (latch == 1)
    shown = std::max(shown - kOverDimStep, kOverDimFloor);
  else
    shown = 1.0;
  return shown;
}

}  // namespace corvane
