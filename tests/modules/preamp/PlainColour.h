#pragma once

#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#include "core/dsp/GlideFilter.h"
#include "modules/preamp/ConsoleTable.h"
#include "modules/preamp/NoiseGenerator.h"
#include "modules/preamp/PreampTolerances.h"

namespace corvane::preamp {

/// The colouring stage as its equations stand, sample by sample and channel by channel, with the C library's
/// functions: the form that the fast one is measured against.
class PlainColour {
 public:
  PlainColour(int unit, Colour model, double sampleRateHz) : fs(sampleRateHz) {
    const UnitRow& row = kUnitRows[static_cast<std::size_t>(unit)];
    channels[0].noise = {16 * row.seedA, 8 * row.seedB, 2 * row.seedC};
    channels[1].noise = {row.seedA, row.seedB, row.seedC};
    const auto tolerances = unitTolerances(unit);
    for (std::size_t c = 0; c < 2; ++c) channels[c].tolerance = tolerances[c];
    setColour(model);
  }

  /// Filters anew, every other state as it is; a converter leaves all of a console in place.
  void setColour(Colour model) {
    colour = model;
    if (model == Colour::converter90s && configured) return;
    if (model != Colour::converter90s) console = model;
    for (Channel& channel : channels) channel.configure(consoleOf(console), fs);
    configured = true;
  }

  double drive = 40.0, hissLevel = 0.0;
  int noiseMode = 0;
  double satMeter = 0.0;
  double muteGain = 0.0;

  void process(double* left, double* right, int frames) {
    double* io[2] = {left, right};
    const double c = 1.0 - std::pow(0.1091012, 1.0 / (fs * 200 * 0.001 * 0.015625));
    const ConsoleRow& row = consoleOf(console);
    const double scale = (colour == Colour::converter90s ? 1.0 : row.hissScale) * std::sqrt(fs / 44100.0);
    std::vector<double> noise[2];
    for (std::size_t k = 0; k < 2; ++k) {
      Channel& ch = channels[k];
      const double share = 1.0 - std::exp(-2.0 * std::numbers::pi * row.hissCornerHz / fs);
      for (int i = 0; i < frames; ++i) {
        ch.hiss = flushed(ch.hiss + (2.0 * ch.noise.next() - 1.0 - ch.hiss) * share, 1e-16);
        double n = ch.hiss * hissLevel * scale * ch.tolerance.hissGain;
        if (colour != Colour::converter90s)
          for (const auto& filter : ch.hissFilters) n = filter->processSample(n);
        noise[k].push_back(n);
      }
    }
    for (int i = 0; i < frames && noiseMode != 0; ++i) {
      const double g = noiseMode == 1 ? autoMute(std::max(std::abs(left[i]), std::abs(right[i]))) : 1.0;
      for (std::size_t k = 0; k < 2; ++k) {
        const double s = io[k][i] + noise[k][static_cast<std::size_t>(i)] * g;
        const double f = colour == Colour::console70s ? s : channels[k].lowpass->processSample(s);
        io[k][i] = row.filteredShare * f + row.plainShare * s;
      }
    }
    for (int i = 0; i < frames; ++i) {
      double y[2], out[2];
      for (std::size_t k = 0; k < 2; ++k) y[k] = inputStage(io[k][i], channels[k]);
      if (colour == Colour::converter90s) {
        convert(y, out, c);
      } else {
        const double other[2] = {channels[1].crosstalk->processSample(y[1]),
                                 channels[0].crosstalk->processSample(y[0])};
        double level = 0.0;
        for (std::size_t k = 0; k < 2; ++k) {
          y[k] -= other[k] * row.crosstalkGain;
          double m = 0.0;
          out[k] = channels[k].lowTone->processSample(
              colour == Colour::console60s ? pushPull(y[k], channels[k], m) : parabola(y[k], channels[k], m));
          level = std::max(level, m);
        }
        satMeter =
            std::min(flushed(level > satMeter ? level : satMeter + (level - satMeter) * c, 1e-15), 1.0);
      }
      for (std::size_t k = 0; k < 2; ++k) io[k][i] = out[k] * std::pow(1.0 / drive, 0.9576);
    }
  }

 private:
  struct Channel {
    ChannelTolerance tolerance{};
    NoiseGenerator noise{};
    std::vector<std::unique_ptr<GlideFilter>> hissFilters;
    std::unique_ptr<GlideFilter> lowpass, crosstalk, lowTone;
    double hiss = 0.0, bias = 0.0, clip = 0.0;
    BiquadHistory block;
    double up = 1e-9, down = 1e-9;
    double p1 = 0.0, p2 = 0.0, p3 = 0.0;

