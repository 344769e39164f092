#pragma once

#include <algorithm>
#include <cmath>

#include "core/dsp/Flush.h"
#include "modules/compressor/OptoFetVcaCompressor.h"

namespace corvane::compressor {

/// The compressor one sample at a time and with the library's mathematics: the form that the fast one must
/// agree with. Fields as in OptoFetVcaCompressor.
struct PlainCompressor {
  int detector = 1;
  TimeSettings settings;
  double ratio = 0.5, thresholdDrive = 1.0, makeupGain = 1.0, mix = 1.0;
  double drive = 1.0, makeup = 1.0, mixNow = 1.0, fetRatio = 0.0, optoExponent = 0.0;
  ChannelState state;
  double gain = 1.0;

  void reset() {
    drive = thresholdDrive, makeup = makeupGain, mixNow = mix;
    fetRatio = fetRatioAtReset(ratio);
    optoExponent = designRatio(ratio).optoExponent;
    state = {};
  }

  double sample(double in, double s) {
    const TimeCoefficients c = designTimes(settings);
    const RatioTerms terms = designRatio(ratio);
    const auto move = [&](double& v, double target) { v = flushed(v + (target - v) * c.smooth, 1e-16); };
    move(drive, thresholdDrive), move(makeup, makeupGain), move(mixNow, mix);
    move(fetRatio, terms.fetRatio), move(optoExponent, terms.optoExponent);
    state.hpfState = flushed(state.hpfState + (s - state.hpfState) * c.hpfCoef, 1e-18);
    s -= state.hpfState;
    gain = detector == 1 ? opto(s, c) : detector == 2 ? fet(s, c) : vca(s, c, terms.vcaExponent);
    const double y = flushed(in * gain * makeup, 1e-16);
    return y * mixNow + (1.0 - mixNow) * in;
  }

 private:
  double opto(double s, const TimeCoefficients& c) {
    DetectorState& d = state.detectors;
    d.optoRectified += (std::abs(0.794 * s) - d.optoRectified) * c.rectCoef;
    d.optoRectified = flushed(d.optoRectified, 1e-15);
    double u = std::abs(1.4 * 1.1885 * d.optoRectified) * drive + 0.01;
    u *= u;
    if (u > d.optoStage1)
      d.optoStage1 += (u - d.optoStage1) * c.optoAttack1;
    else
      d.optoStage1 = std::max(d.optoStage1 - std::pow(d.optoStage1 - u, 2.0) * c.optoRelease1, u);
    d.optoStage1 = flushed(d.optoStage1, 1e-18);
    if (d.optoStage1 > d.optoStage2)
      d.optoStage2 += (d.optoStage1 - d.optoStage2) * c.optoAttack2;
    else
      d.optoStage2 =
          std::max(d.optoStage2 - std::pow(d.optoStage2 - d.optoStage1, 1.4) * c.optoRelease2, d.optoStage1);
    d.optoStage2 = flushed(d.optoStage2, 1e-18);
    return std::sqrt(std::pow(1.0 / (1.0 + d.optoStage2), optoExponent));
  }

  double fet(double s, const TimeCoefficients& c) {
    double& level = state.detectors.fetLevel;
    const double w = fetRatio * level * 0.5, v = 0.999 * w / (w + 1.0);
    const double h = 1.0 / (1.0 - (0.999 - v)) + 1.0;
    const double g = 1.1 * h / (h + 100.0);
    const double u = s * 0.912 * 0.631 * 1.084 * g * thresholdDrive;
    const double m = std::max(u - 0.25, 0.0), n = std::min(u + 0.25, 0.0);
    const double e = m - 0.25 * std::tanh(4.0 * m) - n + 0.25 * std::tanh(4.0 * n);
    if (e > level) level += (e - level) * c.fetAttack;
    level -= level * c.fetRelease;
    level = flushed(level, 1e-18);
    return g;
  }

  double vca(double s, const TimeCoefficients& c, double exponent) {
    double& level = state.detectors.vcaLevel;
    const double u = std::abs(s * 2.6 * 1.122 * 0.841 * 1.1) * drive + 0.01;
    const double l = std::max(std::log10(u), 0.0);
    const double e = l - 0.125 * std::tanh(8.0 * l);
    if (e > level)
      level += (e - level) * c.vcaAttack;
    else
      level -= (level - e) * c.vcaRelease;
    level = flushed(level, 1e-18);
    return std::pow(10.0, -level * exponent);
  }
};

}  // namespace corvane::compressor
