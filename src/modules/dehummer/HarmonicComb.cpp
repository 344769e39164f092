#include "modules/dehummer/HarmonicComb.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/StripEffect.h"
#include "core/dsp/SectionSeries.h"

namespace corvane {

namespace {

constexpr std::array kCurve{1.0,   0.095, 0.085, 0.073, 0.062, 0.051, 0.04,  0.03,  0.023,
                            0.019, 0.016, 0.014, 0.012, 0.01,  0.009, 0.007, 0.005, 0.003};
static_assert(kCurve.size() == kHarmonics);

// The others stand by: as the harmonics crowd, every second pair tells enough.
constexpr std::array kHeard{1, 2, 3, 4, 5, 6, 9, 10, 13, 14, 17, 18};

/// Sharper with the harmonic, though less than in proportion: mains wander by a share of their frequency.
double notchQ(int harmonic) { return 30.0 * std::pow(harmonic, 0.4); }
double listenQ(int harmonic) { return 40.0 * std::pow(harmonic, 0.35); }

std::array<GlideFilter, kHarmonics> makeBank(SectionType type, double (*qOf)(int)) {
  const auto section = [&](int k) {
    GlideFilter made(kLowestRateHz, type, (k + 1) * HumSetting{}.fundamentalHz, qOf(k + 1), 0.0);
    made.active = true;
    return made;
  };
  return [&]<int... kIndex>(std::integer_sequence<int, kIndex...>) { return std::array{section(kIndex)...}; }
  (std::make_integer_sequence<int, kHarmonics>{});
}

}  // namespace

double harmonicWeight(int harmonic, double darkness) {
  if (harmonic == 1) return 1.0;
  return std::pow(10.0, 1.0 - darkness) * kCurve[static_cast<std::size_t>(harmonic - 1)];
}

double notchGainDb(int harmonic, const HumSetting& setting) {
  return setting.attenuationDb * parityWeight(harmonic, setting.balance) *
         harmonicWeight(harmonic, setting.darkness);
}

HarmonicComb::HarmonicComb()
    : notch(makeBank(SectionType::peaking, notchQ)), listen(makeBank(SectionType::bandPass, listenQ)) {
  forEachSection([](GlideFilter& section) { section.retarget(); });
}

void HarmonicComb::reset() {
  forEachSection([](GlideFilter& section) {
    section.clearHistory();
    section.snapToTarget();
  });
}

void HarmonicComb::setSampleRate(double hz) {
  forEachSection([hz](GlideFilter& section) {
    section.sampleRate = hz;
    section.retarget();
  });
}

void HarmonicComb::updateHarmonicFrequencies(const HumSetting& setting) {
  for (int h = 1; h <= kHarmonics; ++h) {
    const auto k = static_cast<std::size_t>(h - 1);
    notch[k].setFrequency(h * setting.fundamentalHz);
    listen[k].setFrequency(h * setting.fundamentalHz);
  }
}

void HarmonicComb::updateHarmonicGains(const HumSetting& setting) {
  for (int h = 1; h <= kHarmonics; ++h)
    notch[static_cast<std::size_t>(h - 1)].setGainDb(notchGainDb(h, setting));
}

void HarmonicComb::cut(double* samples, int frames) { processSeries(notch, samples, frames); }

void HarmonicComb::hear(const double* input, double* output, int frames, const HumSetting& setting) {
  double band[kBlockFrames];
  std::fill_n(output, frames, 0.0);
  for (const int h : kHeard) {
    const double parity = parityWeight(h, setting.balance), weight = harmonicWeight(h, setting.darkness);
    std::copy_n(input, frames, band);
    listen[static_cast<std::size_t>(h - 1)].processBuffer(band, frames);
    for (int i = 0; i < frames; ++i) output[i] += band[i] * parity * weight;
  }
  for (int i = 0; i < frames; ++i) output[i] = 2.0 * output[i];
}

}  // namespace corvane
