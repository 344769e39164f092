#include "corvane/StripRunner.h"

#include <vector>

#include "core/CorvaneMonoEffect.h"
#include "core/ParameterBank.h"

namespace corvane::cli {

namespace {

constexpr float kNeverSeen = -1.666F;  // no legal value, so that the first block delivers all

const std::vector<int>& hostParameters() {
  static const std::vector<int> ids = [] {
    std::vector<int> announced;
    for (int id = 0; id < kParameters; ++id)
      if (parameterKind(id) & kKindAnnounced) announced.push_back(id);
    return announced;
  }();
  return ids;
}

bool isInsertType(int id) {
  return id == kRack[kInsertX].parameterBase || id == kRack[kInsertY].parameterBase;
}

}  // namespace

StripRunner::StripRunner(double rateHz) : strip(std::make_unique<CorvaneMonoEffect>()) {
  strip->setSampleRate(static_cast<double>(static_cast<float>(rateHz)));  // hosts tell the rate as a float
  seen.fill(kNeverSeen);
  for (int id = 0; id < kParameters; ++id) setParameter(id, parameterDefault(id));
}

StripRunner::~StripRunner() = default;
StripRunner::StripRunner(StripRunner&&) noexcept = default;
StripRunner& StripRunner::operator=(StripRunner&&) noexcept = default;

void StripRunner::setParameter(int id, double value) {
  values[static_cast<std::size_t>(id)] = static_cast<float>(value);
}

void StripRunner::deliverParameters() {
  for (const int id : hostParameters()) {
    const auto k = static_cast<std::size_t>(id);
    if (values[k] == seen[k]) continue;
    seen[k] = values[k];
    strip->setParameter(id, static_cast<double>(values[k]));
    // A module that comes into an insert starts from its defaults: it needs the insert's values anew.
    if (isInsertType(id))
      for (int offset = 1; offset < kRack[kInsertX].parameterCount; ++offset)
        seen[k + static_cast<std::size_t>(offset)] = kNeverSeen;
  }
}

void StripRunner::processBlock(const float* input, const float* key, float* output, int frames,
                               bool bypassed) {
  deliverParameters();
  const float* const inputs[4] = {input, nullptr, key, nullptr};
  float* const outputs[2] = {output, nullptr};
  if (bypassed)
    strip->processBypassedFloat(inputs, outputs, frames);
  else
    strip->processFloat(inputs, outputs, frames);
}

std::optional<double> StripRunner::meter(int id) {
  double value = 0.0;
  if (!strip->getMeter(id, &value)) return std::nullopt;
  return value;
}

}  // namespace corvane::cli
