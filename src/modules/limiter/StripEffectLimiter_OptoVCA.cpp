#include "modules/limiter/StripEffectLimiter_OptoVCA.h"

#include <algorithm>
#include <cmath>

#include "core/Rack.h"
#include "modules/limiter/LimiterFamily.h"
#include "modules/limiter/LimiterTable.h"
#include "modules/limiter/LimiterTimes.h"

namespace corvane {

namespace {

constexpr double kKeyQ = 0.5;
constexpr double kReductionSeconds = 0.30000001192092896;  // a rise of the gain to 0.109 of the distance
constexpr double kReductionRest = 0.109;
// Ceiling and output gain move once per block of 64: 200 ms, 0.015625 = 1 / 64.
constexpr double kSmoothMs = 200.0, kBlocksPerSample = 0.015625;
constexpr double kSmoothFlush = 1e-15;
constexpr int kReductionMeter = 2;

GlideFilter makeKeyFilter() { return {kLowestRateHz, SectionType::highPass, limiter::kHpfOffHz, kKeyQ, 0.0}; }

double gainOfDb(double db) { return std::pow(10.0, db * 0.05); }

}  // namespace

StripEffectLimiter_OptoVCA::StripEffectLimiter_OptoVCA(std::int32_t parameters, std::int32_t meters,
                                                       std::int32_t tags)
    : StripEffect(parameters, meters, tags), channel{{makeKeyFilter(), {}, {}}, {makeKeyFilter(), {}, {}}} {
  StripEffectLimiter_OptoVCA::initFilters();
  StripEffectLimiter_OptoVCA::setDefaults();
  StripEffectLimiter_OptoVCA::setSampleRate(kLowestRateHz);
  StripEffectLimiter_OptoVCA::reset();
}

void StripEffectLimiter_OptoVCA::initFilters() {
  for (Channel& c : channel) {
    c.keyFilter.active = true;
    c.keyFilter.setFrequency(limiter::kHpfOffHz);
    c.keyFilter.snapToTarget();
  }
}

void StripEffectLimiter_OptoVCA::moveFilter(GlideFilter& filter, double hz, bool inUse) {
  filter.setFrequency(hz);
  if (!inUse) filter.snapToTarget();
}

void StripEffectLimiter_OptoVCA::changeRate(GlideFilter& filter, double hz) {
  filter.sampleRate = hz;
  filter.retarget();
}

void StripEffectLimiter_OptoVCA::settle(GlideFilter& filter) {
  filter.clearHistory();
  filter.snapToTarget();
}

void StripEffectLimiter_OptoVCA::seedDetectors(double level) {
  for (Channel& c : channel) {
    c.opto = {level, level, level, level};
    c.vca = {level, level};
  }
}

void StripEffectLimiter_OptoVCA::reset() {
  initMeters();
  seedDetectors(0.0);
  ceilingInverseSmoothed = ceilingInverse;
  outputGainSmoothed = outputGain;
  gainFollower.level = 1.0;  // no reduction: a change of a solo must not flash the meter
  reductionMeter = 0.0;
  updateSmoothing();
  updateAttack();
  updateRelease();
  for (Channel& c : channel) settle(c.keyFilter);
}

void StripEffectLimiter_OptoVCA::updateSmoothing() {
  reductionFollow = 1.0 - std::pow(kReductionRest, 1.0 / (kReductionSeconds * sampleRate));
  gainSmooth = limiter::shareOver(sampleRate * kSmoothMs * 0.001 * kBlocksPerSample);
}

void StripEffectLimiter_OptoVCA::setSampleRate(double hz) {
  sampleRate = clampedRate(hz);
  updateMeterCoefficients();
  updateSmoothing();
  for (Channel& c : channel) changeRate(c.keyFilter, sampleRate);
  updateAttack();
  updateRelease();
}

double StripEffectLimiter_OptoVCA::rowValue(int offset, double p) const {
  return physicalValue(kLimiterFamily, offset, p);
}

void StripEffectLimiter_OptoVCA::updateAttack() {
  if (type == kOpto) optoCoefficients.optoAttack = limiter::designOptoAttack(attackNorm, sampleRate);
  if (type == kVca)
    vcaCoefficients.vcaAttack =
        limiter::designVcaAttack(std::clamp(rowValue(limiter::kAttack, attackNorm), 0.1, 100.0), sampleRate);
}

void StripEffectLimiter_OptoVCA::updateRelease() {
  if (type == kOpto) limiter::designOptoRelease(releaseNorm, sampleRate, optoCoefficients);
  if (type == kVca)
    limiter::designVcaRelease(std::clamp(rowValue(limiter::kRelease, releaseNorm), 10.0, 1000.0),
                              rowValue(limiter::kAttack, attackNorm), sampleRate, vcaCoefficients);
}

void StripEffectLimiter_OptoVCA::setParameter(int id, double value) {
  switch (id - parameterBase) {
    case kTypeOffset:
      type = decodeVariant(value);
      updateAttack();
      updateRelease();
      seedDetectors(kSeed);
      break;
    case kSideChainOffset: sideChainSource = decodeSwitch(value) > 0 ? 1 : 0; break;
    case kMonitorOffset: monitor = decodeSwitch(value); break;
    case limiter::kAttack:
      attackNorm = value;
      updateAttack();
      break;
    case limiter::kRelease:
      releaseNorm = value;
      updateRelease();
      break;
    case limiter::kCeiling:
      ceiling = gainOfDb(rowValue(limiter::kCeiling, value));
      ceilingInverse = 1.0 / ceiling;
      break;
    case limiter::kOutput: outputGain = gainOfDb(rowValue(limiter::kOutput, value)); break;
    case limiter::kHpf:
      hpfHz = std::clamp(rowValue(limiter::kHpf, value), limiter::kHpfOffHz, 1000.0);
      hpfOn = hpfHz > limiter::kHpfOffHz;
      for (Channel& c : channel) moveFilter(c.keyFilter, hpfHz, type == kOpto || type == kVca);
      break;
    case limiter::kLink: linkOn = decodeSwitch(value); break;
    case limiter::kSoft: softOn = decodeSwitch(value); break;
    default: break;
  }
}

void StripEffectLimiter_OptoVCA::setDefaults() { sendDefaults(kLimiterFamily, *this, parameterBase); }

void StripEffectLimiter_OptoVCA::smoothGains() {
  const auto step = [this](double& value, double target) {
    value = flushed(value + (target - value) * gainSmooth, kSmoothFlush);
  };
  step(ceilingInverseSmoothed, ceilingInverse);
  step(outputGainSmoothed, outputGain);
}

void StripEffectLimiter_OptoVCA::readLanes(double** in, int frames, int channels, bool ownKey,
                                           Lane* lanes) const {
  for (int c = 0; c < channels; ++c) {
    Lane& lane = lanes[c];
    std::copy_n(in[2 * inputPair + c], frames, lane.input);
    lane.key = lane.input;
    if (!ownKey && sideChainSource == inputPair) continue;
    std::copy_n(in[2 * sideChainSource + c], frames, lane.keyBuffer);
    lane.key = lane.keyBuffer;
  }
}

void StripEffectLimiter_OptoVCA::rectifyKeys(int frames, int channels, Lane* lanes) const {
  for (int c = 0; c < channels; ++c)
    for (int i = 0; i < frames; ++i) lanes[c].rectified[i] = std::abs(lanes[c].key[i]);
  if (channels == 2 && linkOn)
    for (int i = 0; i < frames; ++i)
      lanes[0].rectified[i] = lanes[1].rectified[i] = std::max(lanes[0].rectified[i], lanes[1].rectified[i]);
}

void StripEffectLimiter_OptoVCA::applyGains(int frames, int channels, Lane* lanes) {
  for (int c = 0; c < channels; ++c)
    for (int i = 0; i < frames; ++i) lanes[c].output[i] = lanes[c].input[i] * lanes[c].gain[i];
}

void StripEffectLimiter_OptoVCA::finishBlock(double** out, int frames, int channels, Lane* lanes,
                                             double followerShare) {
  const double gain = outputGainSmoothed;
  for (int c = 0; c < channels; ++c) {
    double* y = lanes[c].output;
    if (monitor)
      std::copy_n(lanes[c].key, frames, y);
    else
      for (int i = 0; i < frames; ++i) y[i] *= gain;
  }
  if (channels == 1) {
    writeMono(lanes[0].output, out, frames);
    followMono(lanes[0].input, lanes[0].output, frames);
  } else {
    if (outputPairs & 1)
      for (int c = 0; c < 2; ++c) std::copy_n(lanes[c].output, frames, out[c]);
    const double* inputs[2] = {lanes[0].input, lanes[1].input};
    const double* outputs[2] = {lanes[0].output, lanes[1].output};
    followPair(inputs, outputs, frames);
  }
  double* gains = lanes[0].gain;
  if (channels == 2)  // the one meter shows the channel that is reduced more
    for (int i = 0; i < frames; ++i) gains[i] = std::min(gains[i], lanes[1].gain[i]);
  gainFollower.coefficient = followerShare;
  gainFollower.followBlock(gains, frames);
  reductionMeter = 1.0 - gainFollower.level;
}

void StripEffectLimiter_OptoVCA::processOptoVca(double** in, double** out, int frames, int channels) {
  Lane lanes[2];
  smoothGains();
  readLanes(in, frames, channels, hpfOn != 0, lanes);
  if (hpfOn)
    for (int c = 0; c < channels; ++c) channel[c].keyFilter.processBuffer(lanes[c].keyBuffer, frames);
  rectifyKeys(frames, channels, lanes);
  const double ci = ceilingInverseSmoothed;
  const bool soft = softOn != 0;
  for (int c = 0; c < channels; ++c) {
    const double* key = lanes[c].rectified;
    if (type == kOpto)
      limiter::optoGains(key, frames, ci, soft, optoCoefficients, channel[c].opto, lanes[c].gain);
    else
      limiter::vcaGains(key, frames, ci, soft, vcaCoefficients, channel[c].vca, lanes[c].gain);
  }
  applyGains(frames, channels, lanes);
  finishBlock(out, frames, channels, lanes, reductionFollow);
}

void StripEffectLimiter_OptoVCA::getMeter(int id, double* value) {
  if (getLevelMeter(id, value)) return;
  if (id == meterBase + kReductionMeter) *value = std::clamp(reductionMeter, 0.0, 1.0);
}

void StripEffectLimiter_OptoVCA::resetMeters() {
  initMeters();
  reductionMeter = 0.0;
}

void StripEffectLimiter_OptoVCA::setEnabled(double value) {
  enabled = decodeSwitch(value);
  reset();
}

void StripEffectLimiter_OptoVCA::enable() { setEnabled(1.0); }

void StripEffectLimiter_OptoVCA::disable() { setEnabled(0.0); }

}  // namespace corvane
