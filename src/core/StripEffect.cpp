#include "core/StripEffect.h"

#include <algorithm>
#include <cstring>

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
  pending.frames = 0;
  inputLevel = outputLevel = insideLevel = 0.0;
  inputFollower[0] = inputFollower[1] = 0.0;
  outputFollower[0] = outputFollower[1] = 0.0;
  updateMeterCoefficients();
}

void StripEffect::updateMeterCoefficients() {
  settle();
  meterAttack = 1.0 - std::pow(0.01, 1.0 / (kMeterRiseMs * sampleRate * 0.001));
  meterRelease = 1.0 - std::pow(0.0625, 1.0 / (kMeterFallMs * sampleRate * 0.001));
}

void StripEffect::followInput(double a, double b) {
  settle();
  inputFollower[0] = followLevel(std::abs(a), inputFollower[0], meterAttack, meterRelease);
  inputFollower[1] = followLevel(std::abs(b), inputFollower[1], meterAttack, meterRelease);
  inputLevel = std::max(inputFollower[0], inputFollower[1]);
}

void StripEffect::followOutput(double a, double b) {
  settle();
  outputFollower[0] = followLevel(std::abs(a), outputFollower[0], meterAttack, meterRelease);
  outputFollower[1] = followLevel(std::abs(b), outputFollower[1], meterAttack, meterRelease);
  outputLevel = std::max(outputFollower[0], outputFollower[1]);
}

void StripEffect::followMono(const double* input, const double* output, int frames) {
  keep(input, output, frames);
}

void StripEffect::followInside(const double* samples) {
  if (pending.frames == 0) return;
  pending.inside = true;
  std::copy_n(samples, pending.frames, pending.third);
}

void StripEffect::followPair(const double* const* input, const double* const* output, int frames) {
  for (int i = 0; i < frames; ++i) {
    followInput(input[0][i], input[1][i]);
    followOutput(output[0][i], output[1][i]);
  }
}

// Meters in arrears: levels do not touch the sound, so a block is kept until the rack settles all places at
// once, or until somebody asks.

void StripEffect::keep(const double* first, const double* second, int frames) {
  settle();
  if (frames < 1) return;
  pending.frames = frames;
  pending.passed = pending.alike = pending.inside = false;
  std::copy_n(first, frames, pending.first);
  std::copy_n(second, frames, pending.second);
}

void StripEffect::keepPassed(const double* left, const double* right, int frames) {
  settle();
  if (frames < 1) return;
  pending.frames = frames;
  pending.passed = true, pending.inside = false;
  pending.alike = std::memcmp(left, right, sizeof(double) * static_cast<std::size_t>(frames)) == 0;
  std::copy_n(left, frames, pending.first);
  if (!pending.alike) std::copy_n(right, frames, pending.second);
}

bool StripEffect::followersAgree() const {
  return inputFollower[0] == inputFollower[1] && inputFollower[0] == outputFollower[0] &&
         inputFollower[0] == outputFollower[1];
}

int StripEffect::addJobs(LevelJob* to) {
  const auto job = [this](const double* samples, double level) {
    return LevelJob{samples, level, meterAttack, meterRelease};
  };
  to[0] = job(pending.first, inputFollower[0]);
  if (!pending.passed) {
    to[1] = job(pending.second, outputFollower[0]);
    if (pending.inside) to[2] = job(pending.third, insideLevel);
    return pending.jobs = pending.inside ? 3 : 2;
  }
  if (pending.alike && followersAgree()) return pending.jobs = 1;
  const double* second = pending.alike ? pending.first : pending.second;
  to[1] = job(pending.first, outputFollower[0]);
  to[2] = job(second, inputFollower[1]);
  to[3] = job(second, outputFollower[1]);
  return pending.jobs = 4;
}

void StripEffect::take(const LevelJob* from) {
  const auto level = [&](int k) { return from[k < pending.jobs ? k : 0].level; };
  inputFollower[0] = level(0);
  outputFollower[0] = level(1);
  inputFollower[1] = pending.passed ? level(2) : level(0);
  outputFollower[1] = pending.passed ? level(3) : level(1);
  inputLevel = std::max(inputFollower[0], inputFollower[1]);
  outputLevel = std::max(outputFollower[0], outputFollower[1]);
  if (pending.inside) insideLevel = level(2);
  pending.frames = 0;
}

void StripEffect::settle() {
  if (pending.frames == 0) return;
  StripEffect* const self = this;
  settleMeters({&self, 1});
}

void StripEffect::settleMeters(std::span<StripEffect* const> modules) {
  constexpr std::size_t kAtOnce = 9, kJobsEach = 4;
  while (modules.size() > kAtOnce) {
    settleMeters(modules.first(kAtOnce));
    modules = modules.subspan(kAtOnce);
  }
  LevelJob all[kAtOnce * kJobsEach];
  int frames = 0;
  std::size_t count = 0;
  for (StripEffect* module : modules) {
    if (!module || module->pending.frames == 0) continue;
    if (frames != 0 && module->pending.frames != frames) {  // left over from another block
      module->settle();
      continue;
    }
    frames = module->pending.frames;
    count += static_cast<std::size_t>(module->addJobs(all + count));
  }
  followLevels({all, count}, frames);
  std::size_t at = 0;
  for (StripEffect* module : modules) {
    if (!module || module->pending.frames == 0) continue;
    const auto used = static_cast<std::size_t>(module->pending.jobs);
    module->take(all + at);
    at += used;
  }
}

void StripEffect::writeMono(const double* samples, double** out, int frames) const {
  if ((outputPairs & 1) == 0) return;
  std::copy_n(samples, frames, out[0]);
  std::copy_n(samples, frames, out[1]);
}

void StripEffect::passThroughBlock(double** in, double** out, int frames) {
  const double* left = in[2 * inputPair];
  const double* right = in[2 * inputPair + 1];
  keepPassed(left, right, frames);
  for (int pair = 0; (outputPairs >> pair) != 0; ++pair) {
    if ((outputPairs >> pair & 1) == 0) continue;
    if (out[2 * pair] != left) std::copy_n(left, frames, out[2 * pair]);
    if (out[2 * pair + 1] != right) std::copy_n(right, frames, out[2 * pair + 1]);
  }
}

bool StripEffect::getLevelMeter(int id, double* value) {
  settle();
  if (id == meterBase) *value = inputLevel;
  if (id == meterBase + 1) *value = outputLevel;
  return id == meterBase || id == meterBase + 1;
}

}  // namespace corvane
