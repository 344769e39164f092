#include "core/StripEffect.h"

#include <algorithm>

namespace corvane {

namespace {
// Rise: 99 % of a step within the time; fall: to 1/16 (-24 dB) within the time.
const double kMeterRiseMs = std::pow(101.0, 0.4) - 1.0;    // 5.33 ms
const double kMeterFallMs = 100.0 * std::pow(100.0, 0.4);  // 631 ms
}  // namespace

StripEffect::StripEffect(std::int32_t parameters, std::int32_t meters, std::int32_t tags)
    : parameterBase(parameters), meterBase(meters), tagBase(tags) {
  updateMeterCoefficients();
}

StripEffect::~StripEffect() = default;

void StripEffect::initMeters() {
  inputLevel = outputLevel = 0.0;
  inputFollower[0] = inputFollower[1] = 0.0;
  outputFollower[0] = outputFollower[1] = 0.0;
  updateMeterCoefficients();
}

void StripEffect::updateMeterCoefficients() {
  meterAttack = 1.0 - std::pow(0.01, 1.0 / (kMeterRiseMs * sampleRate * 0.001));
  meterRelease = 1.0 - std::pow(0.0625, 1.0 / (kMeterFallMs * sampleRate * 0.001));
}

void StripEffect::followInput(double a, double b) {
  inputFollower[0] = followLevel(std::abs(a), inputFollower[0], meterAttack, meterRelease);
  inputFollower[1] = followLevel(std::abs(b), inputFollower[1], meterAttack, meterRelease);
  inputLevel = std::max(inputFollower[0], inputFollower[1]);
}

void StripEffect::followOutput(double a, double b) {
  outputFollower[0] = followLevel(std::abs(a), outputFollower[0], meterAttack, meterRelease);
  outputFollower[1] = followLevel(std::abs(b), outputFollower[1], meterAttack, meterRelease);
  outputLevel = std::max(outputFollower[0], outputFollower[1]);
}

void StripEffect::followMono(const double* input, const double* output, int frames) {
  ChannelMeters meters = channelMeters(0);
  for (int i = 0; i < frames; ++i) meters.step(input[i], output[i]);
  publishMono(meters);
}

ChannelMeters StripEffect::channelMeters(int channel) const {
  return {meterAttack, meterRelease, inputFollower[channel], outputFollower[channel]};
}

void StripEffect::publishMono(const ChannelMeters& meters) {
  inputFollower[0] = inputFollower[1] = inputLevel = meters.input;
  outputFollower[0] = outputFollower[1] = outputLevel = meters.output;
}

void StripEffect::publishPair(const ChannelMeters& left, const ChannelMeters& right) {
  inputFollower[0] = left.input, inputFollower[1] = right.input;
  outputFollower[0] = left.output, outputFollower[1] = right.output;
  inputLevel = std::max(left.input, right.input);
  outputLevel = std::max(left.output, right.output);
}

void StripEffect::writeMono(const double* samples, double** out, int frames) const {
  if ((outputPairs & 1) == 0) return;
  std::copy_n(samples, frames, out[0]);
  std::copy_n(samples, frames, out[1]);
}

void StripEffect::passThroughBlock(double** in, double** out, int frames) {
  const double* left = in[2 * inputPair];
  const double* right = in[2 * inputPair + 1];
  for (int i = 0; i < frames; ++i) {
    followInput(left[i], right[i]);
    followOutput(left[i], right[i]);
  }
  for (int pair = 0; (outputPairs >> pair) != 0; ++pair) {
    if ((outputPairs >> pair & 1) == 0) continue;
    std::copy(left, left + frames, out[2 * pair]);
    std::copy(right, right + frames, out[2 * pair + 1]);
  }
}

bool StripEffect::getLevelMeter(int id, double* value) const {
  if (id == meterBase) *value = inputLevel;
  if (id == meterBase + 1) *value = outputLevel;
  return id == meterBase || id == meterBase + 1;
}

}  // namespace corvane
