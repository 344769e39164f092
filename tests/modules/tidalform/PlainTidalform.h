#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/dsp/Biquad.h"
#include "tests/rig/Signals.h"

namespace corvane::rig {

/// The dynamic equaliser written down sample by sample with the library's functions: three designs for every
/// sample, nothing skipped, nothing shared. One or two channels; parameters in physical units.
struct PlainTidalform {
  struct Section {
    BiquadCoefficients c;
    double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
    double run(double x) {
      if (std::isnan(x)) x = 0.0;
      double y = c.b0 * x + c.b1 * x1 + c.b2 * x2 - c.a1 * y1 - c.a2 * y2;
      x2 = x1, x1 = x, y2 = y1, y1 = y;
      if (std::isnan(y)) y = y1 = y2 = 0.0;
      return y;
    }
  };
  struct Channel {
    Section first, second, dynamic;
    double follow = 0.0, hold = 0.0;
  };

  double rateHz = 48000.0;
  double thresholdDb = -30.0, time = 1.0, hz = 0.0, above = 0.0, below = 0.0, peakQ = 1.0, shelfQ = 0.7,
         halfDb = 12.0;
  int filterType = 1, controlMode = 1;
  bool monitor = false;
  double f = 0.0, pq = 1.0, sq = 0.7, over = 0.0, indicator = 0.0, gainDb = 0.0;
  std::vector<Channel> channels;

  explicit PlainTidalform(int count) : channels(static_cast<std::size_t>(count)) {}
  void snap() { f = hz, pq = peakQ, sq = shelfQ; }

  void run(const double* x, const double* key, double* y) {
    const auto flush = [](double& v) { v = (v + 1e-18) - 1e-18; };
    const auto towards = [&](double& v, double goal, double share) { v += (goal - v) * share, flush(v); };
    const double smoothing = 1.0 - std::exp(-6.283 / (0.05 * rateHz));
    const double riseA = 1.0 - std::exp(-6.283 * 0.25 * std::pow(hz, 0.7071) / (time * rateHz));
    const double riseB = 1.0 - std::exp(-6.283 * 0.1 * std::pow(hz, 0.5) / (time * rateHz));
    const double rise = above >= below ? riseA : riseB, fall = above >= below ? riseB : riseA;
    towards(f, hz, smoothing), towards(pq, peakQ, smoothing), towards(sq, shelfQ, smoothing);
    const bool direct = controlMode == 1, peak = filterType == 1, low = (filterType == 0) == direct;
    const SectionType type = peak ? (direct ? SectionType::bandPass : SectionType::notch)
                                  : (low ? SectionType::lowPass : SectionType::highPass);
    double held = 0.0, levels[2];
    for (std::size_t n = 0; n < channels.size(); ++n) {
      Channel& c = channels[n];
      double k = std::isnan(key[n]) ? 0.0 : key[n];
      if (controlMode > 0) {
        c.first.c = designSection(type, f, peak ? pq : sq, 0.0, rateHz);
        c.second.c =
            designSection(type, peak ? f : (low ? 2.0 * f : f / 2.0), peak ? 0.5 * pq : 0.5, 0.0, rateHz);
        k = c.second.run(c.first.run(k));
      }
      y[n] = k;
      levels[n] = 20.0 * std::log10(std::abs(k) + 1e-7) - thresholdDb;
      const double d = (above - below) / 2.0;
      const double ratio = halfDb == 0.0 && levels[n] == 0.0 ? 0.0 : levels[n] / halfDb;
      const double t = std::tanh(ratio) * d - d + above;
      c.follow += (t - c.follow) * (t > c.follow ? rise : fall), flush(c.follow);
      if (c.follow > c.hold)
        c.hold = c.follow;
      else
        c.hold += (c.follow - c.hold) * fall;
      flush(c.hold);
      held += c.hold;
    }
    towards(over, levels[0], smoothing), towards(over, levels[channels.size() - 1], smoothing);
    if (over >= 0.0)
      indicator += (1.0 - indicator) * smoothing;
    else
      indicator -= (indicator + 1.0) * smoothing;
    flush(indicator);
    gainDb = held / static_cast<double>(channels.size());
    const SectionType dynamic = peak              ? SectionType::peaking
                                : filterType == 0 ? SectionType::lowShelf
                                                  : SectionType::highShelf;
    for (std::size_t n = 0; n < channels.size(); ++n) {
      channels[n].dynamic.c = designSection(dynamic, f, peak ? pq : sq, gainDb, rateHz);
      const double out = channels[n].dynamic.run(x[n]);
      if (!monitor) y[n] = out;
    }
  }
};

}  // namespace corvane::rig
