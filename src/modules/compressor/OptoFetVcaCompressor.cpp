#include "modules/compressor/OptoFetVcaCompressor.h"

#include <algorithm>
#include <cmath>

#include "core/dsp/FastMath.h"
#include "modules/compressor/CompressorFamily.h"
#include "modules/compressor/CompressorTable.h"

namespace corvane {

namespace compressor {

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kRectifierHz2Pi = 12566.370614359172;  // 2 pi 2 kHz
constexpr double kSmoothHz2Pi = 62.83185307179586;      // 2 pi 10 Hz

constexpr double kControlFlush = 1e-16, kOutputFlush = 1e-16;
constexpr double kRectifierFlush = 1e-15;
constexpr double kDetectorFlush = 1e-18;

/// Share per sample of a one-pole that covers 1 / (2 pi) of `milliseconds * rate / 1000` samples as its time
/// constant: corner 1000 / milliseconds Hz.
double shareOver(double samplesTimesThousand) {
  return 1.0 - std::exp(-1000.0 * kTwoPi / samplesTimesThousand);
}

}  // namespace

TimeCoefficients designTimes(const TimeSettings& settings) {
  const double fs = settings.sampleRateHz;
  const double a = std::pow(settings.attack, 0.5849625);  // log2(1.5): 10 ms in place of 3.2 at half travel
  const double r = settings.release;
  const double optoAttack = 2.0 * std::pow(10000.0, a) * fs;
  const double optoRelease = std::pow(100.0, 0.01 * a + r) * fs * 60.0;
  const double attack = std::pow(1000.0, a) * fs;
  TimeCoefficients c;
  c.rectCoef = 1.0 - std::exp(-kRectifierHz2Pi / fs);
  c.optoAttack1 = shareOver(optoAttack * 0.2 * 0.15 * 0.33);
  c.optoAttack2 = shareOver(optoAttack * 0.15 * 0.33);
  c.optoRelease1 = shareOver(optoRelease * 0.33 * 3.0 * 0.5);
  c.optoRelease2 = shareOver(optoRelease * 0.85 * 1.4 * 3.0 * 0.5);
  c.fetAttack = shareOver(2.0 * attack * 0.33 * 10.0);
  c.fetRelease = shareOver(std::pow(100.0, 0.2 * a + r) * fs * 40.0);
  c.vcaAttack = shareOver(attack * 0.33);
  c.vcaRelease = shareOver(std::pow(100.0, 0.1 * a + r) * fs * 80.0);
  c.smooth = 1.0 - std::exp(-kSmoothHz2Pi / fs);
  c.hpfCoef = 1.0 - std::exp(-kTwoPi * physicalValue(kCompressorFamily, kHpf, settings.hpf) / fs);
  return c;
}

RatioTerms designRatio(double ratio) {
  return {.fetRatio = ratio / (1.05 - ratio),
          .optoExponent = 1.2 * std::pow(1.218378 * std::pow(ratio, 0.7), 0.7),
          .vcaExponent = ratioSlope(ratio)};
}

double fetRatioAtReset(double ratio) { return 1.6 * std::pow(ratioSlope(ratio), 4.0); }

double detectorDrive(double threshold) { return 0.31623 * std::pow(10.0, 2.5 * (1.0 - threshold)); }

namespace {

/// `value` on its way to `target`, sample by sample into `path`. A step that changes nothing is the last.
void glide(double& value, double target, double smooth, double* path, int frames) {
  for (int i = 0; i < frames; ++i) {
    const double next = flushed(value + (target - value) * smooth, kControlFlush);
    if (next == value) {
      std::fill(path + i, path + frames, value);
      return;
    }
    path[i] = value = next;
  }
}

/// The key behind its high-pass.
void highPass(const double* key, int frames, double coefficient, double& state, double* filtered) {
  double low = state;
  for (int i = 0; i < frames; ++i) {
    const double s = numberOrZero(key[i]);
    low = flushed(low + (s - low) * coefficient, kDetectorFlush);
    filtered[i] = s - low;
  }
  state = low;
}

/// Opto detector: stage 2 for each sample into `levels`.
void optoLevels(const double* key, const double* drive, int frames, const TimeCoefficients& c,
                DetectorState& state, double* levels) {
  double rectified = state.optoRectified, stage1 = state.optoStage1, stage2 = state.optoStage2;
  for (int i = 0; i < frames; ++i) {
    rectified = flushed(rectified + (std::abs(0.794 * key[i]) - rectified) * c.rectCoef, kRectifierFlush);
    const double level = std::abs(1.4 * 1.1885 * rectified) * drive[i] + 0.01;
    const double u = level * level;
    // The powers would carry a fast release past its target, where the next power has no value: it ends
    // there.
    const double d1 = stage1 - u;
    const double fallen1 = stage1 - d1 * d1 * c.optoRelease1;
    stage1 = u > stage1 ? stage1 + (u - stage1) * c.optoAttack1 : (fallen1 > u ? fallen1 : u);
    stage1 = flushed(stage1, kDetectorFlush);
    if (stage1 > stage2) {
      stage2 += (stage1 - stage2) * c.optoAttack2;
    } else {
      const double fallen2 = stage2 - fast::pow(stage2 - stage1, 1.4) * c.optoRelease2;
      stage2 = fallen2 > stage1 ? fallen2 : stage1;
    }
    stage2 = flushed(stage2, kDetectorFlush);
    levels[i] = stage2;
  }
  state.optoRectified = rectified, state.optoStage1 = stage1, state.optoStage2 = stage2;
}

void optoGains(const double* levels, const double* exponents, int frames, double* gains) {
  for (int i = 0; i < frames; ++i) gains[i] = fast::exp2(-0.5 * exponents[i] * fast::log2(1.0 + levels[i]));
}

/// Gain of the FET at `level`. With w = ratio level / 2, v = 0.999 w / (w + 1) and h = 1 / (0.001 + v) + 1
/// the law is 1.1 h / (h + 100); here over a common denominator, since it stands in the way of the next
/// sample.
double fetGain(double fetRatio, double level) {
  const double w = fetRatio * level * 0.5;
  return 1.1 * (2.0 * w + 1.001) / (102.0 * w + 1.101);
}

/// FET detector: each sample's gain serves its detector and its output.
void fetGains(const double* key, const double* fetRatio, double drive, int frames, const TimeCoefficients& c,
              DetectorState& state, double* gains) {
  constexpr double kDeadZone = 0.25;
  double level = state.fetLevel;
  for (int i = 0; i < frames; ++i) {
    const double g = fetGain(fetRatio[i], level);
    const double u = key[i] * 0.912 * 0.631 * 1.084 * g * drive;
    // the dead zone of both signs in one, since tanh is odd; tanh takes away, so what is below it cannot
    // attack
    const double excess = std::abs(u) - kDeadZone;
    if (excess > level) {
      const double e = excess - 0.25 * fast::tanh(4.0 * excess);
      if (e > level) level += (e - level) * c.fetAttack;
    }
    level = flushed(level - level * c.fetRelease, kDetectorFlush);
    gains[i] = g;
  }
  state.fetLevel = level;
}

/// Decades of level above the threshold, with a soft knee.
void vcaTargets(const double* key, const double* drive, int frames, double* targets) {
  for (int i = 0; i < frames; ++i) {
    const double u = std::abs(key[i] * 2.6 * 1.122 * 0.841 * 1.1) * drive[i] + 0.01;
    const double decades = fast::log10(u);
    const double l = decades > 0.0 ? decades : 0.0;
    targets[i] = l - 0.125 * fast::tanh(8.0 * l);
  }
}

/// VCA detector over `levels`, in place.
void vcaLevels(double* levels, int frames, const TimeCoefficients& c, DetectorState& state) {
  double level = state.vcaLevel;
  for (int i = 0; i < frames; ++i) {
    const double distance = levels[i] - level;
    level = flushed(level + distance * (distance > 0.0 ? c.vcaAttack : c.vcaRelease), kDetectorFlush);
    levels[i] = level;
  }
  state.vcaLevel = level;
}

void vcaGains(const double* levels, double exponent, int frames, double* gains) {
  for (int i = 0; i < frames; ++i) gains[i] = fast::pow10(-levels[i] * exponent);
}

/// `input` times gain and makeup, mixed with `input` as it came.
void applyGains(const double* input, const double* gains, const double* makeup, const double* mix, int frames,
                double* output) {
  for (int i = 0; i < frames; ++i) {
    const double y = flushed(numberOrZero(input[i]) * gains[i] * makeup[i], kOutputFlush);
    output[i] = y * mix[i] + (1.0 - mix[i]) * input[i];
  }
}

}  // namespace

}  // namespace compressor