    void configure(const ConsoleRow& row, double rateHz) {
      const ChannelTolerance& t = tolerance;
      hissFilters.clear();
      const auto make = [rateHz](SectionType type, double hz, double q, double gainDb) {
        auto filter = std::make_unique<GlideFilter>(rateHz, type, hz, q, gainDb);
        filter->active = true;
        filter->retarget();
        filter->snapToTarget();
        return filter;
      };
      const auto s = [&](int k) { return t.hissPeak[static_cast<std::size_t>((row.firstSpread + k) % 3)]; };
      const SectionRow &shelf = row.hissShelf, &a = row.hissPeak1, &b = row.hissPeak2, &c = row.hissPeak3;
      hissFilters.push_back(
          make(SectionType::highShelf, shelf.hz, shelf.q, shelf.gainDb * std::sqrt(t.hissShelf)));
      hissFilters.push_back(make(SectionType::peaking, a.hz * s(1), a.q * s(2), a.gainDb * s(0)));
      hissFilters.push_back(make(SectionType::peaking, b.hz, b.q * s(0), b.gainDb * s(1)));
      hissFilters.push_back(make(SectionType::peaking, c.hz * s(0), c.q * s(1), c.gainDb * s(2)));
      lowpass = make(SectionType::onePoleLow, row.lowpassHz, 1.0, 0.0);
      crosstalk = make(SectionType::bandPass, row.crosstalk.hz, row.crosstalk.q, 0.0);
      lowTone = make(SectionType::peaking, row.lowTone.hz, row.lowTone.q, row.lowTone.gainDb);
    }
  };

  double autoMute(double m) {
    ring[ringIndex] = m;
    ringIndex = (ringIndex + 65535) % 65536;
    for (int k = 0; k < 16; ++k) {
      const auto back = static_cast<std::size_t>(channels[0].noise.next() * fs * 0.15);
      m = std::max(m, ring[(ringIndex + back) % 65536]);
    }
    const double rise = 1.0 - std::exp(-6.283 / (0.05 * fs)), fall = 1.0 - std::exp(-6.283 / (0.15 * fs));
    const auto follow = [&](double& f, double x) { f += (x - f) * (x > f ? rise : fall); };
    follow(mute[0], m);
    mute[0] = std::min(mute[0], 0.001);
    follow(mute[1], mute[0] / 0.0010001);
    follow(mute[2], mute[1]);
    follow(mute[3], mute[2]);
    return muteGain = mute[3];
  }

  double inputStage(double in, Channel& ch) const {
    if (colour == Colour::console80s) return drive * in * 0.794328234724282 * 0.5;
    if (colour == Colour::converter90s) return drive * in;
    const ConsoleRow& row = consoleOf(colour);
    const double a = drive * in * row.inputScale;
    const double b = (0.998 * ch.bias + 0.002 * a) * ch.tolerance.bias;
    const double q = 0.2 * row.k + b * row.m * row.l;
    const double r = (1.4 - 0.75 * row.k) * q * std::atan(2.0);
    const double e = (2.8 - 1.5 * row.k) * q, ee = e * e;
    const double y =
        r == 0.0 ? 0.0 : (2 * ee + 30) * e / (9.6 * ee + 30) * a * 0.25 * 1.07 * row.inverseInputScale / r;
    const double share = 1.0 - std::exp(-2.0 * std::numbers::pi * row.biasCornerHz / fs);
    ch.bias = flushed(ch.bias + (0.25 * a - ch.bias) * share, 1e-16);
    return y;
  }

  double pushPull(double y, Channel& ch, double& meter) const {
    const ConsoleRow& row = consoleOf(colour);
    const double v = row.inTrim * y * 0.7071;
    meter = 0.10750000178813934 * std::abs(v);
    const double p = 8.0 / std::pow(16.0, 0.6), w = std::pow(p, 0.125);
    const double A = 1.22 - p / 8.0, B = 1.1 - p / 8.0;
    const double fast = 1.0 - std::exp(-4.4427093 / (0.001 * fs));
    const auto curve = [&](auto law, double scale, double envelope) {
      const double top = std::pow(law(std::pow(std::abs(scale * envelope), p) * w) / w, 1.0 / p);
      return std::copysign(top, envelope) / scale / envelope;
    };
    const auto arc = [](double x) { return std::atan(x); };
    const auto hyperbolic = [](double x) { return std::tanh(x); };
    const double s = 0.125 * v;
    ch.up += ((s > 1e-9 ? s : 1e-9) - ch.up) * fast;
    const double h = curve(arc, A, ch.up) * s;
    if (h < -1e-9) ch.down -= (ch.down + h) * fast;
    return 20.166514627199998 * row.outTrim * (curve(hyperbolic, B, ch.down) * h * 1.062030662245685);
  }

