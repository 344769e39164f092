#include "modules/compressor/OptoFetVcaCompressor.h"

#include <algorithm>
#include <cmath>

#include "core/dsp/FastMath.h"
#include "core/dsp/FixedPower.h"
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

/// Share per sample of a one-pole with its corner at 1000 rate / n Hz. `n`: milliseconds times rate.
double shareOver(double n) { return 1.0 - std::exp(-1000.0 * kTwoPi / n); }

}  // namespace

TimeCoefficients designTimes(const TimeSettings& settings) {
  const double fs = settings.sampleRateHz;
  const double a = std::pow(settings.attack, 0.5849625);  // log2 1.5: half travel is two thirds of the range
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

void Glide::move(double target, double share, int frames) {
  for (int i = 0; i < frames; ++i) {
    const double next = flushed(current + (target - current) * share, kControlFlush);
    if (next == current) {  // a step that changes nothing is the last
      if (current != still) std::fill(values + i, std::end(values), current);
      still = i == 0 ? current : -1.0;
      return;
    }
    values[i] = current = next;
    still = -1.0;
  }
}

namespace {

/// x - width tanh(x / width) for x >= 0: nothing at first, x - width in the end. By tanh y = 1 - 2 / (e^2y +
/// 1).
inline double softKnee(double x, double width) {
  return (x - width) + 2.0 * width / (fast::exp(x * (2.0 / width)) + 1.0);
}

CORVANE_WIDE_LOOPS void optoGains(const double* levels, const double* exponents, int frames, double* gains) {
  for (int i = 0; i < frames; ++i) gains[i] = fast::exp2(-0.5 * exponents[i] * fast::log2(1.0 + levels[i]));
}

/// Rectified levels, linear, to decades above the threshold with a soft knee, in place.
CORVANE_WIDE_LOOPS void vcaKnee(double* levels, int frames) {
  for (int i = 0; i < frames; ++i) {
    const double decades = fast::log10(levels[i]);
    const double l = decades > 0.0 ? decades : 0.0;
    levels[i] = softKnee(l, 0.125);
  }
}

CORVANE_WIDE_LOOPS void vcaGains(const double* levels, double exponent, int frames, double* gains) {
  for (int i = 0; i < frames; ++i) gains[i] = fast::pow10(-levels[i] * exponent);
}

/// `input` times gain and makeup, mixed with `input` as it came.
CORVANE_WIDE_LOOPS void applyGains(const double* input, const double* gains, const double* makeup,
                                   const double* mix, int frames, double* output) {
  for (int i = 0; i < frames; ++i) {
    const double y = flushed(numberOrZero(input[i]) * gains[i] * makeup[i], kOutputFlush);
    output[i] = y * mix[i] + (1.0 - mix[i]) * input[i];
  }
}

// The detectors. `hear` takes the filtered key of sample i of the block as far as that waits for nothing but
// the key, `prepare` does the same for a run of what was heard, `step` is the recursion, and `finish` makes
// gains of its results.

const FixedPower kFallPower{1.4};

struct Opto {
  const TimeCoefficients& c;
  const double *drive, *exponent;  ///< at each sample
  double rectified, stage1;
  double before2, step2;  ///< stage 2 is their sum: its value two samples back and the last step

  Opto(const TimeCoefficients& times, const Glide& thresholdDrive, const Glide& optoExponent,
       const DetectorState& s)
      : c(times),
        drive(thresholdDrive.path()),
        exponent(optoExponent.path()),
        rectified(s.optoRectified),
        stage1(s.optoStage1),
        before2(s.optoStage2),
        step2(s.optoStep2) {}
  void store(DetectorState& s) const {
    s.optoRectified = rectified, s.optoStage1 = stage1, s.optoStage2 = before2, s.optoStep2 = step2;
  }

  double hear(double key, int i) {
    rectified += (std::abs(0.794 * key) - rectified) * c.rectCoef;
    rectified = flushedNearZero(rectified, kRectifierFlush);
    const double level = std::abs(1.4 * 1.1885 * rectified) * drive[i] + 0.01;
    return level * level;
  }
  void prepare(double*, int) const {}
  /// The powers would carry a fast release past its target, where the next power has no value: it ends there.
  /// The stages need no flush, since the target never falls below 0.01 squared.
  double step(double u, int) {
    const double d1 = stage1 - u;
    const double fallen1 = stage1 - d1 * d1 * c.optoRelease1;
    stage1 = u > stage1 ? stage1 + (u - stage1) * c.optoAttack1 : (fallen1 > u ? fallen1 : u);
    const double stage2 = before2 + step2;
    if (stage1 > stage2) {
      step2 = (stage1 - stage2) * c.optoAttack2;
    } else {
      // the power is looked up beside the last step, not behind it
      const double fall = kFallPower(before2 - stage1, step2, c.optoRelease2);
      step2 = stage2 - fall > stage1 ? -fall : stage1 - stage2;
    }
    before2 = stage2;
    return stage2 + step2;
  }
  void finish(const double* levels, int frames, double* gains) const {
    optoGains(levels, exponent, frames, gains);
  }
};

struct Fet {
  const TimeCoefficients& c;
  const double* fetRatio;  ///< at each sample
  double drive, level;

  Fet(const TimeCoefficients& times, const Glide& ratio, double thresholdDrive, const DetectorState& s)
      : c(times), fetRatio(ratio.path()), drive(thresholdDrive), level(s.fetLevel) {}
  void store(DetectorState& s) const { s.fetLevel = level; }

  double hear(double key, int) const { return key * 0.912 * 0.631 * 1.084 * drive; }
  void prepare(double*, int) const {}
  /// With w = ratio level / 2, v = 0.999 w / (w + 1) and h = 1 / (0.001 + v) + 1 the gain is 1.1 h / (h +
  /// 100); here over a common denominator, since the next sample waits for it.
  double step(double heard, int i) {
    const double w = fetRatio[i] * level * 0.5;
    const double g = 1.1 * (2.0 * w + 1.001) / (102.0 * w + 1.101);
    // The dead zone of both signs in one, since tanh is odd. It takes away more than 0.19 or 0.76 x,
    // whichever is less: most samples that do not attack are known by that.
    const double excess = std::abs(heard * g) - 0.25;
    if (excess - std::min(0.19, 0.76 * excess) > level) {
      const double e = softKnee(excess, 0.25);
      if (e > level) level += (e - level) * c.fetAttack;
    }
    level = flushedNearZero(level - level * c.fetRelease, kDetectorFlush);
    return g;
  }
  void finish(const double* levels, int frames, double* gains) const { std::copy_n(levels, frames, gains); }
};

struct Vca {
  const TimeCoefficients& c;
  const double* drive;  ///< at each sample
  double exponent, level;

  Vca(const TimeCoefficients& times, const Glide& thresholdDrive, double vcaExponent, const DetectorState& s)
      : c(times), drive(thresholdDrive.path()), exponent(vcaExponent), level(s.vcaLevel) {}
  void store(DetectorState& s) const { s.vcaLevel = level; }

  double hear(double key, int i) const { return std::abs(key * 2.6 * 1.122 * 0.841 * 1.1) * drive[i] + 0.01; }
  void prepare(double* heard, int frames) const { vcaKnee(heard, frames); }
  double step(double e, int) {
    const double distance = e - level;
    level += distance * (distance > 0.0 ? c.vcaAttack : c.vcaRelease);
    return level = flushedNearZero(level, kDetectorFlush);
  }
  void finish(const double* levels, int frames, double* gains) const {
    vcaGains(levels, exponent, frames, gains);
  }
};

bool isFinite(const ChannelState& state) {
  const DetectorState& d = state.detectors;
  return std::isfinite(state.hpfState + d.optoRectified + d.optoStage1 + d.optoStage2 + d.optoStep2 +
                       d.fetLevel + d.vcaLevel);
}

/// A block through `detector`; returns the gain of the last sample.
template <typename Detector>
double run(Detector detector, const Glide& makeup, const Glide& mix, const double* input, const double* key,
           int frames, ChannelState& state, double* output, double* filteredKey) {
  constexpr int kRun = 16;
  double heard[kBlockFrames], levels[kBlockFrames], gains[kBlockFrames];
  double low = state.hpfState;
  const auto hear = [&](int i) {
    const double s = numberOrZero(key[i]);
    low = flushedNearZero(low + (s - low) * detector.c.hpfCoef, kDetectorFlush);
    filteredKey[i] = s - low;
    heard[i] = detector.hear(filteredKey[i], i);
  };
  int next = std::min(kRun, frames);
  for (int i = 0; i < next; ++i) hear(i);
  detector.prepare(heard, next);
  for (int at = 0; at < frames;) {
    // The key of the next run goes beside the detector of this one: each is a chain of steps that wait for
    // one another, and two chains take the time of the longer.
    const int end = next;
    next = std::min(end + kRun, frames);
    int i = at;
    for (int ahead = end; ahead < next; ++ahead, ++i) {
      hear(ahead);
      levels[i] = detector.step(heard[i], i);
    }
    for (; i < end; ++i) levels[i] = detector.step(heard[i], i);
    detector.prepare(heard + end, next - end);
    at = end;
  }
  detector.finish(levels, frames, gains);
  applyGains(input, gains, makeup.path(), mix.path(), frames, output);
  state.hpfState = low;
  detector.store(state.detectors);
  // A key of 10^150 overflows a square. The channel then starts anew, where it would stay shut for ever.
  if (!isFinite(state)) state = {};
  return gains[frames - 1];
}

}  // namespace

}  // namespace compressor

