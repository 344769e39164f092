#include "core/dsp/SectionSeries.h"

#include <algorithm>

#include "core/dsp/SectionPair.h"

namespace corvane {

namespace {

constexpr int kPairs =
    3;  // six sections: their state fills the registers, and the pipeline has little to fill
constexpr int kGroup = 2 * kPairs;
constexpr int kLastLag = kGroup - 1;

/// One step of the pipeline: every section takes what the one before it put out a step ago.
template <bool kEdge>
void stepGroup(SectionPair* pairs, double sample, int t, int count) {
  Pair inputs[kPairs];
  inputs[0] = Pair{sample, pairs[0].y1[0]};
  for (int k = 1; k < kPairs; ++k) inputs[k] = Pair{pairs[k - 1].y1[1], pairs[k].y1[0]};
  for (int k = 0; k < kPairs; ++k) {
    if constexpr (kEdge)
      pairs[k].stepWhere(lanesRunning(t, 2 * k, 2 * k + 1, count), inputs[k]);
    else
      pairs[k].step(inputs[k]);
  }
}

/// Six standing sections; false, and nothing changed, if a not-a-number came up.
bool runGroup(GlideFilter* s, double* samples, int count) {
  const auto pairOf = [s](int k) {
    return SectionPair{s[2 * k].current, s[2 * k].history, s[2 * k + 1].current, s[2 * k + 1].history};
  };
  SectionPair pairs[kPairs]{pairOf(0), pairOf(1), pairOf(2)};
  double out[kBlockFrames];
  int t = 0;
  for (; t < kLastLag; ++t) {
    stepGroup<true>(pairs, t < count ? samples[t] : 0.0, t, count);
  }
  for (; t < count; ++t) {
    stepGroup<false>(pairs, samples[t], t, count);
    out[t - kLastLag] = pairs[kPairs - 1].y1[1];
  }
  for (; t < count + kLastLag; ++t) {
    stepGroup<true>(pairs, 0.0, t, count);
    out[t - kLastLag] = pairs[kPairs - 1].y1[1];
  }
  for (const SectionPair& pair : pairs)
    if (pair.isPoisoned()) return false;
  for (int k = 0; k < kGroup; ++k) s[k].history = pairs[k / 2].history(k % 2);
  std::copy_n(out, count, samples);
  return true;
}

bool stands(const GlideFilter& section) {
  return section.active && section.type != SectionType::none && section.glide.remaining <= 0;
}

}  // namespace

void processSeries(std::span<GlideFilter> sections, double* samples, int count) {
  if (count < 1) return;
  while (!sections.empty()) {
    const auto group = sections.first(std::min<std::size_t>(sections.size(), kGroup));
    const bool standing = group.size() == kGroup && std::ranges::all_of(group, stands);
    if (standing)
      for (GlideFilter& section : group) section.current = section.target;
    if (!standing || !runGroup(group.data(), samples, count))
      for (GlideFilter& section : group) section.processBuffer(samples, count);
    sections = sections.subspan(group.size());
  }
}

}  // namespace corvane
