#include "core/CorvaneMonoEffect.h"

#include <algorithm>
#include <cmath>

#include "core/ParameterBank.h"

namespace corvane {

namespace {

constexpr int kCompressorReductionMeter = 377, kLimiterReductionMeter = 385;
constexpr int kInsertReductionOffset = 2;  // from the insert's first meter
constexpr int kInsertYMeterUnused = 422;   // the last meter id answers nothing

bool isInsert(int place) { return place >= kFixedPlaces; }

std::unique_ptr<StripEffect> makeModule(const ModuleFamily& family, int place) {
  const Place& p = kRack[static_cast<std::size_t>(place)];
  return family.make(p.parameterBase, p.meterBase, p.tagBase);
}

double unitRange(double v) { return v > 0.0 ? std::min(v, 1.0) : 0.0; }  // not-a-number reads 0

/// Samples that are not finite would poison followers and memories: they count as 0.
template <typename Sample>
void convertIn(const Sample* from, double* to, int frames) {
  for (int i = 0; i < frames; ++i) {
    const double x = static_cast<double>(from[i]);
    to[i] = x - x == 0.0 ? x : 0.0;
  }
}

template <typename Sample>
void convertOut(const double* from, Sample* to, int frames) {
  for (int i = 0; i < frames; ++i) to[i] = static_cast<Sample>(from[i]);
}

/// The four inputs of a block with the fallbacks of missing channels.
template <typename Sample>
std::array<const Sample*, 4> channelsOf(const Sample* const* inputs) {
  const Sample* main = inputs[0];
  const Sample* second = inputs[1] ? inputs[1] : main;
  const Sample* key = inputs[2] ? inputs[2] : main;
  const Sample* secondKey = inputs[3] ? inputs[3] : inputs[2] ? inputs[2] : second;
  return {main, second, key, secondKey};
}

}  // namespace

CorvaneMonoEffect::CorvaneMonoEffect() {
  for (std::size_t k = 0; k < kFixedPlaces; ++k) {
    fixedModules[k] = makeModule(familyOfKind(kRack[k].kind), static_cast<int>(k));
    place[k] = fixedModules[k].get();
  }
  for (const int at : {kInsertX, kInsertY}) {
    auto& pool = inserts[static_cast<std::size_t>(at - kInsertX)].modulePool;
    for (const ModuleFamily* family : moduleFamilies())
      for (const Variant& variant : family->variants) {
        auto module = makeModule(*family, at);
        if (family->kind != ModuleKind::special)
          module->setParameter(kRack[static_cast<std::size_t>(at)].parameterBase, variant.type / 15.0);
        pool[static_cast<std::size_t>(family->firstInsertIndex + variant.type - 1)] = std::move(module);
      }
  }
  for (StripEffect* module : place)
    if (module) module->setSampleRate(kLowestRateHz);
  for (int id = 0; id < kParameters; ++id) CorvaneMonoEffect::setParameter(id, parameterDefault(id));
  for (std::size_t k = 0; k < kPlaces; ++k) position[k] = static_cast<std::int32_t>(k);
  for (Insert& insert : inserts) insert.index = 0;
  CorvaneMonoEffect::reset();
}

CorvaneMonoEffect::~CorvaneMonoEffect() = default;

// Parameters

void CorvaneMonoEffect::setParameter(int id, double value) {
  if (!(std::abs(value) <= 1e6)) return;  // not a number, or nothing that a decoder could hold
  if (id == kProcessId) {
    processOn = decodeSwitch(value);
    return;
  }
  if (const int meterPlace = placeOfMeter(id); meterPlace >= 0) {  // a command to the module
    if (StripEffect* module = place[static_cast<std::size_t>(meterPlace)]) module->setParameter(id, value);
    return;
  }
  const int at = placeOfParameter(id);
  if (at < 0) return;
  const auto k = static_cast<std::size_t>(at);
  const int offset = id - kRack[k].parameterBase;
  const std::int32_t bit = 1 << at;
  if (isInsert(at))
    inserts[static_cast<std::size_t>(at - kInsertX)].parameterCache[static_cast<std::size_t>(offset)] = value;

  switch (offset) {
    case kTypeOffset:
      if (isInsert(at)) {
        switchInsert(at, decodeInsertIndex(value));
      } else {
        place[k]->setParameter(id, value);
        applyMasks();
      }
      return;
    case kPositionOffset: setPosition(at, value); return;
    case kMuteOffset:
      muteMask = decodeSwitch(value) ? muteMask | bit : muteMask & ~bit;
      applyMasks();
      return;
    case kSoloOffset:
      soloMask = decodeSwitch(value) ? soloMask | bit : soloMask & ~bit;
      applyMasks();
      return;
    case kMonitorOffset: setMonitor(at, decodeSwitch(value) != 0); break;
    default: break;
  }
  if (place[k]) place[k]->setParameter(id, value);
}

void CorvaneMonoEffect::setPosition(int at, double value) {
  const int p = decodePosition(value);
  if (p < 0 || p > 8) return;
  position[static_cast<std::size_t>(at)] = p;
  chainRequest = (chainRequest + 1) % 256;
}

void CorvaneMonoEffect::setMonitor(int at, bool on) {
  const std::int32_t bit = 1 << at;
  monitorMask = on ? monitorMask | bit : monitorMask & ~bit;
  if (on) {
    monitoredModule = place[static_cast<std::size_t>(at)];
    monitorActive = true;
  } else if (monitorMask == 0) {
    monitorActive = false;
    monitoredModule = nullptr;
  }
}

void CorvaneMonoEffect::switchInsert(int at, int insertIndex) {
  Insert& insert = inserts[static_cast<std::size_t>(at - kInsertX)];
  StripEffect*& module = place[static_cast<std::size_t>(at)];
  if (insertIndex == insert.index) {
    if (module) module->resetMeters();
    return;
  }
  const int oldKind = kindOfInsertIndex(insert.index), kind = kindOfInsertIndex(insertIndex);
  const bool inPool = insertIndex >= 0 && insertIndex < static_cast<int>(insert.modulePool.size());
  insert.index = insertIndex;
  module = inPool ? insert.modulePool[static_cast<std::size_t>(insertIndex)].get() : nullptr;
  if (module) {
    const int base = kRack[static_cast<std::size_t>(at)].parameterBase;
    const auto replay = [&](int offset) {
      module->setParameter(base + offset, insert.parameterCache[static_cast<std::size_t>(offset)]);
    };
    module->setSampleRate(sampleRate);
    module->enable();
    if (kind == oldKind && kind != static_cast<int>(ModuleKind::special)) {
      for (int offset = kSideChainOffset; offset < 48; ++offset) replay(offset);
    } else {
      // Side Chain and Monitor reach modules and are no defaults: the module takes what the bank holds.
      module->setDefaults();
      replay(kSideChainOffset);
      replay(kMonitorOffset);
    }
    module->reset();
  }
  chainRequest = (chainRequest + 1) % 256;
  insert.hasGainReduction =
      kind == static_cast<int>(ModuleKind::compressor) || kind == static_cast<int>(ModuleKind::limiter);
  applyMasks();
}

void CorvaneMonoEffect::applyMasks() {
  for (std::size_t k = 0; k < kPlaces; ++k) {
    if (!place[k]) continue;
    const std::int32_t bit = 1 << k;
    const bool on = soloMask != 0 ? (soloMask & bit) != 0 : (muteMask & bit) == 0;
    if (on)
      place[k]->enable();
    else
      place[k]->disable();
  }
}

bool CorvaneMonoEffect::setSampleRate(double hz) {
  const double clamped = clampedRate(hz);
  if (clamped != sampleRate) {
    sampleRate = clamped;
    for (StripEffect* module : place)
      if (module) module->setSampleRate(sampleRate);
  }
  return clamped == hz;
}

void CorvaneMonoEffect::reset() {
  totalGainReduction = compressorReduction = limiterReduction = 0.0;
  for (Insert& insert : inserts) insert.reduction = 0.0;
  for (StripEffect* module : place)
    if (module) module->reset();
  for (auto& channel : audio) std::ranges::fill(channel, 0.0);
  rebuildChain();
  fadeGain = 1.0;
  fadeIn = fadeOut = false;
  lastProcessOn = processOn;
  fadeStep = (48000.0 / sampleRate) * 0.005;
}

void CorvaneMonoEffect::rebuildChain() {
  chain.fill(nullptr);
  chainBuilt = chainRequest;
  for (std::size_t k = 0; k < kPlaces; ++k) chain[static_cast<std::size_t>(position[k])] = place[k];
}

// Meters

double CorvaneMonoEffect::reductionOf(int at, int meterId) {
  double value = 0.0;
  if (StripEffect* module = place[static_cast<std::size_t>(at)]) module->getMeter(meterId, &value);
  return unitRange(value);
}

bool CorvaneMonoEffect::getMeter(int id, double* value) {
  if (id == kTotalReductionMeterId) {
    *value = unitRange(totalGainReduction);
    return true;
  }
  const int at = placeOfMeter(id);
  if (at < 0 || id == kInsertYMeterUnused) return false;
  *value = 0.0;
  if (StripEffect* module = place[static_cast<std::size_t>(at)]) module->getMeter(id, value);
  *value = unitRange(*value);
  return true;
}

void CorvaneMonoEffect::updateReductions() {
  compressorReduction = reductionOf(3, kCompressorReductionMeter);
  limiterReduction = reductionOf(5, kLimiterReductionMeter);
  double gain = (1.0 - limiterReduction) * (1.0 - compressorReduction);
  for (const int at : {kInsertX, kInsertY}) {
    Insert& insert = inserts[static_cast<std::size_t>(at - kInsertX)];
    const int meterId = kRack[static_cast<std::size_t>(at)].meterBase + kInsertReductionOffset;
    insert.reduction = insert.hasGainReduction ? reductionOf(at, meterId) : 0.0;
    gain *= 1.0 - insert.reduction;
  }
  totalGainReduction = 1.0 - gain;
}

void CorvaneMonoEffect::resetMetersOfPlaces() {
  for (StripEffect* module : place)
    if (module) module->resetMeters();
}

// Blocks

void CorvaneMonoEffect::processFloat(const float* const* inputs, float* const* outputs, int frames) {
  processNormal(inputs, outputs, frames);
}
void CorvaneMonoEffect::processDouble(const double* const* inputs, double* const* outputs, int frames) {
  processNormal(inputs, outputs, frames);
}
void CorvaneMonoEffect::processBypassedFloat(const float* const* inputs, float* const* outputs, int frames) {
  processBypassed(inputs, outputs, frames);
}
void CorvaneMonoEffect::processBypassedDouble(const double* const* inputs, double* const* outputs,
                                              int frames) {
  processBypassed(inputs, outputs, frames);
}

template <typename Sample>
void CorvaneMonoEffect::processNormal(const Sample* const* inputs, Sample* const* outputs, int frames) {
  if (wasProcessing == 0) {  // back from a bypass
    lastProcessOn = processOn;
    fadeIn = true, fadeOut = false;
    fadeGain = 0.0;
  }
  wasProcessing = 1;
  if (processOn != lastProcessOn) {
    fadeIn = processOn != 0, fadeOut = !fadeIn;
    fadeGain = fadeIn ? 0.0 : 1.0;
    lastProcessOn = processOn;
  }
  if (processOn == 0 && !fadeOut)
    plainPath(inputs, outputs, frames);
  else
    fullPath(inputs, outputs, frames);
}

template <typename Sample>
void CorvaneMonoEffect::processBypassed(const Sample* const* inputs, Sample* const* outputs, int frames) {
  if (wasProcessing == 1 && processOn != 0) {
    fadeIn = false, fadeOut = true;
    fadeGain = 1.0;
  }
  wasProcessing = 0;
  if (fadeOut)
    fullPath(inputs, outputs, frames);
  else
    plainPath(inputs, outputs, frames);
}

template <typename Sample>
void CorvaneMonoEffect::plainPath(const Sample* const* inputs, Sample* const* outputs, int frames) {
  if (inputs && outputs && inputs[0] && outputs[0]) {
    // sub-block by sub-block, so that every sample is read before any output that aliases it is written
    for (int at = 0; at < frames; at += kBlockFrames) {
      const int n = std::min(kBlockFrames, frames - at);
      Sample copy[kBlockFrames];
      std::copy_n(inputs[0] + at, n, copy);
      for (Sample* output : {outputs[0], outputs[1]})
        if (output) std::copy_n(copy, n, output + at);
    }
  }
  resetMetersOfPlaces();
}

template <typename Sample>
void CorvaneMonoEffect::fullPath(const Sample* const* inputs, Sample* const* outputs, int frames) {
  if (!inputs || !outputs || !inputs[0] || !outputs[0]) return;
  const auto channels = channelsOf(inputs);
  for (int at = 0; at < frames; at += kBlockFrames) {
    const int n = std::min(kBlockFrames, frames - at);
    for (std::size_t c = 0; c < channels.size(); ++c) {
      const auto twin = static_cast<std::size_t>(std::ranges::find(channels, channels[c]) - channels.begin());
      if (twin < c)
        std::copy_n(audio[twin], n, audio[c]);
      else
        convertIn(channels[c] + at, audio[c], n);
      inputTable[c] = outputTable[c] = audio[c];
    }
    if (fadeIn || fadeOut)
      for (int c = 0; c < 2; ++c) std::copy_n(audio[c], n, dry[c]);
    if (chainRequest != chainBuilt) rebuildChain();
    runChain(n);
    crossfade(n);
    for (Sample* output : {outputs[0], outputs[1]})
      if (output) convertOut(audio[0], output + at, n);
  }
  updateReductions();
  if (fadeOut) {
    totalGainReduction = 0.0;
    if (fadeGain == 0.0) fadeOut = false;
  }
  if (fadeIn && fadeGain == 1.0) fadeIn = false;
}

void CorvaneMonoEffect::runChain(int frames) {
  for (StripEffect* module : chain) {
    if (!module) continue;
    module->processBlockMono(inputTable.data(), outputTable.data(), frames);
    if (monitorActive && module == monitoredModule) break;
  }
  StripEffect::settleMeters(chain);
}

void CorvaneMonoEffect::crossfade(int frames) {
  if (!fadeIn && !fadeOut) return;
  const double step = fadeOut ? -fadeStep : fadeStep;
  for (int i = 0; i < frames; ++i) {
    fadeGain = std::clamp(fadeGain + step, 0.0, 1.0);
    for (int c = 0; c < 2; ++c) audio[c][i] = fadeGain * audio[c][i] + (1.0 - fadeGain) * dry[c][i];
  }
}

}  // namespace corvane
