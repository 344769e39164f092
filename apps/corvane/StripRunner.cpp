#include "corvane/StripRunner.h"

#include <algorithm>

#include "core/ParameterBank.h"
#include "corvane/Failure.h"
#include "corvane/PluginLibrary.h"
#include "corvane/StateFile.h"
#include "platform/aaxhost/Instance.h"
#include "platform/aaxhost/Runners.h"

namespace corvane::cli {

namespace {

constexpr int kFirstMeterId = 361;
constexpr float kMeterOffset = 0.1F;  // tells a reading from a meter that was cleared
constexpr float kFullReading = 1.0F + kMeterOffset;
constexpr std::int64_t kReductionMeterType = 2;

void check(AAX_Result result, const char* what) {
  if (result != AAX_SUCCESS) fail("the plug-in does not {}: error {}", what, result);
}

/// The library's meters by bank id, from 361: the custom ones, in their order. The total reduction has a
/// meter of its own, without an offset.
const std::vector<AAX_CTypeID>& meterTypes() {
  static const std::vector<AAX_CTypeID> types = [] {
    std::vector<AAX_CTypeID> custom;
    AAX_CTypeID reduction = 0;
    for (const aaxhost::Meter& meter : pluginLibrary()->description().meters)
      for (const aaxhost::Property& property : meter.properties) {
        if (property.id == AAX_eProperty_Meter_Custom) custom.push_back(meter.id);
        if (property.id == AAX_eProperty_Meter_Type && property.value == kReductionMeterType)
          reduction = meter.id;
      }
    custom.resize(kTotalReductionMeterId - kFirstMeterId);
    custom.push_back(reduction);
    return custom;
  }();
  return types;
}

}  // namespace

struct StripRunner::Host {
  explicit Host(double rateHz) : instance(pluginLibrary(), rateHz), time(rateHz) {}
  aaxhost::Instance instance;
  aaxhost::OfflineRunner time;
  bool bypassed = false;
};

StripRunner::StripRunner(double rateHz) try : host(std::make_unique<Host>(rateHz)) {
} catch (const aaxhost::HostError& error) {
  fail("{}", error.what());
}

StripRunner::~StripRunner() = default;
StripRunner::StripRunner(StripRunner&&) noexcept = default;
StripRunner& StripRunner::operator=(StripRunner&&) noexcept = default;

void StripRunner::edit(int id, double value) {
  check(host->instance.edit(parameterIdentifier(id), value), "take an edit");
  if (!host->instance.settle()) fail("the strip's rules never come to rest");
}

void StripRunner::load(const Setting& setting, std::string_view name) {
  restore(stateWith(state(), setting, name));
}

aaxhost::Chunk StripRunner::state() const {
  aaxhost::Chunk chunk;
  check(host->instance.getChunk(kStateChunkId, &chunk), "give its state");
  return chunk;
}

void StripRunner::restore(const aaxhost::Chunk& state) {
  if (host->instance.setChunk(state) != AAX_SUCCESS)
    fail("the plug-in does not take this state; nothing was changed");
  if (!host->instance.settle()) fail("the strip's rules never come to rest");
}

aaxhost::Instance& StripRunner::instance() { return host->instance; }

Setting StripRunner::setting() const {
  Setting held;
  for (int id = 0; id < kParameters; ++id) {
    if ((parameterKind(id) & kKindAnnounced) == 0) continue;
    double value = 0.0;
    check(host->instance.value(parameterIdentifier(id), &value), "tell a value");
    held.store(id, value);
  }
  return held;
}

void StripRunner::automate(int id, double value) {
  check(host->instance.automate(parameterIdentifier(id), value), "take automation");
}

void StripRunner::setRate(double rateHz) {
  check(host->instance.setSampleRate(rateHz), "take the sample rate");
  host->time = aaxhost::OfflineRunner(rateHz);
}

void StripRunner::processBlock(const float* input, const float* key, float* output, int frames,
                               bool bypassed) {
  if (bypassed != host->bypassed) check(host->instance.setBypass(bypassed), "take the bypass");
  host->bypassed = bypassed;
  host->time.run(host->instance, {.input = input, .output = output, .frames = frames, .sideChain = key});
}

std::optional<double> StripRunner::meter(int id) const {
  if (id < kFirstMeterId || id > kTotalReductionMeterId) return std::nullopt;
  float shown = 0.0F;
  check(host->instance.meter(meterTypes()[static_cast<std::size_t>(id - kFirstMeterId)], &shown),
        "show a meter");
  if (id == kTotalReductionMeterId) return static_cast<double>(shown);
  if (shown > kFullReading) return std::nullopt;
  return static_cast<double>(std::max(0.0F, shown - kMeterOffset));  // 0 also before the first block
}

StripMaker::StripMaker(StripRunner first) : state(first.state()), ready(std::move(first)) {}

StripRunner StripMaker::make(double rateHz) {
  if (ready) {
    StripRunner first = std::move(*ready);
    ready.reset();
    first.setRate(rateHz);
    return first;
  }
  StripRunner next(rateHz);
  next.restore(state);
  return next;
}

}  // namespace corvane::cli
