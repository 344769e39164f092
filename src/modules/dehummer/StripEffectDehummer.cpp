#include "modules/dehummer/StripEffectDehummer.h"

#include <algorithm>
#include <cmath>

#include "core/Rack.h"
#include "modules/dehummer/DehummerFamily.h"

namespace corvane {

namespace {
constexpr int kReductionMeter = 2;
constexpr double kShownFrom = 1e-6;                         // -120 dBFS: quieter signals show no reduction
constexpr double kNotchedFloor = 1e-5, kInputFloor = 1e-6;  // they fade the meter out below -100 dBFS
}  // namespace

StripEffectDehummer::StripEffectDehummer(std::int32_t parameters, std::int32_t meters, std::int32_t tags)
    : StripEffect(parameters, meters, tags) {
  StripEffectDehummer::setSampleRate(kLowestRateHz);
  sendDefaults(kDehummerFamily, *this, parameterBase);
  StripEffectDehummer::reset();
}

void StripEffectDehummer::reset() {
  initMeters();
  envelopeCoefficient = meterRelease;
  for (Channel& channel : channels) {
    channel.comb.reset();
    channel.inputEnvelope = channel.notchedEnvelope = 0.0;
  }
  humReduction = 0.0;
}

void StripEffectDehummer::setSampleRate(double hz) {
  sampleRate = clampedRate(hz);
  updateMeterCoefficients();
  envelopeCoefficient = meterRelease;
  for (Channel& channel : channels) channel.comb.setSampleRate(sampleRate);
}

void StripEffectDehummer::setParameter(int id, double value) {
  const int offset = id - parameterBase;
  const Row* row = findRow(kDehummerFamily, offset);
  if (!row) return;
  const double physical = row->taper.physical(value);
  switch (offset) {
    case kMonitorOffset:
      monitorOn = static_cast<std::int32_t>(physical);
      if (monitorOn != 1) break;
      updateHarmonicFrequencies();
      updateHarmonicGains();
      break;
    case dehummer::kEvenOdd:
      hum.balance = dehummer::harmonicBalance(value);
      updateHarmonicGains();
      break;
    case dehummer::kBrightness:
      hum.darkness = dehummer::harmonicDarkness(value);
      updateHarmonicGains();
      break;
    case dehummer::kAttenuation:
      hum.attenuationDb = physical;
      updateHarmonicGains();
      break;
    case dehummer::kMains:
      mainsFrequency = physical;
      updateHarmonicFrequencies();
      break;
    case dehummer::kOffset:
      frequencyOffset = physical;
      updateHarmonicFrequencies();
      break;
    default: break;
  }
}

void StripEffectDehummer::updateHarmonicFrequencies() {
  hum.fundamentalHz = mainsFrequency + frequencyOffset;
  for (Channel& channel : channels) channel.comb.updateHarmonicFrequencies(hum);
}

void StripEffectDehummer::updateHarmonicGains() {
  for (Channel& channel : channels) channel.comb.updateHarmonicGains(hum);
}

void StripEffectDehummer::setDefaults() {
  setParameter(parameterBase + kMonitorOffset, 0.0);
  sendDefaults(kDehummerFamily, *this, parameterBase);
}

void StripEffectDehummer::runChannel(Channel& channel, const double* input, int frames) {
  std::copy_n(input, frames, channel.input);
  std::copy_n(input, frames, channel.output);
  channel.comb.cut(channel.output, frames);
  // a level meter of one speed each
  LevelJob envelopes[] = {
      {channel.input, channel.inputEnvelope, envelopeCoefficient, envelopeCoefficient},
      {channel.output, channel.notchedEnvelope, envelopeCoefficient, envelopeCoefficient}};
  followLevels(envelopes, frames);
  channel.inputEnvelope = envelopes[0].level, channel.notchedEnvelope = envelopes[1].level;
  if (monitorOn == 1) channel.comb.hear(channel.input, channel.output, frames, hum);
}

void StripEffectDehummer::updateReduction(double inputEnvelope, double notchedEnvelope, int frames) {
  // Only the last sample of a block can be read, so only its reduction is worked out.
  const bool audible = frames > 0 && inputEnvelope > kShownFrom && notchedEnvelope > kShownFrom;
  const double rest = audible ? (notchedEnvelope + kNotchedFloor) / (inputEnvelope + kInputFloor) : 1.0;
  humReduction = std::clamp(1.0 - rest, 0.0, 1.0);
}

void StripEffectDehummer::processBlockMono(double** in, double** out, int frames) {
  if (passes()) return passThroughBlock(in, out, frames);
  Channel& left = channels[0];
  runChannel(left, in[2 * inputPair], frames);
  updateReduction(left.inputEnvelope, left.notchedEnvelope, frames);
  followMono(left.input, left.output, frames);
  writeMono(left.output, out, frames);
}

void StripEffectDehummer::processBlock(double** in, double** out, int frames) {
  if (passes()) return passThroughBlock(in, out, frames);
  for (int k = 0; k < 2; ++k) runChannel(channels[k], in[2 * inputPair + k], frames);
  const auto& [left, right] = channels;
  updateReduction(std::max(left.inputEnvelope, right.inputEnvelope),
                  std::max(left.notchedEnvelope, right.notchedEnvelope), frames);
  const double* const before[] = {left.input, right.input};
  const double* const after[] = {left.output, right.output};
  followPair(before, after, frames);
  if ((outputPairs & 1) == 0) return;
  for (int k = 0; k < 2; ++k) std::copy_n(after[k], frames, out[k]);
}

void StripEffectDehummer::getMeter(int id, double* value) {
  if (getLevelMeter(id, value)) return;
  if (id == meterBase + kReductionMeter) *value = humReduction;
}

void StripEffectDehummer::resetMeters() {
  initMeters();
  humReduction = 0.0;
}

}  // namespace corvane
