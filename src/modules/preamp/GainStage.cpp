#include "modules/preamp/GainStage.h"

#include <algorithm>
#include <cmath>

#include "core/StripEffect.h"

namespace corvane::preamp {

namespace {

constexpr double kRmsHz = 1.6666666666666667, kRmsQ = 0.5;
constexpr double kGainSmoothHz = 22.05;  // share per sample times the rate: 0.0005 at 44.1 kHz
constexpr double kGainFlush = 1e-14, kAutoFlush = 1e-15;
constexpr double kTwiceSineCrest = 2 * 1.4142;  // a sine of amplitude A reads 2 A
constexpr int kExtraStep = 16;                  // samples between the further steps of a gain that may lift

const double kLowestGain = std::pow(10.0, -1.5), kHighestGain = std::pow(10.0, 1.5);  // -30 and +30 dB

GlideFilter makeRmsFilter() {
  GlideFilter filter(kLowestRateHz, SectionType::lowPass, kRmsHz, kRmsQ, 0.0);
  filter.active = true;
  return filter;
}

}  // namespace

GainStage::GainStage() : rmsFilter{makeRmsFilter(), makeRmsFilter()} { setSampleRate(kLowestRateHz); }

void GainStage::setSampleRate(double hz) {
  gainShare = kGainSmoothHz / hz;
  autoShare = 1.0 - std::pow(0.1091012, 1.0 / (0.0125 * hz));
  for (GlideFilter& filter : rmsFilter) {
    filter.sampleRate = hz;
    filter.retarget();
    filter.snapToTarget();
  }
}

void GainStage::reset() {
  gainSmoothed = gainTarget;
  autoGain = autoTarget;
  for (GlideFilter& filter : rmsFilter) filter.clearHistory();
  forget();
}

void GainStage::setGain(double gain) {
  autoTarget = gainTarget = gain;
  if (!automated) return;
  meanSquareHold = twiceRms = 0.0;
  rmsHold = peakHold = reference / gain;
}

void GainStage::setAutomated(bool on) {
  if (on && !automated) {
    autoTarget = gainTarget;
    autoGain = gainSmoothed;
    forget();
  }
  automated = on;
}

void GainStage::runPlain(double* gains, int frames) {
  for (int i = 0; i < frames; ++i) {
    const double before = gainSmoothed;
    gainSmoothed = flushed(before + (gainTarget - before) * gainShare, kGainFlush);
    if (gainSmoothed == before) {  // at rest: every further step is the same
      std::fill(gains + i, gains + frames, before);
      return;
    }
    gains[i] = gainSmoothed;
  }
}

void GainStage::learn(double meanSquare, double peak) {
  if (meanSquare > meanSquareHold) {
    meanSquareHold = meanSquare;
    twiceRms = kTwiceSineCrest * std::sqrt(meanSquareHold);
  }
  peakHold = std::max(peakHold, peak);
  rmsHold = std::max(rmsHold, twiceRms);
  // After a turn of the knob `rmsHold` can stand above what was measured since; the measured level decides
  // whether to act, the held one how far.
  const double level = detectsRms ? twiceRms : peakHold;
  const double hold = detectsRms ? rmsHold : peakHold;
  if (level > 0.0 && (mayLift || level * autoTarget >= reference)) autoTarget = reference / hold;
  autoTarget = std::clamp(autoTarget, kLowestGain, kHighestGain);
}

void GainStage::follow() {
  if (mayLift && autoGain > autoTarget)
    autoGain = autoTarget;
  else
    autoGain += (autoTarget - autoGain) * autoShare;
  autoGain = flushed(autoGain, kAutoFlush);
}

void GainStage::runAutomated(const double* left, const double* right, double* gains, int frames) {
  double peaks[kBlockFrames], squares[2][kBlockFrames];
  for (int i = 0; i < frames; ++i) {
    peaks[i] = std::abs(left[i]);
    squares[0][i] = peaks[i] * peaks[i];
  }
  rmsFilter[0].processBuffer(squares[0], frames);
  if (right) {
    for (int i = 0; i < frames; ++i) {
      squares[1][i] = right[i] * right[i];
      peaks[i] = std::max(peaks[i], std::abs(right[i]));
    }
    rmsFilter[1].processBuffer(squares[1], frames);
    for (int i = 0; i < frames; ++i) squares[0][i] = std::max(squares[0][i], squares[1][i]);
  }
  for (int i = 0; i < frames; ++i) {
    if (mayLift && i % kExtraStep == 0) autoGain += (autoTarget - autoGain) * autoShare;
    learn(squares[0][i], peaks[i]);
    follow();
    gains[i] = autoGain;
  }
  gainTarget = autoTarget;
  gainSmoothed = autoGain;
}

void GainStage::runGains(const double* left, const double* right, double* gains, int frames) {
  if (automated)
    runAutomated(left, right, gains, frames);
  else
    runPlain(gains, frames);
}

void GainStage::processMono(double* samples, int frames) {
  double gains[kBlockFrames];
  runGains(samples, nullptr, gains, frames);
  for (int i = 0; i < frames; ++i) samples[i] *= gains[i];
}

void GainStage::processPair(double* left, double* right, int frames) {
  double gains[kBlockFrames];
  runGains(left, right, gains, frames);
  for (int i = 0; i < frames; ++i) left[i] *= gains[i], right[i] *= gains[i];
}

}  // namespace corvane::preamp
