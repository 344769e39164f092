#include "modules/filters/FilterSection.h"

#include <algorithm>
#include <cmath>

#include "core/dsp/RunTogether.h"

namespace corvane {

namespace {

constexpr double kGlideMs = 60.0;                                    // at the rate of construction
constexpr double kOnePoleGlide = 0.001, kOnePoleGlideFlush = 1e-18;  // share of the way per sample
constexpr double kTurn = 6.283;

/// The one-poles of `processSample`, for `runTogether`.
template <SectionType kind>
struct OnePole {
  double a0, lp;

  OnePole(const BiquadCoefficients& set, const BiquadHistory& h) : a0(set.a0), lp(h.y0) {}
  template <bool kFlush>
  double step(double x0) {
    const double moved = lp + (x0 - lp) * a0;
    lp = kFlush ? flushed(moved, kFilterFlush) : moved;
    return kind == SectionType::onePoleLow ? lp : x0 - lp;
  }
  double state() const { return lp; }
  void store(BiquadHistory& h) const { h.y0 = lp; }
};

}  // namespace

FilterSection::FilterSection(double sampleRateHz, SectionType sectionType, double frequencyHz,
                             double sectionQ, double sectionGainDb)
    : type(sectionType),
      frequency(frequencyHz),
      q(sectionQ),
      gainDb(sectionGainDb),
      sampleRate(sampleRateHz),
      glide(static_cast<std::int32_t>(sampleRateHz * kGlideMs / 1000.0)) {
  retarget();
  snapToTarget();
}

void FilterSection::setActive(bool on) {
  if (on == active) return;
  active = on;
  clearHistory();
  snapToTarget();
}

void FilterSection::snapToTarget() {
  glide.snap();
  current = target;
}

void FilterSection::setFrequency(double hz) {
  frequency = std::clamp(hz, 0.001, sampleRate);
  retarget();
}

void FilterSection::setQ(double newQ) {
  q = std::clamp(newQ, 0.0001, 1000.0);
  retarget();
}

void FilterSection::setGainDb(double db) {
  gainDb = std::clamp(db, -1000.0, 1000.0);
  retarget();
}

void FilterSection::setType(SectionType newType) {
  type = newType;
  retarget();
}

void FilterSection::setSampleRate(double hz) {
  sampleRate = hz;
  retarget();
}

void FilterSection::retarget() {
  if (isOnePole()) {
    target = {};
    target.a0 = 1.0 - std::exp(frequency * -kTurn / sampleRate);
  } else {
    target = designSection(type, frequency, q, gainDb, sampleRate);
  }
  glide.aim(target);
}

void FilterSection::stepGlide() {
  if (stands()) {
    current = target;
  } else if (isOnePole()) {
    current.a0 = flushed(current.a0 + (target.a0 - current.a0) * kOnePoleGlide, kOnePoleGlideFlush);
    --glide.remaining;
  } else {
    glide.advance(current);
  }
}

double FilterSection::processSample(double sample) {
  stepGlide();
  if (!isOnePole()) return filterSample(sample, current, history);
  const double x0 = numberOrZero(sample);
  const double lp = numberOrZero(flushed(history.y0 + (x0 - history.y0) * current.a0, kFilterFlush));
  pushHistory(x0, lp, history);
  return type == SectionType::onePoleLow ? lp : x0 - lp;
}

void FilterSection::processBuffer(double* samples, int count) {
  for (int i = 0; i < count; ++i) samples[i] = processSample(samples[i]);
}

template <typename... Before>
bool FilterSection::runGroup(std::span<FilterSection* const> group, double* samples, int count,
                             Before&... before) {
  if constexpr (sizeof...(Before) > 0)
    if (group.empty()) return runTogether(samples, count, before...);
  if constexpr (sizeof...(Before) < kGroup) {
    FilterSection& section = *group.front();
    const auto with = [&](auto form) {
      if (!runGroup(group.subspan(1), samples, count, before..., form)) return false;
      form.store(section.history);
      return true;
    };
    if (section.type == SectionType::onePoleLow)
      return with(OnePole<SectionType::onePoleLow>(section.current, section.history));
    if (section.type == SectionType::onePoleHigh)
      return with(OnePole<SectionType::onePoleHigh>(section.current, section.history));
    return with(SecondOrder(section.current, section.history));
  }
  return false;
}

void FilterSection::processSeries(std::span<FilterSection* const> series, double* samples, int count) {
  if (count < 1) return;
  FilterSection* on[kMostInSeries];
  const auto last = std::ranges::copy_if(series, on, &FilterSection::isActive).out;
  std::span<FilterSection* const> rest(on, last);
  while (!rest.empty()) {
    const auto group = rest.first(rest.size() == 4 ? 2 : std::min(rest.size(), kGroup));
    const bool standing = std::ranges::all_of(group, &FilterSection::stands);
    if (standing)
      for (FilterSection* section : group) section->current = section->target;
    if (!standing || !runGroup(group, samples, count))
      for (FilterSection* section : group) section->processBuffer(samples, count);
    rest = rest.subspan(group.size());
  }
}

}  // namespace corvane
