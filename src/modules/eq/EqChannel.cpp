#include "modules/eq/EqChannel.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>

#include "core/dsp/FastMath.h"
#include "modules/eq/EqSections.h"

namespace corvane::eq {

namespace {

/// Signal order of the bands where they stand in series.
constexpr Band kSeriesOrder[kBands] = {kLm, kHm, kHi, kLo};
constexpr double kLumenbandDriveShare =
    0.125;  // two sections a band, and the gentlest character of the three

/// How much of a Tonbox band is added.
double toneShare(const BlockGains& gains, Band band, int frame) {
  return gains.fade[band].at(frame) * (gains.toneGain[band].at(frame) - 1.0);
}

bool allStill(const Ramp (&ramps)[kBands]) {
  return std::all_of(std::begin(ramps), std::end(ramps), [](const Ramp& ramp) { return ramp.still; });
}

}  // namespace

EqChannel::EqChannel() {
  for (Stages& stages : lumenband) stages.stage1 = stages.stage2 = EqSection(kLumenbandDriveShare);
}

template <typename Action>
void EqChannel::forEachSection(Action action) {
  for (EqSection& section : bellform) action(section);
  for (Stages& stages : lumenband) action(stages.stage1), action(stages.stage2);
  for (EqSection* section : {&tonbox.toneHigh, &tonbox.toneLow, &tonbox.hm.passLow, &tonbox.hm.passHigh,
                             &tonbox.lm.passLow, &tonbox.lm.passHigh})
    action(*section);
}

void EqChannel::design(Band band, const EqBand& setting) {
  bellform[band].design(designBellform(band, setting));
  const auto [first, second] = designLumenband(band, setting);
  lumenband[band].stage1.design(first);
  lumenband[band].stage2.design(second);
  if (band == kHi || band == kLo)
    return (band == kHi ? tonbox.toneHigh : tonbox.toneLow).design(designTonboxShelf(band, setting));
  const TonboxEdges edges = designTonboxEdges(setting);
  Edges& tone = band == kHm ? tonbox.hm : tonbox.lm;
  tone.passLow.design(edges.passLow);
  tone.passHigh.design(edges.passHigh);
}

void EqChannel::setSampleRate(double hz) {
  forEachSection([hz](EqSection& section) { section.setSampleRate(hz); });
}

void EqChannel::setAnalog(bool on) {
  analogOn = on;
  forEachSection([on](EqSection& section) { section.setAnalog(on); });
}

void EqChannel::reset() {
  forEachSection([](EqSection& section) { section.reset(); });
  analog = {};
}

// Plain form

void EqChannel::bellformPlain(double* samples, int frames, const BlockGains& gains) {
  for (const Band band : kSeriesOrder)
    for (int i = 0; i < frames; ++i)
      samples[i] =
          crossfade(samples[i], bellform[band].processSaturating(samples[i]), gains.fade[band].at(i));
}

void EqChannel::lumenbandPlain(double* samples, int frames, const BlockGains& gains) {
  for (const Band band : kSeriesOrder)
    for (EqSection* section : {&lumenband[band].stage1, &lumenband[band].stage2})
      for (int i = 0; i < frames; ++i)
        samples[i] = crossfade(samples[i], section->processTracking(samples[i]), gains.fade[band].at(i));
}

void EqChannel::tonboxPlain(double* samples, int frames, const BlockGains& gains) {
  const auto between = [](Edges& edges, double x) {
    const double a = x - edges.passLow.processTracking(x);
    return a - edges.passHigh.processTracking(a);
  };
  for (int i = 0; i < frames; ++i) {
    const double x = samples[i];
    const double lo = x - tonbox.toneLow.processTracking(x);
    const double hi = x - tonbox.toneHigh.processTracking(x);
    const double hm = between(tonbox.hm, x), lm = between(tonbox.lm, x);
    samples[i] = x + toneShare(gains, kLo, i) * lo + toneShare(gains, kHi, i) * hi +
                 toneShare(gains, kHm, i) * hm + toneShare(gains, kLm, i) * lm;
  }
}

void EqChannel::runPlain(int type, const double* input, double* output, int frames, const BlockGains& gains) {
  double levels[kBlockFrames];
  std::copy_n(input, frames, output);
  switch (type) {
    case kBellform: bellformPlain(output, frames, gains); break;
    case kLumenband: lumenbandPlain(output, frames, gains); break;
    default: tonboxPlain(output, frames, gains); break;
  }
  for (int i = 0; i < frames; ++i) {
    output[i] *= gains.out.at(i);
    levels[i] = analogLevel(output[i], gains.analogCoeff, analog);
  }
  applyAnalog(type, analogOn, levels, output, frames);
}

// Settled form. Each finished frame goes through `take` (int frame, double sample). False, and no section
// changed, where a not-a-number came up.

namespace {

template <bool kAnalog, FlushForm kFlush, typename Take>
bool bellformSettled(EqSection (&bellform)[kBands], const double* input, int frames, const BlockGains& gains,
                     Take take) {
  constexpr Character kCharacter = kAnalog ? Character::withinRecursion : Character::none;
  const auto section = [&](int k) { return &bellform[kSeriesOrder[k]]; };
  const auto fade = [&](int k) { return gains.fade[kSeriesOrder[k]].at(0); };
  EqSection* const inA[] = {section(0), section(2)};
  EqSection* const inB[] = {section(1), section(3)};
  EqSections<Pair> a(inA), b(inB);
  if (kFlush == FlushForm::bare && (a.isSmall() || b.isSmall())) return false;
  runSeries<kCharacter, kFlush>(a, b, Pair{fade(0), fade(2)}, Pair{fade(1), fade(3)}, input, frames, take);
  if (!a.isExact() || !b.isExact()) return false;
  a.store(inA), b.store(inB);
  return true;
}

template <bool kAnalog, typename Take>
bool lumenbandSettled(Stages (&lumenband)[kBands], const double* input, int frames, const BlockGains& gains,
                      Take take) {
  constexpr Character kCharacter = kAnalog ? Character::behindRecursion : Character::none;
  EqSection *stage1[kBands], *stage2[kBands];
  Quad fades;
  for (int k = 0; k < kBands; ++k) {
    const Band band = kSeriesOrder[k];
    stage1[k] = &lumenband[band].stage1, stage2[k] = &lumenband[band].stage2;
    fades[k] = gains.fade[band].at(0);
  }
  EqSections<Quad> a(stage1), b(stage2);
  runSeries<kCharacter, FlushForm::within>(a, b, fades, fades, input, frames, take);
  if (a.isPoisoned() || b.isPoisoned()) return false;
  a.store(stage1), b.store(stage2);
  return true;
}

template <bool kAnalog, typename Take>
bool tonboxSettled(EqSection& toneHigh, EqSection& toneLow, Edges& hm, Edges& lm, const double* input,
                   int frames, const BlockGains& gains, Take take) {
  constexpr Character kCharacter = kAnalog ? Character::behindRecursion : Character::none;
  EqSection* const inFirst[] = {&toneLow, &toneHigh, &hm.passLow, &lm.passLow};
  EqSection* const inHigh[] = {&hm.passHigh, &lm.passHigh};
  EqSections<Quad> first(inFirst);
  EqSections<Pair> high(inHigh);
  const double loShare = toneShare(gains, kLo, 0), hiShare = toneShare(gains, kHi, 0);
  const double hmShare = toneShare(gains, kHm, 0), lmShare = toneShare(gains, kLm, 0);
  Quad fromFirst[kBlockFrames], cut[kBlockFrames];  // cut: lo, hi, and what the upper edges of HM and LM hear
  Pair fromHigh[kBlockFrames], bells[kBlockFrames];
  const auto all = [input](int i) { return Quad{input[i], input[i], input[i], input[i]}; };
  const auto above = [&cut](int i) { return Pair{cut[i][2], cut[i][3]}; };
  staggered(
      frames,
      [&](int i) {
        fromFirst[i] = first.template recursion<kCharacter, FlushForm::within>(all(i), Everywhere{});
      },
      [&](int i) { cut[i] = all(i) - first.template behind<kCharacter>(fromFirst[i], Everywhere{}); },
      [&](int i) {
        fromHigh[i] = high.template recursion<kCharacter, FlushForm::within>(above(i), Everywhere{});
      },
      [&](int i) { bells[i] = above(i) - high.template behind<kCharacter>(fromHigh[i], Everywhere{}); },
      [&](int i) {
        take(i, input[i] + loShare * cut[i][0] + hiShare * cut[i][1] + hmShare * bells[i][0] +
                    lmShare * bells[i][1]);
      });
  if (first.isPoisoned() || high.isPoisoned()) return false;
  first.store(inFirst), high.store(inHigh);
  return true;
}

}  // namespace

template <bool kAnalog>
bool EqChannel::runSettled(int type, const double* input, double* output, double* levels, int frames,
                           const BlockGains& gains) {
  AnalogState state = analog;
  const double gain = gains.out.at(0), coefficient = gains.analogCoeff;
  const auto take = [&](int i, double x) {
    output[i] = x * gain;
    levels[i] = analogLevel(output[i], coefficient, state);
  };
  const auto bellformAs = [&]<FlushForm kFlush>() {
    state = analog;
    return bellformSettled<kAnalog, kFlush>(bellform, input, frames, gains, take);
  };
  bool done = false;
  switch (type) {
    case kBellform:
      done = bellformAs.template operator()<FlushForm::bare>() ||
             bellformAs.template operator()<FlushForm::within>();
      break;
    case kLumenband: done = lumenbandSettled<kAnalog>(lumenband, input, frames, gains, take); break;
    default:
      done = tonboxSettled<kAnalog>(tonbox.toneHigh, tonbox.toneLow, tonbox.hm, tonbox.lm, input, frames,
                                    gains, take);
  }
  if (done) analog = state;
  return done;
}

CORVANE_WIDE_LOOPS [[gnu::flatten]] bool EqChannel::runSettledWide(int type, const double* input,
                                                                   double* output, double* levels, int frames,
                                                                   const BlockGains& gains) {
  return analogOn ? runSettled<true>(type, input, output, levels, frames, gains)
                  : runSettled<false>(type, input, output, levels, frames, gains);
}

bool EqChannel::settled(int type, const BlockGains& gains) const {
  if (!allStill(gains.fade) || !gains.out.still) return false;
  const auto atRest = [](std::initializer_list<const EqSection*> sections) {
    return std::none_of(sections.begin(), sections.end(),
                        [](const EqSection* section) { return section->gliding(); });
  };
  if (type == kBellform) return atRest({&bellform[kHi], &bellform[kHm], &bellform[kLm], &bellform[kLo]});
  if (type == kLumenband)
    return std::all_of(std::begin(lumenband), std::end(lumenband), [&](const Stages& stages) {
      return atRest({&stages.stage1, &stages.stage2});
    });
  return allStill(gains.toneGain) && atRest({&tonbox.toneHigh, &tonbox.toneLow, &tonbox.hm.passLow,
                                             &tonbox.hm.passHigh, &tonbox.lm.passLow, &tonbox.lm.passHigh});
}

void EqChannel::run(int type, const double* input, double* output, int frames, const BlockGains& gains) {
  if (frames < 1) return;
  double levels[kBlockFrames];
  if (settled(type, gains) && runSettledWide(type, input, output, levels, frames, gains))
    applyAnalog(type, analogOn, levels, output, frames);
  else
    runPlain(type, input, output, frames, gains);
}

}  // namespace corvane::eq
