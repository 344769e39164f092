#include "modules/filters/StripEffectFilters.h"

#include <algorithm>
#include <cmath>

#include "core/Rack.h"
#include "modules/filters/FiltersFamily.h"
#include "modules/filters/FiltersTable.h"

namespace corvane {

namespace {

constexpr double kHighestFilterRateHz = 192000.0;

// Corners of the sections as multiples of the frequency on the dial.
constexpr double kHighPassA = 0.7, kHighPassB = 0.5, kHighPassC = 0.4;
constexpr double kLowPassB = 1.2, kLowPassAOverB = 1.2;
constexpr double kTopOfBand = 0.499;  // of the rate

/// Q of the first pairs: 0.52 at the end of the audible band, 0.7 for a corner well inside it.
double pairQ(double hz) { return 0.091 * std::log10(hz) + 0.4; }
constexpr double kLowPassMirror =
    600000.0;  // Hz squared: mirrors 30 kHz to 20 Hz, so that one law serves both

/// By the steps of "Flt:Parametric Type".
constexpr std::array kParametricTypes{SectionType::lowShelf, SectionType::bandPass, SectionType::peaking,
                                      SectionType::notch, SectionType::highShelf};

enum HighPassSlope { kHigh12, kHigh18, kHigh24 };
enum LowPassSlope { kLow6, kLow12, kLow18 };

}  // namespace

StripEffectFilters::Channel::Channel()
    : highPassA{kLowestRateHz, SectionType::highPass, 120.0, 0.5, 0.0},
      highPassB{kLowestRateHz, SectionType::highPass, 83.33333333333334, 0.5, 0.0},
      highPassC{kLowestRateHz, SectionType::onePoleHigh, 83.33333333333334, 0.5, 0.0},
      parametric{kLowestRateHz, SectionType::peaking, 1500.0, 1.0, 0.0},
      lowPassA{kLowestRateHz, SectionType::onePoleLow, 12000.0, 0.5, 0.0},
      lowPassB{kLowestRateHz, SectionType::lowPass, 8333.333333333334, 0.5, 0.0} {}

StripEffectFilters::StripEffectFilters(std::int32_t parameters, std::int32_t meters, std::int32_t tags)
    : StripEffect(parameters, meters, tags) {}

void StripEffectFilters::reset() {
  initMeters();
  for (Channel& channel : channels)
    for (FilterSection* section : channel.inOrder()) section->clearHistory(), section->snapToTarget();
}

void StripEffectFilters::setSampleRate(double hz) {
  sampleRate = clampedRate(hz, kHighestFilterRateHz);
  updateMeterCoefficients();
  for (Channel& channel : channels)
    for (FilterSection* section : channel.inOrder()) section->setSampleRate(sampleRate);
}

void StripEffectFilters::setParameter(int id, double value) {
  const int offset = id - parameterBase;
  const auto physical = [&] { return physicalValue(kFiltersFamily, offset, value); };
  const auto step = [&] { return static_cast<std::int32_t>(physical()); };
  switch (offset) {
    case kTypeOffset: type = decodeVariant(value); break;
    case kMonitorOffset: monitor = decodeSwitch(value); break;
    case filters::kLpfIn: lpfOn = step(), switchSections(); break;
    case filters::kLpfFreq: setLowPassFrequency(physical()); break;
    case filters::kLpfSlope: lpfSlope = step(), switchSections(); break;
    case filters::kParametricIn: parametricOn = step(), switchSections(); break;
    case filters::kParametricGain:
      for (Channel& channel : channels) channel.parametric.setGainDb(physical());
      break;
    case filters::kParametricFreq:
      for (Channel& channel : channels) channel.parametric.setFrequency(physical());
      break;
    case filters::kParametricQ:
      for (Channel& channel : channels) channel.parametric.setQ(physical());
      break;
    case filters::kParametricType:
      parametricType = std::clamp(step(), 0, static_cast<std::int32_t>(kParametricTypes.size()) - 1);
      for (Channel& channel : channels)
        channel.parametric.setType(kParametricTypes[static_cast<std::size_t>(parametricType)]);
      break;
    case filters::kHpfIn: hpfOn = step(), switchSections(); break;
    case filters::kHpfFreq: setHighPassFrequency(physical()); break;
    case filters::kHpfSlope: hpfSlope = step(), switchSections(); break;
    default: break;
  }
}

void StripEffectFilters::setDefaults() { sendDefaults(kFiltersFamily, *this, parameterBase); }

void StripEffectFilters::setHighPassFrequency(double hz) {
  const double f = std::clamp(hz, 20.0, 2000.0);
  for (Channel& channel : channels) {
    channel.highPassA.setFrequency(kHighPassA * f);
    channel.highPassA.setQ(pairQ(f));
    channel.highPassB.setFrequency(kHighPassB * f);
    channel.highPassC.setFrequency(kHighPassC * f);
  }
}

void StripEffectFilters::setLowPassFrequency(double hz) {
  const double f = std::clamp(hz, 300.0, 30000.0);
  const double g = kLowPassB * f;
  for (Channel& channel : channels) {
    channel.lowPassA.setFrequency(kLowPassAOverB * std::min(g, kTopOfBand * sampleRate));
    channel.lowPassB.setFrequency(g);
    channel.lowPassB.setQ(pairQ(kLowPassMirror / f));
  }
}

void StripEffectFilters::switchSections() {
  const bool high = hpfOn != 0, low = lpfOn != 0;
  for (Channel& channel : channels) {
    channel.highPassA.setActive(high);
    channel.highPassB.setActive(high && hpfSlope == kHigh24);
    channel.highPassC.setActive(high && hpfSlope == kHigh18);
    channel.parametric.setActive(parametricOn != 0);
    channel.lowPassA.setActive(low && lpfSlope != kLow12);
    channel.lowPassB.setActive(low && lpfSlope != kLow6);
  }
}

void StripEffectFilters::runChannel(double* samples, int frames, Channel& channel) const {
  if (type == kBasic)
    FilterSection::processSeries(channel.withoutBand(), samples, frames);
  else
    FilterSection::processSeries(channel.inOrder(), samples, frames);
}

void StripEffectFilters::processBlockMono(double** in, double** out, int frames) {
  if (passes() || type == kKey) return processBlock(in, out, frames);
  double y[kBlockFrames];
  const double* x = in[2 * inputPair];
  std::copy_n(x, frames, y);
  runChannel(y, frames, channels[0]);
  followMono(x, y, frames);
  writeMono(y, out, frames);
}

void StripEffectFilters::processBlock(double** in, double** out, int frames) {
  if (passes()) return passThroughBlock(in, out, frames);
  constexpr int kKeyPair = 1;
  double* const* source = in + 2 * (type == kKey ? kKeyPair : inputPair);
  double filtered[2][kBlockFrames];
  const double* results[2] = {filtered[0], filtered[1]};
  for (std::size_t k = 0; k < 2; ++k) {
    std::copy_n(source[k], frames, filtered[k]);
    runChannel(filtered[k], frames, channels[k]);
  }
  followPair(source, results, frames);
  const bool toKey = type == kKey, toMain = toKey ? monitor != 0 : (outputPairs & 1) != 0;
  for (int k = 0; k < 2; ++k) {
    if (toKey) std::copy_n(filtered[k], frames, out[2 * kKeyPair + k]);
    if (toMain) std::copy_n(filtered[k], frames, out[k]);
  }
}

}  // namespace corvane
