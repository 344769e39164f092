#include "lv2/Strip.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "core/ParameterBank.h"
#include "host/Fields.h"

namespace corvane::lv2 {

namespace {

using aaxhost::PortWrite;

/// Blocks may be of any length that a host can count; the effect counts in 32 bits with a sign.
constexpr std::uint32_t kMostFrames = 1u << 24;

std::size_t at(int index) { return static_cast<std::size_t>(index); }

/// Offset of a place's head that the rules of the rack look after, or -1.
int rackOffset(const ControlPort& port) {
  if (port.place == kNoPlace) return -1;
  const int offset = port.id - kRack[at(port.place)].parameterBase;
  return offset == kPositionOffset || offset == kMonitorOffset ? offset : -1;
}

/// 20 log10 of a gain, by the logarithm that costs least; -600 for 0.
float decibels(float gain) {
  constexpr float kDbPerOctave = 6.0205999f;
  return kDbPerOctave * std::log2(std::max(gain, 1e-30f));
}
float levelDb(float reading) { return std::max(kLowestLevelDb, decibels(reading)); }
/// `reading`: 1 minus the gain factor.
float reductionDb(float reading) { return std::min(kMostReductionDb, -decibels(1.0f - reading) + 0.0f); }

/// What leaves the plug-in can be counted with: gain may carry a sample past what a float holds, and a bypass
/// hands on whatever came. As at the entrance, no number becomes 0.
void keepFinite(float* samples, std::uint32_t frames) {
  for (std::uint32_t n = 0; n < frames; ++n)
    samples[n] = std::abs(samples[n]) <= std::numeric_limits<float>::max() ? samples[n] : 0.0f;
}

/// A reading 0..1 of the effect's field.
float readingOf(std::span<const float> field, int id) {
  if (id == kTotalReductionMeterId) return field[2];
  const float told = field[host::kPlainMeters + at(id - host::kFirstMeterId)];
  return told == host::kNoMeter ? 0.0f : std::max(0.0f, told - host::kMeterOffset);
}

}  // namespace

Strip::Strip(std::shared_ptr<aaxhost::Library> effect, double rateHz, bool hasKey)
    : instance(std::move(effect), rateHz, aaxhost::Mode::Unwatched),
      withKey(hasKey),
      meters(ports().meters.size(), nullptr),
      meterRead(ports().meters.size(), -1.0f),
      heldValues(kParameters),
      publishedMemory(rack.memory()) {
  for (const ControlPort& port : ports().controls) defaults.push_back(port.scale.standard);
  for (const float& value : defaults) controls.push_back(&value);
  seen.assign(controls.size(), 0);
  writes.reserve(controls.size() + 2 * kPlaces);
  for (auto& value : heldValues) value = std::numeric_limits<double>::quiet_NaN();
  givenPositions.fill(-1);
}

void Strip::connect(std::uint32_t port, void* location) {
  const Ports& all = ports();
  if (port == kInputPort) {
    input = static_cast<const float*>(location);
  } else if (port == kOutputPort) {
    output = static_cast<float*>(location);
  } else if (port == kLatencyPort) {
    latency = static_cast<float*>(location);
  } else if (port < all.firstMeter()) {
    const std::size_t k = port - kFirstControlPort;
    controls[k] = location ? static_cast<const float*>(location) : &defaults[k];
  } else if (port < all.key()) {
    meters[port - all.firstMeter()] = static_cast<float*>(location);
    meterRead[port - all.firstMeter()] = -1.0f;
  } else if (port == all.key() && withKey) {
    key = static_cast<const float*>(location);
  }
}

void Strip::activate() { instance.refillField(host::kRateSeenField); }

void Strip::run(std::uint32_t frames) {
  takeControls();
  std::uint32_t done = 0;
  do {
    const std::uint32_t n = std::min(frames - done, kMostFrames);
    instance.render({.input = input ? input + done : nullptr,
                     .output = output ? output + done : nullptr,
                     .frames = static_cast<std::int32_t>(n),
                     .sideChain = key ? key + done : nullptr,
                     .writes = writes});
    writes.clear();
    done += n;
  } while (done < frames);
  if (output) keepFinite(output, frames);
  writeMeters();
  if (latency) *latency = 0.0f;
}

/// Most blocks bring nothing new: one pass over all ports, without a branch, finds that out.
void Strip::takeControls() {
  std::uint32_t differs = fresh;
  for (std::size_t k = 0; k < controls.size(); ++k)
    differs |= std::bit_cast<std::uint32_t>(*controls[k]) ^ seen[k];
  if (recalledMemory.load(std::memory_order_relaxed) != kNothing) {
    rack.recall(recalledMemory.exchange(kNothing, std::memory_order_relaxed));
    differs = 1;
  }
  if (differs == 0) return;
  collectChanges();
  takeRack();
}

void Strip::collectChanges() {
  for (std::size_t k = 0; k < controls.size(); ++k) {
    const auto bits = std::bit_cast<std::uint32_t>(*controls[k]);
    if (bits == seen[k] && !fresh) continue;
    seen[k] = bits;
    const ControlPort& port = ports().controls[k];
    const double p = port.scale.normalised(std::bit_cast<float>(bits));
    const int offset = rackOffset(port);
    if (port.id == kEnabledId) {
      writes.push_back(PortWrite::of(host::kBypassField, static_cast<std::int32_t>(p < 0.5)));
    } else if (offset == kPositionOffset) {
      askedPositions[at(port.place)] = decodePosition(p);
    } else if (offset == kMonitorOffset) {
      const unsigned bit = 1u << port.place;
      askedMonitors = p >= 0.5 ? askedMonitors | bit : askedMonitors & ~bit;
    } else {
      write(port.id, p);
    }
  }
}

void Strip::takeRack() {
  rack.takePositions(askedPositions);
  rack.takeMonitors(askedMonitors);
  const auto positions = rack.positions();
  for (int place = 0; place < kPlaces; ++place) {
    const int base = kRack[at(place)].parameterBase;
    if (positions[at(place)] != givenPositions[at(place)])
      write(base + kPositionOffset, positions[at(place)] / 8.0);
    if (fresh || (rack.monitored() == place) != (givenMonitor == place))
      write(base + kMonitorOffset, rack.monitored() == place ? 1.0 : 0.0);
  }
  givenPositions = positions;
  givenMonitor = rack.monitored();
  fresh = false;
  publishedMemory.store(rack.memory(), std::memory_order_relaxed);
}

void Strip::write(int id, double p) {
  heldValues[at(id)].store(p, std::memory_order_relaxed);
  writes.push_back(PortWrite::of(host::kFirstParameterField + id, static_cast<float>(p)));
}

void Strip::writeMeters() {
  const auto field = instance.renderedMeters();
  for (std::size_t k = 0; k < meters.size(); ++k) {
    if (!meters[k]) continue;
    const MeterPort& port = ports().meters[k];
    const float reading = readingOf(field, port.id);
    if (reading == meterRead[k]) continue;  // a silent place costs no logarithm
    meterRead[k] = reading;
    *meters[k] = port.reduction ? reductionDb(reading) : levelDb(reading);
  }
}

}  // namespace corvane::lv2