using namespace compressor;

void OptoFetVcaCompressor::resetCompressor(double sampleRateHz) {
  updateCoefficients(sampleRateHz);
  thresholdDriveSmoothed = thresholdDrive;
  makeupGainSmoothed = makeupGain;
  mixSmoothed = mix;
  fetRatioSmoothed = fetRatioAtReset(ratio);
  optoExponentSmoothed = ratioTerms.optoExponent;
  for (ChannelState& channel : channels) channel = {};
  gainReduction = 1.0;
}

void OptoFetVcaCompressor::clearDetectors() {
  for (ChannelState& channel : channels) channel.detectors = {};
}

void OptoFetVcaCompressor::updateCoefficients(double sampleRateHz) {
  const TimeSettings settings{attack, release, hpf, sampleRateHz};
  if (settings != designedFor) {
    times = designTimes(settings);
    designedFor = settings;
  }
  if (ratio != ratioDesignedFor) {
    ratioTerms = designRatio(ratio);
    ratioDesignedFor = ratio;
  }
}

void OptoFetVcaCompressor::startBlock(double sampleRateHz, int frames) {
  updateCoefficients(sampleRateHz);
  glide(thresholdDriveSmoothed, thresholdDrive, times.smooth, glides.drive, frames);
  glide(makeupGainSmoothed, makeupGain, times.smooth, glides.makeup, frames);
  glide(fetRatioSmoothed, ratioTerms.fetRatio, times.smooth, glides.fetRatio, frames);
  glide(optoExponentSmoothed, ratioTerms.optoExponent, times.smooth, glides.optoExponent, frames);
  glide(mixSmoothed, mix, times.smooth, glides.mix, frames);
}

double OptoFetVcaCompressor::runChannel(const double* input, const double* key, int frames,
                                        ChannelState& state, double* output, double* filteredKey) const {
  // In runs short enough that the processor still works on the recursions of one while it begins the next.
  constexpr int kRun = 16;
  double gains[kRun] = {}, levels[kRun];
  int n = 0;
  for (int at = 0; at < frames; at += n) {
    n = std::min(kRun, frames - at);
    double* filtered = filteredKey + at;
    highPass(key + at, n, times.hpfCoef, state.hpfState, filtered);
    switch (detector) {
      case kFet:
        fetGains(filtered, glides.fetRatio + at, thresholdDrive, n, times, state.detectors, gains);
        break;
      case kVca:
        vcaTargets(filtered, glides.drive + at, n, levels);
        vcaLevels(levels, n, times, state.detectors);
        vcaGains(levels, ratioTerms.vcaExponent, n, gains);
        break;
      default:
        optoLevels(filtered, glides.drive + at, n, times, state.detectors, levels);
        optoGains(levels, glides.optoExponent + at, n, gains);
    }
    applyGains(input + at, gains, glides.makeup + at, glides.mix + at, n, output + at);
  }
  return gains[n - 1];
}

}  // namespace corvane