  double parabola(double y, Channel& ch, double& meter) const {
    const ConsoleRow& row = consoleOf(colour);
    const bool seventies = colour == Colour::console70s;
    const double v = std::clamp(row.inTrim * y * 0.7071 * 0.7071 * 0.25, -4.0, 4.0);
    meter = (seventies ? 1.399999976158142 : 1.6800000667572021) * std::abs(v);
    const double t = v / 2.0;
    const double P = t > 2 ? 1 : t >= 0 ? t - t * t / 4 : t >= -2 ? t + t * t / 4 : -1;
    const double u = 2.0 * P;
    const double offset = seventies ? 0.0015396885326702942 * ch.tolerance.offset : 0.0;
    ch.clip = flushed(ch.clip + (offset + u - ch.clip) * (1.0 - std::exp(-18849.55592153876 / fs)), 1e-16);
    const double w = 8 * 1.4142 * (ch.clip >= 0 ? u - ch.clip * ch.clip / 4 : u + ch.clip * ch.clip / 4);
    const double w0 = 12.566370614359172 / fs, k = 1.0 / (1.0 + std::sin(w0));
    BiquadCoefficients high;
    high.b0 = high.b2 = (1.0 + std::cos(w0)) * k / 2.0;
    high.b1 = -(1.0 + std::cos(w0)) * k;
    high.a1 = -2.0 * std::cos(w0) * k;
    high.a2 = (1.0 - std::sin(w0)) * k;
    return filterSample(w, high, ch.block) * 1.4142 * (seventies ? 1.0 : 1.258925411794167) * row.outTrim;
  }

  void convert(const double* y, double* out, double c) {
    const double t = 0.1 * channels[0].noise.next() + 0.5;
    channels[0].noise.next();
    double z[2];
    for (std::size_t k = 0; k < 2; ++k) {
      Channel& ch = channels[k];
      const double p0 = y[k] * 32768 * 0.025 * 0.25;
      z[k] = 0.5 * (2 * ch.p1 + (ch.p2 - p0) * t + (2 * p0 - 5 * ch.p1 + 4 * ch.p2 - ch.p3) * (t * t) +
                    (3 * ch.p1 - p0 - 3 * ch.p2 + ch.p3) * (t * t * t));
      ch.p3 = ch.p2, ch.p2 = ch.p1, ch.p1 = p0;
    }
    const double o = std::abs(z[0]) > 128 || std::abs(z[1]) > 128 ? 0.3 : 0.0;
    satMeter = flushed(satMeter + (o - satMeter) * c, 1e-15);
    for (std::size_t k = 0; k < 2; ++k) {
      if (z[k] > 32767 || z[k] < -32768) satMeter = 1.0;
      double rest = std::clamp(z[k], -32768.0, 32767.0) + 32768;
      int code = 0;
      for (std::size_t bit = 0; bit < 16; ++bit) {
        if (rest < kConverterThresholds[bit]) continue;
        rest -= kConverterThresholds[bit];
        code |= 32768 >> bit;
      }
      out[k] = plainFloatingStep((code - 32768) * 4) * 3.0517578125e-5 * 40;
    }
  }

 public:
  static double plainFloatingStep(double l) {
    const bool below = l < 0;
    const int n = static_cast<int>(below ? -l - 0.5 : l + 0.5);
    int base = 0, step = 1;
    for (const auto& [from, width] :
         {std::pair{16384, 64}, {8192, 32}, {4096, 16}, {2048, 8}, {1024, 4}, {512, 2}})
      if (n >= from + (below ? 1 : 0)) {
        base = from, step = width;
        break;
      }
    const int kept = n - (n - base) % step;
    return below ? -kept : kept;
  }

 private:
  Colour colour = Colour::console70s, console = Colour::console70s;
  bool configured = false;
  double fs;
  Channel channels[2];
  std::vector<double> ring = std::vector<double>(65536, 0.0);
  std::size_t ringIndex = 65535;
  double mute[4] = {0.0, 1e-7, 1e-7, 1e-7};
};

}  // namespace corvane::preamp
