#include "modules/deesser/StripEffectDeesser.h"

#include <algorithm>
#include <cmath>

#include "core/Rack.h"
#include "modules/deesser/DeesserFamily.h"
#include "modules/deesser/DeesserTable.h"

namespace corvane {

namespace {
constexpr int kReductionMeter = 2;
constexpr double kBandDrive = 32.0;  // a sibilant is a small part of the level of its word
constexpr double kGentleRatio = 0.5, kSteepRatio = 0.75;  // 2:1 and 4:1 as exponents of the gain
}  // namespace

StripEffectDeesser::StripEffectDeesser(std::int32_t parameters, std::int32_t meters, std::int32_t tags)
    : StripEffect(parameters, meters, tags) {
  StripEffectDeesser::setSampleRate(kLowestRateHz);
  sendDefaults(kDeesserFamily, *this, parameterBase);
  StripEffectDeesser::reset();
}

void StripEffectDeesser::reset() {
  initMeters();
  for (Channel& channel : channels) {
    channel.filters.reset();
    channel.envelopes = {};
  }
  gain = {};
  appliedGain = 0.0;
}

void StripEffectDeesser::setSampleRate(double hz) {
  sampleRate = clampedRate(hz);
  updateMeterCoefficients();
  for (Channel& channel : channels) channel.filters.setSampleRate(sampleRate);
  shares = designDeesserShares(sibilanceFrequency, sampleRate);
}

void StripEffectDeesser::setParameter(int id, double value) {
  const int offset = id - parameterBase;
  const Row* row = findRow(kDeesserFamily, offset);
  if (!row) return;
  const double physical = row->taper.physical(value);
  switch (offset) {
    case kMonitorOffset: monitorOn = static_cast<std::int32_t>(physical); break;
    case deesser::kFrequency:
      sibilanceFrequency = physical;
      updateBand();
      break;
    case deesser::kResonance:
      sibilanceQ = physical;
      updateBand();
      break;
    case deesser::kSensitivity: sensitivityGain = std::pow(10.0, physical / 20.0); break;
    case deesser::kRange: rangeFloor = std::pow(10.0, physical / 20.0); break;
    case deesser::kRatio: ratioExponent = physical < 1.0 ? kGentleRatio : kSteepRatio; break;
    case deesser::kMode: splitBand = static_cast<std::int32_t>(physical); break;
    default: break;
  }
}

void StripEffectDeesser::updateBand() {
  for (Channel& channel : channels) channel.filters.setBand(sibilanceFrequency, sibilanceQ);
  shares = designDeesserShares(sibilanceFrequency, sampleRate);
}

void StripEffectDeesser::setDefaults() {
  setParameter(parameterBase + kMonitorOffset, 0.0);
  sendDefaults(kDeesserFamily, *this, parameterBase);
}

template <int kChannels>
void StripEffectDeesser::run(double (*output)[kBlockFrames], int frames) {
  static constexpr double kNothing[kBlockFrames] = {};
  // State in locals, and all recursions in one loop: they overlap, since none waits for another.
  DeesserEnvelopes envelopes[kChannels];
  const double* treated[kChannels];
  const double* rest[kChannels];
  for (int c = 0; c < kChannels; ++c) {
    DeesserBlock& block = channels[c].block;
    channels[c].filters.filter(block, frames);
    envelopes[c] = channels[c].envelopes;
    treated[c] = splitBand == 1 ? block.high : block.input;
    rest[c] = splitBand == 1 ? block.low : kNothing;
    if (monitorOn == 1) {
      for (int i = 0; i < frames; ++i) block.heard[i] = 2.0 * block.sibilance[i];
      treated[c] = block.heard, rest[c] = kNothing;
    }
  }
  const DeesserShares c = shares;
  const double sensitivity = sensitivityGain, floor = rangeFloor;
  const bool steep = ratioExponent > kGentleRatio;
  DeesserGain shared = gain;
  double applied = 0.0;
  double wide[kBlockFrames], band[kBlockFrames];
  const auto follow = [&](int i) {
    for (int k = 0; k < kChannels; ++k) {
      const DeesserBlock& block = channels[k].block;
      const double level = std::abs(block.sibilance[i]) * kBandDrive * sensitivity;
      envelopes[k].follow(std::abs(block.input[i]), level, c);
      wide[i] = k == 0 ? envelopes[k].wideSlow : std::max(wide[i], envelopes[k].wideSlow);
      band[i] = k == 0 ? envelopes[k].bandSlow : std::max(band[i], envelopes[k].bandSlow);
    }
  };
  const auto apply = [&](int i) {
    // g^0.5 and g^0.75 by square roots, within two units in the last place of pow
    const double root = std::sqrt(shared.follow(wide[i], band[i], c));
    applied = (steep ? root * std::sqrt(root) : root) * (1.0 - floor) + floor;
    for (int k = 0; k < kChannels; ++k) {
      output[k][i] = rest[k][i] + treated[k][i] * applied;
    }
  };
  // The gain runs a few samples behind the envelopes, so that neither waits for the other's results.
  constexpr int kLag = 4;
  const int head = std::min(kLag, frames);
  for (int i = 0; i < head; ++i) follow(i);
  for (int i = head; i < frames; ++i) follow(i), apply(i - kLag);
  for (int i = std::max(frames - kLag, 0); i < frames; ++i) apply(i);
  gain = shared;
  appliedGain = applied;
  for (int k = 0; k < kChannels; ++k) channels[k].envelopes = envelopes[k];
}

void StripEffectDeesser::processBlockMono(double** in, double** out, int frames) {
  if (passes()) return passThroughBlock(in, out, frames);
  double output[1][kBlockFrames];
  std::copy_n(in[2 * inputPair], frames, channels[0].block.input);
  run<1>(output, frames);
  followMono(channels[0].block.input, output[0], frames);
  writeMono(output[0], out, frames);
}

void StripEffectDeesser::processBlock(double** in, double** out, int frames) {
  if (passes()) return passThroughBlock(in, out, frames);
  double output[2][kBlockFrames];
  for (int k = 0; k < 2; ++k) std::copy_n(in[2 * inputPair + k], frames, channels[k].block.input);
  run<2>(output, frames);
  const double* const before[] = {channels[0].block.input, channels[1].block.input};
  const double* const after[] = {output[0], output[1]};
  followPair(before, after, frames);
  if ((outputPairs & 1) == 0) return;
  for (int k = 0; k < 2; ++k) std::copy_n(output[k], frames, out[k]);
}

void StripEffectDeesser::getMeter(int id, double* value) {
  if (getLevelMeter(id, value)) return;
  if (id == meterBase + kReductionMeter) *value = 1.0 - appliedGain;
}

void StripEffectDeesser::resetMeters() {
  initMeters();
  appliedGain = 1.0;
}

}  // namespace corvane