using namespace compressor;

void OptoFetVcaCompressor::resetCompressor(double sampleRateHz) {
  updateCoefficients(sampleRateHz);
  thresholdDriveSmoothed.snap(thresholdDrive);
  makeupGainSmoothed.snap(makeupGain);
  mixSmoothed.snap(mix);
  fetRatioSmoothed.snap(fetRatioAtReset(ratio));
  optoExponentSmoothed.snap(ratioTerms.optoExponent);
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
  thresholdDriveSmoothed.move(thresholdDrive, times.smooth, frames);
  makeupGainSmoothed.move(makeupGain, times.smooth, frames);
  fetRatioSmoothed.move(ratioTerms.fetRatio, times.smooth, frames);
  optoExponentSmoothed.move(ratioTerms.optoExponent, times.smooth, frames);
  mixSmoothed.move(mix, times.smooth, frames);
}

double OptoFetVcaCompressor::runChannel(const double* input, const double* key, int frames,
                                        ChannelState& state, double* output, double* filteredKey) const {
  const auto runAs = [&](const auto& kind) {
    return run(kind, makeupGainSmoothed, mixSmoothed, input, key, frames, state, output, filteredKey);
  };
  switch (detector) {
    case kFet: return runAs(Fet{times, fetRatioSmoothed, thresholdDrive, state.detectors});
    case kVca: return runAs(Vca{times, thresholdDriveSmoothed, ratioTerms.vcaExponent, state.detectors});
    default: return runAs(Opto{times, thresholdDriveSmoothed, optoExponentSmoothed, state.detectors});
  }
}

}  // namespace corvane
