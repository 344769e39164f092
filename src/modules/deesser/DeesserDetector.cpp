#include "modules/deesser/DeesserDetector.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "core/StripEffect.h"
#include "core/dsp/SectionPair.h"

namespace corvane {

namespace {

constexpr double kCrossoverQ = 0.7;
constexpr double kDetectPeakDb = -6.0;  // narrows the flanks of the detection band, not its centre

constexpr int kPeakLag = 4;  // samples by which the last section of the pipeline follows the first

bool stands(const GlideFilter& section) { return section.glide.remaining <= 0; }

}  // namespace

DeesserShares designDeesserShares(double sibilanceHz, double sampleRateHz) {
  const double f = sibilanceHz;
  const auto share = [&](double cornerHz) {
    return 1.0 - std::exp(-2.0 * std::numbers::pi * cornerHz / sampleRateHz);
  };
  return {.fast = share(f / 8.0 + 2000.0),
          .slow = share(0.001 * f + 25.0),
          .mid = share(f / 16.0 + 500.0),
          .verySlow = share(0.0002 * f + 3.5),
          .release = share(0.002 * f + 10.0)};
}

double crossoverHz(double sibilanceHz, double sibilanceQ) {
  return (sibilanceQ * 0.05 + 1.0) * sibilanceHz * 0.25;
}

DeesserFilters::DeesserFilters()
    : detectBand(kLowestRateHz, SectionType::bandPass, 6000.0, 6.0, 0.0),
      detectPeak(kLowestRateHz, SectionType::peaking, 6000.0, 6.0, kDetectPeakDb),
      splitHigh1(kLowestRateHz, SectionType::highPass, 1950.0, kCrossoverQ, 0.0),
      splitHigh2(kLowestRateHz, SectionType::highPass, 1950.0, kCrossoverQ, 0.0),
      splitLow1(kLowestRateHz, SectionType::lowPass, 1950.0, kCrossoverQ, 0.0),
      splitLow2(kLowestRateHz, SectionType::lowPass, 1950.0, kCrossoverQ, 0.0) {
  forEachSection([](GlideFilter& s) { s.active = true; });
}

void DeesserFilters::reset() {
  forEachSection([](GlideFilter& s) {
    s.clearHistory();
    s.snapToTarget();
  });
}

void DeesserFilters::setSampleRate(double hz) {
  forEachSection([hz](GlideFilter& s) {
    s.sampleRate = hz;
    s.retarget();
  });
}

void DeesserFilters::setBand(double sibilanceHz, double sibilanceQ) {
  bandMakeup = std::sqrt(sibilanceQ);
  for (GlideFilter* section : {&detectBand, &detectPeak}) {
    section->setFrequency(sibilanceHz);
    section->setQ(sibilanceQ);
  }
  for (GlideFilter* section : {&splitHigh1, &splitHigh2, &splitLow1, &splitLow2})
    section->setFrequency(crossoverHz(sibilanceHz, sibilanceQ));
}

void DeesserFilters::filter(DeesserBlock& block, int frames) {
  if (frames < 1) return;
  if (!filterStanding(block, frames)) {
    std::copy_n(block.input, frames, block.high);
    splitHigh1.processBuffer(block.high, frames);
    splitHigh2.processBuffer(block.high, frames);
    std::copy_n(block.input, frames, block.low);
    splitLow1.processBuffer(block.low, frames);
    splitLow2.processBuffer(block.low, frames);
    std::copy_n(block.high, frames, block.sibilance);
    detectBand.processBuffer(block.sibilance, frames);
    detectPeak.processBuffer(block.sibilance, frames);
  }
  for (int i = 0; i < frames; ++i) block.sibilance[i] = bandMakeup * block.sibilance[i];
}

/// The six sections as one pipeline, so that their recursions overlap: both halves of the crossover side by
/// side, then the two detection sections. False, and nothing changed, while a section glides, for a block too
/// short to fill it, or when a not-a-number came up.
bool DeesserFilters::filterStanding(DeesserBlock& block, int frames) {
  bool standing = frames >= kPeakLag;
  forEachSection([&](GlideFilter& s) { standing = standing && stands(s); });
  if (!standing) return false;
  forEachSection([](GlideFilter& s) { s.current = s.target; });
  const auto pairOf = [](const GlideFilter& a, const GlideFilter& b) {
    return SectionPair{a.current, a.history, b.current, b.history};
  };
  SectionPair first = pairOf(splitHigh1, splitLow1), second = pairOf(splitHigh2, splitLow2);
  SectionPair detect = pairOf(detectBand, detectPeak);

  // Step t takes sample t into the crossover's first sections; its second ones follow a sample behind, the
  // detector's two and four: were it three, both would wait for the first one's last output.
  double pastBand = 0.0;
  const auto stepFirst = [&](int t) { first.step(both(block.input[t])); };
  const auto stepSecond = [&](Pair x, int n) {
    second.step(x);
    block.high[n] = second.y1[0], block.low[n] = second.y1[1];
  };
  const auto toDetect = [&] {
    const Pair x{second.y1[0], pastBand};
    pastBand = detect.y1[0];
    return x;
  };
  Pair x{}, d{};
  stepFirst(0);
  x = first.y1, stepFirst(1), stepSecond(x, 0);
  x = first.y1, d = toDetect(), stepFirst(2), stepSecond(x, 1), detect.stepLane<0>(d);
  x = first.y1, d = toDetect(), stepFirst(3), stepSecond(x, 2), detect.stepLane<0>(d);
  for (int t = kPeakLag; t < frames; ++t) {
    x = first.y1, d = toDetect();
    stepFirst(t), stepSecond(x, t - 1), detect.step(d);
    block.sibilance[t - kPeakLag] = detect.y1[1];
  }
  double* last = block.sibilance + frames - kPeakLag;
  d = toDetect(), stepSecond(first.y1, frames - 1), detect.step(d), last[0] = detect.y1[1];
  detect.step(toDetect()), last[1] = detect.y1[1];
  detect.stepLane<1>(toDetect()), last[2] = detect.y1[1];
  detect.stepLane<1>(toDetect()), last[3] = detect.y1[1];

  if (first.isPoisoned() || second.isPoisoned() || detect.isPoisoned()) return false;
  splitHigh1.history = first.history(0), splitLow1.history = first.history(1);
  splitHigh2.history = second.history(0), splitLow2.history = second.history(1);
  detectBand.history = detect.history(0), detectPeak.history = detect.history(1);
  return true;
}

}  // namespace corvane
