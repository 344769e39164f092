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
/// side, then the two detection sections, each a sample behind the one before. False, and nothing changed,
/// while a section glides or when a not-a-number came up.
bool DeesserFilters::filterStanding(DeesserBlock& block, int frames) {
  bool standing = true;
  forEachSection([&](GlideFilter& s) { standing = standing && stands(s); });
  if (!standing) return false;
  forEachSection([](GlideFilter& s) { s.current = s.target; });
  const auto pairOf = [](const GlideFilter& a, const GlideFilter& b) {
    return SectionPair{a.current, a.history, b.current, b.history};
  };
  SectionPair first = pairOf(splitHigh1, splitLow1), second = pairOf(splitHigh2, splitLow2);
  SectionPair detect = pairOf(detectBand, detectPeak);

  constexpr int kSplitLag = 1, kBandLag = 2, kPeakLag = 3;
  const auto step = [&](int t, double x, auto run) {
    const Pair toSecond = first.y1, toDetect{second.y1[0], detect.y1[0]};
    run(first, 0, 0, both(x));
    run(second, kSplitLag, kSplitLag, toSecond);
    run(detect, kBandLag, kPeakLag, toDetect);
    if (t >= kSplitLag && t - kSplitLag < frames) {
      block.high[t - kSplitLag] = second.y1[0];
      block.low[t - kSplitLag] = second.y1[1];
    }
    if (t >= kPeakLag) block.sibilance[t - kPeakLag] = detect.y1[1];
  };
  int t = 0;
  const auto atEdge = [&](SectionPair& pair, int lag0, int lag1, Pair x) {
    pair.stepWhere(lanesRunning(t, lag0, lag1, frames), x);
  };
  const auto inside = [](SectionPair& pair, int, int, Pair x) { pair.step(x); };
  for (; t < kPeakLag; ++t) step(t, t < frames ? block.input[t] : 0.0, atEdge);
  for (; t < frames; ++t) step(t, block.input[t], inside);
  for (; t < frames + kPeakLag; ++t) step(t, 0.0, atEdge);

  if (first.isPoisoned() || second.isPoisoned() || detect.isPoisoned()) return false;
  splitHigh1.history = first.history(0), splitLow1.history = first.history(1);
  splitHigh2.history = second.history(0), splitLow2.history = second.history(1);
  detectBand.history = detect.history(0), detectPeak.history = detect.history(1);
  return true;
}

}  // namespace corvane
