#include "modules/eq/EqChannel.h"

namespace corvane::eq {

namespace {

constexpr double kLumenbandDriveShare =
    0.125;  // two sections a band, and the gentlest character of the three

/// Dry and wet of a band that is being switched.
double crossfade(double dry, double wet, double fade) { return dry + (wet - dry) * fade; }

}  // namespace

EqChannel::EqChannel() {
  for (Stages& stages : lumenband) stages.stage1 = stages.stage2 = EqSection(kLumenbandDriveShare);
}

template <typename Action>
void EqChannel::forEachSection(Action action) {
  for (EqSection& section : bellform) action(section);
  for (Stages& stages : lumenband) action(stages.stage1), action(stages.stage2);
  for (EqSection* section :
       {&toneHigh, &toneLow, &toneHm.passLow, &toneHm.passHigh, &toneLm.passLow, &toneLm.passHigh})
    action(*section);
}

void EqChannel::design(Band band, const EqBand& setting) {
  bellform[band].design(designBellform(band, setting));
  const auto [first, second] = designLumenband(band, setting);
  lumenband[band].stage1.design(first);
  lumenband[band].stage2.design(second);
  if (band == kHi || band == kLo)
    return (band == kHi ? toneHigh : toneLow).design(designTonboxShelf(band, setting));
  const TonboxEdges edges = designTonboxEdges(setting);
  Edges& tone = band == kHm ? toneHm : toneLm;
  tone.passLow.design(edges.passLow);
  tone.passHigh.design(edges.passHigh);
}

void EqChannel::setSampleRate(double hz) {
  forEachSection([hz](EqSection& section) { section.setSampleRate(hz); });
}

void EqChannel::setAnalog(bool on) {
  forEachSection([on](EqSection& section) { section.setAnalog(on); });
}

void EqChannel::reset() {
  forEachSection([](EqSection& section) { section.reset(); });
  analog = {};
}

void EqChannel::runBellform(double* samples, int frames, const BlockGains& gains) {
  for (int i = 0; i < frames; ++i) {
    double x = samples[i];
    for (const Band band : kSeriesOrder)
      x = crossfade(x, bellform[band].processSaturating(x), gains.fade[band].values[i]);
    samples[i] = x * gains.out.values[i];
  }
}

void EqChannel::runLumenband(double* samples, int frames, const BlockGains& gains) {
  for (int i = 0; i < frames; ++i) {
    double x = samples[i];
    for (const Band band : kSeriesOrder) {
      const double fade = gains.fade[band].values[i];
      x = crossfade(x, lumenband[band].stage1.processTracking(x), fade);
      x = crossfade(x, lumenband[band].stage2.processTracking(x), fade);
    }
    samples[i] = x * gains.out.values[i];
  }
}

void EqChannel::runTonbox(double* samples, int frames, const BlockGains& gains) {
  const auto share = [&gains](Band band, int i) {
    return gains.fade[band].values[i] * (gains.toneGain[band].values[i] - 1.0);
  };
  const auto between = [](Edges& edges, double x) {
    const double a = x - edges.passLow.processTracking(x);
    return a - edges.passHigh.processTracking(a);
  };
  for (int i = 0; i < frames; ++i) {
    const double x = samples[i];
    const double lo = x - toneLow.processTracking(x);
    const double hi = x - toneHigh.processTracking(x);
    const double hm = between(toneHm, x), lm = between(toneLm, x);
    samples[i] = (x + share(kLo, i) * lo + share(kHi, i) * hi + share(kHm, i) * hm + share(kLm, i) * lm) *
                 gains.out.values[i];
  }
}

}  // namespace corvane::eq
