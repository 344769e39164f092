#include "modules/master/StripEffectOutput.h"

#include <algorithm>
#include <cmath>

#include "core/Rack.h"
#include "modules/master/MasterFamily.h"
#include "modules/master/MasterTable.h"

namespace corvane {

namespace {

constexpr double kRmsHz = 1.0, kRmsQ = 0.5;
// Shares per sample times the rate: 5e-5 and 0.001 at 44.1 kHz.
constexpr double kFastSmoothHz = 2.2049999442970147;
constexpr double kGainSmoothHz = 44.1000020946376;

enum Meter { kPeakLeft = 2, kPeakRight, kRmsLeft, kRmsRight, kOverLeft, kOverRight };

GlideFilter makeRmsFilter() { return {kLowestRateHz, SectionType::lowPass, kRmsHz, kRmsQ, 0.0}; }

}  // namespace

StripEffectOutput::StripEffectOutput(std::int32_t parameters, std::int32_t meters, std::int32_t tags)
    : StripEffect(parameters, meters, tags), rmsFilterLeft(makeRmsFilter()), rmsFilterRight(makeRmsFilter()) {
  StripEffectOutput::setSampleRate(kLowestRateHz);
  StripEffectOutput::reset();
}

void StripEffectOutput::reset() {
  initMeters();
  setMeterRate(sampleRate);
  restartRmsFilter(rmsFilterLeft);
  restartRmsFilter(rmsFilterRight);
  for (Glide* glide : {&width, &leftGain, &rightGain}) glide->snap();
  gainStage1 = gainStage2 = gainStage3 = gainTarget;
  overShownLeft = overShownRight = 0.0;
  updateSmoothing();
}

void StripEffectOutput::restartRmsFilter(GlideFilter& filter) const {
  filter.sampleRate = sampleRate;
  filter.retarget();
  filter.clearState();
  filter.snapToTarget();
  filter.active = true;
}

void StripEffectOutput::setSampleRate(double hz) {
  sampleRate = clampedRate(hz);
  updateMeterCoefficients();
  setMeterRate(sampleRate);
  updateSmoothing();
}

void StripEffectOutput::updateSmoothing() {
  fastSmooth = kFastSmoothHz / sampleRate;
  gainSmooth = kGainSmoothHz / sampleRate;
}

void StripEffectOutput::setParameter(int id, double value) {
  if (id == meterBase + kOverLeft || id == meterBase + kOverRight) return clearOvers();
  switch (id - parameterBase) {
    case kTypeOffset: type = decodeVariant(value); break;
    case master::kWidth: width.target = physicalValue(kMasterFamily, master::kWidth, value) * 0.01; break;
    case master::kBalance: setBalance(value); break;
    case master::kGain: gainTarget = physicalValue(kMasterFamily, master::kGain, value); break;
    case master::kMeasurementPoint:
      measurementPoint =
          static_cast<std::int32_t>(physicalValue(kMasterFamily, master::kMeasurementPoint, value));
      break;
    default: break;
  }
}

void StripEffectOutput::setBalance(double p) {
  // Equal power; sine and cosine do not quite reach 0 at the ends, so what is below -100 dB counts as 0.
  constexpr double kPeak = 1.4142135623730951, kQuarterTurn = 1.57079632679, kFloor = 1e-5;
  const auto orZero = [](double gain) { return gain < kFloor ? 0.0 : gain; };
  leftGain.target = orZero(kPeak * std::cos(kQuarterTurn * p));
  rightGain.target = orZero(kPeak * std::sin(kQuarterTurn * p));
}

void StripEffectOutput::setDefaults() { sendDefaults(kMasterFamily, *this, parameterBase); }

double StripEffectOutput::nextFaderGain() {
  const auto step = [this](double stage, double goal) {
    return flushed(stage + (goal - stage) * gainSmooth, kMeterFlush);
  };
  gainStage1 = step(gainStage1, gainTarget);
  gainStage2 = step(gainStage2, gainStage1);
  gainStage3 = step(gainStage3, gainStage2);
  return gainStage3;
}

void StripEffectOutput::runFader(double* gains, int frames) {
  for (int i = 0; i < frames; ++i) {
    const double s1 = gainStage1, s2 = gainStage2, s3 = gainStage3;
    gains[i] = nextFaderGain();
    if (gainStage1 == s1 && gainStage2 == s2 &&
        gainStage3 == s3) {  // at rest: every further step is the same
      std::fill(gains + i, gains + frames, s3);
      return;
    }
  }
}

void StripEffectOutput::measure(const double* measured, int frames, MasterMeterChannel& channel,
                                GlideFilter& rmsFilter) const {
  if (frames < 1) return;
  double squares[kBlockFrames];
  for (int i = 0; i < frames; ++i) {
    followPeak(std::abs(measured[i]), channel);
    squares[i] = measured[i] * measured[i];
  }
  rmsFilter.processBuffer(squares, frames);
  channel.meanSquare = squares[frames - 1];
}

void StripEffectOutput::processBlockMono(double** in, double** out, int frames) {
  startBlock();
  if (passes()) return passThroughBlock(in, out, frames);
  const double* x = in[2 * inputPair];
  double y[kBlockFrames], input[kBlockFrames];
  std::copy_n(x, frames, input);
  runFader(y, frames);
  for (int i = 0; i < frames; ++i) y[i] = input[i] * y[i];
  measure(measuresOutput() ? y : input, frames, left, rmsFilterLeft);
  right.clipCount = left.clipCount, right.over = left.over;
  right.peak = left.peak, right.meanSquare = left.meanSquare;
  followMono(input, y, frames);
  writeMono(y, out, frames);
}

void StripEffectOutput::processBlock(double** in, double** out, int frames) {
  startBlock();
  if (passes()) return passThroughBlock(in, out, frames);
  const double* xL = in[2 * inputPair];
  const double* xR = in[2 * inputPair + 1];
  double yL[kBlockFrames], yR[kBlockFrames], gains[kBlockFrames];
  double inL[kBlockFrames], inR[kBlockFrames];
  std::copy_n(xL, frames, inL);
  std::copy_n(xR, frames, inR);
  runFader(gains, frames);
  for (int i = 0; i < frames; ++i) {
    followInput(inL[i], inR[i]);
    for (Glide* glide : {&width, &leftGain, &rightGain}) glide->step(fastSmooth);
    const double sum = inL[i] + inR[i], difference = (inL[i] - inR[i]) * width.current;
    yL[i] = (sum + difference) * 0.5 * leftGain.current * gains[i];
    yR[i] = (sum - difference) * 0.5 * rightGain.current * gains[i];
    followOutput(yL[i], yR[i]);
  }
  measure(measuresOutput() ? yL : inL, frames, left, rmsFilterLeft);
  measure(measuresOutput() ? yR : inR, frames, right, rmsFilterRight);
  for (int pair = 0; (outputPairs >> pair) != 0; ++pair) {
    if ((outputPairs >> pair & 1) == 0) continue;
    std::copy_n(yL, frames, out[2 * pair]);
    std::copy_n(yR, frames, out[2 * pair + 1]);
  }
}

void StripEffectOutput::getMeter(int id, double* value) {
  if (getLevelMeter(id, value)) return;
  switch (id - meterBase) {
    case kPeakLeft: *value = readPeak(left); break;
    case kPeakRight: *value = readPeak(right); break;
    case kRmsLeft: *value = readRms(left); break;
    case kRmsRight: *value = readRms(right); break;
    case kOverLeft: *value = readOver(left, overShownLeft); break;
    case kOverRight: *value = readOver(right, overShownRight); break;
    default: break;
  }
}

void StripEffectOutput::resetMeters() {
  initMeters();
  for (MasterMeterChannel* channel : {&left, &right}) {
    const std::int32_t clipCount = channel->clipCount;  // a run of full-scale samples goes on
    *channel = {};
    channel->clipCount = clipCount;
  }
  overShownLeft = overShownRight = 0.0;
}

void StripEffectOutput::enable() {
  enabled = 1;
  reset();
}

void StripEffectOutput::disable() {
  enabled = 0;
  reset();
}

}  // namespace corvane
