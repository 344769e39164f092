#include "modules/compressor/StripEffectCompressor.h"

#include <algorithm>
#include <cmath>

#include "core/Rack.h"
#include "modules/compressor/CompressorFamily.h"
#include "modules/compressor/CompressorTable.h"

namespace corvane {

namespace {
constexpr int kReductionMeter = 2;

/// Not-a-number counts as 0.
double clampedToTravel(double p) { return p > 0.0 ? std::min(p, 1.0) : 0.0; }
}  // namespace

StripEffectCompressor::StripEffectCompressor(std::int32_t parameters, std::int32_t meters, std::int32_t tags)
    : StripEffect(parameters, meters, tags) {
  StripEffectCompressor::setDefaults();
  StripEffectCompressor::reset();
}

void StripEffectCompressor::reset() {
  initMeters();
  resetCompressor(sampleRate);
}

void StripEffectCompressor::setSampleRate(double hz) {
  sampleRate = clampedRate(hz);
  updateMeterCoefficients();
}

void StripEffectCompressor::setParameter(int id, double value) {
  const int offset = id - parameterBase;
  const double p = clampedToTravel(value);
  switch (offset) {
    case kTypeOffset:
      type = decodeVariant(p);
      detector = std::clamp(type, std::int32_t{kOpto}, std::int32_t{kVca});
      break;
    case kSideChainOffset: sideChainSource = decodeSwitch(p); break;
    case kMonitorOffset: monitor = decodeSwitch(p); break;
    case compressor::kAttack: attack = p; break;
    case compressor::kRelease: release = p; break;
    case compressor::kThreshold: thresholdDrive = compressor::detectorDrive(p); break;
    case compressor::kRatio: ratio = p; break;
    case compressor::kMix: mix = p; break;
    case compressor::kMakeupGain:
      makeupGain = std::pow(10.0, 0.05 * physicalValue(kCompressorFamily, offset, p));
      break;
    case compressor::kHpf: hpf = p; break;
    default: break;
  }
}

void StripEffectCompressor::setDefaults() { sendDefaults(kCompressorFamily, *this, parameterBase); }

void StripEffectCompressor::processBlockMono(double** in, double** out, int frames) {
  if (passes()) return passThroughBlock(in, out, frames);
  if (frames < 1) return;
  const double* input = in[2 * inputPair];
  double output[kBlockFrames], filteredKey[kBlockFrames];
  startBlock(sampleRate, frames);
  gainReduction = runChannel(input, in[2 * sideChainSource], frames, channels[0], output, filteredKey);
  followMono(input, output, frames);
  writeMono(monitor != 0 ? filteredKey : output, out, frames);
}

void StripEffectCompressor::processBlock(double** in, double** out, int frames) {
  if (passes()) return passThroughBlock(in, out, frames);
  if (frames < 1) return;
  double output[2][kBlockFrames], filteredKey[2][kBlockFrames], gains[2];
  startBlock(sampleRate, frames);
  for (int k = 0; k < 2; ++k)
    gains[k] = runChannel(in[2 * inputPair + k], in[2 * sideChainSource + k], frames, channels[k], output[k],
                          filteredKey[k]);
  gainReduction = std::min(gains[0], gains[1]);
  const double* outputs[2] = {output[0], output[1]};
  followPair(in + 2 * inputPair, outputs, frames);
  if ((outputPairs & 1) == 0) return;
  for (int k = 0; k < 2; ++k) std::copy_n(monitor != 0 ? filteredKey[k] : output[k], frames, out[k]);
}

void StripEffectCompressor::getMeter(int id, double* value) {
  if (getLevelMeter(id, value)) return;
  if (id == meterBase + kReductionMeter) *value = std::clamp(1.0 - gainReduction, 0.0, 1.0);
}

void StripEffectCompressor::resetMeters() {
  initMeters();
  gainReduction = 1.0;
}

void StripEffectCompressor::enable() {
  active = 1;
  gainReduction = 1.0;
}

void StripEffectCompressor::disable() {
  active = 0;
  clearDetectors();
  gainReduction = 1.0;
}

}  // namespace corvane
