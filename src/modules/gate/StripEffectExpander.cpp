#include "modules/gate/StripEffectExpander.h"

#include <algorithm>
#include <cmath>

#include "core/Rack.h"
#include "core/dsp/SectionSeries.h"
#include "modules/gate/GateFamily.h"
#include "modules/gate/GateTable.h"

namespace corvane {

namespace {

constexpr double kKeyQ = 0.7;
constexpr int kReductionMeter = 2;

GlideFilter keySection(SectionType type, double hz) {
  GlideFilter section{kLowestRateHz, type, hz, kKeyQ, 0.0};
  section.active = true;
  return section;
}

}  // namespace

StripEffectExpander::Channel::Channel()
    : keyFilters{keySection(SectionType::highPass, 20.0), keySection(SectionType::highPass, 20.0),
                 keySection(SectionType::lowPass, 20000.0), keySection(SectionType::lowPass, 20000.0)} {}

StripEffectExpander::StripEffectExpander(std::int32_t parameters, std::int32_t meters, std::int32_t tags)
    : StripEffect(parameters, meters, tags) {
  StripEffectExpander::setSampleRate(kLowestRateHz);
  StripEffectExpander::reset();
}

void StripEffectExpander::reset() {
  initMeters();
  smoothCoef = gate::smoothingCoefficient(sampleRate);
  gainMeterPublished = 0.0;
  for (Channel& channel : channels) {
    channel.state = {};
    for (GlideFilter& section : channel.keyFilters) section.clearHistory(), section.snapToTarget();
  }
}

void StripEffectExpander::setSampleRate(double hz) {
  sampleRate = clampedRate(hz);
  updateMeterCoefficients();
  for (Channel& channel : channels)
    for (GlideFilter& section : channel.keyFilters) section.sampleRate = sampleRate, section.retarget();
  smoothCoef = gate::smoothingCoefficient(sampleRate);
  updateTimes();
}

void StripEffectExpander::updateTimes() {
  attackCoef = gate::coverInTime(sampleRate, attackMs);
  releaseCoef = gate::coverInTime(gate::releaseStretch(shape) * sampleRate, releaseMs);
  curveExponent = gate::releaseExponent(shape);
}

void StripEffectExpander::setParameter(int id, double value) {
  const int offset = id - parameterBase;
  const auto physical = [&] { return physicalValue(kGateFamily, offset, value); };
  switch (offset) {
    case kTypeOffset: type = decodeVariant(value); break;
    case kSideChainOffset: sideChainSource = decodeSwitch(value); break;
    case kMonitorOffset: monitor = decodeSwitch(value); break;
    case gate::kAttack: attackMs = std::clamp(physical(), 0.1, 250.0), updateTimes(); break;
    case gate::kRelease: releaseMs = std::clamp(physical(), 10.0, 3000.0), updateTimes(); break;
    case gate::kRatio: ratioStep = std::clamp(static_cast<int>(physical()), 0, gate::kRatioSteps); break;
    case gate::kHold: holdSeconds = physical(); break;
    case gate::kThreshold:
      threshold = gate::thresholdGain(physical());
      inverseThreshold = 1.0 / threshold;
      break;
    case gate::kShape: shape = std::clamp(value, 0.0, 1.0), updateTimes(); break;
    case gate::kRange: range = physical(); break;
    case gate::kHpfIn: hpfOn = decodeSwitch(value); break;
    case gate::kHpfFreq:
      for (Channel& channel : channels)
        for (GlideFilter& section : channel.keyHighPass())
          section.setFrequency(std::clamp(physical(), 20.0, 8000.0));
      break;
    case gate::kLpfIn: lpfOn = decodeSwitch(value); break;
    case gate::kLpfFreq:
      for (Channel& channel : channels)
        for (GlideFilter& section : channel.keyLowPass())
          section.setFrequency(std::clamp(physical(), 50.0, 20000.0));
      break;
    default: break;
  }
}

void StripEffectExpander::setDefaults() { sendDefaults(kGateFamily, *this, parameterBase); }

gate::GateCoefficients StripEffectExpander::coefficients() const {
  return {.attackCoef = attackCoef,
          .releaseCoef = releaseCoef,
          .smoothCoef = smoothCoef,
          .smoothRise = attackCoef + smoothCoef - attackCoef * smoothCoef,
          .range = range,
          .holdLimit = static_cast<std::int32_t>(holdSeconds * sampleRate)};
}

const double* StripEffectExpander::filterKey(const double* key, double* filtered, int frames,
                                             Channel& channel) const {
  if (hpfOn == 0 && lpfOn == 0) return key;
  std::copy_n(key, frames, filtered);
  const auto sections = std::span(channel.keyFilters);
  const std::size_t from = hpfOn != 0 ? 0 : 2, to = lpfOn != 0 ? 4 : 2;
  processSeries(sections.subspan(from, to - from), filtered, frames);
  return filtered;
}

template <typename Curve>
void StripEffectExpander::runVariant(Curve curve, const double* input, const double* key, double* levels,
                                     double* output, int frames, gate::GateState& state) const {
  const gate::GateCoefficients c = coefficients();
  gate::GateState s = state;
  const auto run = [&](auto step) {
    for (int i = 0; i < frames; ++i) {
      step(levels[i]);
      levels[i] = s.gainSmoothed;
    }
    for (int i = 0; i < frames; ++i) levels[i] = c.range + (1.0 - c.range) * levels[i];
    if (monitor != 0)
      std::copy_n(key, frames, output);
    else
      for (int i = 0; i < frames; ++i) output[i] = input[i] * levels[i];
    s.gain = levels[frames - 1];
  };
  if (type == kGate) {
    run([&](double level) { gate::stepGate(level >= 1.0, c, curve, s); });
  } else if (type == kDucker) {
    run([&](double level) { gate::stepDucker(level >= 1.0, c, curve, s); });
  } else {
    gate::expanderTargets(levels, frames, ratioStep);
    run([&](double target) { gate::stepExpander(target, c, curve, s); });
  }
  state = s;
}

void StripEffectExpander::runChannel(const double* input, const double* key, double* levels, double* output,
                                     int frames, gate::GateState& state) const {
  const auto run = [&](auto curve) { runVariant(curve, input, key, levels, output, frames, state); };
  if (curveExponent == 1.0)
    run(gate::PlainCurve{});
  else if (curveExponent == 0.5)
    run(gate::RootCurve{});
  else
    run(gate::PowerCurve{curveExponent});
}

void StripEffectExpander::publishGain(double lastGain) {
  gainMeterPublished = monitor != 0 ? 1.0 : std::clamp(lastGain, 0.0, 1.0);
}

void StripEffectExpander::processBlockMono(double** in, double** out, int frames) {
  if (passes()) {
    gainMeterPublished = 1.0;
    return passThroughBlock(in, out, frames);
  }
  if (frames < 1) return;
  double filtered[kBlockFrames], levels[kBlockFrames], output[kBlockFrames];
  Channel& channel = channels[0];
  const double* key = filterKey(in[2 * sideChainSource], filtered, frames, channel);
  for (int i = 0; i < frames; ++i) levels[i] = std::abs(key[i]) * inverseThreshold;
  runChannel(in[2 * inputPair], key, levels, output, frames, channel.state);
  followMono(in[2 * inputPair], output, frames);
  publishGain(channel.state.gain);
  writeMono(output, out, frames);
}

void StripEffectExpander::processBlock(double** in, double** out, int frames) {
  if (passes()) {
    gainMeterPublished = 1.0;
    return passThroughBlock(in, out, frames);
  }
  if (frames < 1) return;
  double filtered[2][kBlockFrames], levels[2][kBlockFrames], output[2][kBlockFrames];
  const double* key[2];
  for (int k = 0; k < 2; ++k)
    key[k] =
        filterKey(in[2 * sideChainSource + k], filtered[k], frames, channels[static_cast<std::size_t>(k)]);
  for (int i = 0; i < frames; ++i)
    levels[0][i] = levels[1][i] = std::max(std::abs(key[0][i]), std::abs(key[1][i])) * inverseThreshold;
  for (int k = 0; k < 2; ++k)
    runChannel(in[2 * inputPair + k], key[k], levels[k], output[k], frames,
               channels[static_cast<std::size_t>(k)].state);
  const double* outputs[2] = {output[0], output[1]};
  followPair(in + 2 * inputPair, outputs, frames);
  publishGain(std::min(channels[0].state.gain, channels[1].state.gain));
  if ((outputPairs & 1) == 0) return;
  for (int k = 0; k < 2; ++k) std::copy_n(output[k], frames, out[k]);
}

void StripEffectExpander::getMeter(int id, double* value) {
  if (getLevelMeter(id, value)) {
    *value = std::clamp(*value, 0.0, 1.0);
    return;
  }
  if (id == meterBase + kReductionMeter) *value = std::clamp(1.0 - gainMeterPublished, 0.0, 1.0);
}

void StripEffectExpander::resetMeters() {
  initMeters();
  gainMeterPublished = 1.0;
}

}  // namespace corvane
