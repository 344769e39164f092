#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>

#include "core/dsp/GlideFilter.h"
#include "tests/rig/Signals.h"

namespace corvane::rig {

/// The de-esser written down sample by sample and section by section, with nothing shared, skewed or cached:
/// what the module must sound like. One or two channels; parameters in physical units.
struct PlainDeesser {
  struct Channel {
    GlideFilter detectBand{44100.0, SectionType::bandPass, 6000.0, 6.0, 0.0};
    GlideFilter detectPeak{44100.0, SectionType::peaking, 6000.0, 6.0, -6.0};
    GlideFilter high1{44100.0, SectionType::highPass, 1000.0, 0.7, 0.0};
    GlideFilter high2 = high1;
    GlideFilter low1{44100.0, SectionType::lowPass, 1000.0, 0.7, 0.0};
    GlideFilter low2 = low1;
    double wideFast = 0.0, wideSlow = 0.0, bandFast = 0.0, bandSlow = 0.0;
  };

  double rateHz = 48000.0, hz = 6000.0, q = 6.0, sensitivityDb = -12.0, rangeDb = -6.0, exponent = 0.5;
  bool split = false, monitor = false;
  std::vector<Channel> channels;
  double gainTarget = 0.0, gainSmooth = 0.0, applied = 0.0;

  explicit PlainDeesser(int count) : channels(static_cast<std::size_t>(count)) {}

  /// Designs all sections anew; with `atOnce` without a glide.
  void design(bool atOnce) {
    for (Channel& c : channels)
      for (GlideFilter* s : {&c.detectBand, &c.detectPeak, &c.high1, &c.high2, &c.low1, &c.low2}) {
        s->active = true;
        s->sampleRate = rateHz;
        const bool detects = s == &c.detectBand || s == &c.detectPeak;
        s->frequency = detects ? hz : (q * 0.05 + 1.0) * hz * 0.25;
        s->q = detects ? q : 0.7;
        s->retarget();
        if (atOnce) s->snapToTarget();
      }
  }

  /// One sample of each channel.
  void run(const double* x, double* y) {
    const auto share = [&](double cornerHz) {
      return 1.0 - std::exp(-2.0 * std::numbers::pi * cornerHz / rateHz);
    };
    const double cFast = share(hz / 8.0 + 2000.0), cSlow = share(0.001 * hz + 25.0),
                 cMid = share(hz / 16.0 + 500.0);
    const double cVerySlow = share(0.0002 * hz + 3.5), cRelease = share(0.002 * hz + 10.0);
    const auto flush = [](double& v) { v = (v + 1e-15) - 1e-15; };
    double wide = 0.0, band = 0.0, treated[2], rest[2], s[2];
    for (std::size_t k = 0; k < channels.size(); ++k) {
      Channel& c = channels[k];
      const double a = std::abs(x[k]);
      c.wideFast += (a - c.wideFast) * (a > c.wideFast ? cFast : cSlow);
      c.wideSlow += (c.wideFast - c.wideSlow) * (c.wideFast > c.wideSlow ? cMid : cVerySlow);
      flush(c.wideFast), flush(c.wideSlow);
      const double high = c.high2.processSample(c.high1.processSample(x[k]));
      const double low = c.low2.processSample(c.low1.processSample(x[k]));
      treated[k] = split ? high : x[k], rest[k] = split ? low : 0.0;
      s[k] = std::sqrt(q) * c.detectPeak.processSample(c.detectBand.processSample(high));
      const double level = std::abs(s[k]) * 32.0 * fromDb(sensitivityDb);
      c.bandFast += (level - c.bandFast) * cFast;
      flush(c.bandFast);
      c.bandSlow += (c.bandFast - c.bandSlow) * (c.bandFast > c.bandSlow ? cFast : cSlow);
      flush(c.bandSlow);
      wide = std::max(wide, c.wideSlow), band = std::max(band, c.bandSlow);
    }
    const double r = (wide + 1e-7 + 0.001) / (band + 1e-8 + 1e-10);
    if (gainTarget > r)
      gainTarget = r;
    else
      gainTarget += (1.0 - gainTarget) * cFast;
    flush(gainTarget);
    gainSmooth += (gainTarget - gainSmooth) * (gainSmooth > gainTarget ? cFast : cRelease);
    flush(gainSmooth);
    const double floor = fromDb(rangeDb);
    applied = std::pow(gainSmooth, exponent) * (1.0 - floor) + floor;
    for (std::size_t k = 0; k < channels.size(); ++k)
      y[k] = monitor ? 2.0 * s[k] * applied : rest[k] + treated[k] * applied;
  }
};

}  // namespace corvane::rig
