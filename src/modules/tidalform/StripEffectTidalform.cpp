#include "modules/tidalform/StripEffectTidalform.h"

#include <algorithm>
#include <cmath>

#include "core/Rack.h"
#include "modules/tidalform/TidalformFamily.h"
#include "modules/tidalform/TidalformTable.h"

namespace corvane {

namespace {
constexpr int kGainMeter = 2, kIndicatorMeter = 3;
constexpr double kBandFlush = 1e-18;
}  // namespace

StripEffectTidalform::StripEffectTidalform(std::int32_t parameters, std::int32_t meters, std::int32_t tags)
    : StripEffect(parameters, meters, tags) {
  sendDefaults(kTidalformFamily, *this, parameterBase);
  StripEffectTidalform::setSampleRate(kLowestRateHz);
  StripEffectTidalform::reset();
}

void StripEffectTidalform::reset() {
  initMeters();
  for (Channel& channel : channels) channel.controlFirst = channel.controlSecond = channel.dynamicFilter = {};
  band = {frequencyTarget, peakQTarget, shelfQTarget};
  standingIsStale = true;
  indicator = {};
}

void StripEffectTidalform::setSampleRate(double hz) {
  sampleRate = clampedRate(hz);
  updateMeterCoefficients();
  smoothing = tidalformSmoothing(sampleRate);
  updateTimes();
  standingIsStale = true;
  for (Channel& channel : channels) channel.gain = {};
}

void StripEffectTidalform::updateTimes() {
  times = designTidalformTimes(frequencyTarget, timeFactor, sampleRate);
}

void StripEffectTidalform::setParameter(int id, double value) {
  const int offset = id - parameterBase;
  if (offset == kSideChainOffset) {
    sideChainSource = decodeSwitch(value);
    return;
  }
  const Row* row = findRow(kTidalformFamily, offset);
  if (!row) return;
  const double physical = row->taper.physical(value);
  switch (offset) {
    case kMonitorOffset: monitorOn = static_cast<std::int32_t>(physical); break;
    case tidalform::kThreshold: law.thresholdDb = physical; break;
    case tidalform::kTime:
      timeFactor = physical;
      updateTimes();
      break;
    case tidalform::kFrequency:
      frequencyTarget = physical;
      updateTimes();
      break;
    case tidalform::kAbove: law.aboveDb = physical; break;
    case tidalform::kBelow: law.belowDb = physical; break;
    case tidalform::kQ:
      peakQTarget = physical;
      shelfQTarget = tidalform::kShelfQ.physical(value);
      break;
    case tidalform::kTransition: law.halfWidthDb = physical; break;
    case tidalform::kFilterType:
      filterType = static_cast<TidalformFilter>(static_cast<int>(physical));
      standingIsStale = true;
      break;
    case tidalform::kControlMode:
      controlMode = static_cast<TidalformControl>(static_cast<int>(physical));
      standingIsStale = true;
      break;
    default: break;
  }
}

void StripEffectTidalform::setDefaults() { sendDefaults(kTidalformFamily, *this, parameterBase); }

int StripEffectTidalform::moveBand(int frames) {
  const auto towards = [this](double current, double target) {
    return flushed(current + (target - current) * smoothing, kBandFlush);
  };
  for (int i = 0; i < frames; ++i) {
    const TidalformBand next{towards(band.frequencyCurrent, frequencyTarget),
                             towards(band.peakQCurrent, peakQTarget),
                             towards(band.shelfQCurrent, shelfQTarget)};
    const bool stands = next.frequencyCurrent == band.frequencyCurrent &&
                        next.peakQCurrent == band.peakQCurrent && next.shelfQCurrent == band.shelfQCurrent;
    if (stands) return i;  // a step that changes no bit is the last: every further one is the same
    band = next;
    standingIsStale = true;
    bandBlock.frequency[i] = band.frequencyCurrent;
    bandBlock.peakQ[i] = band.peakQCurrent;
    bandBlock.shelfQ[i] = band.shelfQCurrent;
  }
  return frames;
}

void StripEffectTidalform::updateStanding() {
  if (!standingIsStale) return;
  if (controlMode != TidalformControl::off)
    designControl(controlPlan(filterType, controlMode), band, sampleRate, standingFirst, standingSecond);
  standingAngle = designDynamicAngle(filterType, band, sampleRate);
  standingIsStale = false;
}

template <int kChannels>
void StripEffectTidalform::detect(int moving, int frames) {
  if (controlMode == TidalformControl::off) {
    for (int k = 0; k < kChannels; ++k) std::copy_n(channels[k].key, frames, channels[k].heard);
    return;
  }
  if (moving > 0)
    designControl(controlPlan(filterType, controlMode), bandBlock, moving, sampleRate, firstBlock,
                  secondBlock);
  for (int k = 0; k < kChannels; ++k) {
    Channel& c = channels[k];
    runDirect(firstBlock, secondBlock, c.key, c.heard, 0, moving, c.controlFirst, c.controlSecond);
    runDirect(standingFirst, standingSecond, c.key, c.heard, moving, frames, c.controlFirst, c.controlSecond);
    clearTraces(c.controlFirst);
    clearTraces(c.controlSecond);
  }
}

template <int kChannels>
void StripEffectTidalform::moveGain(int frames) {
  const TidalformLevels* levels[kChannels];
  GainFollower* followers[kChannels];
  for (int k = 0; k < kChannels; ++k) {
    Channel& c = channels[k];
    followLaw(law, c.heard, c.levels.overDb, c.levels.goalDb, frames);
    levels[k] = &c.levels, followers[k] = &c.gain;
  }
  const auto [riseA, riseB] = times;
  const bool aboveIsHigher = law.aboveDb >= law.belowDb;
  const TidalformShares shares{aboveIsHigher ? riseA : riseB, aboveIsHigher ? riseB : riseA, smoothing};
  followGoals(levels, kChannels, shares, gainBlock, frames, followers, indicator);
  if (frames > 0) dynamicGainDb = gainBlock[frames - 1];
}

template <int kChannels>
void StripEffectTidalform::filter(int moving, int frames) {
  const auto runAll = [&](const auto& coefficients) {
    for (int k = 0; k < kChannels; ++k) {
      runDirect(coefficients, channels[k].input, channels[k].output, 0, frames, channels[k].dynamicFilter);
      clearTraces(channels[k].dynamicFilter);
    }
  };
  const bool gainStands =
      std::all_of(gainBlock, gainBlock + frames, [this](double g) { return g == gainBlock[0]; });
  if (moving == 0 && gainStands && frames > 0) {
    designDynamic(filterType, standingAngle, gainBlock, 0, 1, dynamicBlock);
    return runAll(StandingCoefficients{dynamicBlock.at(0)});
  }
  if (moving > 0) designDynamic(filterType, bandBlock, gainBlock, moving, sampleRate, dynamicBlock);
  designDynamic(filterType, standingAngle, gainBlock, moving, frames, dynamicBlock);
  runAll(dynamicBlock);
}

template <int kChannels>
void StripEffectTidalform::run(double** in, int frames) {
  for (int k = 0; k < kChannels; ++k) {
    Channel& c = channels[k];
    std::copy_n(in[2 * inputPair + k], frames, c.input);
    std::transform(in[2 * sideChainSource + k], in[2 * sideChainSource + k] + frames, c.key, numberOrZero);
  }
  const int moving = moveBand(frames);
  if (moving > 0) prepareMoving(filterType, bandBlock, moving, sampleRate);
  if (moving < frames) updateStanding();
  detect<kChannels>(moving, frames);
  moveGain<kChannels>(frames);
  filter<kChannels>(moving, frames);
  if (monitorOn == 1)
    for (int k = 0; k < kChannels; ++k) std::copy_n(channels[k].heard, frames, channels[k].output);
}

void StripEffectTidalform::processBlockMono(double** in, double** out, int frames) {
  if (passes()) return passThroughBlock(in, out, frames);
  run<1>(in, frames);
  followMono(channels[0].input, channels[0].output, frames);
  writeMono(channels[0].output, out, frames);
}

void StripEffectTidalform::processBlock(double** in, double** out, int frames) {
  if (passes()) return passThroughBlock(in, out, frames);
  run<2>(in, frames);
  const double* const before[] = {channels[0].input, channels[1].input};
  const double* const after[] = {channels[0].output, channels[1].output};
  followPair(before, after, frames);
  if ((outputPairs & 1) == 0) return;
  for (int k = 0; k < 2; ++k) std::copy_n(after[k], frames, out[k]);
}

void StripEffectTidalform::getMeter(int id, double* value) {
  if (getLevelMeter(id, value)) return;
  if (id == meterBase + kGainMeter) *value = std::clamp((dynamicGainDb + 24.0) / 48.0, 0.0, 1.0);
  if (id == meterBase + kIndicatorMeter) *value = (indicator.aboveIndicator + 1.0) * 0.5;
}

void StripEffectTidalform::resetMeters() { initMeters(); }

}  // namespace corvane
