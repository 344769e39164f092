#include "modules/limiter/Saturator.h"

#include <algorithm>
#include <cmath>

#include "core/dsp/FastMath.h"
#include "core/dsp/Flush.h"

namespace corvane::limiter {

namespace {

constexpr double kFlush = 1e-19;
constexpr double kValve = 0.33;
constexpr double kSmallestLevel = 1e-8;  // below it the tape and clip laws are 1

struct Valve1 {
  static double gain(double v) { return 1.0 / (kValve * std::sqrt(v) + 1.0); }
};
struct Valve2 {
  static double gain(double v) { return 1.0 / (kValve * v + 1.0); }
};
struct Tape1 {
  static double gain(double v) { return v > kSmallestLevel ? fast::atan(v) / v : 1.0; }
};
struct Tape2 {
  static double gain(double v) { return v > kSmallestLevel ? fast::tanh(v) / v : 1.0; }
};
struct SoftClip {
  static double gain(double v) { return v > kSmallestLevel ? std::sqrt(fast::tanh(v * v)) / v : 1.0; }
};
struct HardClip {
  static double gain(double v) {
    const double v2 = v * v;
    return v > kSmallestLevel ? std::sqrt(std::sqrt(fast::tanh(v2 * v2))) / v : 1.0;
  }
};

template <typename Law>
void bend(double* levels, int frames) {
  for (int i = 0; i < frames; ++i) levels[i] = Law::gain(levels[i]);
}

void softEnvelope(const double* rectifiedKey, int frames, double ceilingInverse, double share,
                  SaturatorState& s, double* levels) {
  double stage = s.satStage1;
  for (int i = 0; i < frames; ++i) {
    stage = flushedNearZero(stage + (rectifiedKey[i] * ceilingInverse - stage) * share, kFlush);
    levels[i] = stage;
  }
  s.satStage1 = stage;
}

void hardEnvelope(const double* rectifiedKey, int frames, double ceilingInverse, double share,
                  SaturatorState& s, double* levels) {
  auto [stage1, stage2, stage3] = s;
  for (int i = 0; i < frames; ++i) {
    stage1 = flushedNearZero(stage1 + (rectifiedKey[i] * ceilingInverse - stage1) * share, kFlush);
    stage2 = flushedNearZero(stage2 + (stage1 - stage2) * share, kFlush);
    stage3 = flushedNearZero(stage3 + (stage2 - stage3) * share, kFlush);
    levels[i] = stage3;
  }
  s = {stage1, stage2, stage3};
}

}  // namespace

SaturatorCoefficients initialSaturator(double sampleRateHz) {
  return {1.0 - std::exp(-62830.0 / sampleRateHz), 1.0 - std::exp(-188490.0 / sampleRateHz)};
}

SaturatorCoefficients designSaturator(double smoothNorm, double sampleRateHz) {
  const double samples =
      0.025 * 0.001 * 1.2 * 1.4 * std::pow(200.0, std::sqrt(std::max(smoothNorm, 0.0))) * sampleRateHz;
  return {1.0 - std::exp(-6.1415 / samples), 1.0 - std::exp(-6.1415 / (0.333 * samples))};
}

double saturatorGain(std::int32_t shape, double v) {
  switch (shape) {
    case 0: return Valve1::gain(v);
    case 1: return Valve2::gain(v);
    case 2: return Tape1::gain(v);
    case 3: return Tape2::gain(v);
    case 4: return SoftClip::gain(v);
    default: return HardClip::gain(v);
  }
}

CORVANE_WIDE_LOOPS [[gnu::flatten]] void saturatorGains(const double* rectifiedKey, int frames,
                                                        double ceilingInverse, std::int32_t shape, bool soft,
                                                        const SaturatorCoefficients& c, SaturatorState& state,
                                                        double* gains) {
  if (soft)
    softEnvelope(rectifiedKey, frames, ceilingInverse, c.satCoefSoft, state, gains);
  else
    hardEnvelope(rectifiedKey, frames, ceilingInverse, c.satCoefHard, state, gains);
  switch (shape) {
    case 0: return bend<Valve1>(gains, frames);
    case 1: return bend<Valve2>(gains, frames);
    case 2: return bend<Tape1>(gains, frames);
    case 3: return bend<Tape2>(gains, frames);
    case 4: return bend<SoftClip>(gains, frames);
    default: return bend<HardClip>(gains, frames);
  }
}

}  // namespace corvane::limiter
