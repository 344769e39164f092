#include "core/dsp/SectionSeries.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/dsp/FastMath.h"
#include "core/dsp/RunTogether.h"
#include "core/dsp/SectionPair.h"

namespace corvane {

namespace {

// Six sections, two to a register: their state fills the registers. A section follows the one before it by
// two samples within a register and by one across. Within, a step later would make the whole register wait
// for its own last output on the long way through b0; across, nothing waits in a circle.
constexpr int kGroup = 6;
constexpr std::array kLag{0, 2, 3, 5, 6, 8};
constexpr int kLastLag = kLag.back();

/// Bit k: section k runs. `t` steps after the start, `left` steps before the end of the first section's work,
/// negative behind it.
constexpr unsigned running(int t, int left) {
  unsigned bits = 0;
  for (unsigned k = 0; k < kGroup; ++k)
    if (kLag[k] <= t && kLag[k] + left >= 0) bits |= 1u << k;
  return bits;
}
constexpr unsigned kAllRunning = running(kLastLag, 0);

/// The bits of the two sections from `first` on.
constexpr unsigned lanes(unsigned sections, int first) { return (sections >> first) & 3u; }

struct Group {
  SectionPair a, b, c;
  double pastA = 0.0, pastB = 0.0, pastC = 0.0;  ///< outputs of the lower lanes, a step older than y1

  template <unsigned kRunning>
  [[gnu::always_inline]] void step(double sample) {
    const Pair toA{sample, pastA}, toB{a.y1[1], pastB}, toC{b.y1[1], pastC};
    pastA = a.y1[0], pastB = b.y1[0], pastC = c.y1[0];
    stepPair<lanes(kRunning, 0)>(a, toA);
    stepPair<lanes(kRunning, 2)>(b, toB);
    stepPair<lanes(kRunning, 4)>(c, toC);
  }
  template <unsigned kLanes>
  [[gnu::always_inline]] static void stepPair(SectionPair& pair, Pair x) {
    if constexpr (kLanes == 3u)
      pair.step(x);
    else if constexpr (kLanes != 0u)
      pair.stepLane<kLanes == 1u ? 0 : 1>(x);
  }
  double output() const { return c.y1[1]; }
};

/// Six standing sections over at least kLastLag samples; false, and nothing changed, if a not-a-number came
/// up.
CORVANE_WIDE_LOOPS bool runGroup(GlideFilter* s, double* samples, int count) {
  const auto pairOf = [s](int k) {
    return SectionPair{s[k].current, s[k].history, s[k + 1].current, s[k + 1].history};
  };
  Group group{pairOf(0), pairOf(2), pairOf(4)};
  double out[kBlockFrames];
  [&]<int... kStep>(std::integer_sequence<int, kStep...>) __attribute__((always_inline)) {
    (group.step<running(kStep, 0)>(samples[kStep]), ...);  // the pipeline fills
    for (int t = kLastLag; t < count; ++t) {
      group.step<kAllRunning>(samples[t]);
      out[t - kLastLag] = group.output();
    }
    double* last = out + count - kLastLag;
    ((group.step<running(kLastLag, -1 - kStep)>(0.0), last[kStep] = group.output()), ...);  // and runs empty
  }
  (std::make_integer_sequence<int, kLastLag>{});
  if (group.a.isPoisoned() || group.b.isPoisoned() || group.c.isPoisoned()) return false;
  const SectionPair* const pairs[] = {&group.a, &group.b, &group.c};
  for (int k = 0; k < kGroup; ++k) s[k].history = pairs[k / 2]->history(k % 2);
  std::copy_n(out, count, samples);
  return true;
}

/// Fewer than six, as long as they are two or four.
template <std::size_t... k>
bool runFew(GlideFilter* s, double* samples, int count, std::index_sequence<k...>) {
  SecondOrder sections[] = {SecondOrder(s[k].current, s[k].history)...};
  if (!runTogether(samples, count, sections[k]...)) return false;
  (sections[k].store(s[k].history), ...);
  return true;
}

bool stands(const GlideFilter& section) {
  return section.active && section.type != SectionType::none && section.glide.remaining <= 0;
}

std::size_t groupOf(std::size_t sections, int count) {
  if (sections >= kGroup && count >= kLastLag) return kGroup;
  return sections >= 4 ? 4 : sections >= 2 ? 2 : 1;
}

bool runStanding(std::span<GlideFilter> group, double* samples, int count) {
  if (group.size() == 1 || !std::ranges::all_of(group, stands)) return false;
  for (GlideFilter& section : group) section.current = section.target;
  if (group.size() == kGroup) return runGroup(group.data(), samples, count);
  return group.size() == 4 ? runFew(group.data(), samples, count, std::make_index_sequence<4>{})
                           : runFew(group.data(), samples, count, std::make_index_sequence<2>{});
}

}  // namespace

void processSeries(std::span<GlideFilter> sections, double* samples, int count) {
  if (count < 1) return;
  while (!sections.empty()) {
    const auto group = sections.first(groupOf(sections.size(), count));
    if (!runStanding(group, samples, count))
      for (GlideFilter& section : group) section.processBuffer(samples, count);
    sections = sections.subspan(group.size());
  }
}

void processSideBySide(GlideFilter& a, double* x, GlideFilter& b, double* y, int count) {
  if (count < 1) return;
  if (stands(a) && stands(b)) {
    a.current = a.target, b.current = b.target;
    SectionPair pair{a.current, a.history, b.current, b.history};
    double outX[kBlockFrames], outY[kBlockFrames];
    for (int i = 0; i < count; ++i) {
      pair.step(Pair{x[i], y[i]});
      outX[i] = pair.y1[0], outY[i] = pair.y1[1];
    }
    if (!pair.isPoisoned()) {
      a.history = pair.history(0), b.history = pair.history(1);
      std::copy_n(outX, count, x);
      std::copy_n(outY, count, y);
      return;
    }
  }
  a.processBuffer(x, count);
  b.processBuffer(y, count);
}

}  // namespace corvane
